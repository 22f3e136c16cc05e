#include "tvk/text/StringUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {
namespace {

using namespace std::literals;
using test::AllocationCounter;
using test::CommaLocale;
using test::ExactBuffer;

static_assert(StringUtil::npos == 0xffffffffu);
static_assert(std::is_same_v<decltype(StringUtil::npos), unsigned int const>);
static_assert(!std::is_default_constructible_v<StringUtil>);

constexpr unsigned int NPOS = StringUtil::npos;

/// A text of these bytes, NUL included, read from a block that ends with them.
CString textOf(std::string_view bytes) {
    ExactBuffer const block(bytes);
    return CString(block.data(), static_cast<int>(block.size()));
}

std::string bytesOf(CString const & text) {
    return std::string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

std::vector<std::string> piecesOf(std::string_view text, std::string_view delimiter) {
    std::vector<std::string> pieces;
    for (CString const & piece : StringUtil::split(textOf(text), textOf(delimiter))) {
        pieces.push_back(bytesOf(piece));
    }
    return pieces;
}

// Making text.

TEST(StringUtil, RepeatsACharacter) {
    EXPECT_EQ(StringUtil::stringByRepeating('x', 3), "xxx");
    EXPECT_EQ(StringUtil::stringByRepeating('x', 0), "");
    EXPECT_EQ(bytesOf(StringUtil::stringByRepeating('\0', 2)), "\0\0"sv);
    EXPECT_EQ(bytesOf(StringUtil::stringByRepeating('\xFF', 1000)), std::string(1000, '\xFF'));
}

TEST(StringUtil, RefusesToRepeatBeyondTheLongestText) {
    for (unsigned int const count : {0x80000000u, 0x80000001u, 0xfffffffeu, 0xffffffffu}) {
        EXPECT_THROW(StringUtil::stringByRepeating('x', count), std::bad_alloc) << count;
    }
}

CString vformatted(char const * format, ...) TVK_PRINTF_LIKE(1, 2);
CString vformatted(char const * format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CString const result = StringUtil::vformat(format, arguments);
    va_end(arguments);
    return result;
}

TEST(StringUtil, FormatsLikePrintf) {
    std::string const longText(5000, 'y');
    EXPECT_EQ(StringUtil::format("plain"), "plain");
    EXPECT_EQ(StringUtil::format("%s", ""), "");
    EXPECT_EQ(StringUtil::format("%d|%5.2f|%-4s|%x|%%", -7, 1.5, "ab", 255u), "-7| 1.50|ab  |ff|%");
    EXPECT_EQ(StringUtil::format("<%s>", longText.c_str()), ("<" + longText + ">").c_str());
    EXPECT_EQ(bytesOf(StringUtil::format("a%cb", 0)), "a\0b"sv);
    EXPECT_EQ(vformatted("%s=%lld", "n", -5000000000LL), "n=-5000000000");
}

TEST(StringUtil, FormatsAndReadsTheSameUnderACommaLocale) {
    CommaLocale const comma;
    if (!comma.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    EXPECT_EQ(StringUtil::format("%.2f", 1.5), "1.50");
    EXPECT_EQ(vformatted("%.2f", 1.5), "1.50");
    EXPECT_EQ(StringUtil::parseDouble("1.5"), 1.5);
    EXPECT_EQ(StringUtil::parseDouble("1,5"), 1);
}

TEST(StringUtil, WritesNumbersInDecimal) {
    EXPECT_EQ(StringUtil::toString(0), "0");
    EXPECT_EQ(StringUtil::toString(INT_MAX), "2147483647");
    EXPECT_EQ(StringUtil::toString(INT_MIN), "-2147483648");
    EXPECT_EQ(StringUtil::toString(UINT_MAX), "4294967295");
    EXPECT_EQ(StringUtil::toString(0u), "0");
    EXPECT_EQ(StringUtil::toString(-1L), "-1");
    EXPECT_EQ(StringUtil::toString(4294967295UL), "4294967295");
    EXPECT_EQ(StringUtil::toString(LLONG_MAX), "9223372036854775807");
    EXPECT_EQ(StringUtil::toString(LLONG_MIN), "-9223372036854775808");
    EXPECT_EQ(StringUtil::toString(ULLONG_MAX), "18446744073709551615");
}

TEST(StringUtil, DeliberateToStringOfALongTakesItsLow32Bits) {
    if constexpr (sizeof(long) > 4) {
        EXPECT_EQ(StringUtil::toString(static_cast<long>(0x1'0000'0005LL)), "5");
        EXPECT_EQ(StringUtil::toString(static_cast<long>(0x80000000LL)), "-2147483648");
        EXPECT_EQ(StringUtil::toString(LONG_MAX), "-1");
        EXPECT_EQ(StringUtil::toString(LONG_MIN), "0");
        EXPECT_EQ(StringUtil::toString(static_cast<unsigned long>(0x1'0000'0005ULL)), "5");
        EXPECT_EQ(StringUtil::toString(ULONG_MAX), "4294967295");
    }
    EXPECT_EQ(StringUtil::toString(static_cast<long>(INT_MIN)), "-2147483648");
}

TEST(StringUtil, GivesTheSameTwoTextsForBooleans) {
    EXPECT_EQ(StringUtil::toString(true), "true");
    EXPECT_EQ(StringUtil::toString(false), "false");
    EXPECT_EQ(&StringUtil::toString(true), &StringUtil::toString(true));
    EXPECT_EQ(&StringUtil::toString(false), &StringUtil::toString(false));
}

TEST(StringUtil, WritesWhatPrintfWritesForRandomNumbers) {
    std::mt19937_64 random(9101);
    for (int round = 0; round < 20000; ++round) {
        auto const bits = static_cast<unsigned long long>(random()) >> (random() % 64);
        auto const number = static_cast<long long>(random() % 2 == 0 ? bits : 0 - bits);
        char expected[32];
        std::snprintf(expected, sizeof expected, "%lld", number);
        ASSERT_EQ(StringUtil::toString(number), expected);
        std::snprintf(expected, sizeof expected, "%llu", bits);
        ASSERT_EQ(StringUtil::toString(bits), expected);
        auto const small = static_cast<int>(static_cast<unsigned int>(bits));
        std::snprintf(expected, sizeof expected, "%d", small);
        ASSERT_EQ(StringUtil::toString(small), expected);
        ASSERT_EQ(StringUtil::toString(static_cast<long>(small)), expected);
        std::snprintf(expected, sizeof expected, "%u", static_cast<unsigned int>(bits));
        ASSERT_EQ(StringUtil::toString(static_cast<unsigned int>(bits)), expected);
    }
}

// Reading text.

struct IntRow {
    char const * text;
    int value;
};

constexpr IntRow INTS[] = {
    {"0", 0},
    {"12", 12},
    {"12x", 12},
    {"x", 0},
    {"", 0},
    {"-", 0},
    {"+7", 7},
    {"-7", -7},
    {"--7", 0},
    {"+-7", 0},
    {" \t\n\v\f\r12", 12},
    {"\b12", 0},
    {"- 7", 0},
    {"007", 7},
    {"0x10", 0},
    {"1e3", 1},
    {"1.9", 1},
    {"2147483647", INT_MAX},
    {"2147483648", INT_MAX},
    {"-2147483648", INT_MIN},
    {"-2147483649", INT_MIN},
    {"4294967296", INT_MAX},
    {"99999999999999999999999", INT_MAX},
    {"-99999999999999999999999", INT_MIN},
};

TEST(StringUtil, ReadsIntsAndLongsAndSaturatesAt32Bits) {
    for (IntRow const & row : INTS) {
        EXPECT_EQ(StringUtil::parseInt(row.text), row.value) << row.text;
        EXPECT_EQ(StringUtil::parseLong(row.text), row.value) << row.text;
    }
    EXPECT_EQ(StringUtil::parseInt(textOf("1\0002"sv)), 1);
}

struct LongLongRow {
    char const * text;
    int base;
    long long value;
    int error;
};

constexpr LongLongRow LONG_LONGS[] = {
    {"ff", 16, 255, 0},
    {"0xFF", 16, 255, 0},
    {"ff", 10, 0, 0},
    {"0xff", 0, 255, 0},
    {"017", 0, 15, 0},
    {"017", 10, 17, 0},
    {"zz", 36, 1295, 0},
    {"101", 2, 5, 0},
    {" -12x", 10, -12, 0},
    {"9223372036854775807", 10, LLONG_MAX, 0},
    {"9223372036854775808", 10, LLONG_MAX, ERANGE},
    {"-9223372036854775808", 10, LLONG_MIN, 0},
    {"-9223372036854775809", 10, LLONG_MIN, ERANGE},
};

TEST(StringUtil, ReadsLongLongsInAnyBaseAndLeavesErrnoToTheCaller) {
    for (LongLongRow const & row : LONG_LONGS) {
        errno = EDOM;
        EXPECT_EQ(StringUtil::parseLongLong(row.text, row.base), row.value) << row.text;
        EXPECT_EQ(errno, row.error) << row.text;
    }
}

TEST(StringUtil, ReadsDoublesLikeStrtod) {
    EXPECT_EQ(StringUtil::parseDouble(" -1.25e2x"), -125);
    EXPECT_EQ(StringUtil::parseDouble("0x1p4"), 16);
    EXPECT_EQ(StringUtil::parseDouble("x"), 0);
    EXPECT_EQ(StringUtil::parseDouble(""), 0);
    EXPECT_EQ(StringUtil::parseDouble("1e999"), HUGE_VAL);
    EXPECT_TRUE(std::isnan(StringUtil::parseDouble("nan")));
}

TEST(StringUtil, ReadsFiveWordsAsTrue) {
    for (char const * const text :
         {"1", "true", "TRUE", "tRuE", "t", "T", "yes", "YES", "yEs", "y", "Y"}) {
        EXPECT_TRUE(StringUtil::parseBooleanValue(text)) << text;
    }
    for (char const * const text :
         {"",  "0",  "01",    "11",    "1 ",    " 1", "on",   "false", "no",   "n",
          "f", "tr", "truex", " true", "true ", "ye", "yess", "tt",    "\xF4", "2"}) {
        EXPECT_FALSE(StringUtil::parseBooleanValue(text)) << text;
    }
}

// Looking at text.

TEST(StringUtil, TellsEmptyTextByItsLength) {
    EXPECT_TRUE(StringUtil::isEmpty(""));
    EXPECT_TRUE(StringUtil::isEmpty(CString()));
    EXPECT_FALSE(StringUtil::isEmpty(" "));
    EXPECT_FALSE(StringUtil::isEmpty(textOf("\0"sv)));
}

TEST(StringUtil, TrimsAsciiWhiteSpaceInPlace) {
    CString text = " \t\n\v\f\r a b \r\n";
    CString & result = StringUtil::trim(text);
    EXPECT_EQ(&result, &text);
    EXPECT_EQ(text, "a b");
    CString blank = " \t ";
    EXPECT_EQ(StringUtil::trim(blank), "");
    CString other = textOf(" \0 \xA0 "sv);
    EXPECT_EQ(bytesOf(StringUtil::trim(other)), "\0 \xA0"sv);
}

TEST(StringUtil, DeliberateStartsWithOfTwoTextsTestsContainment) {
    EXPECT_TRUE(StringUtil::startsWith(CString("abc"), CString("bc")));
    EXPECT_TRUE(StringUtil::startsWith(CString("abc"), CString("abc")));
    EXPECT_TRUE(StringUtil::startsWith(CString("abc"), CString("")));
    EXPECT_TRUE(StringUtil::startsWith(CString(""), CString("")));
    EXPECT_FALSE(StringUtil::startsWith(CString("abc"), CString("ac")));
    EXPECT_FALSE(StringUtil::startsWith(CString("abc"), CString("abcd")));
    EXPECT_TRUE(StringUtil::startsWith(textOf("a\0b"sv), textOf("\0b"sv)));
    EXPECT_FALSE(StringUtil::startsWith(textOf("a\0b"sv), textOf("\0c"sv)));
}

// Splitting.

struct SplitRow {
    std::string_view text;
    std::string_view delimiter;
    std::vector<std::string> pieces;
};

TEST(StringUtil, SplitsAtEachDelimiter) {
    SplitRow const rows[] = {
        {"a,b", ",", {"a", "b"}},
        {"a,", ",", {"a", ""}},
        {"a,,b", ",", {"a", "", "b"}},
        {"a,,", ",", {"a", "", ""}},
        {"", ",", {""}},
        {"", "", {""}},
        {"a,b", "", {"a,b"}},
        {"abc", ",", {"abc"}},
        {"a--b", "--", {"a", "b"}},
        {"a---b", "--", {"a", "-b"}},
        {"a-b", "--", {"a-b"}},
        {"a----", "--", {"a", "", ""}},
        {"a", "ab", {"a"}},
        {"a,b", "a,b,c", {"a,b"}},
        {"a\0b\0"sv, "\0"sv, {"a", "b", ""}},
        {"a\0,b"sv, "\0,"sv, {"a", "b"}},
        {"x\xFFy", "\xFF", {"x", "y"}},
        {"a,b;c", ",;", {"a,b;c"}},
    };
    for (SplitRow const & row : rows) {
        EXPECT_EQ(piecesOf(row.text, row.delimiter), row.pieces)
            << row.text << " by " << row.delimiter;
    }
}

TEST(StringUtil, DeliberateSplitMakesNoPieceBeforeALeadingDelimiter) {
    SplitRow const rows[] = {
        {",a", ",", {"a"}},    {",,a", ",", {"", "a"}},   {",", ",", {""}},
        {",,", ",", {"", ""}}, {"--a", "--", {"a"}},      {"---a", "--", {"-a"}},
        {"--", "--", {""}},    {"/a/b", "/", {"a", "b"}},
    };
    for (SplitRow const & row : rows) {
        EXPECT_EQ(piecesOf(row.text, row.delimiter), row.pieces)
            << row.text << " by " << row.delimiter;
    }
}

}  // namespace
}  // namespace tvk
