#pragma once

#include <span>

#include "tvk/values/ListDataImpl.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk::detail {

/// What the library's own values hold, for readers inside the library that spare the calls and the
/// counting.
class OwnValues {
public:
    static CString const & text(StringData const & value) { return value.text_; }

    /// asString().
    static CString const & text(NumberData const & number) {
        return number.hasStringRep_ ? number.stringRep_ : number.NumberData::asString();
    }

    /// They hold until the list changes.
    static std::span<RefCountedPtr<FieldValue> const> elements(ListDataImpl const & list) {
        return list.elements_;
    }
};

}  // namespace tvk::detail
