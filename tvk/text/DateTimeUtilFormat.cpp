// Writing: the format functions of DateTimeUtil.

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
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

/// What "%0*d" gives: a sign counts in the width, and zeros stand behind it. Returns the place behind
/// the number.
char * writeNumber(char * out, int number, int width) {
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

/// The text of any numbers, with any separator.
CString oddText(DateTimePattern const & pattern, DateTimeNumbers const & numbers, char separator) {
    char text[DateTimePattern::MAX_FIELDS * (1 + MAX_NUMBER_LENGTH) + 1];
    char * end = text;
    for (std::size_t i = 0; i < pattern.fieldCount; ++i) {
        DateTimePattern::Field const & field = pattern.fields[i];
        if (field.before != DateTimePattern::NOTHING) {
            *end++ = field.before == DateTimePattern::SEPARATOR ? separator : field.before;
        }
        end = writeNumber(end, numbers[field.number], field.width);
    }
    *end = '\0';
    static_assert(sizeof text > MAX_LENGTH);
    text[MAX_LENGTH] = '\0';
    return CString(text);  // up to the first NUL, which may be the separator
}

constexpr int powerOf10(int exponent) { return exponent == 0 ? 1 : 10 * powerOf10(exponent - 1); }

template <int WIDTH>
bool fits(int number) {
    return static_cast<unsigned int>(number) < static_cast<unsigned int>(powerOf10(WIDTH));
}

/// "00" to "99", one behind the other.
consteval std::array<char, 200> makeDigitPairs() {
    std::array<char, 200> pairs{};
    for (std::size_t i = 0; i < pairs.size(); i += 2) {
        pairs[i] = static_cast<char>('0' + i / 20);
        pairs[i + 1] = static_cast<char>('0' + i / 2 % 10);
    }
    return pairs;
}

constexpr std::array<char, 200> DIGIT_PAIRS = makeDigitPairs();

/// Writes a number that fits its width, with all digits of that.
template <int WIDTH>
void writeDigits(char * out, unsigned int number) {
    if constexpr (WIDTH == 1) {
        *out = static_cast<char>('0' + number);
    } else {
        std::memcpy(out + WIDTH - 2, &DIGIT_PAIRS[std::size_t{number % 100} * 2], 2);
        if constexpr (WIDTH > 2) {
            writeDigits<WIDTH - 2>(out, number / 100);
        }
    }
}

template <DateTimePattern::Field FIELD>
void writeField(char ** out, DateTimeNumbers const & numbers, char separator) {
    if constexpr (FIELD.before != DateTimePattern::NOTHING) {
        *(*out)++ = FIELD.before == DateTimePattern::SEPARATOR ? separator : FIELD.before;
    }
    writeDigits<FIELD.width>(*out, static_cast<unsigned int>(numbers[FIELD.number]));
    *out += FIELD.width;
}

template <DateTimePattern PATTERN, std::size_t... I>
CString textOf(DateTimeNumbers const & numbers, char separator,
               std::index_sequence<I...> /*fields*/) {
    constexpr int LENGTH = static_cast<int>(PATTERN.length);
    static_assert(LENGTH <= static_cast<int>(MAX_LENGTH));
    if (!(fits<PATTERN.fields[I].width>(numbers[PATTERN.fields[I].number]) && ...) ||
        (PATTERN.hasSeparator() && separator == '\0')) {
        return oddText(PATTERN, numbers, separator);
    }
    CString text;
    char * out = text.GetBuffer(LENGTH);
    (writeField<PATTERN.fields[I]>(&out, numbers, separator), ...);
    text.ReleaseBuffer(LENGTH);
    return text;
}

template <DateTimePattern PATTERN>
CString textOf(timeval const & time, char separator = DateTimePattern::NOTHING) {
    return textOf<PATTERN>(numbersOf(time), separator,
                           std::make_index_sequence<PATTERN.fieldCount>());
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
