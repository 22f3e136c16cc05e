#include "examples/support/Printable.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;

struct Row {
    char const * name;
    std::string_view text;
    std::size_t limit;
    std::string_view shown;
};

constexpr Row ROWS[] = {
    {"nothing", "", 10, ""},
    {"plain", "plain ~", 10, "plain ~"},
    {"as long as allowed", "12345", 5, "12345"},
    {"one byte too long", "123456", 5, "12345..."},
    {"no room at all", "1", 0, "..."},
    {"control characters", "a\0b\n\x1B[2J\x7F"sv, 20, "a\\x00b\\x0A\\x1B[2J\\x7F"},
    {"control characters beyond ASCII", "\xC2\x80\xC2\x9B", 20, "\\xC2\\x80\\xC2\\x9B"},
    {"the first character behind them", "\xC2\xA0", 20, "\xC2\xA0"},
    {"a character fits", "a\xE3\x81\x82z", 4, "a\xE3\x81\x82..."},
    {"a character is not cut", "a\xE3\x81\x82z", 3, "a..."},
    {"characters of 2, 3 and 4 bytes", "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", 20,
     "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {"trail bytes alone", "\x82\x82", 20, "\\x82\\x82"},
    {"cut at the end", "\xE3\x81", 20, "\\xE3\\x81"},
    {"cut in the middle", "\xE3\x41", 20, "\\xE3A"},
    {"bytes that start nothing", "\xC1\xF5\xFF", 20, "\\xC1\\xF5\\xFF"},
};

TEST(Printable, CutsAndEscapes) {
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(printable(row.text, row.limit), row.shown);
    }
}

TEST(Printable, BringsTextOfTheCodePageToUtf8First) {
    // The trail byte of the second character is a backslash.
    EXPECT_EQ(printableAnsi("\x82\xA0\x83\x5C\n", 20), "\xE3\x81\x82\xE3\x82\xBD\\x0A");
    EXPECT_EQ(printableAnsi("\x82\xA0\x83\x5C", 3), "\xE3\x81\x82...");
}

}  // namespace
