#pragma once

#include "tvk/values/MappedMessageHeader.h"

namespace tvk::test {

/// Deep equality of two values, through the one comparison that the interface offers.
inline bool sameValue(RefCountedPtr<FieldValue> const & left,
                      RefCountedPtr<FieldValue> const & right) {
    auto const headerWith = [](RefCountedPtr<FieldValue> const & value) {
        RefCountedPtr<MappedMessageHeader> header(new MappedMessageHeader);
        header->setFieldValue("value", value);
        return header;
    };
    return *headerWith(left) == *headerWith(right);
}

}  // namespace tvk::test
