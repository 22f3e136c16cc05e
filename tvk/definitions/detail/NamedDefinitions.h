#pragma once

#include <map>
#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::detail {

/// Definitions of one kind: in the order of adding, and by the name that each had then. Holds one
/// count on each.
template <class Definition>
class NamedDefinitions {
public:
    /// False when the name is taken. Nothing has changed then, nor when memory is out.
    bool add(Definition const * definition) {
        CString const & name = definition->getName();
        auto const place = byName_.lower_bound(name);
        if (place != byName_.end() && place->first == name) {
            return false;
        }
        inOrder_.push_back(definition);
        try {
            byName_.emplace_hint(place, name, definition);
        } catch (...) {
            inOrder_.pop_back();
            throw;
        }
        return true;
    }

    /// Null for an unknown name.
    Definition const * find(CString const & name) const {
        auto const place = byName_.find(name);
        return place == byName_.end() ? nullptr : place->second.get();
    }

    std::vector<Definition const *> const & inOrder() const { return inOrder_; }

private:
    std::vector<Definition const *> inOrder_;
    std::map<CString, RefCountedPtr<Definition const>> byName_;  // keeps alive what stands above
};

}  // namespace tvk::detail
