#include "tvk/platform/CString.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/CStringModel.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/TextBytes.h"

namespace {

using tvk::test::AllocationCounter;
using tvk::test::AllocationFailure;
using tvk::test::bytesOf;
using tvk::test::CommaLocale;
using tvk::test::CStringModel;
using tvk::test::ExactBuffer;
using tvk::test::textOf;

static_assert(sizeof(CString) == sizeof(void *));
static_assert(std::is_same_v<tvk::CString, ::CString>);
static_assert(std::is_nothrow_default_constructible_v<CString>);
static_assert(std::is_nothrow_copy_constructible_v<CString>);
static_assert(std::is_nothrow_copy_assignable_v<CString>);
static_assert(std::is_nothrow_move_constructible_v<CString>);
static_assert(std::is_nothrow_move_assignable_v<CString>);
static_assert(!std::is_polymorphic_v<CString>);
static_assert(std::is_convertible_v<CString, char const *>);
static_assert(std::is_convertible_v<char const *, CString>);
static_assert(
    !std::is_convertible_v<char, CString>);  // a number must not become a text by accident
static_assert(!std::is_convertible_v<int, CString>);

template <std::size_t SIZE>
std::string_view bytesWithNul(char const (&literal)[SIZE]) {
    return {literal, SIZE - 1};
}

int signOf(int number) { return number < 0 ? -1 : number > 0 ? 1 : 0; }

CString const AT_LOAD("made before main");
CString const EMPTY_AT_LOAD;

// Construction and content.

TEST(CString, StartsEmpty) {
    CString const text;
    EXPECT_EQ(text.GetLength(), 0);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text.GetString(), "");
    EXPECT_EQ(EMPTY_AT_LOAD, text);
    EXPECT_STREQ(AT_LOAD, "made before main");
}

TEST(CString, IsMadeFromText) {
    CString const text("abc");
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_FALSE(text.IsEmpty());
    EXPECT_STREQ(text.GetString(), "abc");
    EXPECT_EQ(CString("").GetLength(), 0);
    EXPECT_TRUE(CString(static_cast<char const *>(nullptr)).IsEmpty());
}

TEST(CString, IsMadeFromBytesAndLength) {
    ExactBuffer const block(bytesWithNul("a\0b\xff\0"));
    CString const text(block.data(), 5);
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(bytesOf(text), bytesWithNul("a\0b\xff\0"));
    EXPECT_EQ(text.GetString()[5], '\0');
    EXPECT_EQ(CString(block.data(), 1), "a");
    EXPECT_TRUE(CString("abc", 0).IsEmpty());
    EXPECT_TRUE(CString(static_cast<char const *>(nullptr), 0).IsEmpty());
}

TEST(CString, IsMadeFromARepeatedCharacter) {
    EXPECT_EQ(CString('x', 3), "xxx");
    EXPECT_EQ(CString('x'), "x");
    EXPECT_TRUE(CString('x', 0).IsEmpty());
    EXPECT_TRUE(CString('x', -1).IsEmpty());
    EXPECT_EQ(bytesOf(CString('\0', 2)), bytesWithNul("\0\0"));
    EXPECT_EQ(bytesOf(CString('\xe9', 2)), "\xe9\xe9");
}

TEST(CString, TakesEachKindOfAssignment) {
    CString text("before");
    EXPECT_EQ(&(text = "after"), &text);
    EXPECT_EQ(text, "after");
    text = 'c';
    EXPECT_EQ(text, "c");
    text = CString("moved");
    EXPECT_EQ(text, "moved");
    text = static_cast<char const *>(nullptr);
    EXPECT_TRUE(text.IsEmpty());
    CString const other("other");
    EXPECT_EQ(&(text = other), &text);
    EXPECT_EQ(text, other);
}

TEST(CString, SurvivesSelfAssignment) {
    CString text("self");
    CString & alias = text;
    text = alias;
    EXPECT_EQ(text, "self");
    text = std::move(alias);
    EXPECT_EQ(text, "self");
    CString const copy(text);
    text = copy;
    EXPECT_EQ(text, "self");
}

TEST(CString, IsEmptyAndUsableAfterAMove) {
    CString source("text");
    CString target(std::move(source));
    EXPECT_EQ(target, "text");
    EXPECT_TRUE(source.IsEmpty());
    source += "again";
    EXPECT_EQ(source, "again");
    target = std::move(source);
    EXPECT_EQ(target, "again");
    EXPECT_TRUE(source.IsEmpty());
    source = target;
    EXPECT_EQ(source, "again");
}

TEST(CString, GivesItsCharacters) {
    CString const text = textOf(bytesWithNul("a\0\xff"));
    EXPECT_EQ(text.GetAt(0), 'a');
    EXPECT_EQ(text[1], '\0');
    EXPECT_EQ(text[2], '\xff');
    EXPECT_EQ(text.GetAt(3), '\0');
    EXPECT_EQ(text[3], '\0');
    EXPECT_EQ(CString()[0], '\0');
}

TEST(CString, ConvertsToAPlainText) {
    CString const text("plain");
    char const * const plain = text;
    EXPECT_EQ(plain, text.GetString());
    EXPECT_EQ(std::strlen(text), 5U);
}

TEST(CString, SetsACharacter) {
    CString text("abc");
    text.SetAt(0, 'x');
    text.SetAt(2, '\0');
    EXPECT_EQ(bytesOf(text), bytesWithNul("xb\0"));
}

TEST(CString, Empties) {
    CString text("abc");
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_STREQ(text, "");
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
}

// Comparison.

struct OrderRow {
    std::string_view left;
    std::string_view right;
    int order;
};

OrderRow const ORDER_ROWS[] = {
    {"", "", 0},
    {"", "a", -1},
    {"a", "a", 0},
    {"a", "b", -1},
    {"a", "ab", -1},
    {"ab", "b", -1},
    {"A", "a", -1},
    {"Z", "a", -1},
    {"a", "\x80", -1},
    {"\x7f", "\x80", -1},
    {"\x80", "\xff", -1},
    {"a\x01", "a\xe9", -1},
    {"", bytesWithNul("\0"), -1},
    {bytesWithNul("\0"), bytesWithNul("\0\0"), -1},
    {bytesWithNul("a\0b"), bytesWithNul("a\0b"), 0},
    {bytesWithNul("a\0b"), bytesWithNul("a\0c"), -1},
    {"a", bytesWithNul("a\0"), -1},
    {bytesWithNul("a\0"), "a\x01", -1},
};

bool hasNul(std::string_view bytes) { return bytes.find('\0') != std::string_view::npos; }

template <class Left, class Right>
void expectOrder(Left const & left, Right const & right, int order) {
    EXPECT_EQ(left == right, order == 0);
    EXPECT_EQ(left != right, order != 0);
    EXPECT_EQ(left < right, order < 0);
    EXPECT_EQ(left <= right, order <= 0);
    EXPECT_EQ(left > right, order > 0);
    EXPECT_EQ(left >= right, order >= 0);
}

void expectOrderOfAllForms(std::string_view leftBytes, std::string_view rightBytes, int order) {
    CString const left = textOf(leftBytes);
    CString const right = textOf(rightBytes);
    EXPECT_EQ(signOf(left.Compare(right)), order);
    expectOrder(left, right, order);
    if (!hasNul(rightBytes)) {
        EXPECT_EQ(signOf(left.Compare(right.GetString())), order);
        expectOrder(left, right.GetString(), order);
    }
    if (!hasNul(leftBytes)) {
        expectOrder(left.GetString(), right, order);
    }
}

TEST(CString, ComparesAllBytesAsUnsigned) {
    for (OrderRow const & row : ORDER_ROWS) {
        SCOPED_TRACE(::testing::PrintToString(std::string(row.left)) + " and " +
                     ::testing::PrintToString(std::string(row.right)));
        expectOrderOfAllForms(row.left, row.right, row.order);
        expectOrderOfAllForms(row.right, row.left, -row.order);
    }
}

// Without an overload of its own this would compare two pointers.
TEST(CString, ALiteralOnTheLeftIsComparedByItsText) {
    std::array<CString, 2> const around = {"b", "b"};
    for (CString const & text : around) {
        EXPECT_TRUE("a" < text);
        EXPECT_FALSE("c" < text);
        EXPECT_TRUE("b" <= text);
        EXPECT_TRUE("c" > text);
        EXPECT_TRUE("b" >= text);
        EXPECT_TRUE("b" == text);
        EXPECT_TRUE("a" != text);
    }
}

// Without an operator of their own these would compare addresses, as pairs and the like would then.
TEST(CString, ComparesThreeWaysByItsText) {
    for (OrderRow const & row : ORDER_ROWS) {
        CString const left = textOf(row.left);
        CString const right = textOf(row.right);
        SCOPED_TRACE(left.GetString());
        EXPECT_EQ(left <=> right, row.order <=> 0);
        EXPECT_EQ(right <=> left, 0 <=> row.order);
        EXPECT_EQ(std::pair(left, 1) < std::pair(right, 1), row.order < 0);
        EXPECT_EQ(std::pair(right, 1) < std::pair(left, 1), row.order > 0);
        if (!hasNul(row.right)) {
            EXPECT_EQ(left <=> right.GetString(), row.order <=> 0);
            EXPECT_EQ(right.GetString() <=> left, 0 <=> row.order);
        }
    }
}

TEST(CString, StandsInPairsAndTuplesByItsText) {
    std::map<std::pair<CString, CString>, int> map;
    for (int i = 0; i < 3; ++i) {
        for (char const * const text : {"c", "a", "b"}) {
            ++map[{text, text}];
        }
    }
    ASSERT_EQ(map.size(), 3U);
    EXPECT_EQ(map.begin()->first.first, "a");
    EXPECT_EQ(map.begin()->second, 3);
    EXPECT_LT((std::vector<CString>{"a", "c"}), (std::vector<CString>{"b", "a"}));
}

TEST(CString, ComparesWithNullAsWithTheEmptyText) {
    char const * const null = nullptr;
    EXPECT_TRUE(CString() == null);
    EXPECT_TRUE(null == CString());
    EXPECT_TRUE(CString("a") > null);
    EXPECT_EQ(CString("a").Compare(null), 1);
    EXPECT_EQ(CString().CompareNoCase(null), 0);
}

TEST(CString, ATextBehindANulIsNotThePlainText) {
    EXPECT_FALSE(textOf(bytesWithNul("a\0")) == "a");
    EXPECT_TRUE(textOf(bytesWithNul("a\0")) > "a");
}

OrderRow const NO_CASE_ROWS[] = {
    {"", "", 0},
    {"abc", "ABC", 0},
    {"aBc", "AbD", -1},
    {"abc", "ABCD", -1},
    {"Z", "a", 1},
    {"_", "A", -1},  // between the cases: 'A' counts as 'a'
    {"[", "z", -1},
    {"@", "a", -1},
    {"\xc0", "\xe0", -1},  // no case beyond ASCII
    {"a", "\x80", -1},
    {bytesWithNul("A\0B"), bytesWithNul("a\0b"), 0},
    {bytesWithNul("A\0B"), bytesWithNul("a\0c"), -1},
    {"A", bytesWithNul("a\0"), -1},
};

TEST(CString, ComparesWithoutAsciiCase) {
    for (OrderRow const & row : NO_CASE_ROWS) {
        CString const left = textOf(row.left);
        CString const right = textOf(row.right);
        SCOPED_TRACE(left.GetString());
        EXPECT_EQ(signOf(left.CompareNoCase(right)), row.order);
        EXPECT_EQ(signOf(right.CompareNoCase(left)), -row.order);
        if (!hasNul(row.right)) {
            EXPECT_EQ(signOf(left.CompareNoCase(right.GetString())), row.order);
        }
    }
}

TEST(CString, IsAKeyOfAMap) {
    std::map<CString, int> map;
    map["b"] = 2;
    map[textOf(bytesWithNul("b\0"))] = 3;
    map["a"] = 1;
    map["\xe3\x81\x82"] = 4;
    std::vector<int> values;
    for (auto const & [key, value] : map) {
        values.push_back(value);
    }
    EXPECT_EQ(values, (std::vector<int>{1, 2, 3, 4}));
}

// Searching.

struct FindRow {
    std::string_view text;
    std::string_view wanted;
    int start;
    int position;
};

FindRow const FIND_ROWS[] = {
    {"hello", "l", 0, 2},
    {"hello", "l", 2, 2},
    {"hello", "l", 3, 3},
    {"hello", "l", 4, -1},
    {"hello", "lo", 0, 3},
    {"hello", "hello", 0, 0},
    {"hello", "hello", 1, -1},
    {"hello", "hello!", 0, -1},
    {"hello", "x", 0, -1},
    {"hello", "o", 4, 4},
    {"hello", "o", 5, -1},
    {"hello", "o", 6, -1},
    {"hello", "h", -1, -1},
    {"hello", "h", INT_MIN, -1},
    {"hello", "h", INT_MAX, -1},
    {"hello", "", 0, 0},
    {"hello", "", 3, 3},
    {"hello", "", 5, 5},
    {"hello", "", 6, -1},
    {"hello", "", -1, -1},
    {"", "", 0, 0},
    {"", "", 1, -1},
    {"", "a", 0, -1},
    {"aab", "ab", 0, 1},
    {"a\xff\xe9", "\xe9", 0, 2},
    {bytesWithNul("a\0b"), "b", 0, 2},
    {bytesWithNul("a\0b"), bytesWithNul("\0"), 0, 1},
    {bytesWithNul("a\0b"), bytesWithNul("\0b"), 0, 1},
    {bytesWithNul("a\0b\0c"), bytesWithNul("\0c"), 0, 3},
    {"abc", bytesWithNul("c\0"), 0, -1},
};

TEST(CString, Finds) {
    for (FindRow const & row : FIND_ROWS) {
        SCOPED_TRACE(::testing::PrintToString(std::string(row.text)) + " " +
                     ::testing::PrintToString(std::string(row.wanted)) + " from " +
                     std::to_string(row.start));
        CString const text = textOf(row.text);
        CString const wanted = textOf(row.wanted);
        EXPECT_EQ(text.Find(wanted, row.start), row.position);
        if (!hasNul(row.wanted)) {
            EXPECT_EQ(text.Find(wanted.GetString(), row.start), row.position);
        }
        if (row.wanted.size() == 1) {
            EXPECT_EQ(text.Find(row.wanted[0], row.start), row.position);
        }
    }
}

TEST(CString, FindsFromTheStartByCustom) {
    EXPECT_EQ(CString("abab").Find("b"), 1);
    EXPECT_EQ(CString("abab").Find('b'), 1);
    EXPECT_EQ(CString("abab").Find(CString("ab")), 0);
    EXPECT_EQ(CString("abab").Find(static_cast<char const *>(nullptr)), -1);
}

TEST(CString, FindsNoNulInTheTerminator) {
    EXPECT_EQ(CString("abc").Find('\0'), -1);
    EXPECT_EQ(CString("abc").Find('\0', 3), -1);
    EXPECT_EQ(CString().Find('\0'), -1);
    EXPECT_EQ(CString("abc").ReverseFind('\0'), -1);
}

TEST(CString, FindsBackwards) {
    EXPECT_EQ(CString("hello").ReverseFind('l'), 3);
    EXPECT_EQ(CString("hello").ReverseFind('h'), 0);
    EXPECT_EQ(CString("hello").ReverseFind('x'), -1);
    EXPECT_EQ(CString().ReverseFind('x'), -1);
    EXPECT_EQ(textOf(bytesWithNul("\0a\0b")).ReverseFind('\0'), 2);
    EXPECT_EQ(CString("\xe9\x80").ReverseFind('\xe9'), 0);
}

// Parts.

struct MiddleRow {
    int first;
    int count;
    char const * result;
};

TEST(CString, GivesItsMiddleWithinItsBounds) {
    MiddleRow const rows[] = {
        {0, 5, "hello"},
        {0, 6, "hello"},
        {0, INT_MAX, "hello"},
        {1, 3, "ell"},
        {1, INT_MAX, "ello"},
        {4, 1, "o"},
        {4, 2, "o"},
        {5, 1, ""},
        {6, 1, ""},
        {INT_MAX, INT_MAX, ""},
        {0, 0, ""},
        {2, -1, ""},
        {2, INT_MIN, ""},
        {-1, -1, ""},
    };
    for (MiddleRow const & row : rows) {
        EXPECT_EQ(CString("hello").Mid(row.first, row.count), row.result)
            << row.first << ", " << row.count;
    }
    EXPECT_TRUE(CString().Mid(0, 1).IsEmpty());
}

TEST(CString, DeliberateANegativeFirstKeepsTheCount) {
    EXPECT_EQ(CString("hello").Mid(-2, 3), "hel");
    EXPECT_EQ(CString("hello").Mid(INT_MIN, 2), "he");
    EXPECT_EQ(CString("hello").Mid(-1, INT_MAX), "hello");
}

TEST(CString, GivesItsEnds) {
    CString const text("hello");
    EXPECT_EQ(text.Mid(0), "hello");
    EXPECT_EQ(text.Mid(2), "llo");
    EXPECT_EQ(text.Mid(5), "");
    EXPECT_EQ(text.Mid(9), "");
    EXPECT_EQ(text.Mid(-3), "hello");
    EXPECT_EQ(text.Left(2), "he");
    EXPECT_EQ(text.Left(0), "");
    EXPECT_EQ(text.Left(-1), "");
    EXPECT_EQ(text.Left(99), "hello");
    EXPECT_EQ(text.Right(2), "lo");
    EXPECT_EQ(text.Right(0), "");
    EXPECT_EQ(text.Right(-1), "");
    EXPECT_EQ(text.Right(99), "hello");
    EXPECT_EQ(bytesOf(textOf(bytesWithNul("a\0b\0c")).Mid(1, 3)), bytesWithNul("\0b\0"));
}

struct TrimRow {
    std::string_view text;
    std::string_view result;
};

TEST(CString, TrimsAsciiWhiteSpace) {
    TrimRow const rows[] = {
        {"", ""},
        {" ", ""},
        {" \t\n\v\f\r", ""},
        {"a", "a"},
        {" a", "a"},
        {"a ", "a"},
        {" \t\n\v\f\ra b\r\f\v\n\t ", "a b"},
        {"\b a \x0e", "\b a \x0e"},
        {" \xa0 ", "\xa0"},
        {" \x85\xe3\x80\x80 ", "\x85\xe3\x80\x80"},
        {bytesWithNul(" \0 "), bytesWithNul("\0")},
        {bytesWithNul("\0"), bytesWithNul("\0")},
    };
    for (TrimRow const & row : rows) {
        SCOPED_TRACE(::testing::PrintToString(std::string(row.text)));
        CString alone = textOf(row.text);
        EXPECT_EQ(&alone.Trim(), &alone);
        EXPECT_EQ(bytesOf(alone), row.result);
        EXPECT_EQ(alone.GetString()[row.result.size()], '\0');
        CString const source = textOf(row.text);
        CString shared = source;
        EXPECT_EQ(bytesOf(shared.Trim()), row.result);
        EXPECT_EQ(bytesOf(source), row.text);
    }
}

// Growing.

struct InsertRow {
    char const * text;
    int index;
    char const * inserted;
    char const * result;
};

TEST(CString, InsertsAtAClampedPlace) {
    InsertRow const rows[] = {
        {"hello", 0, "<>", "<>hello"},
        {"hello", 2, "<>", "he<>llo"},
        {"hello", 5, "<>", "hello<>"},
        {"hello", 6, "<>", "hello<>"},
        {"hello", INT_MAX, "<>", "hello<>"},
        {"hello", -1, "<>", "<>hello"},
        {"hello", INT_MIN, "<>", "<>hello"},
        {"hello", 2, "", "hello"},
        {"", 0, "<>", "<>"},
        {"", 9, "<>", "<>"},
        {"", 0, "", ""},
    };
    for (InsertRow const & row : rows) {
        SCOPED_TRACE(std::string(row.text) + " at " + std::to_string(row.index));
        int const length = static_cast<int>(std::strlen(row.result));
        CString text(row.text);
        EXPECT_EQ(text.Insert(row.index, row.inserted), length);
        EXPECT_EQ(text, row.result);
        text = row.text;
        EXPECT_EQ(text.Insert(row.index, CString(row.inserted)), length);
        EXPECT_EQ(text, row.result);
    }
}

TEST(CString, InsertsCharactersAndNul) {
    CString text("ac");
    EXPECT_EQ(text.Insert(1, 'b'), 3);
    EXPECT_EQ(text.Insert(-5, 'x'), 4);
    EXPECT_EQ(text.Insert(99, 'y'), 5);
    EXPECT_EQ(text, "xabcy");
    EXPECT_EQ(text.Insert(2, '\0'), 6);
    EXPECT_EQ(bytesOf(text), bytesWithNul("xa\0bcy"));
    EXPECT_EQ(text.Insert(2, textOf(bytesWithNul("\0n"))), 8);
    EXPECT_EQ(bytesOf(text), bytesWithNul("xa\0n\0bcy"));
    EXPECT_EQ(text.Insert(0, static_cast<char const *>(nullptr)), 8);
}

TEST(CString, Appends) {
    CString text;
    text.Append("a");
    text.Append(CString("b"));
    text.Append("cd", 1);
    text.AppendChar('d');
    text += "e";
    text += CString("f");
    text += 'g';
    EXPECT_EQ(text, "abcdefg");
    text.Append("");
    text.Append(CString());
    text.Append("x", 0);
    text.Append(static_cast<char const *>(nullptr));
    text.Append(static_cast<char const *>(nullptr), 0);
    text += static_cast<char const *>(nullptr);
    EXPECT_EQ(text, "abcdefg");
    text.Append("\0h", 2);
    text.AppendChar('\0');
    EXPECT_EQ(bytesOf(text), bytesWithNul("abcdefg\0h\0"));
    EXPECT_EQ(&(text += "!"), &text);
    EXPECT_EQ(&(text += '!'), &text);
    EXPECT_EQ(&(text += text), &text);
}

TEST(CString, Adds) {
    CString const left("left");
    CString const right("right");
    EXPECT_EQ(left + right, "leftright");
    EXPECT_EQ(left + "x", "leftx");
    EXPECT_EQ("x" + right, "xright");
    EXPECT_EQ(left + 'x', "leftx");
    EXPECT_EQ('x' + right, "xright");
    EXPECT_EQ(left + static_cast<char const *>(nullptr), "left");
    EXPECT_EQ(static_cast<char const *>(nullptr) + right, "right");
    EXPECT_TRUE((CString() + CString()).IsEmpty());
    EXPECT_EQ(bytesOf(textOf(bytesWithNul("a\0")) + '\0' + textOf(bytesWithNul("\0b"))),
              bytesWithNul("a\0\0\0b"));
    EXPECT_EQ(left, "left");
    EXPECT_EQ(right, "right");
}

TEST(CString, PreallocatesRoomAndKeepsTheText) {
    for (int const room : {-1, 0, 1, 3, 100}) {
        CString text("abc");
        text.Preallocate(room);
        EXPECT_EQ(text, "abc");
        EXPECT_EQ(text.GetLength(), 3);
        CString empty;
        empty.Preallocate(room);
        EXPECT_TRUE(empty.IsEmpty());
        EXPECT_STREQ(empty, "");
    }
}

// Its own characters as arguments, with room behind the text and without.

struct OwnCharactersRow {
    char const * name;
    std::function<void(CString &)> change;
    char const * result;
};

TEST(CString, TakesItsOwnCharactersAsArguments) {
    OwnCharactersRow const rows[] = {
        {"assign tail", [](CString & text) { text = text.GetString() + 2; }, "cdef"},
        {"assign all", [](CString & text) { text = text.GetString(); }, "abcdef"},
        {"assign character", [](CString & text) { text = text[3]; }, "d"},
        {"append", [](CString & text) { text.Append(text); }, "abcdefabcdef"},
        {"append text", [](CString & text) { text.Append(text.GetString()); }, "abcdefabcdef"},
        {"append tail", [](CString & text) { text.Append(text.GetString() + 4); }, "abcdefef"},
        {"append terminator", [](CString & text) { text.Append(text.GetString() + 6); }, "abcdef"},
        {"append part", [](CString & text) { text.Append(text.GetString() + 1, 3); }, "abcdefbcd"},
        {"append character", [](CString & text) { text.AppendChar(text[1]); }, "abcdefb"},
        {"+=", [](CString & text) { text += text; }, "abcdefabcdef"},
        {"+= text", [](CString & text) { text += text.GetString() + 5; }, "abcdeff"},
        {"+", [](CString & text) { text = text + text; }, "abcdefabcdef"},
        {"+ text", [](CString & text) { text = text.GetString() + 3 + text; }, "defabcdef"},
        {"insert front", [](CString & text) { text.Insert(0, text); }, "abcdefabcdef"},
        {"insert", [](CString & text) { text.Insert(2, text); }, "ababcdefcdef"},
        {"insert end", [](CString & text) { text.Insert(6, text); }, "abcdefabcdef"},
        {"insert text", [](CString & text) { text.Insert(1, text.GetString() + 3); }, "adefbcdef"},
        {"insert character", [](CString & text) { text.Insert(1, text[5]); }, "afbcdef"},
        {"set", [](CString & text) { text.SetAt(0, text[5]); }, "fbcdef"},
        {"format", [](CString & text) { text.Format("<%s>", text.GetString()); }, "<abcdef>"},
        {"format by itself", [](CString & text) { text.Format(text.GetString() + 1, 0); }, "bcdef"},
        {"append format", [](CString & text) { text.AppendFormat("<%s>", text.GetString() + 4); },
         "abcdef<ef>"},
        {"middle", [](CString & text) { text = text.Mid(1, 2); }, "bc"},
    };
    for (OwnCharactersRow const & row : rows) {
        SCOPED_TRACE(row.name);
        CString tight("abcdef");
        row.change(tight);
        EXPECT_EQ(tight, row.result);

        CString roomy("abcdef");
        roomy.Preallocate(200);
        row.change(roomy);
        EXPECT_EQ(roomy, row.result);

        CString const keeper("abcdef");
        CString shared = keeper;
        row.change(shared);
        EXPECT_EQ(shared, row.result);
        EXPECT_EQ(keeper, "abcdef");
    }
}

// Sharing.

TEST(CString, ChangesReachNoCopy) {
    std::vector<std::function<void(CString &)>> const changes = {
        [](CString & text) { text.SetAt(0, 'x'); },
        [](CString & text) { text.AppendChar('x'); },
        [](CString & text) { text += "more"; },
        [](CString & text) { text.Insert(0, "x"); },
        [](CString & text) { text.Trim(); },
        [](CString & text) { text.Empty(); },
        [](CString & text) { text.Format("%d", 1); },
        [](CString & text) { text.AppendFormat("%d", 1); },
        [](CString & text) {
            text.GetBuffer()[0] = 'x';
            text.ReleaseBuffer();
        },
        [](CString & text) {
            text.Preallocate(100);
            text.SetAt(0, 'x');
        },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        CString const original(" text ");
        CString copy = original;
        EXPECT_EQ(copy.GetString(), original.GetString());
        changes[i](copy);
        EXPECT_NE(copy, original);
        EXPECT_EQ(original, " text ");

        CString source(" text ");
        CString const kept = source;
        changes[i](source);
        EXPECT_EQ(kept, " text ");
    }
}

class CStringAllocations : public ::testing::Test {
protected:
    void SetUp() override {
        if (!AllocationCounter::available()) {
            GTEST_SKIP() << "allocations are not counted in this build";
        }
    }
};

TEST_F(CStringAllocations, TheEmptyTextNeedsNone) {
    AllocationCounter allocations;
    CString empty;
    CString const fromText("");
    CString const fromNull(static_cast<char const *>(nullptr));
    CString const fromBytes("abc", 0);
    CString const repeated('x', 0);
    CString copy = empty;
    copy = fromText;
    copy += fromNull;
    copy.Insert(0, fromBytes);
    copy.Trim();
    copy.Empty();
    CString const sum = copy + repeated + "";
    CString const part = sum.Mid(0, 10);
    empty.Preallocate(0);
    empty.ReleaseBuffer();
    EXPECT_EQ(allocations.count(), 0);
}

TEST_F(CStringAllocations, SharingNeedsNone) {
    CString const text("some text that is shared");
    AllocationCounter allocations;
    CString const copy(text);
    CString assigned;
    assigned = copy;
    CString const moved(std::move(assigned));
    CString const all = moved.Mid(0);
    CString const left = all.Left(1000);
    CString const right = left.Right(24);
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(right.GetString(), text.GetString());
}

TEST_F(CStringAllocations, ATextIsOne) {
    AllocationCounter allocations;
    CString text("some text");
    EXPECT_EQ(allocations.count(), 1);
    CString const sum = text + text;
    EXPECT_EQ(allocations.count(), 2);
    text.SetAt(0, 'x');
    text.Trim();
    EXPECT_EQ(allocations.count(), 2);
    CString copy = text;
    copy.SetAt(0, 'y');
    EXPECT_EQ(allocations.count(), 3);
}

TEST_F(CStringAllocations, AppendingGrowsGeometrically) {
    AllocationCounter allocations;
    CString text;
    for (int i = 0; i < 100000; ++i) {
        text.AppendChar('x');
    }
    EXPECT_LT(allocations.count(), 40);
    EXPECT_EQ(text.GetLength(), 100000);
}

TEST_F(CStringAllocations, PreallocatedRoomIsUsed) {
    CString text;
    text.Preallocate(1000);
    AllocationCounter allocations;
    for (int i = 0; i < 1000; ++i) {
        text.AppendChar('x');
    }
    EXPECT_EQ(allocations.count(), 0);
}

// The buffer.

TEST(CString, TakesOverWhatIsWrittenIntoItsBuffer) {
    CString text("abc");
    char * buffer = text.GetBuffer(10);
    EXPECT_STREQ(buffer, "abc");
    std::memcpy(buffer + 3, "defghij", 8);
    text.ReleaseBuffer();
    EXPECT_EQ(text, "abcdefghij");

    buffer = text.GetBuffer();
    buffer[1] = '\0';
    text.ReleaseBuffer(3);
    EXPECT_EQ(bytesOf(text), bytesWithNul("a\0c"));
    text.GetBuffer();
    text.ReleaseBuffer();
    EXPECT_EQ(text, "a");
    text.GetBuffer(-1);
    text.ReleaseBuffer(0);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, GivesABufferOfTheEmptyText) {
    CString text;
    char * const none = text.GetBuffer(0);
    EXPECT_EQ(none[0], '\0');
    none[0] = '\0';
    text.ReleaseBuffer();
    EXPECT_TRUE(text.IsEmpty());
    std::memcpy(text.GetBuffer(3), "xyz", 3);
    text.ReleaseBuffer(3);
    EXPECT_EQ(text, "xyz");
    EXPECT_TRUE(CString().IsEmpty());
}

TEST(CString, TakesAFullBufferWithoutANul) {
    for (int length = 1; length < 100; ++length) {
        CString text;
        std::memset(text.GetBuffer(length), 'x', static_cast<std::size_t>(length));
        text.ReleaseBuffer(length);
        EXPECT_EQ(bytesOf(text), std::string(static_cast<std::size_t>(length), 'x'));
        EXPECT_EQ(text.GetString()[length], '\0');
    }
}

TEST(CString, ReleasingWithoutABufferKeepsTheText) {
    CString text("abc");
    text.ReleaseBuffer();
    EXPECT_EQ(text, "abc");
    CString empty;
    empty.ReleaseBuffer();
    empty.ReleaseBuffer(0);
    EXPECT_TRUE(empty.IsEmpty());
}

// Formatting.

CString formattedByList(char const * format, ...) TVK_PRINTF_LIKE(1, 2);

CString formattedByList(char const * format, ...) {
    CString text;
    va_list arguments;
    va_start(arguments, format);
    text.FormatV(format, arguments);
    va_end(arguments);
    return text;
}

TEST(CString, Formats) {
    CString text("before");
    text.Format("%s %d %5.2f %c%% %lld %u %x", "text", -5, 1.5, 'c', 1234567890123LL, 7U, 255);
    EXPECT_EQ(text, "text -5  1.50 c% 1234567890123 7 ff");
    text.AppendFormat("|%03d", 7);
    EXPECT_EQ(text, "text -5  1.50 c% 1234567890123 7 ff|007");
    text.Format("%s", "");
    EXPECT_TRUE(text.IsEmpty());
    text.AppendFormat("%s", "");
    EXPECT_TRUE(text.IsEmpty());
    text.Format("a%cb", '\0');
    EXPECT_EQ(bytesOf(text), bytesWithNul("a\0b"));
    EXPECT_EQ(formattedByList("%d-%s", 1, "two"), "1-two");
}

TEST(CString, FormatsResultsOfAnyLength) {
    for (int const length : {1, 254, 255, 256, 257, 1000, 100000}) {
        std::string const expected(static_cast<std::size_t>(length), 'x');
        CString text;
        text.Format("%s", expected.c_str());
        ASSERT_EQ(bytesOf(text), expected);
        text.AppendFormat("%s", expected.c_str());
        ASSERT_EQ(bytesOf(text), expected + expected);
    }
}

TEST(CString, FormatsDoublesInFull) {
    CString text;
    text.Format("%f", 1.5);
    EXPECT_EQ(text, "1.500000");
    text.Format("%f", 1e300);
    EXPECT_EQ(text.GetLength(), 301 + 7);
    EXPECT_EQ(text.Right(7), ".000000");
    text.Format("%f", -0.0);
    EXPECT_EQ(text, "-0.000000");
}

TEST(CString, IsEmptyAfterAFormatThatFails) {
    CString text("before");
    text.Format("%lc", static_cast<wint_t>(0x3042));  // no place in the "C" locale
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, FormatsTheSameUnderACommaLocale) {
    CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    char plain[16];
    std::snprintf(plain, sizeof plain, "%.1f", 1.5);
    ASSERT_STREQ(plain, "1,5") << "the locale is not in force";
    CString text;
    text.Format("%f", 1.5);
    EXPECT_EQ(text, "1.500000");
    text.AppendFormat(" %g", 0.25);
    EXPECT_EQ(text, "1.500000 0.25");
    EXPECT_EQ(formattedByList("%.3e", 12345.678), "1.235e+04");
    std::snprintf(plain, sizeof plain, "%.1f", 1.5);
    EXPECT_STREQ(plain, "1,5") << "the caller's locale is not given back";
    EXPECT_EQ(CString("\xc4").CompareNoCase("\xe4"), -1);
    EXPECT_EQ(CString("\xa0").Trim(), "\xa0");
}

// Failure.

TEST(CString, RefusesBadLengthsAndStaysAsItWas) {
    char const * const null = nullptr;
    EXPECT_THROW(CString("abc", -1), std::bad_alloc);
    EXPECT_THROW(CString("abc", INT_MIN), std::bad_alloc);
    EXPECT_THROW(CString(null, 1), std::bad_alloc);
    CString text("before");
    EXPECT_THROW(text.Append("abc", -1), std::bad_alloc);
    EXPECT_THROW(text.Append("abc", INT_MIN), std::bad_alloc);
    EXPECT_THROW(text.Append(null, 1), std::bad_alloc);
    std::string const tooWide = "%2147483648d";  // no literal: compilers warn of such a width
    EXPECT_THROW(text.Format(tooWide.c_str(), 1), std::bad_alloc);
    EXPECT_THROW(text.AppendFormat(tooWide.c_str(), 1), std::bad_alloc);
    EXPECT_EQ(text, "before");
}

// The pages of the block are never touched, so the test needs no memory.
TEST(CString, RefusesToPassTheGreatestLength) {
    CString text;
    try {
        text.GetBuffer(INT_MAX)[0] = 'x';
    } catch (std::bad_alloc const &) {
        GTEST_SKIP() << "no address space for the longest text";
    }
    text.ReleaseBuffer(INT_MAX);
    char const * const place = text.GetString();
    EXPECT_THROW(text.AppendChar('x'), std::bad_alloc);
    EXPECT_THROW(text.Append("xy"), std::bad_alloc);
    EXPECT_THROW(text.Append(text.GetString(), 1), std::bad_alloc);
    EXPECT_THROW(text += text, std::bad_alloc);
    EXPECT_THROW(text.Insert(0, 'x'), std::bad_alloc);
    EXPECT_THROW(text.Insert(0, text), std::bad_alloc);
    EXPECT_THROW(text + 'x', std::bad_alloc);
    EXPECT_THROW('x' + text, std::bad_alloc);
    EXPECT_THROW(text + text, std::bad_alloc);
    EXPECT_EQ(text.GetLength(), INT_MAX);
    EXPECT_EQ(text.GetString(), place);
}

TEST(CString, StaysAsItWasWhenMemoryIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    CString const more(std::string(400, 'm').c_str());
    std::vector<std::function<void(CString &)>> const changes = {
        [](CString & text) { text = "another text, longer than before"; },
        [](CString & text) { text = 'x'; },
        [](CString & text) { text.SetAt(0, 'x'); },
        [&](CString & text) { text += more; },
        [&](CString & text) { text.Append(more.GetString()); },
        [](CString & text) { text.AppendChar('x'); },
        [&](CString & text) { text.Insert(1, more); },
        [](CString & text) { text.Insert(1, "xx"); },
        [](CString & text) { text.Trim(); },
        [&](CString & text) { text.Format("%s", more.GetString()); },
        [&](CString & text) { text.AppendFormat("%s", more.GetString()); },
        [](CString & text) { text.Preallocate(1000); },
        [](CString & text) { text.GetBuffer(1000); },
        [](CString & text) { text = text + text; },
        [](CString & text) { text = text.Mid(1, 2); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        SCOPED_TRACE(i);
        CString const keeper(" text");
        CString text = keeper;
        bool threw = false;
        {
            AllocationFailure const failure;
            try {
                changes[i](text);
            } catch (std::bad_alloc const &) {
                threw = true;
            }
        }
        EXPECT_TRUE(threw);
        EXPECT_EQ(text, " text");
        EXPECT_EQ(keeper, " text");
    }
}

// Threads.

TEST(CString, IsCopiedOnManyThreadsAtOnce) {
    constexpr int THREADS = 8;
    constexpr int ROUNDS = 20000;
    CString const constant("a constant of the library");
    CString const empty;
    std::vector<int> failures(THREADS, 0);
    std::vector<std::thread> threads;
    for (int & failed : failures) {
        threads.emplace_back([&constant, &empty, &failed] {
            CString kept;
            for (int round = 0; round < ROUNDS; ++round) {
                CString copy(constant);
                CString const none(empty);
                kept = copy;
                if (round % 3 == 0) {
                    copy.SetAt(0, 'A');
                }
                CString const moved(std::move(copy));
                failed += moved.GetLength() != constant.GetLength() || kept != constant ||
                          !none.IsEmpty();
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    EXPECT_EQ(failures, std::vector<int>(THREADS, 0));
    EXPECT_EQ(constant, "a constant of the library");
}

TEST(CString, TheLastOfManyThreadsReleasesTheText) {
    for (int round = 0; round < 200; ++round) {
        std::vector<std::thread> threads;
        {
            CString const text('x', 100);
            for (int i = 0; i < 4; ++i) {
                threads.emplace_back([copy = text]() mutable {
                    copy.AppendChar('y');
                    copy.Empty();
                });
            }
        }
        for (std::thread & thread : threads) {
            thread.join();
        }
    }
}

// Against std::string.

TEST(CString, AgreesWithStdStringOverRandomOperations) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        std::mt19937 random(seed);
        // A narrow range of bytes makes texts that share parts; the full one brings NUL and the rest.
        unsigned const range = seed % 3 == 0 ? 256 : seed % 3 == 1 ? 40 : 110;
        std::string program;
        for (int i = 0; i < 6000; ++i) {
            program += static_cast<char>(static_cast<unsigned char>(random() % range));
        }
        ASSERT_STREQ(CStringModel(program.data(), program.size()).run(), nullptr)
            << "seed " << seed;
    }
}

}  // namespace
