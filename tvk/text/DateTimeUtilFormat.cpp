// Writing: the format functions of DateTimeUtil.

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <ctime>
#include <utility>

#include "tvk/platform/Clock.h"
#include "tvk/text/DateTimeUtil.h"
#include "tvk/text/detail/DateTimePattern.h"

namespace tvk {

namespace {

using detail::DateTimeNumbers;
using detail::DateTimePattern;
using enum detail::DateTimeNumber;

constexpr std::size_t MAX_LENGTH = 31;
constexpr std::size_t MAX_NUMBER_LENGTH = 11;  // -2147483648
constexpr std::size_t STRFTIME_ROOM = 40;

DateTimeNumbers numbersOf(timeval const & time) {
    std::tm local{};
    platform::localTime(time.tv_sec, &local);
    DateTimeNumbers numbers;
    numbers[YEAR] = platform::low32(local.tm_year + 1900LL);
    numbers[MONTH] = local.tm_mon + 1;
    numbers[DAY] = local.tm_mday;
    numbers[HOUR] = local.tm_hour;
    numbers[MINUTE] = local.tm_min;
    numbers[SECOND] = local.tm_sec;
    numbers[MILLISECOND] = platform::low32(time.tv_usec / 1000);
    numbers[MICROSECOND] = platform::low32(time.tv_usec);
    return numbers;
}

/// A number that doesn't fit its width, or a negative one: a sign counts in the width, and zeros
/// stand behind it.
char * writeOddNumber(char * out, int number, int width) {
    char digits[MAX_NUMBER_LENGTH];
    char const * const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    char const * from = digits;
    if (number < 0) {
        *out++ = *from++;
        --width;
    }
    for (auto missing = width - (end - from); missing > 0; --missing) {
        *out++ = '0';
    }
    return std::copy(from, end, out);
}

constexpr int powerOf10(int exponent) { return exponent == 0 ? 1 : 10 * powerOf10(exponent - 1); }

/// What "%0*d" gives. Returns the place behind it.
template <int WIDTH>
char * writeNumber(char * out, int number) {
    if (number < 0 || number >= powerOf10(WIDTH)) {
        return writeOddNumber(out, number, WIDTH);
    }
    for (int i = WIDTH; i-- > 0; number /= 10) {
        out[i] = static_cast<char>('0' + number % 10);
    }
    return out + WIDTH;
}

template <DateTimePattern::Field FIELD>
char * writeField(char * out, DateTimeNumbers const & numbers, char separator) {
    if constexpr (FIELD.before != DateTimePattern::NOTHING) {
        *out++ = FIELD.before == DateTimePattern::SEPARATOR ? separator : FIELD.before;
    }
    return writeNumber<FIELD.width>(out, numbers[FIELD.number]);
}

template <DateTimePattern PATTERN, std::size_t... I>
char * writeFields(char * out, DateTimeNumbers const & numbers, char separator,
                   std::index_sequence<I...> /*fields*/) {
    ((out = writeField<PATTERN.fields[I]>(out, numbers, separator)), ...);
    return out;
}

template <DateTimePattern PATTERN>
CString textOf(timeval const & time, char separator = DateTimePattern::NOTHING) {
    char text[PATTERN.fieldCount * (1 + MAX_NUMBER_LENGTH) + 1];
    char * const end = writeFields<PATTERN>(text, numbersOf(time), separator,
                                            std::make_index_sequence<PATTERN.fieldCount>());
    *end = '\0';
    static_assert(sizeof text > MAX_LENGTH);
    text[MAX_LENGTH] = '\0';
    return CString(text);  // up to the first NUL, which may be the separator
}

}  // namespace

CString DateTimeUtil::formatShortDisplayDateTime(timeval const & time, char separator) {
    return textOf<"YYYY?MM?DD hh:mm:ss">(time, separator);
}

CString DateTimeUtil::formatDisplayDateTime(timeval const & time, char separator) {
    return textOf<"YYYY?MM?DD hh:mm:ss.fff">(time, separator);
}

CString DateTimeUtil::formatDisplayDateTime2(timeval const & time, char separator) {
    return textOf<"YYYY?MM?DD hh:mm:ss.uuuuuu">(time, separator);
}

CString DateTimeUtil::formatDisplayDate(timeval const & time, char separator) {
    return textOf<"YYYY?MM?DD">(time, separator);
}

CString DateTimeUtil::formatDisplayTime(timeval const & time) { return textOf<"hh:mm:ss">(time); }

CString DateTimeUtil::formatDisplayTime1(timeval const & time) {
    return textOf<"hh:mm:ss.fff">(time);
}

CString DateTimeUtil::formatDisplayTime2(timeval const & time) {
    return textOf<"hh:mm:ss.uuuuuu">(time);
}

CString DateTimeUtil::formatShortDateTime(timeval const & time) {
    return textOf<"YYYYMMDDhhmmss">(time);
}

CString DateTimeUtil::formatDateTime(timeval const & time) {
    return textOf<"YYYYMMDDhhmmssfff">(time);
}

CString DateTimeUtil::formatDateTime2(timeval const & time) {
    return textOf<"YYYYMMDDhhmmssuuuuuu">(time);
}

CString DateTimeUtil::formatDate(timeval const & time) { return textOf<"YYYYMMDD">(time); }

CString DateTimeUtil::formatTime(timeval const & time) { return textOf<"hhmmss">(time); }

CString DateTimeUtil::formatTime1(timeval const & time) { return textOf<"hhmmssfff">(time); }

CString DateTimeUtil::formatTime2(timeval const & time) { return textOf<"hhmmssuuuuuu">(time); }

CString DateTimeUtil::formatTime(timeval const & time, char const * format) {
    std::tm local{};
    platform::localTime(time.tv_sec, &local);
    char text[STRFTIME_ROOM];
    std::size_t const length = std::strftime(text, sizeof text, format, &local);
    return CString(text, static_cast<int>(length));  // 0 for a text without room
}

}  // namespace tvk
