#include "tvk/platform/Numbers.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "tests/support/CommaLocale.h"

namespace {

using namespace tvk::platform;
using tvk::test::CommaLocale;

constexpr int INT_LOWEST = std::numeric_limits<std::int32_t>::min();
constexpr int INT_HIGHEST = std::numeric_limits<std::int32_t>::max();
constexpr long long LONG_LOWEST = std::numeric_limits<std::int64_t>::min();
constexpr long long LONG_HIGHEST = std::numeric_limits<std::int64_t>::max();

std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }

struct Int32Row {
    char const * text;
    int value;
};

constexpr Int32Row INT32_ROWS[] = {
    {"", 0},
    {"0", 0},
    {"-0", 0},
    {"42", 42},
    {"+42", 42},
    {"-42", -42},
    {"007", 7},
    {" \t\n\v\f\r17", 17},
    {"\b17", 0},
    {"\xa0"
     "17",
     0},
    {"- 5", 0},
    {"--5", 0},
    {"+-5", 0},
    {"+", 0},
    {"-", 0},
    {"12abc", 12},
    {"12 34", 12},
    {"12.9", 12},
    {"1e3", 1},
    {"0x10", 0},
    {"abc", 0},
    {"2147483646", INT_HIGHEST - 1},
    {"2147483647", INT_HIGHEST},
    {"2147483648", INT_HIGHEST},
    {"4294967295", INT_HIGHEST},
    {"4294967296", INT_HIGHEST},
    {"-2147483647", INT_LOWEST + 1},
    {"-2147483648", INT_LOWEST},
    {"-2147483649", INT_LOWEST},
    {"9223372036854775807", INT_HIGHEST},
    {"9223372036854775808", INT_HIGHEST},
    {"-9223372036854775809", INT_LOWEST},
    {"99999999999999999999999999", INT_HIGHEST},
    {"-99999999999999999999999999", INT_LOWEST},
    {"0000000000000000000000000000012", 12},
};

TEST(Numbers, ReadsInt32LikeAtoiAndSaturates) {
    for (Int32Row const & row : INT32_ROWS) {
        EXPECT_EQ(parseInt32(row.text), row.value) << '"' << row.text << '"';
    }
}

struct Int64Row {
    char const * text;
    int base;
    long long value;
    int error;
};

constexpr Int64Row INT64_ROWS[] = {
    {"", 10, 0, 0},
    {"x", 10, 0, 0},
    {" -12x", 10, -12, 0},
    {"9223372036854775806", 10, LONG_HIGHEST - 1, 0},
    {"9223372036854775807", 10, LONG_HIGHEST, 0},
    {"9223372036854775808", 10, LONG_HIGHEST, ERANGE},
    {"-9223372036854775808", 10, LONG_LOWEST, 0},
    {"-9223372036854775809", 10, LONG_LOWEST, ERANGE},
    {"99999999999999999999", 10, LONG_HIGHEST, ERANGE},
    {"ff", 16, 255, 0},
    {"0xFf", 16, 255, 0},
    {"0xFf", 0, 255, 0},
    {"0xFf", 10, 0, 0},
    {"010", 0, 8, 0},
    {"010", 10, 10, 0},
    {"0x", 16, 0, 0},
    {"-0x10", 16, -16, 0},
    {"zz", 36, 1295, 0},
    {"102", 2, 2, 0},
    {"7fffffffffffffff", 16, LONG_HIGHEST, 0},
    {"8000000000000000", 16, LONG_HIGHEST, ERANGE},
};

TEST(Numbers, ReadsInt64LikeStrtollAndSetsErrno) {
    for (Int64Row const & row : INT64_ROWS) {
        SCOPED_TRACE(row.text);
        errno = EDOM;
        EXPECT_EQ(parseInt64(row.text, row.base), row.value);
        EXPECT_EQ(errno, row.error);
    }
}

struct DoubleRow {
    char const * text;
    double value;
};

constexpr double INFINITE = std::numeric_limits<double>::infinity();

constexpr DoubleRow DOUBLE_ROWS[] = {
    {"", 0},
    {"abc", 0},
    {"0", 0},
    {"-0", -0.0},
    {"-0.0", -0.0},
    {"1.5", 1.5},
    {"+1.5", 1.5},
    {"-1.5", -1.5},
    {"- 1.5", 0},
    {" \t\n\v\f\r1.5", 1.5},
    {"\xa0"
     "1.5",
     0},
    {".5", 0.5},
    {"-.5", -0.5},
    {"5.", 5},
    {".", 0},
    {"-", 0},
    {"1.5rubbish", 1.5},
    {"1.5 2.5", 1.5},
    {"1,5", 1},
    {"1.5.6", 1.5},
    {"1e3", 1000},
    {"1E+3", 1000},
    {"1e-3", 0.001},
    {"1e", 1},
    {"1e+", 1},
    {"1ex", 1},
    {"1e400", INFINITE},
    {"-1e400", -INFINITE},
    {"1e99999999999999999999", INFINITE},
    {"0e99999999999999999999", 0},
    {"1e-400", 0},
    {"-1e-400", -0.0},
    {"4.9406564584124654e-324", std::numeric_limits<double>::denorm_min()},
    {"2.2250738585072011e-308", 2.2250738585072011e-308},
    {"1.7976931348623157e308", std::numeric_limits<double>::max()},
    {"1.7976931348623159e308", INFINITE},
    {"0x10", 16},
    {"0x1.8p1", 3},
    {"-0X.8", -0.5},
    {"0x", 0},
    {"inf", INFINITE},
    {"-INF", -INFINITE},
    {"infinity", INFINITE},
    {"Infinit", INFINITE},
    {"9007199254740993", 9007199254740992},
    {"00000000000000000000000001", 1},
    {"0.1", 0.1},
    {"123456789012345678901234567890", 123456789012345678901234567890.0},
};

TEST(Numbers, ReadsDoublesLikeStrtod) {
    for (DoubleRow const & row : DOUBLE_ROWS) {
        EXPECT_EQ(bitsOf(parseDouble(row.text)), bitsOf(row.value)) << '"' << row.text << '"';
    }
    for (char const * text : {"nan", "NaN", "nan(123)", "nan rubbish"}) {
        EXPECT_TRUE(std::isnan(parseDouble(text))) << text;
    }
    EXPECT_TRUE(std::signbit(parseDouble("-nan")));
}

// The test program runs in the "C" locale, so the C library's own function is the model.
TEST(Numbers, AgreesWithStrtodOnRandomTexts) {
    static constexpr char LETTERS[] = "0123456789012345678900..--++eE  xXpabnif(),\t";
    std::mt19937 random(20240611);
    std::uniform_int_distribution<std::size_t> letter(0, sizeof LETTERS - 2);
    std::uniform_int_distribution<int> length(0, 30);
    for (int round = 0; round < 200000; ++round) {
        std::string text;
        for (int left = length(random); left > 0; --left) {
            text += LETTERS[letter(random)];
        }
        double const expected = std::strtod(text.c_str(), nullptr);
        double const actual = parseDouble(text.c_str());
        ASSERT_EQ(bitsOf(actual), bitsOf(expected)) << '"' << text << '"';
    }
}

TEST(Numbers, AgreesWithStrtodOnPrintedDoubles) {
    std::mt19937_64 random(77);
    for (int round = 0; round < 100000; ++round) {
        double const value = std::bit_cast<double>(random());
        char text[64];
        std::snprintf(text, sizeof text, round % 2 == 0 ? "%.17g" : "%.6e", value);
        ASSERT_EQ(bitsOf(parseDouble(text)), bitsOf(std::strtod(text, nullptr))) << text;
    }
}

TEST(Numbers, ReadsTheSameUnderACommaLocale) {
    CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    ASSERT_EQ(std::strtod("1,5", nullptr), 1.5) << "the locale is not in force";
    EXPECT_EQ(parseDouble("1.5"), 1.5);
    EXPECT_EQ(parseDouble(" 1.5"), 1.5);
    EXPECT_EQ(parseDouble("1,5"), 1);
    EXPECT_EQ(parseInt32("1.500"), 1);
    EXPECT_EQ(parseInt64("1.500", 10), 1);
}

struct Truncation32Row {
    double value;
    int truncated;
};

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

TEST(Numbers, DeliberateTruncationGivesTheSmallestValueOutOfRange) {
    EXPECT_EQ(truncateToInt32(1e10), INT_LOWEST);
    EXPECT_EQ(truncateToInt32(NOT_A_NUMBER), INT_LOWEST);
    EXPECT_EQ(truncateToInt64(1e20), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(NOT_A_NUMBER), LONG_LOWEST);
}

TEST(Numbers, TruncatesDoublesTo32Bits) {
    Truncation32Row const rows[] = {
        {0.0, 0},
        {-0.0, 0},
        {0.9999999999999999, 0},
        {-0.9999999999999999, 0},
        {1.0, 1},
        {-1.0, -1},
        {1.9999999999999998, 1},
        {-1.9999999999999998, -1},
        {2147483646.9999998, INT_HIGHEST - 1},
        {2147483647.0, INT_HIGHEST},
        {2147483647.9999998, INT_HIGHEST},
        {2147483648.0, INT_LOWEST},
        {-2147483647.9999998, INT_LOWEST + 1},
        {-2147483648.0, INT_LOWEST},
        {-2147483648.9999995, INT_LOWEST},
        {-2147483649.0, INT_LOWEST},
        {4294967296.0, INT_LOWEST},
        {1e300, INT_LOWEST},
        {-1e300, INT_LOWEST},
        {INFINITE, INT_LOWEST},
        {-INFINITE, INT_LOWEST},
        {NOT_A_NUMBER, INT_LOWEST},
        {-NOT_A_NUMBER, INT_LOWEST},
        {std::numeric_limits<double>::denorm_min(), 0},
    };
    for (Truncation32Row const & row : rows) {
        EXPECT_EQ(truncateToInt32(row.value), row.truncated) << row.value;
    }
}

// Walks over the doubles next to a border, where a cast would be undefined on one side.
TEST(Numbers, TruncatesEachDoubleAroundTheBordersOf32Bits) {
    for (double const border : {2147483647.0, 2147483648.0, -2147483648.0, -2147483649.0, 0.0}) {
        double value = border;
        for (int step = 0; step < 5000; ++step) {
            value = std::nextafter(value, -INFINITE);
        }
        for (int step = 0; step < 10000; ++step) {
            double const whole = std::trunc(value);
            bool const fits = whole >= -2147483648.0 && whole <= 2147483647.0;
            ASSERT_EQ(truncateToInt32(value), fits ? static_cast<int>(whole) : INT_LOWEST) << value;
            value = std::nextafter(value, INFINITE);
        }
    }
}

TEST(Numbers, TruncatesDoublesTo64Bits) {
    double const border = 9223372036854775808.0;
    EXPECT_EQ(truncateToInt64(0.9), 0);
    EXPECT_EQ(truncateToInt64(-0.9), 0);
    EXPECT_EQ(truncateToInt64(4503599627370495.5), 4503599627370495);
    EXPECT_EQ(truncateToInt64(-4503599627370495.5), -4503599627370495);
    EXPECT_EQ(truncateToInt64(9007199254740993.0), 9007199254740992);
    EXPECT_EQ(truncateToInt64(std::nextafter(border, 0)), LONG_HIGHEST - 1023);
    EXPECT_EQ(truncateToInt64(border), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(std::nextafter(border, INFINITE)), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(std::nextafter(-border, 0)), LONG_LOWEST + 1024);
    EXPECT_EQ(truncateToInt64(-border), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(std::nextafter(-border, -INFINITE)), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(INFINITE), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(-INFINITE), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(NOT_A_NUMBER), LONG_LOWEST);
    EXPECT_EQ(truncateToInt64(1e300), LONG_LOWEST);
}

TEST(Numbers, CutsToTheLow32Bits) {
    EXPECT_EQ(low32(0), 0);
    EXPECT_EQ(low32(-1), -1);
    EXPECT_EQ(low32(0x7fffffff), INT_HIGHEST);
    EXPECT_EQ(low32(0x80000000), INT_LOWEST);
    EXPECT_EQ(low32(0xffffffff), -1);
    EXPECT_EQ(low32(0x100000000), 0);
    EXPECT_EQ(low32(0x123456789), 0x23456789);
    EXPECT_EQ(low32(-0x80000000LL), INT_LOWEST);
    EXPECT_EQ(low32(-0x80000001LL), INT_HIGHEST);
    EXPECT_EQ(low32(LONG_HIGHEST), -1);
    EXPECT_EQ(low32(LONG_LOWEST), 0);
}

TEST(Numbers, SaturatesAt32Bits) {
    EXPECT_EQ(saturate32(0), 0);
    EXPECT_EQ(saturate32(-7), -7);
    EXPECT_EQ(saturate32(0x7fffffff), INT_HIGHEST);
    EXPECT_EQ(saturate32(0x80000000), INT_HIGHEST);
    EXPECT_EQ(saturate32(LONG_HIGHEST), INT_HIGHEST);
    EXPECT_EQ(saturate32(-0x80000000LL), INT_LOWEST);
    EXPECT_EQ(saturate32(-0x80000001LL), INT_LOWEST);
    EXPECT_EQ(saturate32(LONG_LOWEST), INT_LOWEST);
}

}  // namespace
