#pragma once

#include "tvk/values/FieldValue.h"

namespace tvk {

namespace detail {
class OwnValues;
}

/// A number, a 64-bit integer or a double, with a text form of its own.
///
/// Text form: built when somebody first asks ("%lld", or "%f" with six decimals), unless setStringRep
///            has given one, which then wins for good. Numbers from the wire carry their wire text.
/// Threads:   asString() writes on its first use, so a number is shared between threads only after
///            its text form has been built.
class TVK_API NumberData : public FieldValue {
public:
    NumberData();
    NumberData(int value);
    NumberData(long value);
    NumberData(long long value);
    NumberData(double value);
    /// Deliberate: takes the number alone; a text form that was set stays behind. A number that is
    /// copied to be shown in another form relies on it.
    NumberData(NumberData const & other);
    NumberData & operator=(NumberData const &) = delete;

    bool isInteger() const { return isInteger_; }
    bool isDouble() const { return !isInteger_; }

    /// Sets the text form. It is not parsed: the number stays as it is.
    void setStringRep(CString const & text);

    /// Deliberate: both operators go by the kind of the left operand alone. An integer never equals
    /// a double; a double is compared with the 8 bytes of the right operand read as a double.
    /// Header comparison and callers' tables rely on the result being the same everywhere.
    bool operator==(NumberData const & other) const;
    bool operator<(NumberData const & other) const;

    FieldTypeEnum getFieldType() const override;
    /// An integer's low 32 bits; a double truncated, 0x80000000 where that has no place.
    int intValue() const override;
    long longValue() const override;
    /// A double truncated, the smallest value where that has no place.
    long long longlongValue() const override;
    double doubleValue() const override;
    CString const & asString() const override;
    ListData & asList() override;
    ListData const & asList() const override;
    RecordData & asRecord() override;
    RecordData const & asRecord() const override;
    RawData & asRawData() override;
    RawData const & asRawData() const override;
    CString toString() const override;

private:
    friend class detail::OwnValues;

    ~NumberData() override;

    double bitsAsDouble() const;

    bool isInteger_;
    mutable bool hasStringRep_ = false;
    mutable CString stringRep_;
    union {
        long long integer_;
        double double_;
    };
};

}  // namespace tvk
