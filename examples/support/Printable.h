#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tvk/platform/CString.h"

/// At most `limit` bytes of a text in UTF-8, cut between characters and followed by dots if that is
/// not all of it. Control characters, and bytes that are no UTF-8, become \xNN: what came from
/// outside must not steer a terminal.
std::string printable(std::string_view text, std::size_t limit);
/// The same of text in the application's code page, as a message holds it.
std::string printableAnsi(CString const & text, std::size_t limit);

/// All bytes of a text, NUL included. The view lives as long as the text.
std::string_view bytesOf(CString const & text);
