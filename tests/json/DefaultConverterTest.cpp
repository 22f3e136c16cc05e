#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "tests/support/AllocationCounter.h"
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
using tvk::test::AllocationCounter;
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
    constexpr int ONE_BLOCK = 1;
    std::string const longText(1000, 'x');
    EXPECT_EQ(failures([&] { return converter().stringFromRawData(longText.data(), 1000); }),
              ONE_BLOCK);
    EXPECT_EQ(failures([&] { return converter().stringFromRawData("\xE6\x97\xA5", 3); }),
              ONE_BLOCK);
    EXPECT_EQ(failures([] { return converter().numberFromRawData("12", 2, nullptr, nullptr); }),
              ONE_BLOCK);
    EXPECT_EQ(failures([] { return converter().stringFromRawData("", 0); }), ONE_BLOCK);
    EXPECT_EQ(failures([] { return converter().numberFromRawData("", 0, nullptr, nullptr); }),
              ONE_BLOCK);
    EXPECT_GT(failures([] { return converter().stringFromRawData("\x80\x80", 2); }), ONE_BLOCK)
        << "text that grows asks for more";
    std::string longJapanese;
    for (int i = 0; i < 300; ++i) {
        longJapanese += "\xE6\x97\xA5";
    }
    EXPECT_GT(failures([&] { return converter().stringFromRawData(longJapanese.data(), 900); }),
              ONE_BLOCK);
}

TEST(DefaultConverter, ConvertsTextOfEveryLength) {
    for (unsigned int const codePage : {932u, 65001u}) {
        UsingCodePage const using_(codePage);
        for (std::string_view const piece : {"\xE6\x97\xA5", "\x80", "a", "\xEF\xBD\xB1z"}) {
            std::string text;
            for (int count = 0; count < 600; ++count) {
                ASSERT_EQ(string(text), tvk::platform::utf8ToAnsi(
                                            text.data(), static_cast<unsigned int>(text.size())))
                    << text.size() << " bytes of " << piece;
                text += piece;
            }
        }
    }
}

// A value stands in one block with its text, and whoever goes last gives the block back.

RefCountedPtr<FieldValue> anyString() { return converter().stringFromRawData("some text", 9); }

RefCountedPtr<NumberData> anyNumber() {
    char const text[] = "12.50";
    return static_cast<NumberData *>(converter().numberFromRawData(text, 5, text + 2, nullptr));
}

TEST(DefaultConverter, ACopyOfTheTextOutlivesTheValue) {
    CString copy = anyString()->asString();
    CString const another = copy;
    EXPECT_EQ(copy, "some text");
    copy.SetAt(0, 'S');
    EXPECT_EQ(copy, "Some text");
    EXPECT_EQ(another, "some text");
    copy = anyNumber()->toString();
    EXPECT_EQ(copy, "12.50");
    copy.Append("0 and more than there is room for");
    EXPECT_EQ(copy, "12.500 and more than there is room for");
    copy = anyString()->asString();
    std::strcpy(copy.GetBuffer(100), "written");
    copy.ReleaseBuffer();
    EXPECT_EQ(copy, "written");
}

TEST(DefaultConverter, TheValueOutlivesACopyOfItsText) {
    RefCountedPtr<FieldValue> const value = anyString();
    {
        CString changed = value->asString();
        changed.Append("!");
        CString const kept = value->asString();
        EXPECT_EQ(kept.GetString(), value->asString().GetString()) << "shared";
    }
    EXPECT_EQ(value->asString(), "some text");
}

TEST(DefaultConverter, CopiesOfAValueOutliveIt) {
    RefCountedPtr<FieldValue> const text =
        new tvk::StringData(static_cast<tvk::StringData &>(*anyString()));
    EXPECT_EQ(text->asString(), "some text");
    RefCountedPtr<FieldValue> const number = new NumberData(*anyNumber());
    EXPECT_EQ(number->asString(), "12.500000");
    EXPECT_EQ(number->doubleValue(), 12.5);
}

TEST(DefaultConverter, TheTextOfAValueMayBeReplaced) {
    for (bool const keepsOldText : {false, true}) {
        RefCountedPtr<FieldValue> const text = anyString();
        CString const oldText = keepsOldText ? text->asString() : CString();
        static_cast<tvk::StringData &>(*text) = CString("other");
        EXPECT_EQ(text->asString(), "other");
        static_cast<tvk::StringData &>(*text) = static_cast<tvk::StringData &>(*anyString());
        EXPECT_EQ(text->asString(), "some text");
        EXPECT_EQ(oldText, keepsOldText ? "some text" : "");

        RefCountedPtr<NumberData> const number = anyNumber();
        number->setStringRep("other");
        EXPECT_EQ(number->asString(), "other");
        EXPECT_EQ(number->doubleValue(), 12.5) << "the number stays what it was";
        number->setStringRep(anyNumber()->asString());
        EXPECT_EQ(number->asString(), "12.50");
    }
}

TEST(DefaultConverter, ComparesNumbersThatNobodyHasReadYet) {
    char const text[] = "7.5";
    auto const fresh = [&](char const * bytes) { return number(bytes); };
    EXPECT_TRUE(*fresh("75") == *fresh("75"));
    EXPECT_FALSE(*fresh("75") == *fresh("76"));
    EXPECT_FALSE(*fresh("75") == *fresh("75.0"));
    EXPECT_TRUE(*fresh("7.5") == *fresh("7.50"));
    EXPECT_TRUE(*fresh("75") < *fresh("76"));
    EXPECT_FALSE(*fresh("76") < *fresh("75"));
    EXPECT_TRUE(*fresh("-7.5") < *fresh("7.25"));
    EXPECT_EQ(fresh("75")->intValue(), 75);
    EXPECT_EQ(fresh("75")->longValue(), 75);
    EXPECT_EQ(fresh("75")->doubleValue(), 75.0);
    EXPECT_EQ(fresh(text)->intValue(), 7);
    EXPECT_EQ(fresh(text)->longlongValue(), 7);
}

TEST(DefaultConverter, AnswersWithoutTouchingErrno) {
    for (std::string_view const text :
         {"5", "12.5", "1.0e3", "9223372036854775808", "1e400", "0x10", "007"}) {
        SCOPED_TRACE(text);
        RefCountedPtr<NumberData> const value = number(text);
        errno = EDOM;
        value->intValue();
        EXPECT_EQ(errno, EDOM);
        value->doubleValue();
        EXPECT_EQ(errno, EDOM);
    }
}

TEST(DefaultConverter, TellsADoubleOutOfRangeAtOnce) {
    std::string longest = "0.";
    longest.append(400, '0');
    longest += '1';
    for (std::string const & text : {std::string("1e400"), longest}) {
        errno = 0;
        RefCountedPtr<NumberData> const value = number(text);
        EXPECT_EQ(errno, ERANGE) << text;
        EXPECT_EQ(value->asString(), textOf(text));
    }
}

TEST(DefaultConverter, ReadsRandomDoublesAsTheLibraryOfTheSystemDoes) {
    constexpr unsigned int SEED = 6;
    std::mt19937_64 random(SEED);
    for (int round = 0; round < 20000; ++round) {
        std::string text = random() % 2 == 0 ? "" : "-";
        std::size_t const digits = 2 + random() % 25;
        std::size_t const point = 1 + random() % (digits - 1);
        for (std::size_t i = 0; i < digits; ++i) {
            text += i == point ? "." : "";
            text += static_cast<char>('0' + random() % 10);
        }
        if (random() % 4 == 0) {
            text += 'e';
            text += std::to_string(static_cast<int>(random() % 700) - 350);
        }
        ASSERT_EQ(number(text)->doubleValue(), tvk::platform::parseDouble(text.c_str()))
            << text << ", seed " << SEED;
    }
}

// Nothing orders the threads but their start and their end, which ThreadSanitizer sees.
TEST(DefaultConverter, NumbersAreReadOnSeveralThreads) {
    for (int round = 0; round < 200; ++round) {
        std::string const text = std::to_string(round) + ".25";
        RefCountedPtr<NumberData> const value = number(text);
        NumberData const & shared = *value;
        auto const read = [&shared, round] {
            EXPECT_EQ(shared.doubleValue(), round + 0.25);
            EXPECT_EQ(shared.intValue(), round);
            EXPECT_EQ(shared.asString().GetLength(), shared.toString().GetLength());
        };
        std::thread first(read);
        std::thread second(read);
        first.join();
        second.join();
    }
}

TEST(DefaultConverter, MakesAValueInOneBlock) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    SimpleObjectCache cache(&converter(), 1024);
    auto const allocations = [](auto const & lookUp) {
        AllocationCounter const counter;
        RefCountedPtr<FieldValue> const value = lookUp();
        return counter.count();
    };
    auto const ofString = [&](std::string const & text) {
        return allocations([&] {
            auto const size = static_cast<unsigned int>(text.size());
            return cache.cachedString(SimpleObjectCache::hashCode(text.data(), size), text.data(),
                                      size);
        });
    };
    for (std::string const & text :
         {std::string(), std::string("x"), std::string("20140102-000017"), std::string(41, 'k'),
          std::string(5000, 'l'), std::string("\xE6\x97\xA5\xE6\x9C\xAC")}) {
        EXPECT_EQ(ofString(text), 1) << text;
        EXPECT_EQ(ofString(text), 0) << text;
    }
    char const price[] = "1234.5";
    auto const ofNumber = [&](char const * fraction) {
        return allocations([&] { return cache.cachedNumber(7, price, 6, fraction, nullptr); });
    };
    EXPECT_EQ(ofNumber(price + 4), 1);
    EXPECT_EQ(ofNumber(price + 4), 0);
    EXPECT_EQ(cache.fastHitCount(), 7u);
}

TEST(DefaultConverter, LongKeysStayWhateverBecomesOfTheText) {
    SimpleObjectCache cache(&converter(), 1024);
    for (std::string const & key : {std::string(100, 'k'), std::string(100, '\xB1')}) {
        auto const lookUp = [&] { return cache.cachedString(3, key.data(), 100); };
        RefCountedPtr<FieldValue> const value = lookUp();
        CString const text = value->asString();
        static_cast<tvk::StringData &>(*value) = CString("against the rules");
        EXPECT_EQ(lookUp(), value);
        cache.setCapacity(2048);
        EXPECT_EQ(lookUp(), value);
        cache.clear();
        EXPECT_NE(lookUp(), value);
    }
}

TEST(DefaultConverter, ManyValuesComeAndGoInASmallCache) {
    UsingCodePage const using_(932);
    constexpr unsigned int SEED = 7;
    std::mt19937 random(SEED);
    SimpleObjectCache cache(&converter(), 64);
    std::vector<RefCountedPtr<FieldValue>> kept(50);
    std::vector<CString> texts(50);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 3 == 0 ? random() % 80 : random() % 8, 'k');
        text += random() % 5 == 0 ? "\xE6\x97\xA5" : std::to_string(random() % 300);
        ExactBuffer const bytes(text);
        unsigned int const hash = SimpleObjectCache::hashCode(bytes.data(), bytes.length());
        RefCountedPtr<FieldValue> const value =
            random() % 3 == 0
                ? cache.cachedNumber(hash, bytes.data(), bytes.length(), nullptr, nullptr)
                : cache.cachedString(hash, bytes.data(), bytes.length());
        CString const expected = value->getFieldType() == FLDTYPE_NUMBER
                                     ? textOf(text)
                                     : tvk::platform::utf8ToAnsi(bytes.data(), bytes.length());
        ASSERT_EQ(value->asString(), expected) << "round " << round << ", seed " << SEED;
        kept[random() % kept.size()] = value;
        texts[random() % texts.size()] = value->asString();
    }
}

}  // namespace
