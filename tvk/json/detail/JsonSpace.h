#pragma once

#include <cstddef>
#include <cstdint>

#include "tvk/json/JsonOptions.h"

namespace tvk::detail {

/// Backspace counts as space, vertical tab does not.
inline bool isSpace(char byte) {
    constexpr std::uint64_t SPACES =
        1ull << 8 | 1ull << 9 | 1ull << 10 | 1ull << 12 | 1ull << 13 | 1ull << 32;
    auto const value = static_cast<unsigned char>(byte);
    return value <= 32 && (SPACES >> value & 1) != 0;
}

/// Whether a comment that `options` allow starts at `at`, where `left` bytes, one at least, are left.
inline bool startsComment(char const * at, std::size_t left, int options) {
    return (*at == '#' && (options & JSON_ALLOW_HASH_COMMENT) != 0) ||
           (*at == '/' && (options & JSON_ALLOW_SLASH_COMMENT) != 0 && left > 1 && at[1] == '/');
}

/// The position of the first byte at or behind `position` that is neither space nor part of a
/// comment that `options` allow; `length` where there is none.
inline unsigned int skipSpace(char const * data, unsigned int length, unsigned int position,
                              int options) {
    bool isComment = false;
    for (; position < length; ++position) {
        char const * const at = data + position;
        if (isComment) {
            isComment = *at != '\n';
        } else if (startsComment(at, length - position, options)) {
            isComment = true;
        } else if (!isSpace(*at)) {
            break;
        }
    }
    return position;
}

}  // namespace tvk::detail
