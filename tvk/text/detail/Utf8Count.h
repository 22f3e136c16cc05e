#pragma once

#include <cstdint>
#include <cstring>

namespace tvk::detail {

/// Bytes that hold whole characters, and how many.
struct Utf8Run {
    unsigned int bytes;
    unsigned int characters;
};

/// Counts on from `position`, the start of a character, in whole blocks for as long as it can tell
/// that a walk from lead to lead would agree. It may stop anywhere, also at once.
inline Utf8Run countRegularUtf8(char const * data, unsigned int length, unsigned int position) {
    constexpr std::uint64_t HIGH_BITS = 0x8080808080808080U;
    unsigned int bytes = 0;
    while (length - position - bytes >= sizeof(std::uint64_t)) {
        std::uint64_t word;
        std::memcpy(&word, data + position + bytes, sizeof word);
        if ((word & HIGH_BITS) != 0) {
            break;
        }
        bytes += static_cast<unsigned int>(sizeof word);
    }
    return {bytes, bytes};
}

}  // namespace tvk::detail
