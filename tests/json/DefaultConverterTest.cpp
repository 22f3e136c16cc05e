#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <string_view>

#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/TextBytes.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/platform/Numbers.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace {

using tvk::CString;
using tvk::FieldValue;
using tvk::NumberData;
using tvk::RefCountedPtr;
using tvk::SimpleObjectCache;
using tvk::test::AllocationFailure;
using tvk::test::ExactBuffer;
using tvk::test::textOf;
using tvk::test::UsingCodePage;

SimpleObjectCache::RawDataToObjectConverter & converter() {
    return *SimpleObjectCache::defaultRawDataConverter();
}

CString string(std::string_view bytes) {
    ExactBuffer const data(bytes);
    RefCountedPtr<FieldValue> const value =
        converter().stringFromRawData(data.data(), data.length());
    EXPECT_EQ(value->getFieldType(), FLDTYPE_STRING);
    EXPECT_NE(dynamic_cast<tvk::StringData *>(value.get()), nullptr);
    return value->asString();
}

/// The places of `.` and `e` are found as the scanner finds them.
RefCountedPtr<NumberData> number(std::string_view bytes) {
    ExactBuffer const data(bytes);
    auto const find = [&](char const * wanted) -> char const * {
        std::size_t const place = bytes.find_first_of(wanted);
        return place == std::string_view::npos ? nullptr : data.data() + place;
    };
    RefCountedPtr<FieldValue> const value =
        converter().numberFromRawData(data.data(), data.length(), find("."), find("eE"));
    return dynamic_cast<NumberData *>(value.get());
}

TEST(DefaultConverter, IsOneObject) {
    EXPECT_EQ(SimpleObjectCache::defaultRawDataConverter(),
              SimpleObjectCache::defaultRawDataConverter());
    EXPECT_NE(dynamic_cast<SimpleObjectCache::DefaultRawDataToObjectConverter *>(&converter()),
              nullptr);
}

TEST(DefaultConverter, GivesNewObjectsWithoutACount) {
    FieldValue * const text = converter().stringFromRawData("a", 1);
    EXPECT_EQ(text->getRefCount(), 0);
    RefCountedPtr<FieldValue> const textEnds(text);
    FieldValue * const number = converter().numberFromRawData("1", 1, nullptr, nullptr);
    EXPECT_EQ(number->getRefCount(), 0);
    RefCountedPtr<FieldValue> const numberEnds(number);
}

TEST(DefaultConverter, KeepsAsciiTextInEveryCodePage) {
    std::string ascii;
    for (int i = 0; i < 0x80; ++i) {
        ascii += static_cast<char>(i);
    }
    for (unsigned int const codePage : {932u, 1252u, 28591u, 65001u}) {
        SCOPED_TRACE(codePage);
        UsingCodePage const using_(codePage);
        EXPECT_EQ(string(""), CString());
        EXPECT_EQ(string("abc"), CString("abc"));
        EXPECT_EQ(string(ascii), textOf(ascii));
    }
    RefCountedPtr<FieldValue> const empty = converter().stringFromRawData(nullptr, 0);
    EXPECT_TRUE(empty->asString().IsEmpty());
}

struct Conversion {
    char const * name;
    unsigned int codePage;
    std::string_view utf8;
    std::string_view result;
};

constexpr Conversion CONVERSIONS[] = {
    {"Japanese", 932, "\xE6\x97\xA5\xE6\x9C\xAC", "\x93\xFA\x96\x7B"},
    {"Japanese, kept", 65001, "\xE6\x97\xA5\xE6\x9C\xAC", "\xE6\x97\xA5\xE6\x9C\xAC"},
    {"half-width katakana", 932, "\xEF\xBD\xB1", "\xB1"},
    {"among ASCII", 932, "Toyota \xE8\x87\xAA\xE5\x8B\x95\xE8\xBB\x8A!",
     "Toyota \x8E\xA9\x93\xAE\x8E\xD4!"},
    {"composition", 932, "\xE3\x81\x8B\xE3\x82\x99", "\x82\xAA"},
    {"what 932 lacks", 932, "a\xC3\xA9z", "a\x81\x7Cz"},
    {"a character beyond U+FFFF", 932, "\xF0\x9F\x98\x80", "\x81\x7C\x81\x7C"},
    {"a bad byte", 932, "a\x80z", "a\x81\x7Cz"},
    {"e acute in 1252", 1252, "caf\xC3\xA9", "caf\xE9"},
    {"only the eighth byte", 932, "0123456\xEF\xBD\xB1", "0123456\xB1"},
    {"only the ninth byte", 932, "01234567\xEF\xBD\xB1", "01234567\xB1"},
};

TEST(DefaultConverter, BringsTextToTheCodePage) {
    for (Conversion const & row : CONVERSIONS) {
        SCOPED_TRACE(row.name);
        UsingCodePage const using_(row.codePage);
        CString const converted = string(row.utf8);
        EXPECT_EQ(converted, tvk::platform::utf8ToAnsi(row.utf8.data(),
                                                       static_cast<unsigned int>(row.utf8.size())));
        EXPECT_EQ(converted, textOf(row.result));
    }
}

TEST(DefaultConverter, KeysAreUtf8WhateverTheValueIs) {
    UsingCodePage const using_(932);
    SimpleObjectCache cache(&converter(), 16);
    RefCountedPtr<FieldValue> const first = cache.cachedString(1, "\xC3\xA9", 2);
    RefCountedPtr<FieldValue> const other = cache.cachedString(1, "\xC3\xA8", 2);
    EXPECT_EQ(first->asString(), CString("\x81\x7C"));
    EXPECT_EQ(other->asString(), CString("\x81\x7C"));
    EXPECT_NE(first, other);
    EXPECT_EQ(cache.cachedString(1, "\xC3\xA9", 2), first);
}

struct Integer {
    std::string_view text;
    long long value;
};

constexpr Integer INTEGERS[] = {
    {"0", 0},
    {"-0", 0},
    {"1", 1},
    {"-1", -1},
    {"9", 9},
    {"170", 170},
    {"385800", 385800},
    {"999999999999999999", 999999999999999999},  // 18 digits
    {"-999999999999999999", -999999999999999999},
    {"1000000000000000000", 1000000000000000000},  // 19
    {"9223372036854775807", LLONG_MAX},
    {"9223372036854775808", LLONG_MAX},
    {"-9223372036854775808", LLONG_MIN},
    {"-9223372036854775809", LLONG_MIN},
    {"123456789012345678901234567890", LLONG_MAX},
    // What the scanner never gives: base 0 and what strtoll makes of bytes that are no number.
    {"010", 8},
    {"-010", -8},
    {"0x1F", 31},
    {"08", 0},
    {" 12", 12},
    {"+12", 12},
    {"12a", 12},
    {"a12", 0},
    {"-", 0},
    {"--1", 0},
    {"", 0},
    {std::string_view("12\0"
                      "34",
                      5),
     12},
};

TEST(DefaultConverter, ReadsIntegersOf64Bits) {
    for (Integer const & row : INTEGERS) {
        SCOPED_TRACE(row.text);
        RefCountedPtr<NumberData> const value = number(row.text);
        EXPECT_TRUE(value->isInteger());
        EXPECT_EQ(value->longlongValue(), row.value);
        EXPECT_EQ(value->asString(), textOf(row.text));
    }
}

TEST(DefaultConverter, ReadsRandomIntegersAsTheLibraryOfTheSystemDoes) {
    constexpr unsigned int SEED = 5;
    std::mt19937_64 random(SEED);
    for (int round = 0; round < 20000; ++round) {
        std::string text = random() % 2 == 0 ? "" : "-";
        std::size_t const digits = 1 + random() % 21;
        for (std::size_t i = 0; i < digits; ++i) {
            text += static_cast<char>('0' + random() % 10);
        }
        ASSERT_EQ(number(text)->longlongValue(), tvk::platform::parseInt64(text.c_str(), 0))
            << text << ", seed " << SEED;
    }
}

TEST(DefaultConverter, ClearsErrnoForIntegers) {
    for (std::string_view const text : {"5", "010", "999999999999999999"}) {
        errno = EDOM;
        number(text);
        EXPECT_EQ(errno, 0) << text;
    }
    errno = 0;
    number("9223372036854775808");
    EXPECT_EQ(errno, ERANGE);
}

struct Double {
    std::string_view text;
    double value;
};

constexpr Double DOUBLES[] = {
    {"1.50", 1.5},       {"-0.25", -0.25},
    {"0.0", 0.0},        {"1e3", 1000.0},
    {"1E-2", 0.01},      {"-1.5e+2", -150.0},
    {"1e400", HUGE_VAL}, {"-1e400", -HUGE_VAL},
    {"1e-400", 0.0},     {"2.2250738585072014e-308", 2.2250738585072014e-308},
};

TEST(DefaultConverter, ReadsDoublesAndKeepsTheirText) {
    for (Double const & row : DOUBLES) {
        SCOPED_TRACE(row.text);
        RefCountedPtr<NumberData> const value = number(row.text);
        EXPECT_TRUE(value->isDouble());
        EXPECT_EQ(value->doubleValue(), row.value);
        EXPECT_EQ(value->asString(), textOf(row.text));
    }
}

TEST(DefaultConverter, GoesByThePlacesAndNotByTheText) {
    char const text[] = "1e";  // what `[1e]` gives: the place of the e, and the text 1
    RefCountedPtr<FieldValue> const exponent =
        converter().numberFromRawData(text, 1, nullptr, text + 1);
    EXPECT_TRUE(static_cast<NumberData &>(*exponent).isDouble());
    EXPECT_EQ(exponent->doubleValue(), 1.0);
    EXPECT_EQ(exponent->asString(), CString("1"));
    RefCountedPtr<FieldValue> const fraction =
        converter().numberFromRawData("1.5", 3, nullptr, nullptr);
    EXPECT_TRUE(static_cast<NumberData &>(*fraction).isInteger());
    EXPECT_EQ(fraction->longlongValue(), 1);
}

TEST(DefaultConverter, GivesNullWhenMemoryIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    auto const failures = [](auto const & convert) {
        for (int allowed = 0;; ++allowed) {
            AllocationFailure failure(allowed);
            RefCountedPtr<FieldValue> const value = convert();
            failure.end();
            if (!value.isNull()) {
                return allowed;
            }
        }
    };
    std::string const longText(1000, 'x');
    EXPECT_GT(failures([&] { return converter().stringFromRawData(longText.data(), 1000); }), 1);
    EXPECT_GT(failures([&] { return converter().stringFromRawData("\xE6\x97\xA5", 3); }), 1);
    EXPECT_GT(failures([] { return converter().numberFromRawData("12", 2, nullptr, nullptr); }), 1);
}

}  // namespace
