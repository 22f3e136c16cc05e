#include "tvk/text/detail/DateTimePattern.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using tvk::detail::DateTimeNumbers;
using tvk::detail::DateTimePattern;
using enum tvk::detail::DateTimeNumber;

/// The fields as text: the character in front, the number and the width of each.
std::string described(DateTimePattern const & pattern) {
    std::string text;
    for (std::size_t i = 0; i < pattern.fieldCount; ++i) {
        DateTimePattern::Field const & field = pattern.fields[i];
        text += field.before == DateTimePattern::NOTHING ? '_' : field.before;
        text += DateTimePattern::LETTERS[static_cast<std::size_t>(field.number)];
        text += std::to_string(field.width);
    }
    return text;
}

TEST(DateTimePattern, TakesAPictureApart) {
    constexpr DateTimePattern PATTERN = "YYYY?MM?DD hh:mm:ss.uuuuuu";
    EXPECT_EQ(described(PATTERN), "_Y4?M2?D2 h2:m2:s2.u6");
    EXPECT_EQ(PATTERN.length, 26U);
    EXPECT_TRUE(PATTERN.hasDate());
}

TEST(DateTimePattern, TellsNumbersApartByTheirLetters) {
    constexpr DateTimePattern PATTERN = "hhmmssfff";
    EXPECT_EQ(described(PATTERN), "_h2_m2_s2_f3");
    EXPECT_EQ(PATTERN.length, 9U);
    EXPECT_FALSE(PATTERN.hasDate());
}

TEST(DateTimeNumbers, StartAtZeroAndKeepEachNumber) {
    DateTimeNumbers numbers;
    EXPECT_EQ(numbers[YEAR], 0);
    EXPECT_EQ(numbers[MICROSECOND], 0);
    numbers[YEAR] = 2014;
    numbers[MICROSECOND] = 678901;
    EXPECT_EQ(numbers[YEAR], 2014);
    EXPECT_EQ(numbers[MONTH], 0);
    EXPECT_EQ(numbers[MILLISECOND], 0);
    EXPECT_EQ(numbers[MICROSECOND], 678901);
}

}  // namespace
