#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tvk::platform {

/// Copies `size` bytes, which must not overlap, and returns a word with the bits that any of them has,
/// in places of no meaning but for the place in their bytes. Meant for short texts: a call of memcpy
/// costs more than such a copy, and whether a text is ASCII comes out on the way.
inline std::uint64_t copyBytes(char * to, char const * from, std::size_t size) noexcept {
    std::uint64_t seen = 0;
    auto const copy = [&]<class Word>(Word, std::size_t at) {
        Word word;
        std::memcpy(&word, from + at, sizeof word);
        std::memcpy(to + at, &word, sizeof word);
        seen |= word;
    };
    if (size >= 8) {
        for (std::size_t at = 0; at + 8 < size; at += 8) {
            copy(std::uint64_t{}, at);
        }
        copy(std::uint64_t{}, size - 8);  // the last words overlap
    } else if (size >= 4) {
        copy(std::uint32_t{}, 0);
        copy(std::uint32_t{}, size - 4);
    } else {
        for (std::size_t at = 0; at < size; ++at) {
            copy(std::uint8_t{}, at);
        }
    }
    return seen;
}

/// Whether all bytes are below 0x80, by what copyBytes returned.
constexpr bool areAscii(std::uint64_t seen) noexcept { return (seen & 0x8080808080808080) == 0; }

}  // namespace tvk::platform
