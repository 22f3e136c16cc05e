#pragma once

#include "tvk/values/FieldValue.h"

namespace tvk::test {

/// The operations of FieldValue for a double of one of its interfaces. Numbers read as 0, texts as
/// empty; the accessors of the other kinds throw an int.
template <class Interface, FieldTypeEnum TYPE>
class ValueDouble : public Interface {
public:
    FieldTypeEnum getFieldType() const override { return TYPE; }
    int intValue() const override { return 0; }
    long longValue() const override { return 0; }
    long long longlongValue() const override { return 0; }
    double doubleValue() const override { return 0; }
    CString const & asString() const override { return text_; }
    ListData & asList() override { throw 0; }
    ListData const & asList() const override { throw 0; }
    RecordData & asRecord() override { throw 0; }
    RecordData const & asRecord() const override { throw 0; }
    RawData & asRawData() override { throw 0; }
    RawData const & asRawData() const override { throw 0; }
    CString toString() const override { return text_; }

private:
    CString text_;
};

}  // namespace tvk::test
