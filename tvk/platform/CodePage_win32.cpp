// The conversions by the platform's own calls, in the two steps that the tables of the other
// platforms were read off.

#define NOMINMAX
#include <windows.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>

#include "tvk/platform/CodePage.h"

namespace tvk::platform {

namespace {

// The second byte counts in 932 alone: a single-byte code page takes the first only.
constexpr char DEFAULT_CODE[] = "\x81\x7C";

int platformSize(std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    return static_cast<int>(size);
}

std::size_t convert(UINT from, UINT to, void const * text, std::size_t size, char * output,
                    std::size_t room) {
    if (size == 0) {
        return 0;
    }
    std::unique_ptr<wchar_t[]> const wide(new wchar_t[size]);
    int const wideLength = MultiByteToWideChar(from, 0, static_cast<char const *>(text),
                                               platformSize(size), wide.get(), platformSize(size));
    // UTF-8 takes neither flags nor a default character: with them the call would fail.
    bool const isUtf8 = to == CP_UTF8;
    int const length = WideCharToMultiByte(
        to, isUtf8 ? 0 : WC_COMPOSITECHECK | WC_NO_BEST_FIT_CHARS, wide.get(), wideLength, output,
        static_cast<int>(std::min<std::size_t>(room, std::numeric_limits<int>::max())),
        isUtf8 ? nullptr : DEFAULT_CODE, nullptr);
    return static_cast<std::size_t>(length);
}

}  // namespace

std::size_t utf8ToAnsi(void const * text, std::size_t size, char * output) {
    return convert(CP_UTF8, ansiCodePage(), text, size, output, size * UTF8_TO_ANSI_ROOM);
}

std::size_t ansiToUtf8(void const * text, std::size_t size, char * output) {
    return convert(ansiCodePage(), CP_UTF8, text, size, output, size * ANSI_TO_UTF8_ROOM);
}

int characterInCodePage(unsigned int codePage, void const * bytes, std::size_t size) {
    bool const isKnown = codePage == 932 || codePage == 1252 || codePage == 28591;
    wchar_t wide[2];
    if (!isKnown || size == 0 || size > 2 ||
        MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, static_cast<char const *>(bytes),
                            platformSize(size), wide, 2) != 1) {
        return -1;
    }
    return wide[0];
}

}  // namespace tvk::platform
