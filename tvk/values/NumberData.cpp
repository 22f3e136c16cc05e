#include "tvk/values/NumberData.h"

#include <bit>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <utility>

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

double asDouble(std::uint64_t bits) { return std::bit_cast<double>(bits); }

long long asInteger(std::uint64_t bits) { return static_cast<long long>(bits); }

std::uint64_t bitsOf(long long value) { return static_cast<std::uint64_t>(value); }

std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }

/// What base 0 reads as decimal and what cannot overflow: a minus sign or none, then up to 18 digits
/// without a leading zero.
bool parsePlainInteger(char const * text, unsigned int size, long long * value) {
    constexpr unsigned int MAXIMUM_DIGITS = 18;
    bool const negative = size != 0 && text[0] == '-';
    char const * const digits = negative ? text + 1 : text;
    unsigned int const count = negative ? size - 1 : size;
    if (count - 1 >= MAXIMUM_DIGITS || (digits[0] == '0' && count != 1)) {
        return false;
    }
    long long number = 0;
    for (unsigned int i = 0; i < count; ++i) {
        auto const digit = static_cast<unsigned char>(digits[i] - '0');
        if (digit > 9) {
            return false;
        }
        number = number * 10 + digit;
    }
    *value = negative ? -number : number;
    return true;
}

long long parseInteger(CString const & text) {
    long long value = 0;
    if (parsePlainInteger(text, static_cast<unsigned int>(text.GetLength()), &value)) {
        return value;
    }
    return platform::parseInt64(text, 0);
}

}  // namespace

NumberData::NumberData() : NumberData(0LL) {}

NumberData::NumberData(int value) : NumberData(static_cast<long long>(value)) {}

NumberData::NumberData(long value) : NumberData(static_cast<long long>(value)) {}

NumberData::NumberData(long long value) : isInteger_(true), bits_(bitsOf(value)) {}

NumberData::NumberData(double value) : isInteger_(false), bits_(bitsOf(value)) {}

NumberData::NumberData(NumberData const & other)
    : FieldValue(other), isInteger_(other.isInteger_), bits_(other.bits()) {}

NumberData::NumberData(detail::WithText const &, CString && text, bool isInteger,
                       bool isReadAtOnce) noexcept
    : isInteger_(isInteger),
      hasStringRep_(true),
      isRead_(isReadAtOnce),
      stringRep_(std::move(text)),
      bits_(isReadAtOnce ? bitsInText() : 0) {}

NumberData::~NumberData() = default;

std::uint64_t NumberData::bitsInText() const {
    return isInteger_ ? bitsOf(parseInteger(stringRep_))
                      : bitsOf(platform::parseDouble(stringRep_));
}

std::uint64_t NumberData::readBits() const {
    int const errnoBefore = errno;
    std::uint64_t const read = bitsInText();
    errno = errnoBefore;
    bits_.store(read, std::memory_order_relaxed);
    isRead_.store(true, std::memory_order_release);
    return read;
}

void NumberData::setStringRep(CString const & text) {
    bits();  // while the text that they stand in is still there
    stringRep_ = text;
    hasStringRep_ = true;
}

bool NumberData::operator==(NumberData const & other) const {
    if (isInteger_) {
        return other.isInteger_ && bits() == other.bits();
    }
    return asDouble(bits()) == asDouble(other.bits());
}

bool NumberData::operator<(NumberData const & other) const {
    return isInteger_ ? asInteger(bits()) < asInteger(other.bits())
                      : asDouble(other.bits()) > asDouble(bits());
}

FieldTypeEnum NumberData::getFieldType() const { return FLDTYPE_NUMBER; }

int NumberData::intValue() const {
    return isInteger_ ? static_cast<std::int32_t>(static_cast<std::uint32_t>(bits()))
                      : platform::truncateToInt32(asDouble(bits()));
}

long NumberData::longValue() const { return NumberData::intValue(); }

long long NumberData::longlongValue() const {
    return isInteger_ ? asInteger(bits()) : platform::truncateToInt64(asDouble(bits()));
}

double NumberData::doubleValue() const {
    return isInteger_ ? static_cast<double>(asInteger(bits())) : asDouble(bits());
}

CString const & NumberData::asString() const {
    if (!hasStringRep_) {
        stringRep_ = isInteger_ ? textOf(asInteger(bits())) : textOf(asDouble(bits()));
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
