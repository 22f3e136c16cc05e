// Reading: DateTimeUtil::parseDateTime.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <utility>

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

/// How a plain text of a pattern looks: it has its length, and each number has all its digits.
template <DateTimePattern PATTERN>
class PlainText {
public:
    /// Reads the numbers of a text. False where it is not plain, and then nothing behind its end was
    /// looked at.
    template <std::size_t... I>
    static bool read(char const * text, char separator, DateTimeNumbers * numbers,
                     std::index_sequence<I...> /*fields*/) {
        if (std::memchr(text, '\0', PATTERN.length) != nullptr) {
            return false;
        }
        Bytes digits;
        if (!isPlain(text, static_cast<unsigned char>(separator), &digits)) {
            return false;
        }
        (((*numbers)[PATTERN.fields[I].number] = numberAt<PATTERN.fields[I]>(digits)), ...);
        return true;
    }

private:
    using Word = std::uint64_t;
    static constexpr Word HIGH_BITS = 0x8080808080808080;
    static constexpr std::size_t SIZE = std::max(PATTERN.length, sizeof(Word));
    using Bytes = std::array<unsigned char, SIZE>;

    struct Picture {
        Bytes plain{};       ///< '0' for a digit, else the character, but 0 for the separator
        Bytes separators{};  ///< 1 for the separator
        Bytes reserve{};  ///< what a byte of a plain text, less `plain`, can grow by within 7 bits
    };

    static constexpr Picture makePicture() {
        constexpr unsigned char OF_DIGIT = 0x7f - 9;
        constexpr unsigned char OF_CHARACTER = 0x7f;
        Picture picture;
        picture.reserve.fill(OF_CHARACTER);
        for (std::size_t i = 0; i < PATTERN.fieldCount; ++i) {
            DateTimePattern::Field const & field = PATTERN.fields[i];
            if (field.before == DateTimePattern::SEPARATOR) {
                picture.separators[field.place - 1] = 1;
            } else if (field.before != DateTimePattern::NOTHING) {
                picture.plain[field.place - 1] = static_cast<unsigned char>(field.before);
            }
            std::fill_n(&picture.plain[field.place], field.width, '0');
            std::fill_n(&picture.reserve[field.place], field.width, OF_DIGIT);
        }
        return picture;
    }

    static Word wordAt(void const * bytes) {
        Word word;
        std::memcpy(&word, bytes, sizeof word);
        return word;
    }

    /// Compares eight bytes at a time with the picture; the last eight may overlap those before. What
    /// remains of a digit is its value, and 0 of any other character.
    static bool isPlain(char const * text, unsigned char separator, Bytes * digits) {
        static constexpr Picture PICTURE = makePicture();
        char padded[SIZE] = {};
        if constexpr (PATTERN.length < SIZE) {
            std::memcpy(padded, text, PATTERN.length);
            text = padded;
        }
        Word wrong = 0;
        for (std::size_t at = 0; at < SIZE; at += sizeof(Word)) {
            std::size_t const place = std::min(at, SIZE - sizeof(Word));
            Word const rest = wordAt(text + place) ^ wordAt(&PICTURE.plain[place]) ^
                              wordAt(&PICTURE.separators[place]) * separator;
            // A sum that carries into the byte beside it comes from a byte that is wrong itself.
            wrong |= rest | (rest + wordAt(&PICTURE.reserve[place]));
            std::memcpy(&(*digits)[place], &rest, sizeof rest);
        }
        return (wrong & HIGH_BITS) == 0;
    }

    template <DateTimePattern::Field FIELD>
    static int numberAt(Bytes const & digits) {
        int number = 0;
        for (int i = 0; i < FIELD.width; ++i) {
            number = number * 10 + digits[FIELD.place + static_cast<std::size_t>(i)];
        }
        return number;
    }
};

void setToday(DateTimeNumbers * numbers) {
    std::tm today{};
    platform::localTime(platform::currentSeconds(), &today);
    (*numbers)[YEAR] = today.tm_year + 1900;
    (*numbers)[MONTH] = today.tm_mon + 1;
    (*numbers)[DAY] = today.tm_mday;
}

/// Reads a text in a shape whose condition it meets.
template <DateTimePattern PATTERN>
bool parseAs(char const * text, timeval * time) {
    char const separator = characterAt(text, SEPARATOR_PLACE);
    DateTimeNumbers numbers;
    if (!PlainText<PATTERN>::read(text, separator, &numbers,
                                  std::make_index_sequence<PATTERN.fieldCount>()) &&
        !Scanner(text, separator).scan(PATTERN, &numbers)) {
        return false;
    }
    if constexpr (!PATTERN.hasDate()) {
        setToday(&numbers);
    }
    // A shape has one kind of fraction at most; the other one is 0.
    DateTimeUtil::toEpochTime(numbers[YEAR], numbers[MONTH], numbers[DAY], numbers[HOUR],
                              numbers[MINUTE], numbers[SECOND],
                              numbers[MILLISECOND] * 1000 + numbers[MICROSECOND], time);
    return true;
}

struct Shape {
    std::size_t length;
    Condition condition;
    bool (*parse)(char const * text, timeval * time);
};

template <DateTimePattern PATTERN>
constexpr Shape shaped(Condition condition) {
    return {PATTERN.length, condition, parseAs<PATTERN>};
}

/// A text is read in the first shape of its length whose condition it meets.
constexpr Shape SHAPES[] = {
    shaped<"YYYY?MM?DD hh:mm:ss.uuuuuu">(Condition::SEPARATOR),
    shaped<"YYYY?MM?DD hh:mm:ss.fff">(Condition::SEPARATOR),
    shaped<"YYYYMMDDhhmmssuuuuuu">(Condition::NONE),
    shaped<"YYYYMMDDhhmmssfff">(Condition::NONE),
    shaped<"hh:mm:ss.uuuuuu">(Condition::NONE),
    shaped<"YYYYMMDDhhmmss">(Condition::NONE),
    shaped<"hh:mm:ss.fff">(Condition::COLON),
    shaped<"hhmmssuuuuuu">(Condition::NONE),
    shaped<"YYYY?MM?DD">(Condition::SEPARATOR),
    shaped<"hhmmssfff">(Condition::NONE),
    shaped<"hh:mm:ss">(Condition::COLON),
    shaped<"YYYYMMDD">(Condition::NONE),
    shaped<"hhmmss">(Condition::NONE),
};

}  // namespace

bool DateTimeUtil::parseDateTime(char const * text, unsigned int length, timeval * time) {
    for (Shape const & shape : SHAPES) {
        if (shape.length == length && meets(text, shape.condition)) {
            return shape.parse(text, time);
        }
    }
    return false;
}

}  // namespace tvk
