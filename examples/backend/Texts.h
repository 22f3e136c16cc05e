#pragma once

#include <string>
#include <string_view>

#include "examples/backend/Price.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RecordData.h"

/// Between the values of messages, whose texts are in the code page, and the back end, whose texts are in
/// UTF-8.
namespace backend {

CString ansi(std::string_view utf8);
std::string utf8(CString const & ansi);

/// Empty where there is no such text or number.
std::string utf8In(tvk::RecordData const & record, char const * name);

void setText(tvk::RecordData & record, char const * name, std::string_view utf8);
void setNumber(tvk::RecordData & record, char const * name, long long number);
void setPrice(tvk::RecordData & record, char const * name, Price price);
void setFlag(tvk::RecordData & record, char const * name, bool flag);

}  // namespace backend
