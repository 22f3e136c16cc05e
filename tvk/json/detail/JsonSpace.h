#pragma once

#include "tvk/json/JsonOptions.h"

namespace tvk::detail {

/// The position of the first byte at or behind `position` that is neither space nor part of a
/// comment that `options` allow; `length` where there is none. Backspace counts as space, vertical
/// tab does not.
inline unsigned int skipSpace(char const * data, unsigned int length, unsigned int position,
                              int options) {
    while (position < length) {
        switch (data[position]) {
            case '\b':
            case '\t':
            case '\n':
            case '\f':
            case '\r':
            case ' ':
                ++position;
                continue;
            case '#':
                if ((options & JSON_ALLOW_HASH_COMMENT) == 0) {
                    return position;
                }
                break;
            case '/':
                if ((options & JSON_ALLOW_SLASH_COMMENT) == 0 || length - position < 2 ||
                    data[position + 1] != '/') {
                    return position;
                }
                break;
            default:
                return position;
        }
        while (position < length && data[position] != '\n') {
            ++position;
        }
    }
    return position;
}

}  // namespace tvk::detail
