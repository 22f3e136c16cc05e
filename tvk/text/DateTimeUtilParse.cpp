// Reading: DateTimeUtil::parseDateTime.

#include <cstddef>
#include <ctime>

#include "tvk/platform/CharacterClass.h"
#include "tvk/platform/Clock.h"
#include "tvk/text/DateTimeUtil.h"
#include "tvk/text/detail/DateTimePattern.h"

namespace tvk {

namespace {

using detail::DateTimeNumbers;
using detail::DateTimePattern;
using enum detail::DateTimeNumber;

/// What a text must show before a shape is tried on it.
enum class Condition {
    NONE,
    SEPARATOR,  ///< one of "/-." behind the year; the shape takes it as its separator
    COLON,      ///< a colon behind the hour
};
constexpr int SEPARATOR_PLACE = 4;
constexpr int COLON_PLACE = 2;

struct Shape {
    DateTimePattern pattern;
    Condition condition;
};

/// A text is read in the first shape of its length whose condition it meets.
constexpr Shape SHAPES[] = {
    {"YYYY?MM?DD hh:mm:ss.uuuuuu", Condition::SEPARATOR},
    {"YYYY?MM?DD hh:mm:ss.fff", Condition::SEPARATOR},
    {"YYYYMMDDhhmmssuuuuuu", Condition::NONE},
    {"YYYYMMDDhhmmssfff", Condition::NONE},
    {"hh:mm:ss.uuuuuu", Condition::NONE},
    {"YYYYMMDDhhmmss", Condition::NONE},
    {"hh:mm:ss.fff", Condition::COLON},
    {"hhmmssuuuuuu", Condition::NONE},
    {"YYYY?MM?DD", Condition::SEPARATOR},
    {"hhmmssfff", Condition::NONE},
    {"hh:mm:ss", Condition::COLON},
    {"YYYYMMDD", Condition::NONE},
    {"hhmmss", Condition::NONE},
};

/// The character at a place of a text, NUL where the text ends before it. No shape can tell the
/// difference to whatever may stand behind the end: a date with separators takes 5 characters at
/// least, and each shape with or without a colon 3.
char characterAt(char const * text, int place) {
    for (int i = 0; i < place; ++i) {
        if (text[i] == '\0') {
            return '\0';
        }
    }
    return text[place];
}

bool meets(char const * text, Condition condition) {
    switch (condition) {
        case Condition::SEPARATOR: {
            char const separator = characterAt(text, SEPARATOR_PLACE);
            return separator == '/' || separator == '-' || separator == '.';
        }
        case Condition::COLON:
            return characterAt(text, COLON_PLACE) == ':';
        case Condition::NONE:
            break;
    }
    return true;
}

DateTimePattern const * patternOf(char const * text, unsigned int length) {
    for (Shape const & shape : SHAPES) {
        if (shape.pattern.length == length && meets(text, shape.condition)) {
            return &shape.pattern;
        }
    }
    return nullptr;
}

/// Reads a text as sscanf does: white space before a number is skipped and not counted in the width,
/// a sign is counted, fewer digits will do, and another character must stand as it is.
class Scanner {
public:
    Scanner(char const * text, char separator) : next_(text), separator_(separator) {}

    bool scan(DateTimePattern const & pattern, DateTimeNumbers * numbers) {
        for (std::size_t i = 0; i < pattern.fieldCount; ++i) {
            DateTimePattern::Field const & field = pattern.fields[i];
            if (!scanBefore(field.before) || !scanNumber(field.width, &(*numbers)[field.number])) {
                return false;
            }
        }
        return true;
    }

private:
    bool scanBefore(char before) {
        if (before == DateTimePattern::NOTHING || before == ' ') {
            return true;  // a blank is any white space or none: the number behind it skips that
        }
        if (*next_ != (before == DateTimePattern::SEPARATOR ? separator_ : before)) {
            return false;
        }
        ++next_;
        return true;
    }

    bool scanNumber(int width, int * number) {
        while (platform::isSpace(*next_)) {
            ++next_;
        }
        bool const isNegative = *next_ == '-';
        if (isNegative || *next_ == '+') {
            ++next_;
            --width;
        }
        if (!platform::isDigit(*next_)) {
            return false;
        }
        int value = 0;
        for (; width > 0 && platform::isDigit(*next_); --width) {
            value = value * 10 + (*next_++ - '0');
        }
        *number = isNegative ? -value : value;
        return true;
    }

    char const * next_;
    char separator_;
};

void setToday(DateTimeNumbers * numbers) {
    std::tm today{};
    platform::localTime(platform::currentSeconds(), &today);
    (*numbers)[YEAR] = today.tm_year + 1900;
    (*numbers)[MONTH] = today.tm_mon + 1;
    (*numbers)[DAY] = today.tm_mday;
}

}  // namespace

bool DateTimeUtil::parseDateTime(char const * text, unsigned int length, timeval * time) {
    DateTimePattern const * const pattern = patternOf(text, length);
    if (pattern == nullptr) {
        return false;
    }
    DateTimeNumbers numbers;
    if (!Scanner(text, characterAt(text, SEPARATOR_PLACE)).scan(*pattern, &numbers)) {
        return false;
    }
    if (!pattern->hasDate()) {
        setToday(&numbers);
    }
    // A shape has one kind of fraction at most; the other one is 0.
    toEpochTime(numbers[YEAR], numbers[MONTH], numbers[DAY], numbers[HOUR], numbers[MINUTE],
                numbers[SECOND], numbers[MILLISECOND] * 1000 + numbers[MICROSECOND], time);
    return true;
}

}  // namespace tvk
