#pragma once

#include <string>
#include <string_view>

#include "tvk/platform/CString.h"

// Values hold text in the application's code page, the screen draws UTF-8: this is where the two meet.

namespace desk {

/// For the screen. Control characters but for the line feed are left out: what came from outside
/// draws as one text.
std::string utf8(CString const & text);

/// For a message.
CString ansi(std::string_view text);

}  // namespace desk
