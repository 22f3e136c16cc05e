#include "tvk/platform/Numbers.h"

#include <stdlib.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#include "tvk/platform/CLocale.h"
#include "tvk/platform/CharacterClass.h"

namespace tvk::platform {

namespace {

/// What from_chars and strtod read alike: digits first, so no space, no plus sign, no word, and the
/// whole text taken, so no hexadecimal form. Out of range is left to strtod, which gives infinity.
bool parsePlainDouble(char const * text, double * value) {
    if (!isDigit(text[0]) && !(text[0] == '-' && isDigit(text[1]))) {
        return false;
    }
    char const * const end = text + std::strlen(text);
    auto const [stop, error] = std::from_chars(text, end, *value);
    return error == std::errc() && stop == end;
}

}  // namespace

#if defined(_WIN32)

long long parseInt64(char const * text, int base) {
    errno = 0;
    return _strtoi64_l(text, nullptr, base, cLocale());
}

double parseDouble(char const * text) {
    double value = 0;
    return parsePlainDouble(text, &value) ? value : _strtod_l(text, nullptr, cLocale());
}

#else

long long parseInt64(char const * text, int base) {
    errno = 0;
    return strtoll_l(text, nullptr, base, cLocale());
}

double parseDouble(char const * text) {
    double value = 0;
    return parsePlainDouble(text, &value) ? value : strtod_l(text, nullptr, cLocale());
}

#endif

int parseInt32(char const * text) { return saturate32(parseInt64(text, 10)); }

int truncateToInt32(double value) {
    // Deliberate: out of range gives the smallest value, not the nearest: it is what the processors
    // gave on which the callers were written. NaN fails the comparison too.
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<std::int32_t>(value)
                                                         : std::numeric_limits<std::int32_t>::min();
}

long long truncateToInt64(double value) {
    return value >= -9223372036854775808.0 && value < 9223372036854775808.0
               ? static_cast<std::int64_t>(value)
               : std::numeric_limits<std::int64_t>::min();
}

}  // namespace tvk::platform
