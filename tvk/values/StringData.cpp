#include "tvk/values/StringData.h"

#include "tvk/platform/Numbers.h"
#include "tvk/values/detail/WrongKind.h"

namespace tvk {

namespace {

constexpr char const * NOT_A_LIST = "not a list data field";
constexpr char const * NOT_A_RECORD = "not a record data field";
constexpr char const * NOT_RAW_DATA = "not a raw data field";

}  // namespace

StringData::StringData() = default;

StringData::StringData(char const * text) : text_(text) {}

StringData::StringData(char const * text, unsigned int length)
    : text_(text, static_cast<int>(length)) {}

StringData::StringData(unsigned int count, char character)
    : text_(character, static_cast<int>(count)) {}

StringData::StringData(CString const & text) : text_(text) {}

StringData::StringData(StringData const & other) : FieldValue(other), text_(other.text_) {}

StringData::~StringData() = default;

StringData & StringData::operator=(StringData const & other) { return *this = other.text_; }

StringData & StringData::operator=(CString const & text) {
    text_ = text;
    return *this;
}

bool StringData::operator==(StringData const & other) const { return text_ == other.text_; }

bool StringData::operator==(CString const & text) const { return text_ == text; }

bool StringData::operator<(StringData const & other) const { return text_ < other.text_; }

bool StringData::operator<(CString const & text) const { return text_ < text; }

FieldTypeEnum StringData::getFieldType() const { return FLDTYPE_STRING; }

int StringData::intValue() const { return platform::parseInt32(text_); }

long StringData::longValue() const { return platform::parseInt32(text_); }

long long StringData::longlongValue() const { return platform::parseInt64(text_, 10); }

double StringData::doubleValue() const { return platform::parseDouble(text_); }

CString const & StringData::asString() const { return text_; }

ListData & StringData::asList() { detail::throwWrongKind(NOT_A_LIST); }

ListData const & StringData::asList() const { detail::throwWrongKind(NOT_A_LIST); }

RecordData & StringData::asRecord() { detail::throwWrongKind(NOT_A_RECORD); }

RecordData const & StringData::asRecord() const { detail::throwWrongKind(NOT_A_RECORD); }

RawData & StringData::asRawData() { detail::throwWrongKind(NOT_RAW_DATA); }

RawData const & StringData::asRawData() const { detail::throwWrongKind(NOT_RAW_DATA); }

CString StringData::toString() const { return text_; }

}  // namespace tvk
