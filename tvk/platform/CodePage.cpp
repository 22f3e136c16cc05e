#include "tvk/platform/CodePage.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>

// What the code pages share: the setting, and the results as CString. The conversions themselves
// stand in one file for each kind of platform.
namespace tvk::platform {

namespace {

constinit std::atomic<unsigned int> currentCodePage = 932;

constexpr std::size_t MOST_ON_STACK = 512;

using Conversion = std::size_t (*)(void const * text, std::size_t size, char * output);

bool isAscii(void const * text, std::size_t size) {
    auto const * const bytes = static_cast<unsigned char const *>(text);
    std::size_t at = 0;
    for (; size - at >= sizeof(std::uint64_t); at += sizeof(std::uint64_t)) {
        std::uint64_t block;
        std::memcpy(&block, bytes + at, sizeof block);
        if ((block & 0x8080808080808080) != 0) {
            return false;
        }
    }
    unsigned char seen = 0;
    for (; at < size; ++at) {
        seen |= bytes[at];
    }
    return seen < 0x80;
}

CString textOf(char const * bytes, std::size_t size) {
    if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    return CString(bytes, static_cast<int>(size));
}

// The result is often kept for long, so it gets a block of its own size, not of the room's.
template <std::size_t ROOM>
CString converted(void const * text, std::size_t size, Conversion conversion) {
    if (isAscii(text, size)) {
        return textOf(static_cast<char const *>(text), size);
    }
    if (size <= MOST_ON_STACK) {
        char output[MOST_ON_STACK * ROOM];
        return textOf(output, conversion(text, size, output));
    }
    if (size > std::numeric_limits<std::size_t>::max() / ROOM) {
        throw std::bad_alloc();
    }
    std::unique_ptr<char[]> const output(new char[size * ROOM]);
    return textOf(output.get(), conversion(text, size, output.get()));
}

}  // namespace

unsigned int ansiCodePage() { return currentCodePage.load(std::memory_order_relaxed); }

bool setAnsiCodePage(unsigned int codePage) {
    switch (codePage) {
        case 932:
        case 1252:
        case 28591:
        case 65001:
            currentCodePage.store(codePage, std::memory_order_relaxed);
            return true;
        default:
            return false;
    }
}

CString utf8ToAnsi(void const * text, unsigned int size) {
    return converted<UTF8_TO_ANSI_ROOM>(text, size, utf8ToAnsi);
}

CString ansiToUtf8(void const * text, unsigned int size) {
    return converted<ANSI_TO_UTF8_ROOM>(text, size, ansiToUtf8);
}

}  // namespace tvk::platform
