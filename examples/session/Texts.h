#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "examples/support/Fields.h"
#include "examples/support/Printable.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/RecordData.h"

// Values hold text in the application's code page, terminal and files hold UTF-8: here the two meet.

namespace session {

inline CString ansi(std::string_view utf8) {
    return tvk::platform::utf8ToAnsi(utf8.data(), static_cast<unsigned int>(utf8.size()));
}

/// For the terminal, and not longer than a line.
inline std::string shown(CString const & text) {
    constexpr std::size_t LINE_BYTES = 100;
    return printableAnsi(text, LINE_BYTES);
}

inline std::string shown(tvk::ErrorInfo const & error) { return shown(error.toString()); }

/// A field as it stands there; empty where there is none.
inline std::string shownField(tvk::RecordData const & record, char const * name) {
    return shown(textIn(record, name));
}

}  // namespace session
