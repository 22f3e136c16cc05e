#include "tvk/values/NumberData.h"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

#include "tests/support/AllocationCounter.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/PrintCString.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

using Number = RefCountedPtr<NumberData>;

static_assert(!std::is_destructible_v<NumberData>);
static_assert(!std::is_copy_assignable_v<NumberData>);

double const NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
double const INFINITE = std::numeric_limits<double>::infinity();

template <class T>
Number number(T value) {
    return new NumberData(value);
}

TEST(NumberData, KnowsItsKind) {
    EXPECT_TRUE(Number(new NumberData)->isInteger());
    EXPECT_TRUE(number(1)->isInteger());
    EXPECT_TRUE(number(1L)->isInteger());
    EXPECT_TRUE(number(1LL)->isInteger());
    EXPECT_FALSE(number(1.0)->isInteger());
    EXPECT_FALSE(number(1)->isDouble());
    EXPECT_TRUE(number(1.0)->isDouble());
    EXPECT_EQ(number(1.0)->getFieldType(), FLDTYPE_NUMBER);
}

TEST(NumberData, IsZeroWhenNothingIsGiven) {
    Number const zero(new NumberData);
    EXPECT_EQ(zero->longlongValue(), 0);
    EXPECT_EQ(zero->asString(), "0");
}

struct IntegerRow {
    long long value;
    int intValue;
    double doubleValue;
    char const * text;
};

IntegerRow const INTEGERS[] = {
    {0, 0, 0.0, "0"},
    {5, 5, 5.0, "5"},
    {-1, -1, -1.0, "-1"},
    {INT_MAX, INT_MAX, 2147483647.0, "2147483647"},
    {INT_MIN, INT_MIN, -2147483648.0, "-2147483648"},
    {2147483648LL, INT_MIN, 2147483648.0, "2147483648"},
    {4294967295LL, -1, 4294967295.0, "4294967295"},
    {4294967296LL, 0, 4294967296.0, "4294967296"},
    {4294967297LL, 1, 4294967297.0, "4294967297"},
    {-4294967297LL, -1, -4294967297.0, "-4294967297"},
    {9007199254740993LL, 1, 9007199254740992.0, "9007199254740993"},
    {LLONG_MAX, -1, 9223372036854775808.0, "9223372036854775807"},
    {LLONG_MIN, 0, -9223372036854775808.0, "-9223372036854775808"},
};

TEST(NumberData, ConvertsIntegers) {
    for (IntegerRow const & row : INTEGERS) {
        SCOPED_TRACE(row.text);
        Number const value = number(row.value);
        EXPECT_EQ(value->intValue(), row.intValue);
        EXPECT_EQ(value->longValue(), row.intValue);
        EXPECT_EQ(value->longlongValue(), row.value);
        EXPECT_EQ(value->doubleValue(), row.doubleValue);
        EXPECT_EQ(value->asString(), row.text);
        EXPECT_EQ(value->toString(), row.text);
    }
}

TEST(NumberData, ExtendsTheSignOfSmallerIntegers) {
    EXPECT_EQ(number(-1)->longlongValue(), -1);
    EXPECT_EQ(number(-1L)->longlongValue(), -1);
    EXPECT_EQ(number(INT_MIN)->longlongValue(), INT_MIN);
}

struct DoubleRow {
    double value;
    int intValue;
    long long longlongValue;
    char const * text;
};

DoubleRow const DOUBLES[] = {
    {0.0, 0, 0, "0.000000"},
    {-0.0, 0, 0, "-0.000000"},
    {1.5, 1, 1, "1.500000"},
    {2.5, 2, 2, "2.500000"},
    {-2.9, -2, -2, "-2.900000"},
    {0.0000004, 0, 0, "0.000000"},
    {0.0000006, 0, 0, "0.000001"},
    {2147483647.9, INT_MAX, 2147483647, "2147483647.900000"},
    {2147483648.0, INT_MIN, 2147483648, "2147483648.000000"},
    {3000000000.0, INT_MIN, 3000000000, "3000000000.000000"},
    {-2147483648.9, INT_MIN, -2147483648LL, "-2147483648.900000"},
    {-2147483649.0, INT_MIN, -2147483649LL, "-2147483649.000000"},
    {9223372036854774784.0, INT_MIN, 9223372036854774784LL, "9223372036854774784.000000"},
    {9223372036854775808.0, INT_MIN, LLONG_MIN, "9223372036854775808.000000"},
    {-9223372036854775808.0, INT_MIN, LLONG_MIN, "-9223372036854775808.000000"},
    {-9.3e18, INT_MIN, LLONG_MIN, "-9300000000000000000.000000"},
    {INFINITE, INT_MIN, LLONG_MIN, "inf"},
    {-INFINITE, INT_MIN, LLONG_MIN, "-inf"},
};

TEST(NumberData, ConvertsDoubles) {
    for (DoubleRow const & row : DOUBLES) {
        SCOPED_TRACE(row.text);
        Number const value = number(row.value);
        EXPECT_EQ(value->intValue(), row.intValue);
        EXPECT_EQ(value->longValue(), row.intValue);
        EXPECT_EQ(value->longlongValue(), row.longlongValue);
        EXPECT_EQ(std::bit_cast<long long>(value->doubleValue()),
                  std::bit_cast<long long>(row.value));
        EXPECT_EQ(value->asString(), row.text);
        EXPECT_EQ(value->toString(), row.text);
    }
}

TEST(NumberData, ConvertsWhatIsNoNumber) {
    Number const value = number(NOT_A_NUMBER);
    EXPECT_EQ(value->intValue(), INT_MIN);
    EXPECT_EQ(value->longlongValue(), LLONG_MIN);
    EXPECT_TRUE(std::isnan(value->doubleValue()));
}

TEST(NumberData, WritesDoublesOfAnyLength) {
    double const largest = std::numeric_limits<double>::max();
    for (double const value : {1e248, 1e249, 1e300, largest, -largest}) {
        char expected[512];
        std::snprintf(expected, sizeof expected, "%f", value);
        EXPECT_EQ(number(value)->asString(), expected);
    }
}

TEST(NumberData, WritesRandomNumbersAsPrintfDoes) {
    std::mt19937_64 random(20240611);
    for (int i = 0; i < 20000; ++i) {
        auto const integer = static_cast<long long>(random() >> (random() % 64));
        char expected[512];
        std::snprintf(expected, sizeof expected, "%lld", integer);
        ASSERT_EQ(number(integer)->asString(), expected);
        double const real =
            std::ldexp(static_cast<double>(integer), static_cast<int>(i % 200) - 100);
        std::snprintf(expected, sizeof expected, "%f", real);
        ASSERT_EQ(number(real)->asString(), expected);
    }
}

TEST(NumberData, WritesThePointWhateverTheLocale) {
    test::CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma";
    }
    EXPECT_EQ(number(1.5)->asString(), "1.500000");
    EXPECT_EQ(number(1234567)->asString(), "1234567");
}

TEST(NumberData, BuildsItsTextOnceAndOnlyWhenAsked) {
    Number const value = number(1.5);
    CString const & text = value->asString();
    EXPECT_EQ(&value->asString(), &text);
    EXPECT_EQ(value->toString().GetString(), text.GetString());

    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    test::AllocationCounter const allocations;
    Number const other = number(77);
    EXPECT_EQ(other->intValue(), 77);
    EXPECT_EQ(other->doubleValue(), 77.0);
    EXPECT_EQ(allocations.count(), 1);
    other->asString();
    EXPECT_EQ(allocations.count(), 2);
    other->asString();
    other->toString();
    EXPECT_EQ(allocations.count(), 2);
}

TEST(NumberData, ATextThatWasSetWinsForGood) {
    Number const value = number(1.5);
    value->setStringRep("1.50");
    EXPECT_EQ(value->asString(), "1.50");
    EXPECT_EQ(value->toString(), "1.50");
    EXPECT_EQ(value->doubleValue(), 1.5);
    value->setStringRep("not even a number");
    EXPECT_EQ(value->asString(), "not even a number");
    EXPECT_EQ(value->doubleValue(), 1.5);
    EXPECT_TRUE(value->isDouble());
}

TEST(NumberData, AnEmptyTextThatWasSetCountsToo) {
    Number const value = number(5);
    value->setStringRep("");
    EXPECT_EQ(value->asString(), "");
    EXPECT_EQ(value->toString(), "");
}

TEST(NumberData, SettingATextReplacesTheBuiltOneInItsPlace) {
    Number const value = number(5);
    CString const & text = value->asString();
    value->setStringRep("05");
    EXPECT_EQ(&value->asString(), &text);
    EXPECT_EQ(text, "05");
}

TEST(NumberData, DeliberateACopyLeavesTheTextBehind) {
    Number const value = number(1.5);
    value->setStringRep("1.50");
    Number const owner(value);
    auto * const copy = new NumberData(*value);
    EXPECT_EQ(copy->getRefCount(), 0);
    Number const holder(copy);
    EXPECT_EQ(copy->asString(), "1.500000");
    EXPECT_TRUE(copy->isDouble());
    EXPECT_EQ(copy->doubleValue(), 1.5);
    EXPECT_EQ(value->asString(), "1.50");

    Number const integer = number(7LL);
    Number const integerCopy(new NumberData(*integer));
    EXPECT_TRUE(integerCopy->isInteger());
    EXPECT_EQ(integerCopy->longlongValue(), 7);
}

// ---- Comparison ------------------------------------------------------------------------------

double bits(long long value) { return std::bit_cast<double>(value); }
long long bits(double value) { return std::bit_cast<long long>(value); }

struct Comparison {
    char const * name;
    Number left;
    Number right;
    bool equal;
    bool less;
};

TEST(NumberData, DeliberateComparisonGoesByTheLeftOperandAlone) {
    long long const bitsOfOne = bits(1.0);
    Comparison const rows[] = {
        {"equal integers", number(5), number(5), true, false},
        {"integers in order", number(-5), number(5), false, true},
        {"integers out of order", number(5), number(-5), false, false},
        {"64 bits count", number(1LL), number(4294967297LL), false, true},
        {"an integer is no double", number(1), number(1.0), false, true},
        {"not even by its bits", number(bitsOfOne), number(1.0), false, false},
        {"integer below the bits", number(bitsOfOne - 1), number(1.0), false, true},
        {"integer above the bits", number(bitsOfOne + 1), number(1.0), false, false},
        {"bits of a negative double", number(0), number(-1.0), false, false},
        {"bits of -0.0 are the smallest", number(LLONG_MIN), number(-0.0), false, false},
        {"an integer is no zero", number(0), number(0.0), false, false},
        {"equal doubles", number(1.5), number(1.5), true, false},
        {"doubles in order", number(1.5), number(2.5), false, true},
        {"doubles out of order", number(2.5), number(1.5), false, false},
        {"a double and small bits", number(1.0), number(1), false, false},
        {"a double and its bits", number(1.0), number(bitsOfOne), true, false},
        {"a double and larger bits", number(1.0), number(bits(2.0)), false, true},
        {"zero and the integer", number(0.0), number(0), true, false},
        {"zero and tiny bits", number(0.0), number(1), false, true},
        {"negative and zero bits", number(-1.0), number(0), false, true},
        {"zeros", number(0.0), number(-0.0), true, false},
        {"zeros the other way", number(-0.0), number(0.0), true, false},
        {"minus zero and the smallest integer", number(0.0), number(LLONG_MIN), true, false},
        {"NaN on the left", number(NOT_A_NUMBER), number(1.0), false, false},
        {"NaN on the right", number(1.0), number(NOT_A_NUMBER), false, false},
        {"NaN on both sides", number(NOT_A_NUMBER), number(NOT_A_NUMBER), false, false},
        {"NaN by its bits", number(1.0), number(bits(NOT_A_NUMBER)), false, false},
        {"-1 reads as NaN", number(1.0), number(-1), false, false},
        {"infinity", number(1e308), number(INFINITE), false, true},
    };
    for (Comparison const & row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(*row.left == *row.right, row.equal);
        EXPECT_EQ(*row.left < *row.right, row.less);
    }
}

TEST(NumberData, TextsDoNotCountInComparisons) {
    Number const left = number(5);
    Number const right = number(5);
    left->setStringRep("5.0");
    EXPECT_TRUE(*left == *right);
}

TEST(NumberData, RandomComparisonsFollowTheRule) {
    std::mt19937_64 random(7);
    long long const pool[] = {0,         1,          -1,        bits(0.0),          bits(-0.0),
                              bits(1.0), bits(-1.0), bits(2.5), bits(NOT_A_NUMBER), bits(INFINITE),
                              LLONG_MIN, LLONG_MAX};
    auto const pick = [&] {
        return random() % 3 == 0 ? static_cast<long long>(random())
                                 : pool[random() % std::size(pool)];
    };
    for (int i = 0; i < 20000; ++i) {
        long long const left = pick();
        long long const right = pick();
        bool const leftInteger = random() % 2 == 0;
        bool const rightInteger = random() % 2 == 0;
        Number const leftNumber = leftInteger ? number(left) : number(bits(left));
        Number const rightNumber = rightInteger ? number(right) : number(bits(right));
        bool const equal = leftInteger ? rightInteger && left == right : bits(left) == bits(right);
        bool const less = leftInteger ? left < right : bits(right) > bits(left);
        ASSERT_EQ(*leftNumber == *rightNumber, equal) << left << " " << right;
        ASSERT_EQ(*leftNumber < *rightNumber, less) << left << " " << right;
    }
}

}  // namespace
}  // namespace tvk
