#pragma once

#include <atomic>
#include <cstdint>

#include "tvk/values/FieldValue.h"

namespace tvk {

namespace detail {
class OwnValues;
struct WithText;
template <class Value>
class OneBlock;
}  // namespace detail

/// A number, a 64-bit integer or a double, with a text form of its own.
///
/// Text form: built when somebody first asks ("%lld", or "%f" with six decimals), unless setStringRep
///            has given one, which then wins for good. Numbers from the wire carry their wire text.
///            The number itself is read from that text when somebody first asks.
/// Threads:   asString() writes on its first use, so a number is shared between threads only after
///            its text form has been built. All else that is const may run on several threads.
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
    template <class Value>
    friend class detail::OneBlock;
    NumberData(detail::WithText const &, CString && text, bool isInteger,
               bool isReadAtOnce) noexcept;
    ~NumberData() override;

    std::uint64_t bits() const {
        return isRead_.load(std::memory_order_acquire) ? bits_.load(std::memory_order_relaxed)
                                                       : readBits();
    }
    std::uint64_t readBits() const;
    std::uint64_t bitsInText() const;

    bool isInteger_;
    mutable bool hasStringRep_ = false;
    // Every thread that finds the number unread comes to the same bits, so none waits for another.
    mutable std::atomic<bool> isRead_{true};
    mutable CString stringRep_;
    mutable std::atomic<std::uint64_t> bits_;  // of the integer, or of the double
};

}  // namespace tvk
