#include "tvk/values/NumberData.h"

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>

#include "tvk/platform/Numbers.h"
#include "tvk/values/detail/WrongKind.h"

namespace tvk {

namespace {

constexpr char const * NOT_A_LIST = "not a list data value";
constexpr char const * NOT_A_RECORD = "not a record data value";
constexpr char const * NOT_RAW_DATA = "not a raw data value";

CString textOf(long long value) {
    char digits[24];
    char const * const end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    return CString(digits, static_cast<int>(end - digits));
}

CString textOf(double value) {
    CString text;
    text.Format("%f", value);
    return text;
}

}  // namespace

NumberData::NumberData() : NumberData(0LL) {}

NumberData::NumberData(int value) : NumberData(static_cast<long long>(value)) {}

NumberData::NumberData(long value) : NumberData(static_cast<long long>(value)) {}

NumberData::NumberData(long long value) : isInteger_(true), integer_(value) {}

NumberData::NumberData(double value) : isInteger_(false), double_(value) {}

NumberData::NumberData(NumberData const & other)
    : FieldValue(other), isInteger_(other.isInteger_), integer_(0) {
    if (isInteger_) {
        integer_ = other.integer_;
    } else {
        double_ = other.double_;
    }
}

NumberData::~NumberData() = default;

void NumberData::setStringRep(CString const & text) {
    stringRep_ = text;
    hasStringRep_ = true;
}

/// The stored 8 bytes as a double, whichever kind of number they are.
double NumberData::bitsAsDouble() const {
    return isInteger_ ? std::bit_cast<double>(integer_) : double_;
}

bool NumberData::operator==(NumberData const & other) const {
    if (isInteger_) {
        return other.isInteger_ && integer_ == other.integer_;
    }
    return double_ == other.bitsAsDouble();
}

bool NumberData::operator<(NumberData const & other) const {
    if (isInteger_) {
        return integer_ <
               (other.isInteger_ ? other.integer_ : std::bit_cast<long long>(other.double_));
    }
    return other.bitsAsDouble() > double_;
}

FieldTypeEnum NumberData::getFieldType() const { return FLDTYPE_NUMBER; }

int NumberData::intValue() const {
    return isInteger_ ? static_cast<std::int32_t>(static_cast<std::uint32_t>(integer_))
                      : platform::truncateToInt32(double_);
}

long NumberData::longValue() const { return NumberData::intValue(); }

long long NumberData::longlongValue() const {
    return isInteger_ ? integer_ : platform::truncateToInt64(double_);
}

double NumberData::doubleValue() const {
    return isInteger_ ? static_cast<double>(integer_) : double_;
}

CString const & NumberData::asString() const {
    if (!hasStringRep_) {
        stringRep_ = isInteger_ ? textOf(integer_) : textOf(double_);
        hasStringRep_ = true;
    }
    return stringRep_;
}

ListData & NumberData::asList() { detail::throwWrongKind(NOT_A_LIST); }

ListData const & NumberData::asList() const { detail::throwWrongKind(NOT_A_LIST); }

RecordData & NumberData::asRecord() { detail::throwWrongKind(NOT_A_RECORD); }

RecordData const & NumberData::asRecord() const { detail::throwWrongKind(NOT_A_RECORD); }

RawData & NumberData::asRawData() { detail::throwWrongKind(NOT_RAW_DATA); }

RawData const & NumberData::asRawData() const { detail::throwWrongKind(NOT_RAW_DATA); }

CString NumberData::toString() const { return asString(); }

}  // namespace tvk
