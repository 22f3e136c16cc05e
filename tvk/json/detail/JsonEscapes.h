#pragma once

namespace tvk::detail {

/// What stands behind the backslash for a code point, or 0 where nothing is escaped. A slash counts,
/// though only an option escapes it.
inline char escapeOf(int codePoint) {
    switch (codePoint) {
        case '"':
        case '\\':
        case '/':
            return static_cast<char>(codePoint);
        case '\n':
            return 'n';
        case '\r':
            return 'r';
        case '\t':
            return 't';
        case '\f':
            return 'f';
        case '\b':
            return 'b';
        default:
            return 0;
    }
}

}  // namespace tvk::detail
