#pragma once

#include <cstddef>

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"

/// The process's narrow code page, and the road between it and UTF-8.
///
/// Code pages: 932 (Windows-31J, the default), 1252, 28591 (ISO 8859-1) and 65001 (UTF-8).
/// Threads:    the setting is one atomic number; the conversions keep no other state. Set it once,
///             before other threads convert.
/// Failure:    no text is refused. std::bad_alloc where memory is out or a result would pass
///             0x7fffffff bytes.
namespace tvk::platform {

TVK_API unsigned int ansiCodePage();

/// False, and nothing changed, for a number that is not one of the four.
TVK_API bool setAnsiCodePage(unsigned int codePage);

/// Brings UTF-8 to the code page: to UTF-16 first, with U+FFFD for each maximal bad subsequence,
/// then to the code page, with composition (U+304B U+3099 gives the one character) and no best fit.
/// Each UTF-16 unit without a place gives the bytes 81 7C, so a character beyond U+FFFF gives them
/// twice; on a single-byte code page it gives 81. With 65001 bad sequences are replaced and that is
/// all.
TVK_API CString utf8ToAnsi(void const * text, unsigned int size);

/// Brings text in the code page to UTF-8. In 932 an undefined pair, a cut lead byte or a wrong
/// trail byte is one U+30FB and takes the trail byte with it, but for a trail of 00. With 65001 bad
/// sequences are replaced.
TVK_API CString ansiToUtf8(void const * text, unsigned int size);

/// The same into the caller's room of UTF8_TO_ANSI_ROOM or ANSI_TO_UTF8_ROOM bytes for each byte of
/// `text`, which the room must not overlap. No NUL is added, and what stands in the room behind the
/// result is undefined. Returns the bytes of the result.
constexpr std::size_t UTF8_TO_ANSI_ROOM = 3;
constexpr std::size_t ANSI_TO_UTF8_ROOM = 3;
TVK_API std::size_t utf8ToAnsi(void const * text, std::size_t size, char * output);
TVK_API std::size_t ansiToUtf8(void const * text, std::size_t size, char * output);

/// The character that `size` bytes, 1 or 2, are in code page 932, 1252 or 28591, whichever is set;
/// -1 where they are none, or not one alone, and for any other code page. Only 932 has characters of
/// two bytes.
TVK_API int characterInCodePage(unsigned int codePage, void const * bytes, std::size_t size);

}  // namespace tvk::platform
