#pragma once

#include <map>
#include <utility>

#include "tvk/platform/CString.h"
#include "tvk/values/FieldValue.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/values/detail/DeferredRelease.h"

namespace tvk {
class RecordData;
}

namespace tvk::detail {

/// The fields of a map-backed record, in ascending order of the names' bytes.
///
/// Keys and values keep their addresses while the field exists: views of fields point at them.
class FieldMap {
public:
    using Map = std::map<CString, RefCountedPtr<FieldValue>>;

    FieldMap() = default;
    FieldMap(FieldMap const &) = default;
    FieldMap & operator=(FieldMap const &) = delete;
    virtual ~FieldMap() = default;

    Map & map() { return map_; }
    Map const & map() const { return map_; }

    void set(CString const & name, RefCountedPtr<FieldValue> const & value) {
        map_.try_emplace(name).first->second = value;
    }

    /// Inserts each field of the source whose name is not here yet.
    void addMissing(RecordData const & source);

    /// Releases all values; `end` is the one of the destructor that calls.
    void endAll(ContainerEnd & end);

private:
    Map map_;
};

}  // namespace tvk::detail
