#include "examples/backend/Texts.h"

#include "examples/support/Fields.h"
#include "examples/support/Printable.h"
#include "tvk/platform/CodePage.h"

namespace backend {

using tvk::FieldValue;
using tvk::NumberData;
using tvk::RecordData;
using tvk::RefCountedPtr;

CString ansi(std::string_view utf8) {
    return tvk::platform::utf8ToAnsi(utf8.data(), static_cast<unsigned int>(utf8.size()));
}

std::string utf8(CString const & ansi) {
    std::string_view const bytes = bytesOf(ansi);
    CString const text =
        tvk::platform::ansiToUtf8(bytes.data(), static_cast<unsigned int>(bytes.size()));
    return std::string(bytesOf(text));
}

std::string utf8In(RecordData const & record, char const * name) {
    return utf8(textIn(record, name));
}

void setText(RecordData & record, char const * name, std::string_view utf8) {
    record.setFieldValue(name, ansi(utf8));
}

void setNumber(RecordData & record, char const * name, long long number) {
    record.setFieldValue(name, RefCountedPtr<FieldValue>(new NumberData(number)));
}

void setPrice(RecordData & record, char const * name, Price price) {
    RefCountedPtr<NumberData> const number(
        new NumberData(static_cast<double>(price) / static_cast<double>(YEN)));
    number->setStringRep(textOf(price).c_str());
    record.setFieldValue(name, RefCountedPtr<FieldValue>(number));
}

void setFlag(RecordData & record, char const * name, bool flag) {
    record.setFieldValue(
        name, RefCountedPtr<FieldValue>(flag ? FieldValue::TRUE_VALUE : FieldValue::FALSE_VALUE));
}

}  // namespace backend
