#pragma once

#include "tests/support/RecordDataDouble.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

/// A record with the fields "a" and "b" that makes its values anew with each look and keeps none:
/// records like itself for that many levels, then texts with the name of the field.
class FreshRecord : public RecordDataDouble {
public:
    explicit FreshRecord(int levels) : levels_(levels) {
        fields = {{"a", nullptr}, {"b", nullptr}};
    }

    using RecordDouble::getFieldValue;

    RefCountedPtr<FieldValue> getFieldValue(CString const & name) const override {
        if (levels_ == 0) {
            return new StringData(name);
        }
        return new FreshRecord(levels_ - 1);
    }

private:
    int levels_;
};

}  // namespace tvk::test
