#pragma once

#include <array>
#include <cstddef>

namespace tvk::detail {

/// The numbers that a text of a time can show, as it shows them: the full year, the month from 1.
enum class DateTimeNumber {
    YEAR,
    MONTH,
    DAY,
    HOUR,
    MINUTE,
    SECOND,
    MILLISECOND,
    MICROSECOND,
};

/// One value for each DateTimeNumber.
class DateTimeNumbers {
public:
    constexpr int & operator[](DateTimeNumber number) { return values_[place(number)]; }
    constexpr int operator[](DateTimeNumber number) const { return values_[place(number)]; }

private:
    static constexpr std::size_t place(DateTimeNumber number) {
        return static_cast<std::size_t>(number);
    }

    std::array<int, 8> values_{};
};

/// A shape of text of a time, made from a picture of it such as "YYYY?MM?DD hh:mm:ss.fff". A run of
/// one of the letters YMDhmsfu is a number as wide as the run: year, month, day, hour, minute, second,
/// milliseconds, microseconds. '?' is the separator of the date, which comes with the text; any
/// other character is itself. At most one of these stands in front of a number, none at the end.
///
/// All is public so that a pattern can be a template argument.
struct DateTimePattern {
    static constexpr char NOTHING = '\0';
    static constexpr char SEPARATOR = '?';
    static constexpr std::size_t MAX_FIELDS = 7;

    struct Field {
        DateTimeNumber number;
        char before;  ///< stands in front of the number, or NOTHING
        int width;
        std::size_t place;  ///< of the number's first digit
    };

    template <std::size_t SIZE>
    consteval DateTimePattern(char const (&picture)[SIZE]) : length(SIZE - 1) {
        char before = NOTHING;
        for (std::size_t at = 0; at < length;) {
            if (!isNumber(picture[at])) {
                before = picture[at++];
                continue;
            }
            Field & field = fields[fieldCount++];
            field = {numberOf(picture[at]), before, 0, at};
            before = NOTHING;
            for (char const letter = picture[at]; at < length && picture[at] == letter; ++at) {
                ++field.width;
            }
        }
    }

    static constexpr DateTimeNumber numberOf(char letter) {
        DateTimeNumber number{};
        for (char const * at = LETTERS; *at != letter; ++at) {
            number = static_cast<DateTimeNumber>(static_cast<int>(number) + 1);
        }
        return number;
    }

    static constexpr bool isNumber(char character) {
        for (char const * at = LETTERS; *at != '\0'; ++at) {
            if (*at == character) {
                return true;
            }
        }
        return false;
    }

    constexpr bool hasDate() const { return fields[0].number == DateTimeNumber::YEAR; }

    constexpr bool hasSeparator() const { return fields[1].before == SEPARATOR; }

    static constexpr char LETTERS[] = "YMDhmsfu";  ///< in the order of DateTimeNumber

    Field fields[MAX_FIELDS]{};
    std::size_t fieldCount = 0;
    std::size_t length;
};

}  // namespace tvk::detail
