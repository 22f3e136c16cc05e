#include "tvk/text/StringUtil.h"

#include <gmock/gmock.h>
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
#include "tests/support/AllocationFailure.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/ReferenceSplit.h"
#include "tests/support/TextBytes.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {
namespace {

using namespace std::literals;
using test::AllocationCounter;
using test::AllocationFailure;
using test::bytesOf;
using test::CommaLocale;
using test::ExactBuffer;
using test::textOf;

static_assert(StringUtil::npos == 0xffffffffu);
static_assert(std::is_same_v<decltype(StringUtil::npos), unsigned int const>);
static_assert(!std::is_default_constructible_v<StringUtil>);

constexpr unsigned int NPOS = StringUtil::npos;

/// Texts of few different bytes, among them NUL and one of 0x80 and above, so that much is found.
class RandomTexts {
public:
    explicit RandomTexts(unsigned int seed) : random_(seed) {}

    unsigned int below(unsigned int bound) { return static_cast<unsigned int>(random_()) % bound; }

    std::string text(unsigned int longest) {
        static constexpr char BYTES[] = {'a', 'b', ',', '\0', '\xE3'};
        std::string bytes(below(longest + 1), ' ');
        unsigned int const kinds = 1 + below(std::size(BYTES));
        std::generate(bytes.begin(), bytes.end(), [&] { return BYTES[below(kinds)]; });
        return bytes;
    }

private:
    std::mt19937 random_;
};

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

struct EndsRow {
    std::string_view text;
    char const * part;
    bool starts;
    bool ends;
};

TEST(StringUtil, TestsStartAndEndAgainstPlainText) {
    constexpr EndsRow ROWS[] = {
        {"abc", "abc", true, true},        {"abc", "ab", true, false},
        {"abc", "bc", false, true},        {"abc", "b", false, false},
        {"abc", "", true, true},           {"", "", true, true},
        {"", "a", false, false},           {"abc", "abcd", false, false},
        {"abc", "xabc", false, false},     {"abc", "AB", false, false},
        {"\xFF\xFE", "\xFF", true, false}, {"\xFF\xFE", "\xFE", false, true},
        {"a\0b"sv, "a", true, false},      {"a\0b"sv, "ab", false, false},
        {"a\0b"sv, "b", false, true},      {"\0ab"sv, "ab", false, true},
    };
    for (EndsRow const & row : ROWS) {
        SCOPED_TRACE(std::string(row.text) + " and " + row.part);
        CString const text = textOf(row.text);
        auto const length = static_cast<unsigned int>(std::strlen(row.part));
        ExactBuffer const part(std::string_view(row.part));  // no NUL behind it
        EXPECT_EQ(StringUtil::startsWith(text, row.part), row.starts);
        EXPECT_EQ(StringUtil::startsWith(text, part, length), row.starts);
        EXPECT_EQ(StringUtil::endsWith(text, row.part), row.ends);
        EXPECT_EQ(StringUtil::endsWith(text, part, length), row.ends);
    }
}

TEST(StringUtil, TestsNoMoreBytesThanCounted) {
    EXPECT_TRUE(StringUtil::startsWith("abc", "abx", 2));
    EXPECT_FALSE(StringUtil::startsWith("abc", "abx", 3));
    EXPECT_TRUE(StringUtil::startsWith("abc", "x", 0));
    EXPECT_TRUE(StringUtil::endsWith("abc", "bcx", 2));
    EXPECT_FALSE(StringUtil::endsWith("abc", "bcx", 3));
    EXPECT_TRUE(StringUtil::endsWith("abc", "x", 0));
    EXPECT_TRUE(StringUtil::endsWith("", "x", 0));
}

TEST(StringUtil, DeliberateCountedTestsEndAtANulInBoth) {
    EXPECT_TRUE(StringUtil::startsWith("abc", "abc", 4));
    EXPECT_TRUE(StringUtil::startsWith("abc", "abc", 0xffffffffu));
    EXPECT_FALSE(StringUtil::startsWith("abc", "abcd", 4));
    EXPECT_FALSE(StringUtil::startsWith("abcd", "abc", 4));
    EXPECT_TRUE(StringUtil::startsWith(textOf("a\0b"sv), "a\0c", 3));
    EXPECT_TRUE(StringUtil::endsWith(textOf("xa\0b"sv), "a\0c", 3));
    EXPECT_FALSE(StringUtil::endsWith(textOf("xa\0b"sv), "b\0b", 3));
}

TEST(StringUtil, EndsWithNothingThatIsLongerThanTheText) {
    // As an int, the last three would be negative, and the place to compare behind the text.
    for (unsigned int const length : {4u, 0x7fffffffu, 0x80000000u, 0x80000001u, 0xffffffffu}) {
        EXPECT_FALSE(StringUtil::endsWith("abc", "abc", length)) << length;
        EXPECT_FALSE(StringUtil::endsWith("", "", length)) << length;
    }
    EXPECT_FALSE(StringUtil::endsWith("abc", std::string(5000, 'c').c_str()));
}

bool sameUpTo(char const * left, char const * right, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        if (left[i] != right[i]) {
            return false;
        }
        if (left[i] == '\0') {
            return true;
        }
    }
    return true;
}

TEST(StringUtil, StartAndEndAgreeWithASlowModelOnRandomTexts) {
    RandomTexts random(9102);
    for (int round = 0; round < 50000; ++round) {
        std::string const bytes = random.text(8);
        std::string const part = random.text(4);
        CString const text = textOf(bytes);
        std::string const terminated = part.c_str();
        // Counting one byte more takes in the NUL behind the part.
        unsigned int const counted = random.below(static_cast<unsigned int>(part.size()) + 2);
        SCOPED_TRACE(::testing::PrintToString(bytes) + " and " + ::testing::PrintToString(part) +
                     ", " + std::to_string(counted));

        ASSERT_EQ(StringUtil::startsWith(text, part.c_str()),
                  sameUpTo(bytes.c_str(), part.c_str(), terminated.size()));
        ASSERT_EQ(StringUtil::startsWith(text, part.c_str(), counted),
                  sameUpTo(bytes.c_str(), part.c_str(), counted));
        ASSERT_EQ(StringUtil::endsWith(text, part.c_str()),
                  terminated.size() <= bytes.size() &&
                      sameUpTo(bytes.c_str() + (bytes.size() - terminated.size()), part.c_str(),
                               terminated.size()));
        ASSERT_EQ(StringUtil::endsWith(text, part.c_str(), counted),
                  counted <= bytes.size() &&
                      sameUpTo(bytes.c_str() + (bytes.size() - counted), part.c_str(), counted));
        ASSERT_EQ(StringUtil::startsWith(text, textOf(part)),
                  bytes.find(part) != std::string::npos);
    }
}

struct FindRow {
    std::string_view text;
    unsigned int start;
    std::string_view what;
    unsigned int index;
};

TEST(StringUtil, FindsTheFirstMatch) {
    constexpr FindRow ROWS[] = {
        {"abcabc", 0, "bc", 1},
        {"abcabc", 1, "bc", 1},
        {"abcabc", 2, "bc", 4},
        {"abcabc", 5, "bc", NPOS},
        {"abcabc", 6, "bc", NPOS},
        {"abcabc", 7, "bc", NPOS},
        {"abc", 0, "x", NPOS},
        {"abc", 0, "abcd", NPOS},
        {"", 0, "a", NPOS},
        {"abc", 0, "", 0},
        {"abc", 2, "", 2},
        {"abc", 3, "", 3},
        {"abc", 4, "", NPOS},
        {"", 0, "", 0},
        {"a\0b"sv, 0, "b", 2},
        {"a\0b"sv, 0, "\0b"sv, 1},
        {"ab", 0, "\0"sv, NPOS},  // not the terminator
        {"\x82\xA0", 0, "\xA0", 1},
        {"abc", 0x7fffffff, "", NPOS},
        {"abc", 0x80000000, "a", NPOS},
        {"abc", 0x80000000, "", NPOS},
        {"abc", 0xffffffff, "a", NPOS},
        {"", 0xffffffff, "", NPOS},
    };
    for (FindRow const & row : ROWS) {
        SCOPED_TRACE(std::string(row.what) + " in " + std::string(row.text));
        EXPECT_EQ(StringUtil::find(textOf(row.text), row.start, textOf(row.what)), row.index);
        if (row.start == 0) {
            EXPECT_EQ(StringUtil::find(textOf(row.text), textOf(row.what)), row.index);
        }
    }
}

unsigned int slowFind(std::string const & text, std::size_t start, std::string const & what) {
    for (std::size_t i = start; i + what.size() <= text.size(); ++i) {
        if (text.compare(i, what.size(), what) == 0) {
            return static_cast<unsigned int>(i);
        }
    }
    return NPOS;
}

TEST(StringUtil, FindAgreesWithASlowModelOnRandomTexts) {
    RandomTexts random(9103);
    for (int round = 0; round < 50000; ++round) {
        std::string const text = random.text(20);
        std::string const what = random.text(4);
        unsigned int const start = random.below(24);
        ASSERT_EQ(StringUtil::find(textOf(text), start, textOf(what)), slowFind(text, start, what))
            << ::testing::PrintToString(what) << " in " << ::testing::PrintToString(text)
            << " from " << start;
        ASSERT_EQ(StringUtil::find(textOf(text), textOf(what)), slowFind(text, 0, what));
    }
}

struct PartRow {
    unsigned int start;
    unsigned int count;
    char const * part;
};

TEST(StringUtil, TakesPartsOfAText) {
    constexpr PartRow ROWS[] = {
        {1, NPOS, "bc"},  {1, 1, "b"},   {5, NPOS, ""},         {5, 1, ""},
        {0, NPOS, "abc"}, {0, 3, "abc"}, {0, 4, "abc"},         {2, 2, "c"},
        {3, 1, ""},       {1, 0, ""},    {1, 0x7fffffff, "bc"}, {0x7fffffff, 0x7fffffff, ""},
    };
    for (PartRow const & row : ROWS) {
        EXPECT_EQ(StringUtil::subString("abc", row.start, row.count), row.part)
            << row.start << ", " << row.count;
    }
    EXPECT_EQ(bytesOf(StringUtil::subString(textOf("a\0bc"sv), 1, 2)), "\0b"sv);
    EXPECT_EQ(StringUtil::subString("", 0, NPOS), "");
}

TEST(StringUtil, DeliberatePartsReadNumbersBeyondIntAsNegativeOnes) {
    constexpr PartRow ROWS[] = {
        {0x80000000, NPOS, "abc"}, {0x80000000, 2, "ab"}, {0xffffffff, 1, "a"},
        {0xffffffff, NPOS, "abc"}, {0, 0x80000000, ""},   {1, 0xfffffffe, ""},
    };
    for (PartRow const & row : ROWS) {
        EXPECT_EQ(StringUtil::subString("abc", row.start, row.count), row.part)
            << row.start << ", " << row.count;
    }
}

TEST(StringUtil, LooksWithoutAllocation) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const text = "a text that is looked at";
    CString const part = "looked";
    AllocationCounter const allocations;
    bool const seen =
        StringUtil::startsWith(text, part) && StringUtil::startsWith(text, "a text") &&
        StringUtil::startsWith(text, "a textile", 6) && StringUtil::endsWith(text, "at") &&
        StringUtil::endsWith(text, "attic", 2) && StringUtil::find(text, part) == 15 &&
        !StringUtil::isEmpty(text) && StringUtil::parseInt(text) == 0 &&
        !StringUtil::parseBooleanValue(text) && StringUtil::toString(true).GetLength() == 4;
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_TRUE(seen);
}

// Splitting.

std::vector<std::string> piecesOf(std::string_view text, std::string_view delimiter) {
    std::vector<std::string> pieces;
    for (CString const & piece : StringUtil::split(textOf(text), textOf(delimiter))) {
        pieces.push_back(bytesOf(piece));
    }
    return pieces;
}

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

TEST(StringUtil, SplitAgreesWithASlowModelOnRandomTexts) {
    RandomTexts random(9104);
    for (int round = 0; round < 50000; ++round) {
        std::string const text = random.text(24);
        std::string const delimiter = random.text(3);
        ASSERT_EQ(piecesOf(text, delimiter), test::referenceSplit(text, delimiter))
            << ::testing::PrintToString(text) << " by " << ::testing::PrintToString(delimiter);
    }
}

TEST(StringUtil, SplitsLongTexts) {
    for (std::size_t const count : {7u, 8u, 9u, 1000u}) {
        std::vector<std::string> const pieces(count, std::string(100, 'p'));
        EXPECT_EQ(piecesOf(test::joined(pieces, ","), ","), pieces);
        EXPECT_EQ(piecesOf(test::joined(pieces, "::"), "::"), pieces);
    }
}

TEST(StringUtil, SplitSharesATextThatStaysWhole) {
    CString const text = "no delimiter in here";
    EXPECT_EQ(StringUtil::split(text, ",").front().GetString(), text.GetString());
    EXPECT_EQ(StringUtil::split(text, "").front().GetString(), text.GetString());
}

TEST(StringUtil, SplitOutOfMemoryThrowsAndLeaksNothing) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations do not fail here";
    }
    CString const text = "a,b,c";
    CString const comma = ",";
    for (long long allowed = 0; allowed < 4; ++allowed) {  // the vector, then each piece
        AllocationFailure failure(allowed);
        EXPECT_THROW(StringUtil::split(text, comma), std::bad_alloc) << allowed;
    }
}

// Padding. Both operations work in a block that ends with the buffer; `front` bytes stand before it.

using PadFunction = int (*)(unsigned char *, unsigned int, int, CString, unsigned char, int,
                            ErrorInfo *);

struct Padded {
    int result;
    std::string bytes;
    int code;
    std::string message;

    friend bool operator==(Padded const &, Padded const &) = default;
    friend void PrintTo(Padded const & padded, std::ostream * output) {
        *output << padded.result << ' ' << ::testing::PrintToString(padded.bytes) << ' '
                << padded.code << ' ' << padded.message;
    }
};

struct PadCall {
    unsigned int front;
    unsigned int bufferSize;
    int offset;
    std::string text;
    int length;
};

constexpr char FRESH = '.';
constexpr unsigned char PAD = '0';

Padded padded(PadFunction function, PadCall const & call) {
    ExactBuffer block(std::string(call.front + call.bufferSize, FRESH));
    auto * const buffer = reinterpret_cast<unsigned char *>(block.data()) + call.front;
    ErrorInfo error;
    int const result =
        function(buffer, call.bufferSize, call.offset, textOf(call.text), PAD, call.length, &error);
    EXPECT_EQ(error.getDomain(), "System");  // what a fresh record has
    return {result, std::string(block.data(), block.size()), error.getErrorCode(),
            bytesOf(error.getErrorMessage())};
}

struct PadRow {
    char const * name;
    PadCall call;
    int result;
    char const * left;
    char const * right;
};

TEST(StringUtil, PadsAFieldOnEitherSide) {
    PadRow const rows[] = {
        {"shorter", {0, 5, 0, "abc", 5}, 2, "00abc", "abc00"},
        {"as long", {0, 3, 0, "abc", 3}, 0, "abc", "abc"},
        {"longer", {0, 3, 0, "abcdef", 3}, -3, "abc", "abc"},
        {"empty text", {0, 4, 0, "", 4}, 4, "0000", "0000"},
        {"inside a record", {0, 10, 3, "ab", 4}, 2, "...00ab...", "...ab00..."},
        {"at the end of the buffer", {0, 5, 2, "x", 3}, 2, "..00x", "..x00"},
        {"empty field", {0, 3, 1, "", 0}, 0, "...", "..."},
        {"empty field behind the last byte", {0, 3, 3, "", 0}, 0, "...", "..."},
        {"text for an empty field", {0, 3, 1, "ab", 0}, -2, "...", "..."},
        {"empty buffer", {0, 0, 0, "ab", 0}, -2, "", ""},
        {"NUL in the text", {0, 4, 0, std::string("a\0b", 3), 4}, 1, "0a\0b", "a\0b0"},
        {"Japanese", {0, 3, 0, "\x82\xA0", 3}, 1, "0\x82\xA0", "\x82\xA0\x30"},
    };
    for (PadRow const & row : rows) {
        SCOPED_TRACE(row.name);
        std::size_t const size = row.call.bufferSize;
        EXPECT_EQ(padded(StringUtil::leftPadString, row.call),
                  (Padded{row.result, std::string(row.left, size), 0, ""}));
        EXPECT_EQ(padded(StringUtil::rightPadString, row.call),
                  (Padded{row.result, std::string(row.right, size), 0, ""}));
    }
}

TEST(StringUtil, RefusesAFieldBeyondTheBuffer) {
    PadCall const calls[] = {
        {0, 10, 6, "abc", 5},
        {0, 10, 10, "abc", 1},
        {0, 10, 11, "", 0},
        {0, 0, 0, "", 1},
        {0, 10, INT_MAX, "abc", INT_MAX},  // 0xfffffffe; a signed sum would overflow
        {0, 10, INT_MAX, "abc", 1},        // 0x80000000, which would be negative
        {0, 10, -1, "abc", 0},             // 0xffffffff
        {0, 10, 0, "abc", -1},
        {0, 10, -8, "abc", 7},
        {0, 10, INT_MIN, "abc", 0},
    };
    for (PadCall const & call : calls) {
        SCOPED_TRACE(std::to_string(call.offset) + " + " + std::to_string(call.length));
        std::string const untouched(call.bufferSize, FRESH);
        EXPECT_EQ(padded(StringUtil::leftPadString, call),
                  (Padded{0, untouched, 2, "leftPadString: offset + len > buf.length"}));
        EXPECT_EQ(padded(StringUtil::rightPadString, call),
                  (Padded{0, untouched, 2, "rightPadString: offset + len > buf.length"}));
    }
}

TEST(StringUtil, RefusesAFieldSilentlyWithoutARecord) {
    unsigned char buffer[] = {1, 2, 3};
    EXPECT_EQ(StringUtil::leftPadString(buffer, 3, 2, "ab", PAD, 2, nullptr), 0);
    EXPECT_EQ(StringUtil::rightPadString(buffer, 3, 2, "ab", PAD, 2, nullptr), 0);
    EXPECT_THAT(buffer, ::testing::ElementsAre(1, 2, 3));
    EXPECT_EQ(StringUtil::leftPadString(buffer, 3, 1, "a", PAD, 2, nullptr), 1);
    EXPECT_THAT(buffer, ::testing::ElementsAre(1, '0', 'a'));
}

TEST(StringUtil, ARefusedFieldLeavesTheDomainOfTheRecord) {
    ErrorInfo error(3, "elsewhere", 9, "before", nullptr);
    unsigned char buffer[] = {1};
    EXPECT_EQ(StringUtil::leftPadString(buffer, 1, 1, "a", PAD, 1, &error), 0);
    EXPECT_EQ(error.getDomain(), "elsewhere");
    EXPECT_EQ(error.getComponentCode(), 3);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageSize);
    EXPECT_EQ(error.getErrorMessage(), "leftPadString: offset + len > buf.length");
}

TEST(StringUtil, PaddingThatFitsLeavesTheRecord) {
    ErrorInfo error(3, "elsewhere", 9, "before", nullptr);
    unsigned char buffer[1];
    EXPECT_EQ(StringUtil::rightPadString(buffer, 1, 0, "ab", PAD, 1, &error), -1);
    EXPECT_EQ(error.getErrorCode(), 9);
    EXPECT_EQ(error.getErrorMessage(), "before");
}

TEST(StringUtil, DeliberatePaddingReachesBackByANegativeOffset) {
    PadRow const rows[] = {
        {"across the start", {3, 4, -2, "abc", 5}, 2, ".00abc.", ".abc00."},
        {"up to the start", {3, 0, -3, "ab", 3}, 1, "0ab", "ab0"},
        {"one byte", {1, 4, -1, "ab", 1}, -1, "a....", "a...."},
    };
    for (PadRow const & row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(padded(StringUtil::leftPadString, row.call),
                  (Padded{row.result, row.left, 0, ""}));
        EXPECT_EQ(padded(StringUtil::rightPadString, row.call),
                  (Padded{row.result, row.right, 0, ""}));
    }
}

TEST(StringUtil, ANegativeLengthThatIsNotRefusedWritesNothing) {
    struct Row {
        int offset;
        std::string text;
        int length;
        int result;
    };
    Row const rows[] = {
        {5, "", -3, -3},
        {5, "ab", -3, -5},
        {1, "", -1, -1},
        {INT_MAX, "", -INT_MAX, -INT_MAX},
        {INT_MIN, "", INT_MIN, INT_MIN},
        {INT_MIN, "a", INT_MIN, INT_MAX},  // the difference wraps
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(std::to_string(row.offset) + " + " + std::to_string(row.length));
        PadCall const call = {0, 4, row.offset, row.text, row.length};
        Padded const untouched = {row.result, "....", 0, ""};
        EXPECT_EQ(padded(StringUtil::leftPadString, call), untouched);
        EXPECT_EQ(padded(StringUtil::rightPadString, call), untouched);
    }
}

bool exceeds(PadCall const & call) {
    auto const sum = (static_cast<long long>(call.offset) + call.length) & 0xffffffffLL;
    return sum > static_cast<long long>(call.bufferSize);
}

/// Decides for each byte of the field on its own.
Padded slowPadded(bool left, PadCall const & call) {
    Padded expected = {0, std::string(call.front + call.bufferSize, FRESH), 0, ""};
    if (exceeds(call)) {
        expected.code = 2;
        expected.message = left ? "leftPadString: offset + len > buf.length"
                                : "rightPadString: offset + len > buf.length";
        return expected;
    }
    auto const textLength = static_cast<int>(call.text.size());
    expected.result = call.length - textLength;
    int const textBegin = left && expected.result > 0 ? expected.result : 0;
    for (int i = 0; i < call.length; ++i) {
        int const inText = i - textBegin;
        bool const isText = inText >= 0 && inText < textLength;
        expected.bytes[static_cast<std::size_t>(static_cast<int>(call.front) + call.offset + i)] =
            isText ? call.text[static_cast<std::size_t>(inText)] : static_cast<char>(PAD);
    }
    return expected;
}

TEST(StringUtil, PaddingAgreesWithASlowModelOnRandomFields) {
    RandomTexts random(9105);
    for (int round = 0; round < 50000; ++round) {
        PadCall call;
        call.front = random.below(4);
        call.bufferSize = random.below(12);
        call.offset = static_cast<int>(random.below(12)) - static_cast<int>(call.front);
        call.text = random.text(8);
        call.length = static_cast<int>(random.below(14)) - 2;
        ASSERT_EQ(padded(StringUtil::leftPadString, call), slowPadded(true, call));
        ASSERT_EQ(padded(StringUtil::rightPadString, call), slowPadded(false, call));
    }
}

TEST(StringUtil, PaddingCopiesNoText) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const text(std::string(1000, 'x').c_str());
    std::vector<unsigned char> buffer(2000);
    AllocationCounter const allocations;
    int const pads = StringUtil::leftPadString(buffer.data(), 2000, 0, text, PAD, 2000, nullptr) +
                     StringUtil::rightPadString(buffer.data(), 2000, 0, text, PAD, 2000, nullptr);
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(pads, 2000);
}

}  // namespace
}  // namespace tvk
