#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/EventRecorder.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/LibraryScan.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/JsonOptions.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleJsonHandler.h"

namespace {

using namespace std::literals;
using namespace tvk::test;
using tvk::JSON_ALLOW_HASH_COMMENT;
using tvk::JSON_ALLOW_SLASH_COMMENT;
using tvk::JSON_ALLOW_TRAILING_COMMA;
using tvk::JSON_ALLOW_UNQUOTED_NAME;
using tvk::JsonUtil;

constexpr ScanMode OBJECT = ScanMode::OBJECT;
constexpr ScanMode ARRAY = ScanMode::ARRAY;
constexpr ScanMode VALUE = ScanMode::VALUE;
constexpr ScanMode FIELDS = ScanMode::FIELDS;

constexpr int STRICT = 0;
constexpr int SLASH = JSON_ALLOW_SLASH_COMMENT;
constexpr int HASH = JSON_ALLOW_HASH_COMMENT;
constexpr int UNQUOTED = JSON_ALLOW_UNQUOTED_NAME;
constexpr int TRAILING = JSON_ALLOW_TRAILING_COMMA;

constexpr std::string_view PREFIX = "invalid message data near position ";

// An input that is taken: the events as describe() gives them, and where the scan stops.
struct Taken {
    ScanMode mode;
    int options;
    std::string_view input;
    std::string_view events;
    unsigned int position;
};

// An input that is refused: the events before, and the text behind PREFIX.
struct Refused {
    ScanMode mode;
    int options;
    std::string_view input;
    std::string_view events;
    std::string failure;
};

// The table's word comes first, then the model's, hashes and all.
ScanOutcome scanned(ScanMode mode, int options, std::string_view input) {
    ScanOutcome const outcome = scanWithLibrary(mode, input, options);
    EXPECT_EQ(outcome, ReferenceScanner::scan(mode, input, options));
    return outcome;
}

template <std::size_t COUNT>
void expectTaken(Taken const (&rows)[COUNT]) {
    for (Taken const & row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.input) + " with options " +
                     std::to_string(row.options));
        ScanOutcome const outcome = scanned(row.mode, row.options, row.input);
        EXPECT_EQ(outcome.failure, "");
        EXPECT_EQ(describe(outcome.events), row.events);
        EXPECT_EQ(outcome.position, row.position);
    }
}

template <std::size_t COUNT>
void expectRefused(Refused const (&rows)[COUNT]) {
    for (Refused const & row : rows) {
        SCOPED_TRACE(::testing::PrintToString(row.input) + " with options " +
                     std::to_string(row.options));
        ScanOutcome const outcome = scanned(row.mode, row.options, row.input);
        EXPECT_EQ(outcome.failure, std::string(PREFIX) + row.failure);
        EXPECT_EQ(describe(outcome.events), row.events);
    }
}

/// The only event of an input.
JsonEvent eventOf(std::string_view input, int options = STRICT) {
    ScanOutcome const outcome = scanned(VALUE, options, input);
    EXPECT_EQ(outcome.failure, "");
    EXPECT_EQ(outcome.events.size(), 1U);
    return outcome.events.empty() ? JsonEvent{JsonEvent::NULL_VALUE} : outcome.events.front();
}

std::string inQuotes(std::string_view inside) { return '"' + std::string(inside) + '"'; }

/// The decoded text of the inside of a string.
std::string textOf(std::string_view inside) {
    JsonEvent const event = eventOf(inQuotes(inside));
    EXPECT_EQ(event.kind, JsonEvent::STRING);
    return event.text;
}

std::string failureOf(std::string_view input, int options = STRICT) {
    return scanned(VALUE, options, input).failure;
}

std::string after(unsigned int position, std::string_view text) {
    return nearPosition(position) + ": " + std::string(text);
}

// --- entries ---

TEST(JsonScannerEntries, ReadOneValueAndStopBehindIt) {
    constexpr Taken ROWS[] = {
        {OBJECT, STRICT, R"({"a":1} trailing)", "{ a: 1 }", 7},
        {OBJECT, STRICT, " \t\r\n{}", "{ }", 6},
        {OBJECT, STRICT, "{}}", "{ }", 2},
        {ARRAY, STRICT, "[1] 2", "[ 1 ]", 3},
        {ARRAY, STRICT, "  []", "[ ]", 4},
        {VALUE, STRICT, "{} {}", "{ }", 2},
        {VALUE, STRICT, "[][]", "[ ]", 2},
        {VALUE, STRICT, "\"a\" \"b\"", "\"a\"", 3},
        {VALUE, STRICT, "true ", "true", 4},
        {VALUE, STRICT, "12 13", "12", 2},
        {VALUE, STRICT, "7", "7", 1},
        {FIELDS, STRICT, R"("a":1,"b":[2])", "a: 1 b: [ 2 ]", 13},
        {FIELDS, STRICT, R"( "a" : 1 } x)", "a: 1", 9},
        {FIELDS, STRICT, "}", "", 0},
        {FIELDS, STRICT, "  }", "", 2},
        {FIELDS, TRAILING, R"("a":1,})", "a: 1", 6},
        {FIELDS, UNQUOTED, "a:1,b:2", "a: 1 b: 2", 7},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerEntries, TakeEmptyInputAsTheyEachMust) {
    constexpr Taken TAKEN[] = {
        {VALUE, STRICT, "", "", 0},        {VALUE, STRICT, " \b\t\n\f\r ", "", 7},
        {VALUE, HASH, "# nothing", "", 9}, {FIELDS, STRICT, "", "", 0},
        {FIELDS, STRICT, "   ", "", 3},    {FIELDS, UNQUOTED, "", "", 0},
    };
    expectTaken(TAKEN);
    Refused const REFUSED[] = {
        {OBJECT, STRICT, "", "", "0: tag '{' is expected, but was <>..."},
        {OBJECT, STRICT, "  ", "", "2: tag '{' is expected, but was <>..."},
        {ARRAY, STRICT, "", "", "0: tag '[' is expected, but was <>..."},
    };
    expectRefused(REFUSED);
}

TEST(JsonScannerEntries, RequireTheirBracket) {
    Refused const ROWS[] = {
        {OBJECT, STRICT, "[1]", "", "0: tag '{' is expected, but was <[1]>..."},
        {OBJECT, STRICT, " x", "", "1: tag '{' is expected, but was <x>..."},
        {ARRAY, STRICT, "{}", "", "0: tag '[' is expected, but was <{}>..."},
        {ARRAY, STRICT, "\n5", "", "1: tag '[' is expected, but was <5>..."},
    };
    expectRefused(ROWS);
}

TEST(JsonScannerEntries, PassTheUserDataToEveryCallback) {
    static int seen;
    seen = 0;
    int mark = 0;
    static int * expected;
    expected = &mark;
    struct Callbacks {
        static int plain(void * userData) { return seen += userData == expected; }
        static int name(void * userData, char const *, unsigned int) { return plain(userData); }
        static int text(void * userData, unsigned int, char const *, unsigned int) {
            return plain(userData);
        }
        static int boolean(void * userData, int) { return plain(userData); }
        static int number(void * userData, unsigned int, char const *, unsigned int, char const *,
                          char const *) {
            return plain(userData);
        }
    };
    SimpleJsonHandler handler = {Callbacks::plain,   Callbacks::plain, Callbacks::plain,
                                 Callbacks::plain,   Callbacks::name,  Callbacks::text,
                                 Callbacks::boolean, Callbacks::plain, Callbacks::number};
    ExactBuffer const data(R"({"a":["x",true,null,1]})"sv);
    EXPECT_EQ(JsonUtil::parseOneJsonObject(data, data.length(), &handler, &mark, STRICT),
              data.length());
    EXPECT_EQ(seen, 9);
}

// --- structure ---

TEST(JsonScannerStructure, ReportsEventsInOrder) {
    constexpr Taken ROWS[] = {
        {VALUE, STRICT, "{}", "{ }", 2},
        {VALUE, STRICT, "[]", "[ ]", 2},
        {VALUE, STRICT, "[[],[[]]]", "[ [ ] [ [ ] ] ]", 9},
        {VALUE, STRICT, R"({"a":{"b":{}},"c":[{}]})", "{ a: { b: { } } c: [ { } ] }", 23},
        {VALUE, STRICT, R"( [ 1 , "x" , true , false , null , { } , [ ] ] )",
         "[ 1 \"x\" true false null { } [ ] ]", 46},
        {VALUE, STRICT, R"({"a":1,"a":2})", "{ a: 1 a: 2 }", 13},  // the handler decides
        {VALUE, STRICT, R"({"":""})", "{ : \"\" }", 7},
        {VALUE, STRICT, "{ \"a\"\n:\t1\r}", "{ a: 1 }", 11},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerStructure, RefusesWithTheExactText) {
    Refused const ROWS[] = {
        {VALUE, STRICT, "{", "{", "1: tag '}' is expected, but was <>..."},
        {VALUE, STRICT, "[", "[", "1: tag ']' is expected, but was <>..."},
        {VALUE, STRICT, "[1", "[ 1", "2: tag ']' is expected, but was <>..."},
        {VALUE, STRICT, "[1}", "[ 1", "2: tag ',' is expected, but was <}>..."},
        {VALUE, STRICT, "[1 2]", "[ 1", "3: tag ',' is expected, but was <2]>..."},
        {VALUE, STRICT, "[1,", "[ 1", "3: tag ']' is expected, but was <>..."},
        {VALUE, STRICT, "[1,]", "[ 1", "3: invalid number value, data=<]>..."},
        {VALUE, STRICT, "[,1]", "[", "1: invalid number value, data=<,1]>..."},
        {VALUE, STRICT, "[1,,2]", "[ 1", "3: invalid number value, data=<,2]>..."},
        {VALUE, STRICT, "]", "", "0: invalid number value, data=<]>..."},
        {VALUE, STRICT, "{]", "{", "1: tag '\"' is expected, but was <]>..."},
        {VALUE, STRICT, "{a:1}", "{", "1: tag '\"' is expected, but was <a:1}>..."},
        {VALUE, STRICT, "{,}", "{", "1: tag '\"' is expected, but was <,}>..."},
        {VALUE, STRICT, R"({"a")", "{ a:", "4: tag ':' is expected, but was <>..."},
        {VALUE, STRICT, R"({"a" 1})", "{ a:", "5: tag ':' is expected, but was <1}>..."},
        {VALUE, STRICT, R"({"a":)", "{ a:", "5: tag '}' is expected, but was <>..."},
        {VALUE, STRICT, R"({"a":})", "{ a:", "5: invalid number value, data=<}>..."},
        {VALUE, STRICT, R"({"a":1 "b":2})", "{ a: 1",
         "7: tag ',' is expected, but was <\"b\":2}>..."},
        {VALUE, STRICT, R"({"a":1,})", "{ a: 1", "7: tag '\"' is expected, but was <}>..."},
        {VALUE, STRICT, R"({"a":1,)", "{ a: 1", "7: tag '\"' is expected, but was <>..."},
        {VALUE, STRICT, R"({"a":1])", "{ a: 1", "6: tag ',' is expected, but was <]>..."},
        {VALUE, STRICT, R"({"a)", "{", "3: tag '\"' is expected, but was <>..."},
        {VALUE, STRICT, "\"abc", "", "4: tag '\"' is expected, but was <>..."},
        {VALUE, STRICT, "\"", "", "1: tag '\"' is expected, but was <>..."},
        {FIELDS, STRICT, "x", "", "0: tag '\"' is expected, but was <x>..."},
        {FIELDS, STRICT, R"("a":1;)", "a: 1", "5: tag ',' is expected, but was <;>..."},
        {FIELDS, STRICT, R"("a":[)", "a: [", "5: tag ']' is expected, but was <>..."},
    };
    expectRefused(ROWS);
}

TEST(JsonScannerStructure, ValueMissingAtTheEndOfBareFieldsIsNoFailure) {
    constexpr Taken ROWS[] = {{FIELDS, STRICT, R"("a":)", "a:", 4},
                              {FIELDS, STRICT, R"("a": )", "a:", 5},
                              {FIELDS, UNQUOTED, "a:", "a:", 2}};
    expectTaken(ROWS);
}

// --- trailing commas ---

TEST(JsonScannerTrailingComma, IsTakenBeforeTheClosingBracket) {
    constexpr Taken TAKEN[] = {
        {VALUE, TRAILING, "[1,]", "[ 1 ]", 4},
        {VALUE, TRAILING, "[1 , ]", "[ 1 ]", 6},
        {VALUE, TRAILING, R"({"a":1,})", "{ a: 1 }", 8},
        {VALUE, TRAILING, "[[1,],]", "[ [ 1 ] ]", 7},
        {VALUE, TRAILING | UNQUOTED, "{a:1,}", "{ a: 1 }", 6},
    };
    expectTaken(TAKEN);
    Refused const REFUSED[] = {
        {VALUE, TRAILING, "[,]", "[", "1: invalid number value, data=<,]>..."},
        {VALUE, TRAILING, "[1,,]", "[ 1", "3: invalid number value, data=<,]>..."},
        {VALUE, TRAILING, "{,}", "{", "1: tag '\"' is expected, but was <,}>..."},
        {VALUE, TRAILING, "[1,}", "[ 1", "3: invalid number value, data=<}>..."},
        {VALUE, TRAILING, "[1,", "[ 1", "3: tag ']' is expected, but was <>..."},
    };
    expectRefused(REFUSED);
}

// --- unquoted names ---

TEST(JsonScannerUnquotedName, RunsToTheColon) {
    constexpr Taken ROWS[] = {
        {VALUE, UNQUOTED, "{a:1}", "{ a: 1 }", 5},
        {VALUE, UNQUOTED, "{ a : 1 }", "{ a : 1 }", 9},  // the name is "a "
        {VALUE, UNQUOTED, "{:1}", "{ : 1 }", 4},
        {VALUE, UNQUOTED, "{a}b]c:1}", "{ a}b]c: 1 }", 9},
        {VALUE, UNQUOTED, R"({"a":1,b:2})", "{ a: 1 b: 2 }", 11},
        {VALUE, UNQUOTED, "{\xE6\x97\xA5\xFF:1}", "{ \xE6\x97\xA5\xFF: 1 }", 8},
        {VALUE, UNQUOTED, "{a\0b:1}"sv, "{ a\0b: 1 }"sv, 7},
        {VALUE, UNQUOTED, R"({"a:":1})", "{ a:: 1 }", 8},
    };
    expectTaken(ROWS);
    ScanOutcome const blank = scanned(VALUE, UNQUOTED, "{ a : 1 }");
    EXPECT_EQ(blank.events.at(1).text, "a ");
}

TEST(JsonScannerUnquotedName, GivesWayToTheQuotedOne) {
    Refused const ROWS[] = {
        {VALUE, UNQUOTED, "{a\"b\":1}", "{", "1: tag '\"' is expected, but was <a\"b\":1}>..."},
        {VALUE, UNQUOTED, "{a\\b:1}", "{", "1: tag '\"' is expected, but was <a\\b:1}>..."},
        {VALUE, UNQUOTED, "{a[b:1}", "{", "1: tag '\"' is expected, but was <a[b:1}>..."},
        {VALUE, UNQUOTED, "{a{b:1}", "{", "1: tag '\"' is expected, but was <a{b:1}>..."},
        {VALUE, UNQUOTED, "{a,b:1}", "{", "1: tag '\"' is expected, but was <a,b:1}>..."},
        {VALUE, UNQUOTED, "{,}", "{", "1: tag '\"' is expected, but was <,}>..."},
    };
    expectRefused(ROWS);
}

TEST(JsonScannerUnquotedName, MayFillTheInputUpToItsEnd) {
    Refused const ROWS[] = {
        {VALUE, UNQUOTED, "{a}", "{ a}:", "3: tag ':' is expected, but was <>..."},
        {VALUE, UNQUOTED, "{abc", "{ abc:", "4: tag ':' is expected, but was <>..."},
        {VALUE, UNQUOTED, "{a:1,", "{ a: 1 :", "5: tag ':' is expected, but was <>..."},
        {VALUE, UNQUOTED, "{a:1,}", "{ a: 1 }:", "6: tag ':' is expected, but was <>..."},
        {FIELDS, UNQUOTED, "abcdefgh", "abcdefgh:", "8: tag ':' is expected, but was <>..."},
        {VALUE, UNQUOTED, "[[[{abc", "[ [ [ { abc:", "7: tag ':' is expected, but was <>..."},
    };
    expectRefused(ROWS);
}

// --- space and comments ---

TEST(JsonScannerSpace, IsTheSameSixCharactersEverywhere) {
    for (int value = 0; value < 256; ++value) {
        char const byte = static_cast<char>(value);
        bool const isSpace =
            value == 8 || value == 9 || value == 10 || value == 12 || value == 13 || value == 32;
        for (std::string const form : {"_[_1_,_{_\"a\"_:_2_}_]", "_[1]", "[_1]", "[1_]", "[1,_2]",
                                       "{_\"a\":1}", "{\"a\"_:1}", "{\"a\":_1}", "{\"a\":1_}"}) {
            std::string input = form;
            std::replace(input.begin(), input.end(), '_', byte);
            ScanOutcome const outcome = scanned(VALUE, STRICT, input);
            if (isSpace) {
                EXPECT_EQ(outcome.failure, "") << value << ' ' << form;
            }
        }
        ScanOutcome const outcome = scanned(VALUE, STRICT, std::string(3, byte) + "[]");
        if (!isSpace &&
            std::string_view("\"{[tfn-0123456789").find(byte) == std::string_view::npos) {
            EXPECT_TRUE(outcome.failure.starts_with(after(0, "invalid number value, data=")))
                << value;
        }
    }
    EXPECT_EQ(describe(scanned(VALUE, STRICT, "\b[\b1\b]").events), "[ 1 ]");
    EXPECT_EQ(failureOf("\v1"), after(0, "invalid number value, data=<\v1>..."));
}

TEST(JsonScannerComments, RunToTheLineFeed) {
    constexpr Taken ROWS[] = {
        {VALUE, HASH, "# x\n1", "1", 5},
        {VALUE, SLASH, "// x\n1", "1", 6},
        {VALUE, HASH, "[1 # one, two\n, 2]", "[ 1 2 ]", 18},
        {VALUE, SLASH, "[1//\n//\n,2//]\n]", "[ 1 2 ]", 15},
        {VALUE, HASH | SLASH, "#a\n//b\n#c // d\n{}", "{ }", 17},
        {VALUE, HASH, "{#\n\"a\"#\n:#\n1#\n}", "{ a: 1 }", 15},
        {VALUE, HASH, "# no line feed", "", 14},
        {VALUE, SLASH, "//", "", 2},
        {FIELDS, SLASH, "\"a\":1 // end", "a: 1", 12},
        {VALUE, HASH, "#\r1\n2", "2", 5},  // a carriage return ends nothing
        {VALUE, HASH, "#a\0b\n3"sv, "3", 6},
        {VALUE, HASH | SLASH, R"(["# //"])", "[ \"# //\" ]", 8},
        {VALUE, UNQUOTED | HASH, "{#:1}\na:2}", "{ a: 2 }", 10},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerComments, AreRefusedWithoutTheirOption) {
    Refused const ROWS[] = {
        {VALUE, STRICT, "# x\n1", "", "0: invalid number value, data=<# x\n1>..."},
        {VALUE, SLASH, "# x\n1", "", "0: invalid number value, data=<# x\n1>..."},
        {VALUE, HASH, "// x\n1", "", "0: invalid number value, data=<// x\n1>..."},
        {VALUE, STRICT, "[1 # x\n]", "[ 1", "3: tag ',' is expected, but was <# x\n]>..."},
        {OBJECT, HASH, "//\n{}", "", "0: tag '{' is expected, but was <//\n{}>..."},
        {VALUE, SLASH, "[1/", "[ 1", "2: tag ',' is expected, but was </>..."},
        {VALUE, SLASH, "/", "", "0: invalid number value, data=</>..."},
        {VALUE, SLASH, "/ /", "", "0: invalid number value, data=</ />..."},
        {VALUE, SLASH, "/*\n*/1", "", "0: invalid number value, data=</*\n*/1>..."},
        {VALUE, 1, "#\n1", "", "0: invalid number value, data=<#\n1>..."},
    };
    expectRefused(ROWS);
}

// --- words ---

TEST(JsonScannerWords, AreTakenWithAnyByteBehind) {
    constexpr Taken ROWS[] = {
        {VALUE, STRICT, "true ", "true", 4},
        {VALUE, STRICT, "false ", "false", 5},
        {VALUE, STRICT, "null ", "null", 4},
        {VALUE, STRICT, "trueish", "true", 4},
        {VALUE, STRICT, "nullnull", "null", 4},
        {VALUE, STRICT, "false\0"sv, "false", 5},
        {VALUE, STRICT, "[true,false,null]", "[ true false null ]", 17},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerWords, DeliberateNeedOfOneMoreByteBehind) {
    Refused const ROWS[] = {
        {VALUE, STRICT, "true", "", "0: boolean value 'true' is expected, but was <true>..."},
        {VALUE, STRICT, "false", "", "0: boolean value 'false' is expected, but was <false>..."},
        {VALUE, STRICT, "null", "", "0: 'null' is expected, buf was <null>..."},
        {FIELDS, STRICT, R"("a":true)",
         "a:", "4: boolean value 'true' is expected, but was <true>..."},
    };
    expectRefused(ROWS);
}

TEST(JsonScannerWords, AreRefusedWithTheExactText) {
    Refused const ROWS[] = {
        {VALUE, STRICT, "t", "", "0: boolean value 'true' is expected, but was <t>..."},
        {VALUE, STRICT, "[tru]", "[", "1: boolean value 'true' is expected, but was <tru]>..."},
        {VALUE, STRICT, "[trUe]", "[", "1: boolean value 'true' is expected, but was <trUe]>..."},
        {VALUE, STRICT, "[fals ]", "[",
         "1: boolean value 'false' is expected, but was <fals ]>..."},
        {VALUE, STRICT, " f", "", "1: boolean value 'false' is expected, but was <f>..."},
        {VALUE, STRICT, "[nul]", "[", "1: 'null' is expected, buf was <nul]>..."},
        {VALUE, STRICT, "nil  ", "", "0: 'null' is expected, buf was <nil  >..."},
        {VALUE, STRICT, "True ", "", "0: invalid number value, data=<True >..."},
    };
    expectRefused(ROWS);
}

// --- numbers ---

TEST(JsonScannerNumbers, AreSlicesWithTheirMarks) {
    constexpr Taken ROWS[] = {
        {VALUE, STRICT, "[0]", "[ 0 ]", 3},
        {VALUE, STRICT, "[-0]", "[ -0 ]", 4},
        {VALUE, STRICT, "[10]", "[ 10 ]", 4},
        {VALUE, STRICT, "[-987654321012345678909]", "[ -987654321012345678909 ]", 24},
        {VALUE, STRICT, "[1.5]", "[ 1.5 .2 ]", 5},
        {VALUE, STRICT, "[0.5]", "[ 0.5 .2 ]", 5},
        {VALUE, STRICT, "[-0.25e-3]", "[ -0.25e-3 .3 e6 ]", 10},
        {VALUE, STRICT, "[1e5]", "[ 1e5 e2 ]", 5},
        {VALUE, STRICT, "[1E+05]", "[ 1E+05 e2 ]", 7},
        {VALUE, STRICT, "[0e0]", "[ 0e0 e2 ]", 5},
        {VALUE, STRICT, "[1.50E10,2]", "[ 1.50E10 .2 e5 2 ]", 11},
        {VALUE, STRICT, "1 ", "1", 1},
        {VALUE, STRICT, "0 1", "0", 1},
        {VALUE, STRICT, "-5", "-5", 2},
        {VALUE, STRICT, "12345678901234567", "12345678901234567", 17},
        {VALUE, STRICT, "0x10", "0", 1},
        {VALUE, STRICT, "1-2", "1", 1},
        {VALUE, STRICT, "1.55", "1.55 .1", 4},
        {VALUE, STRICT, "1e55", "1e55 e1", 4},
        {VALUE, STRICT, "1e+55", "1e+55 e1", 5},
        {VALUE, STRICT, "1.5 ", "1.5 .1", 3},
        {VALUE, STRICT, "1.2.3", "1.2 .1", 3},
        {VALUE, STRICT, "1e2e3", "1e2 e1", 3},
        {VALUE, STRICT, "1e2.5", "1e2 e1", 3},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerNumbers, DeliberateFractionOfOneDigitAtTheEndIsLeft) {
    constexpr Taken ROWS[] = {
        {VALUE, STRICT, "1.5", "1", 1},  {VALUE, STRICT, "-0.5", "-0", 2},
        {VALUE, STRICT, "1.", "1", 1},   {VALUE, STRICT, "1.x", "1", 1},
        {VALUE, STRICT, "1. 5", "1", 1}, {FIELDS, STRICT, R"("a":1.55)", "a: 1.55 .5", 8},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerNumbers, DeliberateExponentStartWithoutAnExponent) {
    constexpr Taken ROWS[] = {
        {VALUE, STRICT, "1e5", "1 e1", 1},
        {VALUE, STRICT, "1e+5", "1 e1", 1},
        {VALUE, STRICT, "1e-", "1 e1", 1},
        {VALUE, STRICT, "1ex", "1 e1", 1},
        {VALUE, STRICT, "1e+x ", "1 e1", 1},
        {VALUE, STRICT, "1E ", "1 e1", 1},
        {VALUE, STRICT, "1e", "1", 1},
        {VALUE, STRICT, "1e++5 ", "1 e1", 1},
        {VALUE, STRICT, "1.5e ", "1.5 .1 e3", 3},
    };
    expectTaken(ROWS);
    Refused const REFUSED[] = {
        {VALUE, STRICT, "[1e]", "[ 1 e2", "2: tag ',' is expected, but was <e]>..."},
        {VALUE, STRICT, "[1e+]", "[ 1 e2", "2: tag ',' is expected, but was <e+]>..."},
        {VALUE, STRICT, "[1E-x]", "[ 1 e2", "2: tag ',' is expected, but was <E-x]>..."},
    };
    expectRefused(REFUSED);
}

TEST(JsonScannerNumbers, AreRefusedWithTheExactText) {
    Refused const ROWS[] = {
        {VALUE, STRICT, "-", "", "0: invalid number value(end of data encountered)"},
        {VALUE, STRICT, " -", "", "1: invalid number value(end of data encountered)"},
        {VALUE, STRICT, "[-]", "[", "2: invalid number value, data=<]>..."},
        {VALUE, STRICT, "[--1]", "[", "2: invalid number value, data=<-1]>..."},
        {VALUE, STRICT, "[+1]", "[", "1: invalid number value, data=<+1]>..."},
        {VALUE, STRICT, "[.5]", "[", "1: invalid number value, data=<.5]>..."},
        {VALUE, STRICT, "[-.5]", "[", "2: invalid number value, data=<.5]>..."},
        {VALUE, STRICT, "[01]", "[", "1: invalid number value with leading zero. data=<01]>..."},
        {VALUE, STRICT, "00", "", "0: invalid number value with leading zero. data=<00>..."},
        {VALUE, STRICT, "[-01]", "[", "2: invalid number value with leading zero. data=<01]>..."},
        {VALUE, STRICT, "[1.]", "[ 1", "2: tag ',' is expected, but was <.]>..."},
        {VALUE, STRICT, "[NaN]", "[", "1: invalid number value, data=<NaN]>..."},
        {VALUE, STRICT, "'a'", "", "0: invalid number value, data=<'a'>..."},
        {VALUE, STRICT, "\xEF\xBB\xBF{}", "", "0: invalid number value, data=<\xEF\xBB\xBF{}>..."},
        {VALUE, STRICT, "\0"sv, "", "0: invalid number value, data=<>..."},
    };
    expectRefused(ROWS);
}

TEST(JsonScannerNumbers, HaveNoLimitOfLength) {
    for (std::size_t const size : {7U, 8U, 9U, 15U, 16U, 17U, 31U, 32U, 33U, 64U, 1000U, 70000U}) {
        std::string const digits(size, '7');
        for (std::string const & number : {digits, "-" + digits, "0." + digits, "1e" + digits,
                                           digits + "." + digits + "E-" + digits}) {
            ScanOutcome const outcome = scanned(VALUE, STRICT, "[" + number + "]");
            ASSERT_EQ(outcome.events.size(), 3U);
            EXPECT_EQ(outcome.events[1].text, number);
        }
    }
}

// --- strings ---

struct StringRow {
    std::string_view inside;
    std::string_view text;
};

TEST(JsonScannerStrings, AreDecoded) {
    constexpr StringRow ROWS[] = {
        {"", ""},
        {"a", "a"},
        {R"(\\)", "\\"},
        {R"(\/)", "/"},
        {R"(\n)", "\n"},
        {R"(\r)", "\r"},
        {R"(\t)", "\t"},
        {R"(\")", "\""},
        {R"(\f)", "\f"},
        {R"(\b)", "\b"},
        {R"(a\\\"b)", "a\\\"b"},
        {R"(\u0041)", "A"},
        {R"(\u00e9\u00E9)", "\xC3\xA9\xC3\xA9"},
        {R"(\u3042)", "\xE3\x81\x82"},
        {R"(\uFfFf)", "\xEF\xBF\xBF"},
        {R"(\u0000x)", "\0x"sv},  // a NUL as data, which ends nothing
        {R"(\u0022\u005c)", "\"\\"},
        {R"(\ud83d\ude00)", "\xF0\x9F\x98\x80"},
        {R"(\ud800\udc00)", "\xF0\x90\x80\x80"},
        {R"(\ud83f\udfff)", "\xF0\x9F\xBF\xBF"},
        {R"(\ude00)", "\xED\xB8\x80"},
        {R"(\udfff)", "\xED\xBF\xBF"},
        {R"(\ud7ff\ue000)", "\xED\x9F\xBF\xEE\x80\x80"},
        {"\x01\x1F\x7F\n", "\x01\x1F\x7F\n"},  // control characters stay
        {"\xC3\xA9", "\xC3\xA9"},
        {"\xE6\x97\xA5\xE6\x9C\xAC", "\xE6\x97\xA5\xE6\x9C\xAC"},
        {"\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
        {"\xF8\x80\xA0\x80\x80", "\xF8\x80\xA0\x80\x80"},
        {"\xFC\x84\x80\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80"},
        {"\xED\xA0\x80", "\xED\xA0\x80"},
        {"/", "/"},
    };
    for (StringRow const & row : ROWS) {
        EXPECT_EQ(textOf(row.inside), row.text) << row.inside;
    }
}

TEST(JsonScannerStrings, DeliberateFiveBytesForPairsFrom20000On) {
    EXPECT_EQ(textOf(R"(\ud840\udc00)"), "\xF8\x80\xA0\x80\x80");
    EXPECT_EQ(textOf(R"(\udbff\udfff)"), "\xF8\x84\x8F\xBF\xBF");
}

TEST(JsonScannerStrings, DeliberateTrailBytesAreNotTested) {
    // The first byte announces the rest, whatever that is: here two of the quotes are text.
    EXPECT_EQ(describe(scanned(VALUE, STRICT, "\"\xC3\"\"").events), "\"\xC3\"\"");
    EXPECT_EQ(describe(scanned(VALUE, STRICT, "\"\xE3\"\"\"").events), "\"\xE3\"\"\"");
    EXPECT_EQ(describe(scanned(VALUE, STRICT, "\"\xC3\\\"").events), "\"\xC3\\\"");
    EXPECT_EQ(textOf("\xC3("), "\xC3(");
    EXPECT_EQ(textOf("\xE3\x81n"), "\xE3\x81n");
}

TEST(JsonScannerStrings, DeliberateOverlongFormsCountAsTheirCharacter) {
    // Code point 34, by three bytes that end the text.
    for (std::string_view const quote :
         {"\xC0\xA2"sv, "\xC0\x22"sv, "\xC0\x62"sv, "\xE0\x80\xA2"sv, "\xF0\x80\x80\xA2"sv,
          "\xF8\x80\x80\x80\xA2"sv, "\xFC\x80\x80\x80\x80\xA2"sv}) {
        std::string const rest = std::string(quote) + "x\"";
        EXPECT_EQ(failureOf("\"ab" + rest),
                  after(3, "tag '\"' is expected, but was <" + rest + ">..."));
    }
    for (std::string_view const nul : {"\xC0\x80"sv, "\xC0\x40"sv, "\xE0\x80\x80"sv}) {
        std::string const rest = std::string(nul) + "x\"";
        EXPECT_EQ(failureOf("\"ab" + rest),
                  after(3, "tag '\"' is expected, but was <" + rest + ">..."));
    }
    for (std::string_view const backslash :
         {"\xC1\x9C"sv, "\xC1\x1C"sv, "\xE0\x81\x9C"sv, "\xF0\x80\x81\x9C"sv}) {
        EXPECT_EQ(textOf(std::string(backslash) + "n" + std::string(backslash) + "u0041"), "\nA");
        // The position is that of the character's first byte, and the excerpt is behind the escape.
        EXPECT_EQ(failureOf("\"a" + std::string(backslash) + "xyz\""),
                  after(2, "invalid escape sequence \\x, data=<yz\">..."));
        EXPECT_EQ(failureOf("\"a" + std::string(backslash) + "n"),
                  after(2, "invalid escape sequence(end of data)"));
    }
}

TEST(JsonScannerStrings, EndAtARawNul) {
    EXPECT_EQ(failureOf("\"ab\0cd\""sv), after(3, "tag '\"' is expected, but was <>..."));
    EXPECT_EQ(failureOf("[\"\0\"]"sv), after(2, "tag '\"' is expected, but was <>..."));
    EXPECT_EQ(failureOf("{\"a\0\":1}"sv), after(3, "tag '\"' is expected, but was <>..."));
}

TEST(JsonScannerStrings, EndAtTheQuoteBehindAnEscapedBackslash) {
    constexpr Taken ROWS[] = {{VALUE, STRICT, R"("a\\" x)", R"("a\")", 5},
                              {VALUE, STRICT, R"("\\\\"")", R"("\\")", 6}};
    expectTaken(ROWS);
}

TEST(JsonScannerStrings, ServeAsNamesToo) {
    constexpr Taken ROWS[] = {
        {VALUE, STRICT, R"({"a\u0041\n":1})", "{ aA\n: 1 }", 15},
        {VALUE, STRICT, "{\"\xE6\x97\xA5\":1}", "{ \xE6\x97\xA5: 1 }", 9},
        {VALUE, STRICT, R"({"\ud83d\ude00":1})", "{ \xF0\x9F\x98\x80: 1 }", 18},
    };
    expectTaken(ROWS);
}

TEST(JsonScannerStrings, RefuseBadEscapesWithTheExactText) {
    struct Row {
        std::string_view input;
        std::string failure;
    };
    Row const ROWS[] = {
        {"\"\\", "1: invalid escape sequence(end of data)"},
        {"\"\\n", "1: invalid escape sequence(end of data)"},
        {"\"abc\\\"", "4: invalid escape sequence(end of data)"},
        {R"("\x41")", R"(1: invalid escape sequence \x, data=<41">...)"},
        {R"("a\'b")", R"(2: invalid escape sequence \', data=<b">...)"},
        {R"("\U0041")", R"(1: invalid escape sequence \U, data=<0041">...)"},
        {R"("\0")", R"(1: invalid escape sequence \0, data=<">...)"},
        {"\"\\\xE3\x81\x82\"", "1: invalid escape sequence \\\xE3, data=<\x81\x82\">..."},
        // A NUL as the character ends the message.
        {"\"\\\0abc\""sv, "1: invalid escape sequence \\"},
        {"\"\\x\0abc\""sv, "1: invalid escape sequence \\x, data=<>..."},
        {"\"\\%s%n\"", "1: invalid escape sequence \\%, data=<s%n\">..."},
        {R"("\u)", "1: invalid escape sequence(end of data)"},
        {R"("\u")", "3: encountered end of data while a HEX character is expected"},
        {R"("\u004)", "3: encountered end of data while a HEX character is expected"},
        {R"("\u0041)", "3: encountered end of data while a HEX character is expected"},
        {R"("\u004")", "3: encountered end of data while a HEX character is expected"},
        {R"("\ud83d\u)", "9: encountered end of data while a HEX character is expected"},
        {R"("\ud83d\ude00)", "9: encountered end of data while a HEX character is expected"},
        {R"("\ux041")", "3: a HEX character is expected, but was 'x', data=<x041\">..."},
        {R"("\u0g41")", "4: a HEX character is expected, but was 'g', data=<0g41\">..."},
        {R"("\u00 1")", "5: a HEX character is expected, but was ' ', data=<00 1\">..."},
        {R"("\u004G")", "6: a HEX character is expected, but was 'G', data=<004G\">"},
        {R"("\u004":1})", "6: a HEX character is expected, but was '\"', data=<004\":1}>"},
        {"\"\\u00\0001\""sv, "5: a HEX character is expected, but was '"},
        {"\"\\u000\0\""sv, "6: a HEX character is expected, but was '"},
        {"\"\\u0x\0001\""sv, "4: a HEX character is expected, but was 'x', data=<0x>..."},
        {R"("\u00%s")", "5: a HEX character is expected, but was '%', data=<00%s\">..."},
        {R"("\ud83dx")", "7: tag '\\' is expected, but was <x\">..."},
        {R"("\ud83d")", "7: tag '\\' is expected, but was <\">..."},
        {R"("\ud83d\n")", "8: tag 'u' is expected, but was <n\">..."},
        {R"("\ud83d\)", "8: tag 'u' is expected, but was <>..."},
        {R"("\ud83d\u0041")",
         R"(1: invalid unicode code surrogate pair(0xd83d, 0x41), data=<\ud83d\u0041">...)"},
        {R"("ab\ud800\udbff")",
         R"(3: invalid unicode code surrogate pair(0xd800, 0xdbff), data=<\ud800\udbff">...)"},
        {R"("\udBFF\uE000 ")",
         R"(1: invalid unicode code surrogate pair(0xdbff, 0xe000), data=<\udBFF\uE000 ">...)"},
        {R"("\ud83d\u00g0")", "11: a HEX character is expected, but was 'g', data=<00g0\">..."},
    };
    for (Row const & row : ROWS) {
        EXPECT_EQ(failureOf(row.input), std::string(PREFIX) + row.failure)
            << ::testing::PrintToString(row.input);
    }
}

TEST(JsonScannerStrings, RefuseBadLeadsAndCutSequencesWithTheExactText) {
    struct Row {
        std::string_view input;
        std::string failure;
    };
    Row const ROWS[] = {
        {"\"a\x80\"", undecidedText(2)},
        {"\"\xBF\"", undecidedText(1)},
        {"\"\xFE\"", undecidedText(1)},
        {"\"\xFF\"", undecidedText(1)},
        {"\"\xC3", cutSequenceText(1, 2)},
        {"\"a\xE3\"", cutSequenceText(2, 3)},
        {"\"\xF0\x9F\"", cutSequenceText(1, 4)},
        {"\"\xF8\x80\x80\"", cutSequenceText(1, 5)},
        {"\"\xFC\x80\x80\x80\"", cutSequenceText(1, 6)},
        {"{\"\xC3", cutSequenceText(2, 2)},
        {"{\"\x80\":1}", undecidedText(2)},
    };
    for (Row const & row : ROWS) {
        EXPECT_EQ(failureOf(row.input), row.failure) << ::testing::PrintToString(row.input);
    }
    EXPECT_EQ(cutSequenceText(1, 2),
              "invalid message data near position 1: no enough bytes(at least 2 bytes expected)");
}

// --- excerpts ---

TEST(JsonScannerExcerpts, AreCutAtTheirLimit) {
    for (std::size_t const size : {127U, 128U, 129U, 255U, 256U, 257U, 600U}) {
        std::string const rest = "x" + std::string(size - 1, '.');
        std::string const longOne = '<' + rest.substr(0, 256) + ">...";
        std::string const shortOne = '<' + rest.substr(0, 128) + ">...";
        EXPECT_EQ(failureOf("[1" + rest), after(2, "tag ',' is expected, but was " + longOne));
        EXPECT_EQ(failureOf(rest), after(0, "invalid number value, data=" + shortOne));
        EXPECT_EQ(failureOf("0" + std::string(size - 1, '5')),
                  after(0, "invalid number value with leading zero. data=<" +
                               ("0" + std::string(size - 1, '5')).substr(0, 128) + ">..."));
        EXPECT_EQ(failureOf("\"\\q" + rest),
                  after(1, "invalid escape sequence \\q, data=" + shortOne));
        EXPECT_EQ(failureOf("\"\\u" + rest),
                  after(3, "a HEX character is expected, but was 'x', data=" + shortOne));
        EXPECT_EQ(failureOf("\"\\u000" + rest),
                  after(6, "a HEX character is expected, but was 'x', data=<" +
                               ("000" + rest).substr(0, 128) + ">"));
        EXPECT_EQ(failureOf("\"\\ud800\\u0000" + rest),
                  after(1, "invalid unicode code surrogate pair(0xd800, 0x0), data=<" +
                               ("\\ud800\\u0000" + rest).substr(0, 128) + ">..."));
        EXPECT_EQ(failureOf("t" + rest), after(0, "boolean value 'true' is expected, but was <" +
                                                      ("t" + rest).substr(0, 128) + ">..."));
        EXPECT_EQ(failureOf("n" + rest),
                  after(0, "'null' is expected, buf was <" + ("n" + rest).substr(0, 128) + ">..."));
    }
}

TEST(JsonScannerExcerpts, StopAtANulAndTakePercentSignsAsTheyAre) {
    EXPECT_EQ(failureOf("[1 ab\0cd"sv), after(3, "tag ',' is expected, but was <ab>..."));
    EXPECT_EQ(failureOf("x%s%n%d"), after(0, "invalid number value, data=<x%s%n%d>..."));
    EXPECT_EQ(failureOf("[1%n"), after(2, "tag ',' is expected, but was <%n>..."));
}

TEST(JsonScannerExcerpts, MayCutACharacter) {
    std::string const rest = "x" + std::string(126, '.') + "\xE3\x81\x82";
    EXPECT_EQ(failureOf(rest),
              after(0, "invalid number value, data=<" + rest.substr(0, 128) + ">..."));
}

// --- hashes ---

TEST(JsonScannerHashes, StartAtTheInitialValue) { EXPECT_EQ(eventOf("\"\"").hash, 0x539C1505U); }

TEST(JsonScannerHashes, FoldDecodedBytesOfStrings) {
    EXPECT_EQ(eventOf("\"a\"").hash, 0x539C1505U * 33 + 'a');
    EXPECT_EQ(eventOf("\"ab\"").hash, (0x539C1505U * 33 + 'a') * 33 + 'b');
    EXPECT_EQ(eventOf(R"("\n")").hash, eventOf(R"("\u000a")").hash);
    EXPECT_EQ(eventOf(R"("\u3042")").hash, eventOf("\"\xE3\x81\x82\"").hash);
    EXPECT_EQ(eventOf(R"("\u0000")").hash, 0x539C1505U * 33);
}

TEST(JsonScannerHashes, FoldTheSourceTextOfNumbers) {
    EXPECT_EQ(eventOf("1 ").hash, 0x539C1505U * 33 + '1');
    EXPECT_EQ(eventOf("-1.5e+3 ").hash, ReferenceScanner::hashOf("-1.5e+3"));
    EXPECT_EQ(eventOf("1.5").hash, ReferenceScanner::hashOf("1"));
    EXPECT_EQ(eventOf("1.0 ").hash, eventOf("\"1.0\"").hash);
}

TEST(JsonScannerHashes, DeliberateBytesAreSigned) {
    EXPECT_EQ(eventOf("\"\xC3\xA9\"").hash, (0x539C1505U * 33 - 61) * 33 - 87);
}

// --- one special byte anywhere in a text of any length, anywhere in memory ---

class JsonScannerBlocks : public ::testing::TestWithParam<int> {};

TEST_P(JsonScannerBlocks, AgreeWithTheModelAroundASpecialByteAnywhere) {
    char const special = static_cast<char>(GetParam());
    for (std::size_t size = 0; size <= 200; ++size) {
        for (std::size_t place = 0; place < std::max<std::size_t>(size, 1);
             place += 1 + size / 40) {
            std::string inside(size, 'k');
            if (size != 0) {
                inside[place] = special;
            }
            std::string const input = "[\"" + inside + "\",1]";
            ScanOutcome const expected = ReferenceScanner::scan(VALUE, input, STRICT);
            ASSERT_EQ(scanWithLibrary(VALUE, input, STRICT), expected) << size << " at " << place;
        }
    }
}

TEST_P(JsonScannerBlocks, AgreeWithTheModelAtEveryPlaceOfALine) {
    char const special = static_cast<char>(GetParam());
    for (std::size_t size : {7U, 16U, 33U, 64U, 100U}) {
        for (std::size_t place = 0; place < size; ++place) {
            std::string inside(size, 'k');
            inside[place] = special;
            ASSERT_EQ(scanWithLibrary(VALUE, inQuotes(inside) + " ", STRICT),
                      ReferenceScanner::scan(VALUE, inQuotes(inside) + " ", STRICT))
                << size << " at " << place;
        }
    }
}

TEST_P(JsonScannerBlocks, GiveOneResultAtEveryAlignment) {
    char const special = static_cast<char>(GetParam());
    for (std::size_t const size : {0U, 5U, 15U, 16U, 17U, 31U, 32U, 33U, 63U, 64U, 65U, 130U}) {
        std::string inside(size, 'q');
        if (size != 0) {
            inside[size / 2] = special;
        }
        std::string const input = R"({"name":")" + inside + R"("})";
        ScanOutcome const expected = ReferenceScanner::scan(VALUE, input, STRICT);
        std::vector<char> room(input.size() + 64);
        for (std::size_t shift = 0; shift < 64; ++shift) {
            std::copy(input.begin(), input.end(),
                      room.begin() + static_cast<std::ptrdiff_t>(shift));
            EventRecorder recorder(room.data() + shift);
            ScanOutcome outcome;
            try {
                outcome.position = JsonUtil::parseOneJsonValue(
                    room.data() + shift, static_cast<unsigned int>(input.size()),
                    &EventRecorder::handler(), &recorder, STRICT);
            } catch (JsonUtil::XParsingError const & error) {
                outcome.failure = error.getErrorMessage();
            }
            outcome.events = recorder.takeEvents();
            ASSERT_EQ(outcome, expected) << size << " bytes, shifted by " << shift;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Bytes, JsonScannerBlocks,
                         ::testing::Values('"', '\\', 0x00, 0x01, 0x08, 0x0A, 0x1F, 0x20, 0x21,
                                           0x23, 0x5B, 0x5D, 0x7F, 0x80, 0xBF, 0xC0, 0xC1, 0xC2,
                                           0xE0, 0xE3, 0xF0, 0xF7, 0xF8, 0xFB, 0xFC, 0xFD, 0xFE,
                                           0xFF));

TEST(JsonScannerRuns, AgreeWithTheModelOnJapaneseOfAllLengths) {
    std::string japanese;
    for (int i = 0; i < 40; ++i) {
        japanese += "\xE6\x97\xA5\xE6\x9C\xAC" + std::string(static_cast<std::size_t>(i % 5), 'x');
    }
    for (std::size_t size = 0; size <= 200; ++size) {
        std::string const input = inQuotes(japanese.substr(0, size));
        ASSERT_EQ(scanWithLibrary(VALUE, input, STRICT),
                  ReferenceScanner::scan(VALUE, input, STRICT))
            << size;
    }
}

TEST(JsonScannerRuns, AgreeWithTheModelOnRunsOfSpaceAndDigitsOfAllLengths) {
    for (std::size_t size = 0; size <= 100; ++size) {
        for (char const end : {'1', '\t', '\b', '\v', ']', '\x80', '\0', ' '}) {
            std::string const blanks = std::string(size, ' ') + end;
            std::string const digits = '1' + std::string(size, '9') + end;
            for (std::string const & input : {blanks, "[" + blanks, "[1" + blanks + "]", digits,
                                              "[" + digits + "]", "[0." + digits + "]"}) {
                ASSERT_EQ(scanWithLibrary(VALUE, input, STRICT),
                          ReferenceScanner::scan(VALUE, input, STRICT))
                    << ::testing::PrintToString(input);
            }
        }
    }
}

TEST(JsonScannerRuns, AgreeWithTheModelWhereverADocumentIsCut) {
    std::string const document =
        "{\"sym\":\"7203.T\",\"p\":-1234.50e+2,\"\\u65e5\":[true,false,null,0,1.25,"
        "\"a\\n\\ud83d\\ude00\"],"
        "\"n\":\"\xE6\x97\xA5\xE6\x9C\xAC\xF0\x9F\x98\x80\xF8\x80\xA0\x80\x80\"}// end\n# x\n";
    for (int const options : {STRICT, 2 | 4 | 8 | 16}) {
        for (std::size_t size = 0; size <= document.size(); ++size) {
            for (ScanMode const mode : {OBJECT, ARRAY, VALUE, FIELDS}) {
                std::string_view const input = std::string_view(document).substr(0, size);
                ASSERT_EQ(scanWithLibrary(mode, input, options),
                          ReferenceScanner::scan(mode, input, options))
                    << size << " with options " << options;
            }
        }
    }
}

// --- promises ---

/// Callbacks that keep what a test asks for, without allocation.
struct Probe {
    long long events = 0;
    long long throwAt = -1;
    std::uintptr_t lowest = UINTPTR_MAX;
    std::uintptr_t highest = 0;

    static int note(void * self) {
        auto & probe = *static_cast<Probe *>(self);
        auto const place = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
        probe.lowest = std::min(probe.lowest, place);
        probe.highest = std::max(probe.highest, place);
        if (probe.events++ == probe.throwAt) {
            throw std::out_of_range("callback");
        }
        return 0;
    }

    static SimpleJsonHandler handler() {
        return {note,
                note,
                note,
                note,
                [](void * self, char const *, unsigned int) { return note(self); },
                [](void * self, unsigned int, char const *, unsigned int) { return note(self); },
                [](void * self, int) { return note(self); },
                note,
                [](void * self, unsigned int, char const *, unsigned int, char const *,
                   char const *) { return note(self); }};
    }
};

constexpr std::string_view DOCUMENT =
    R"({"a":[1,2.5,"text","\u3042",true,null,{}],"b":{"c":"d"},"e":-1e5,"f":[[],[]]})";

TEST(JsonScannerPromises, OneAllocationAScan) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted in this build";
    }
    SimpleJsonHandler handler = Probe::handler();
    std::string nested = std::string(3000, '[') + std::string(3000, ']');
    std::string const bare = std::string(DOCUMENT.substr(1, DOCUMENT.size() - 2));
    struct Row {
        ScanMode mode;
        std::string_view input;
    };
    for (Row const & row : {Row{OBJECT, DOCUMENT}, Row{VALUE, DOCUMENT}, Row{ARRAY, nested},
                            Row{FIELDS, bare}, Row{VALUE, "1"}, Row{VALUE, ""}}) {
        Probe probe;
        AllocationCounter allocations;
        entryOf(row.mode)(row.input.data(), static_cast<unsigned int>(row.input.size()), &handler,
                          &probe, STRICT);
        EXPECT_EQ(allocations.count(), 1) << row.input.substr(0, 20);
    }
}

// Run with the leak sanitizer, this sees a scratch buffer that a failure leaves behind.
TEST(JsonScannerPromises, CallbacksMayThrowAtAnyEvent) {
    SimpleJsonHandler handler = Probe::handler();
    Probe whole;
    JsonUtil::parseOneJsonValue(DOCUMENT.data(), static_cast<unsigned int>(DOCUMENT.size()),
                                &handler, &whole, STRICT);
    EXPECT_GT(whole.events, 20);
    for (long long event = 0; event < whole.events; ++event) {
        Probe probe;
        probe.throwAt = event;
        EXPECT_THROW(
            JsonUtil::parseOneJsonValue(DOCUMENT.data(), static_cast<unsigned int>(DOCUMENT.size()),
                                        &handler, &probe, STRICT),
            std::out_of_range);
        EXPECT_EQ(probe.events, event + 1);
    }
}

TEST(JsonScannerPromises, CallbacksBeforeAFailureStayMade) {
    ScanOutcome const outcome = scanned(VALUE, STRICT, R"({"a":[1,"b",tru)");
    EXPECT_EQ(describe(outcome.events), "{ a: [ 1 \"b\"");
    EXPECT_EQ(outcome.failure, after(12, "boolean value 'true' is expected, but was <tru>..."));
}

std::string repeated(std::string_view piece, std::size_t count) {
    std::string text;
    text.reserve(piece.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        text += piece;
    }
    return text;
}

TEST(JsonScannerPromises, NestingOfAMillionTakesNoStack) {
    constexpr std::size_t DEPTH = 1'000'000;
    constexpr std::uintptr_t FRAMES = 4096;  // all calls between an entry and a callback
    struct Row {
        char const * name;
        std::string_view open, middle, close;
        long long eventsALevel;
    };
    constexpr Row ROWS[] = {{"arrays", "[", "", "]", 2},
                            {"objects", R"({"a":)", "1", "}", 3},
                            {"mixed", R"([{"a":)", "[]", "}]", 5},
                            {"with space", " [ ", "", " ] ", 2},
                            {"with strings", R"({"name":"value","x":)", "null", "}", 5}};
    SimpleJsonHandler handler = Probe::handler();
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.name);
        std::string const opened = repeated(row.open, DEPTH);
        std::string const closed = opened + std::string(row.middle) + repeated(row.close, DEPTH);
        Probe probe;
        ExactBuffer const data(closed);
        EXPECT_GT(JsonUtil::parseOneJsonValue(data, data.length(), &handler, &probe, STRICT),
                  DEPTH);
        EXPECT_GE(probe.events, row.eventsALevel * static_cast<long long>(DEPTH));
        EXPECT_LT(probe.highest - probe.lowest, FRAMES);

        Probe cutProbe;
        ExactBuffer const cut(opened);
        EXPECT_THROW(JsonUtil::parseOneJsonValue(cut, cut.length(), &handler, &cutProbe, STRICT),
                     JsonUtil::XParsingError);
        EXPECT_LT(cutProbe.highest - cutProbe.lowest, FRAMES);
    }
}

TEST(JsonScannerPromises, DeepNestingKeepsTheKindsApart) {
    // The kinds of the open containers and the text being read share the scratch buffer.
    std::string open;
    std::string close;
    for (int i = 0; i < 2000; ++i) {
        bool const isObject = i % 3 == 0 || i % 7 == 0;
        open += isObject ? "{\"" + std::string(static_cast<std::size_t>(i % 50), 'n') + "\":"
                         : std::string("[");
        close += isObject ? '}' : ']';
    }
    std::reverse(close.begin(), close.end());
    for (std::string const & middle : {"\"" + std::string(500, 'x') + "\"", "\"\""s, "1"s}) {
        EXPECT_EQ(scanned(VALUE, STRICT, open + middle + close).failure, "");
        std::string wrong = close;
        wrong[1000] = wrong[1000] == '}' ? ']' : '}';
        EXPECT_NE(scanned(VALUE, STRICT, open + middle + wrong).failure, "");
    }
}

}  // namespace
