#include "tvk/values/StringData.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "tests/support/AllocationCounter.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

using Text = RefCountedPtr<StringData>;

static_assert(!std::is_destructible_v<StringData>);
static_assert(std::is_base_of_v<FieldValue, StringData>);

CString bytes(std::string const & text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

TEST(StringData, TakesItsTextFromEveryConstructor) {
    test::ExactBuffer const buffer("abc");
    CString const shared = "shared";
    EXPECT_EQ(Text(new StringData)->asString(), "");
    EXPECT_EQ(Text(new StringData("zero-terminated"))->asString(), "zero-terminated");
    EXPECT_EQ(Text(new StringData(buffer.data(), buffer.length()))->asString(), "abc");
    EXPECT_EQ(Text(new StringData(buffer.data(), 2u))->asString(), "ab");
    EXPECT_EQ(Text(new StringData(buffer.data(), 0u))->asString(), "");
    EXPECT_EQ(Text(new StringData("a\0b", 3u))->asString(), bytes(std::string("a\0b", 3)));
    EXPECT_EQ(Text(new StringData(3u, 'x'))->asString(), "xxx");
    EXPECT_EQ(Text(new StringData(0u, 'x'))->asString(), "");
    EXPECT_EQ(Text(new StringData(shared))->asString(), "shared");
    EXPECT_EQ(Text(new StringData(static_cast<char const *>(nullptr)))->asString(), "");
}

TEST(StringData, SharesTheTextOfACString) {
    CString const shared = "shared";
    Text const value(new StringData(shared));
    EXPECT_EQ(value->asString().GetString(), shared.GetString());
    EXPECT_EQ(value->toString().GetString(), shared.GetString());
}

TEST(StringData, GivesAReferenceToItsOwnText) {
    Text const value(new StringData("text"));
    EXPECT_EQ(&value->asString(), &value->asString());
    EXPECT_EQ(value->toString(), "text");
}

TEST(StringData, ACopyTakesTheTextAndStartsUnowned) {
    Text const source(new StringData("text"));
    Text const second(source);
    auto * const copy = new StringData(*source);
    EXPECT_EQ(copy->getRefCount(), 0);
    EXPECT_EQ(copy->asString(), "text");
    Text const owner(copy);
}

TEST(StringData, AssignmentTakesTheTextAndLeavesTheCount) {
    Text const source(new StringData("source"));
    Text const second(source);
    Text const third(source);
    Text const target(new StringData("target"));
    StringData & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(target->asString(), "source");
    EXPECT_EQ(target->getRefCount(), 1);
    *target = CString("text");
    EXPECT_EQ(target->asString(), "text");
    EXPECT_EQ(target->getRefCount(), 1);
    StringData & alias = *target;
    *target = alias;
    EXPECT_EQ(target->asString(), "text");
    EXPECT_EQ(target->getRefCount(), 1);
}

struct Comparison {
    char const * name;
    std::string left;
    std::string right;
    int order;
};

Comparison const COMPARISONS[] = {
    {"equal", "abc", "abc", 0},
    {"both empty", "", "", 0},
    {"smaller", "abc", "abd", -1},
    {"prefix", "ab", "abc", -1},
    {"empty before all", "", "a", -1},
    {"case counts", "B", "a", -1},
    {"bytes are unsigned", "z", "\x80", -1},
    {"NUL counts", std::string("a\0a", 3), std::string("a\0b", 3), -1},
    {"NUL behind a prefix", "a", std::string("a\0", 2), -1},
};

TEST(StringData, ComparesItsBytes) {
    for (Comparison const & row : COMPARISONS) {
        SCOPED_TRACE(row.name);
        Text const left(new StringData(bytes(row.left)));
        Text const right(new StringData(bytes(row.right)));
        EXPECT_EQ(*left == *right, row.order == 0);
        EXPECT_EQ(*right == *left, row.order == 0);
        EXPECT_EQ(*left == bytes(row.right), row.order == 0);
        EXPECT_EQ(*left < *right, row.order < 0);
        EXPECT_EQ(*left < bytes(row.right), row.order < 0);
        EXPECT_FALSE(*right < *left);
        EXPECT_FALSE(*right < bytes(row.left));
    }
}

struct Reading {
    char const * text;
    int intValue;
    long long longlongValue;
    double doubleValue;
};

double const INFINITE = std::numeric_limits<double>::infinity();

Reading const READINGS[] = {
    {"", 0, 0, 0.0},
    {"abc", 0, 0, 0.0},
    {"12", 12, 12, 12.0},
    {"12abc", 12, 12, 12.0},
    {"-7", -7, -7, -7.0},
    {"+7", 7, 7, 7.0},
    {"  \t\n\v\f\r42", 42, 42, 42.0},
    {"- 1", 0, 0, 0.0},
    {"1.75", 1, 1, 1.75},
    {"1,75", 1, 1, 1.0},
    {".5", 0, 0, 0.5},
    {"1e3", 1, 1, 1000.0},
    {"0x1F", 0, 0, 31.0},
    {"010", 10, 10, 10.0},
    {"2147483647", INT_MAX, 2147483647, 2147483647.0},
    {"2147483648", INT_MAX, 2147483648, 2147483648.0},
    {"-2147483648", INT_MIN, -2147483648LL, -2147483648.0},
    {"-2147483649", INT_MIN, -2147483649LL, -2147483649.0},
    {"4294967297", INT_MAX, 4294967297, 4294967297.0},
    {"9223372036854775807", INT_MAX, LLONG_MAX, 9223372036854775807.0},
    {"9223372036854775808", INT_MAX, LLONG_MAX, 9223372036854775808.0},
    {"-9223372036854775809", INT_MIN, LLONG_MIN, -9223372036854775808.0},
    {"inf", 0, 0, INFINITE},
    {"-infinity", 0, 0, -INFINITE},
    {"1e400", 1, 1, INFINITE},
    {"-1e400", -1, -1, -INFINITE},
    {"1e-400", 1, 1, 0.0},
};

TEST(StringData, ReadsTheNumberThatItsTextStartsWith) {
    for (Reading const & row : READINGS) {
        SCOPED_TRACE(row.text);
        Text const value(new StringData(row.text));
        EXPECT_EQ(value->intValue(), row.intValue);
        EXPECT_EQ(value->longValue(), row.intValue);
        EXPECT_EQ(value->longlongValue(), row.longlongValue);
        EXPECT_EQ(value->doubleValue(), row.doubleValue);
    }
    EXPECT_TRUE(std::isnan(Text(new StringData("nan"))->doubleValue()));
}

TEST(StringData, StopsAtANul) {
    Text const value(
        new StringData("12\0"
                       "3",
                       4u));
    EXPECT_EQ(value->intValue(), 12);
    EXPECT_EQ(value->longlongValue(), 12);
    EXPECT_EQ(value->doubleValue(), 12.0);
}

TEST(StringData, LongLongValueClearsErrno) {
    errno = EINVAL;
    EXPECT_EQ(Text(new StringData("5"))->longlongValue(), 5);
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(Text(new StringData("99999999999999999999"))->longlongValue(), LLONG_MAX);
    EXPECT_EQ(errno, ERANGE);
}

TEST(StringData, ReadsThePointWhateverTheLocale) {
    test::CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma";
    }
    EXPECT_EQ(Text(new StringData("1.5"))->doubleValue(), 1.5);
    EXPECT_EQ(Text(new StringData("1,5"))->doubleValue(), 1.0);
    EXPECT_EQ(Text(new StringData("0x1.8p1"))->doubleValue(), 3.0);
}

TEST(StringData, AnEmptyOneAllocatesItselfAlone) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const text = "shared with the value";
    test::AllocationCounter const allocations;
    Text const empty(new StringData);
    EXPECT_EQ(allocations.count(), 1);
    Text const sharing(new StringData(text));
    EXPECT_EQ(allocations.count(), 2);
}

}  // namespace
}  // namespace tvk
