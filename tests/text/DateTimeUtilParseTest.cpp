// Reading: parseDateTime.

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <string_view>

#include "tests/support/AllocationCounter.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/DateTimeModel.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/KnownZones.h"
#include "tests/support/TimeZone.h"
#include "tvk/text/DateTimeUtil.h"

namespace tvk::test {

void PrintTo(ParsedTime const & time, std::ostream * output) {
    *output << (time.accepted ? "accepted " : "refused ") << time.seconds << ' '
            << time.microseconds;
}

}  // namespace tvk::test

namespace {

using namespace tvk::test;
using tvk::DateTimeUtil;

/// A good text of each shape, in the order in which shapes are tried; those without a date stand for
/// today.
constexpr char const * GOOD_TEXTS[] = {
    "2014/01/02 03:04:05.678901",
    "2014-01-02 03:04:05.678901",
    "2014.01.02 03:04:05.678901",
    "2014/01/02 03:04:05.678",
    "2014-01-02 03:04:05.678",
    "2014.01.02 03:04:05.678",
    "20140102030405678901",
    "20140102030405678",
    "03:04:05.678901",
    "20140102030405",
    "03:04:05.678",
    "030405678901",
    "2014/01/02",
    "2014-01-02",
    "2014.01.02",
    "030405678",
    "03:04:05",
    "20140102",
    "030405",
};

constexpr ParsedTime REFUSED{};
constexpr unsigned int MAX_LENGTH = 40;

/// Reads a text from a block that ends with its NUL, with the library and with the model.
ParsedTwice bothOf(std::string_view text, unsigned int length) {
    std::string const terminated = std::string(text) + '\0';
    ExactBuffer const block(terminated);
    return parsedTwice(block, length);
}

/// The result on which both agree.
ParsedTime parsed(std::string_view text, unsigned int length) {
    ParsedTwice const both = bothOf(text, length);
    EXPECT_EQ(both.library, both.model) << text;
    return both.library;
}

ParsedTime parsed(std::string_view text) {
    return parsed(text, static_cast<unsigned int>(text.size()));
}

ParsedTime accepted(long long seconds, long long microseconds) {
    return {true, seconds, microseconds};
}

/// Today at a local time; `day` is that day.
ParsedTime todayAt(std::tm day, int hour, int minute, int second, long long microseconds) {
    day.tm_hour = hour;
    day.tm_min = minute;
    day.tm_sec = second;
    day.tm_isdst = -1;
    return accepted(std::mktime(&day), microseconds);
}

/// Expects a text to be a time of today.
void expectToday(std::string_view text, unsigned int length, int hour, int minute, int second,
                 long long microseconds) {
    SCOPED_TRACE(text);
    for (;;) {
        std::tm const today = referenceLocalTime(secondsNow());
        ParsedTime const time = parsed(text, length);
        if (referenceLocalTime(secondsNow()).tm_mday == today.tm_mday) {
            EXPECT_EQ(time, todayAt(today, hour, minute, second, microseconds));
            return;
        }
    }
}

void expectToday(std::string_view text, int hour, int minute, int second, long long microseconds) {
    expectToday(text, static_cast<unsigned int>(text.size()), hour, minute, second, microseconds);
}

class ParseDateTimeZone : public KnownZoneTest {
protected:
    long long const morning_ = 1388631845 - GetParam().winterOffset;   // 2014-01-02 03:04:05
    long long const midnight_ = 1388620800 - GetParam().winterOffset;  // 2014-01-02
};

INSTANTIATE_TEST_SUITE_P(Zones, ParseDateTimeZone, ::testing::ValuesIn(KNOWN_ZONES));

TEST_P(ParseDateTimeZone, ReadsEveryShapeWithADate) {
    for (char const separator : {'/', '-', '.'}) {
        std::string const s(1, separator);
        EXPECT_EQ(parsed("2014" + s + "01" + s + "02 03:04:05.678901"), accepted(morning_, 678901));
        EXPECT_EQ(parsed("2014" + s + "01" + s + "02 03:04:05.678"), accepted(morning_, 678000));
        EXPECT_EQ(parsed("2014" + s + "01" + s + "02"), accepted(midnight_, 0));
    }
    EXPECT_EQ(parsed("20140102030405678901"), accepted(morning_, 678901));
    EXPECT_EQ(parsed("20140102030405678"), accepted(morning_, 678000));
    EXPECT_EQ(parsed("20140102030405"), accepted(morning_, 0));
    EXPECT_EQ(parsed("20140102"), accepted(midnight_, 0));
    EXPECT_EQ(parsed("20140702030405"), accepted(1404270245 - GetParam().summerOffset, 0));
}

TEST_P(ParseDateTimeZone, ReadsEveryShapeOfToday) {
    expectToday("12:34:56.789012", 12, 34, 56, 789012);
    expectToday("12:34:56.789", 12, 34, 56, 789000);
    expectToday("123456789012", 12, 34, 56, 789012);
    expectToday("123456789", 12, 34, 56, 789000);
    expectToday("12:34:56", 12, 34, 56, 0);
    expectToday("123456", 12, 34, 56, 0);
}

TEST_P(ParseDateTimeZone, RollsOverNumbersOutOfRange) {
    EXPECT_EQ(parsed("20131302"), accepted(midnight_, 0));
    EXPECT_EQ(parsed("20131233"), accepted(midnight_, 0));
    EXPECT_EQ(parsed("20140101270365"), accepted(morning_, 0));
    EXPECT_EQ(parsed("2014/01/01 27:03:65.000"), accepted(morning_, 0));
    EXPECT_EQ(parsed("2014/02/00"), parsed("2014/01/31"));
    EXPECT_EQ(parsed("20141302"), accepted(midnight_ + 365 * 86400, 0));
    expectToday("99:99:99", 99, 99, 99, 0);
}

TEST_P(ParseDateTimeZone, AgreesWithTheModelOnEachChangeOfTheClock) {
    for (char const * text :
         {"20240310015959", "20240310020000", "20240310023000", "20240310025959", "20240310030000",
          "20241103005959", "20241103010000", "20241103013000", "20241103015959", "20241103020000",
          "20240331005959", "20240331010000", "20240331013000", "20240331020000", "20241027005959",
          "20241027010000", "20241027013000", "20241027020000"}) {
        EXPECT_TRUE(parsed(text).accepted);
    }
}

/// Texts of all kinds: random ones from characters that matter, and good ones with some of their
/// characters changed, left out or doubled.
class TextSource {
public:
    explicit TextSource(unsigned int seed) : random_(seed) {}

    std::string next() { return below(3) == 0 ? junk() : mutated(); }

private:
    static constexpr std::string_view CHARACTERS =
        "0123456789001122 \t\n\v\f\r+-+-//..::__,xX%\x80\xa0\xff";

    std::size_t below(std::size_t limit) { return random_() % limit; }

    char character() { return below(60) == 0 ? '\0' : CHARACTERS[below(CHARACTERS.size())]; }

    std::string junk() {
        std::string text(below(32), ' ');
        for (char & place : text) {
            place = below(3) == 0 ? character() : static_cast<char>('0' + below(10));
        }
        return text;
    }

    std::string mutated() {
        std::string text = GOOD_TEXTS[below(std::size(GOOD_TEXTS))];
        for (char & place : text) {
            if (place >= '0' && place <= '9' && below(4) == 0) {
                place = static_cast<char>('0' + below(10));
            }
        }
        for (std::size_t changes = below(4); changes > 0 && !text.empty(); --changes) {
            std::size_t const at = below(text.size());
            switch (below(4)) {
                case 0:
                    text[at] = character();
                    break;
                case 1:
                    text.insert(at, 1, character());
                    break;
                case 2:
                    text.erase(at, 1);
                    break;
                default:
                    text.resize(at);
                    break;
            }
        }
        return text;
    }

    std::mt19937 random_;
};

/// Reads random texts with every length and with their own, and requires that both agree.
void compareOnRandomTexts(unsigned int seed, int count) {
    TextSource texts(seed);
    int acceptedCount = 0;
    int refusedCount = 0;
    for (int i = 0; i < count; ++i) {
        std::string const text = texts.next();
        for (unsigned int length = 0; length <= MAX_LENGTH; ++length) {
            ParsedTwice const both = bothOf(text, length);
            ASSERT_EQ(both.library, both.model)
                << ::testing::PrintToString(text) << " with length " << length;
            ++(both.library.accepted ? acceptedCount : refusedCount);
        }
    }
    EXPECT_GT(acceptedCount, count / 2);
    EXPECT_GT(refusedCount, count);
}

TEST_P(ParseDateTimeZone, AgreesWithTheModelOnRandomTexts) { compareOnRandomTexts(20140102, 4000); }

TEST(ParseDateTime, AgreesWithTheModelUnderACommaLocale) {
    CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    TimeZone const zone("JST-9");
    EXPECT_EQ(parsed("2014/01/02 03:04:05.678"), accepted(1388599445, 678000));
    EXPECT_EQ(parsed("2014/01/02 03:04:05,678"), REFUSED);
    compareOnRandomTexts(678, 4000);
}

/// The rules below are those of the scan formats; the times are those of UTC.
class ParseDateTimeRules : public ::testing::Test {
private:
    TimeZone zone_{"UTC0"};
};

constexpr long long MORNING = 1388631845;
constexpr long long MIDNIGHT = 1388620800;

struct Row {
    char const * name;
    std::string_view text;
    unsigned int length;
    ParsedTime expected;
};

void expectRows(std::initializer_list<Row> rows) {
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(parsed(row.text, row.length), row.expected);
    }
}

TEST_F(ParseDateTimeRules, AgreesWithTheModelOnGoodTextsWithAnyOneByteChanged) {
    for (std::string const text : GOOD_TEXTS) {
        for (std::size_t at = 0; at < text.size(); ++at) {
            std::string changed = text;
            for (int byte = 0; byte < 256; ++byte) {
                changed[at] = static_cast<char>(byte);
                ParsedTwice const both = bothOf(changed, static_cast<unsigned int>(changed.size()));
                ASSERT_EQ(both.library, both.model) << ::testing::PrintToString(changed);
            }
        }
    }
}

TEST_F(ParseDateTimeRules, RefusesOtherLengths) {
    for (unsigned int length = 0; length <= MAX_LENGTH; ++length) {
        for (char const * text : GOOD_TEXTS) {
            parsed(text, length);
        }
    }
    for (unsigned int const length : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 11U, 13U, 16U, 18U, 19U, 21U, 22U,
                                      24U, 25U, 27U, 28U, UINT_MAX}) {
        EXPECT_EQ(parsed("2014/01/02 03:04:05.678901", length), REFUSED) << length;
        EXPECT_EQ(parsed("20140102030405678901234567", length), REFUSED) << length;
    }
}

TEST_F(ParseDateTimeRules, DoesNotLookAtATextOfAnotherLength) {
    for (unsigned int const length : {0U, 1U, 7U, 19U, 27U, UINT_MAX}) {
        EXPECT_EQ(parsedWithLibrary(nullptr, length), REFUSED) << length;
    }
}

TEST_F(ParseDateTimeRules, DeliberateRefusesTheDisplayedTimeOf19Characters) {
    expectRows({
        {"minus", "2014-01-02 03:04:05", 19, REFUSED},
        {"slash", "2014/01/02 03:04:05", 19, REFUSED},
    });
    timeval time = timeOf(MORNING, 0);
    tvk::CString const text = DateTimeUtil::formatShortDisplayDateTime(time, '/');
    EXPECT_EQ(text.GetLength(), 19);
    EXPECT_FALSE(DateTimeUtil::parseDateTime(text, 19, &time));
}

TEST_F(ParseDateTimeRules, TheSeparatorIsASlashAMinusOrADot) {
    expectRows({
        {"underscore", "2014_01_02", 10, REFUSED},
        {"blank", "2014 01 02", 10, REFUSED},
        {"colon", "2014:01:02", 10, REFUSED},
        {"digit", "2014012 02", 10, REFUSED},
        {"underscores with milliseconds", "2014_01_02 03:04:05.678", 23, REFUSED},
        {"underscores with microseconds", "2014_01_02 03:04:05.678901", 26, REFUSED},
        {"two separators", "2014/01-02", 10, REFUSED},
        {"two separators with milliseconds", "2014-01/02 03:04:05.678", 23, REFUSED},
        {"two separators with microseconds", "2014.01-02 03:04:05.678901", 26, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, TheSeparatorStandsBehindFourCharacters) {
    expectRows({
        {"a short year", "214/1/2", 10, REFUSED},
        {"a short year behind a blank", " 214/1/2", 10,
         accepted(-55413936000 + 4294967296 * 13, 0)},
        {"a minus that is a sign", "20/1-2/3", 10, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, AColonBehindTheHourPicksTheShape) {
    expectToday("01:2:3.4", 12, 1, 2, 3, 4000);
    expectToday("01:2:3", 8, 1, 2, 3, 0);
    expectRows({
        {"milliseconds", "1:2:3.4", 12, REFUSED},
        {"seconds", "1:2:3", 8, REFUSED},
    });
    expectToday("1:2:3.4", 15, 1, 2, 3, 4);  // has no other shape
}

TEST_F(ParseDateTimeRules, LeadingWhiteSpaceIsSkippedAndNotCounted) {
    expectRows({
        {"in front", " \t\n\v\f\r20140102", 8, accepted(MIDNIGHT, 0)},
        {"before each number", "2014 01 02 03 04 05", 14, accepted(MORNING, 0)},
        {"before a fraction", "2014 01 02 03 04 05 678", 17, accepted(MORNING, 678000)},
        {"behind separators", "2014/ 01/\t02", 10, accepted(MIDNIGHT, 0)},
        {"before a separator", "2014/01 /02", 10, REFUSED},
        {"a non-breaking space",
         "\xa0"
         "20140102",
         8, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, TheBlankIsAnyWhiteSpaceOrNone) {
    expectRows({
        {"one", "2014/01/02 03:04:05.678", 23, accepted(MORNING, 678000)},
        {"none", "2014/01/0203:04:05.678", 23, accepted(MORNING, 678000)},
        {"many", "2014/01/02 \n\t 03:04:05.678", 23, accepted(MORNING, 678000)},
        {"none but a letter", "2014/01/02T03:04:05.678", 23, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, ASignIsANumbersAndCountsInItsWidth) {
    expectRows({
        {"plus", "2014/+1/+2", 10, accepted(MIDNIGHT, 0)},
        {"a plus leaves a digit", "2014/+11/02", 10, REFUSED},
        {"minus", "2014/-1/02", 10, accepted(1388620800 - 61 * 86400, 0)},
        {"milliseconds", "20140102030405-67", 17, accepted(MORNING, -67000)},
        {"microseconds", "20140102030405-67890", 20, accepted(MORNING, -67890)},
        {"microseconds cut", "20140102030405-678901", 20, accepted(MORNING, -67890)},
        {"a lone sign", "2014/+/02", 10, REFUSED},
        {"two signs", "2014/+-1/02", 10, REFUSED},
        {"a sign and a blank", "2014/+ 1/02", 10, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, AShortFractionIsAWholeNumber) {
    expectRows({
        {"5 milliseconds", "2014/01/02 03:04:05.5", 23, accepted(MORNING, 5000)},
        {"5 microseconds", "2014/01/02 03:04:05.5", 26, accepted(MORNING, 5)},
        {"50 milliseconds", "2014010203040550", 17, accepted(MORNING, 50000)},
        {"no fraction", "2014/01/02 03:04:05.", 23, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, ReadsToTheNulWhateverTheLengthSays) {
    expectRows({
        {"a longer text", "2014010203040567890", 8, accepted(MIDNIGHT, 0)},
        {"rubbish behind", "20140102rubbish", 8, accepted(MIDNIGHT, 0)},
        {"numbers behind the length", "   2014 01 02", 8, accepted(MIDNIGHT, 0)},
        {"a shorter text with all numbers", "2014/1/2", 10, accepted(MIDNIGHT, 0)},
        {"a shorter text without", "2014/01/", 10, REFUSED},
        {"a NUL inside",
         std::string_view("2014\0"
                          "0102",
                          9),
         8, REFUSED},
    });
}

TEST_F(ParseDateTimeRules, RefusesTextsThatEndEarly) {
    for (std::string_view const text : GOOD_TEXTS) {
        auto const length = static_cast<unsigned int>(text.size());
        for (std::size_t size = 0; size <= text.size(); ++size) {
            parsed(text.substr(0, size), length);
        }
        EXPECT_EQ(parsed("", length), REFUSED);
        EXPECT_EQ(parsed("2", length), REFUSED);
        EXPECT_EQ(parsed(" ", length), REFUSED);
    }
}

TEST_F(ParseDateTimeRules, TimesBeyond32BitsAreCut) {
    expectRows({
        {"the last", "20380119031407", 14, accepted(INT_MAX, 0)},
        {"behind it", "20380119031408", 14, accepted(INT_MIN, 0)},
        {"a far year", "99991231", 8, accepted(253402214400 - 59 * 4294967296, 0)},
    });
}

TEST_F(ParseDateTimeRules, TakesNothingFromTheHeap) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    timeval time{};
    DateTimeUtil::parseDateTime("030405", 6, &time);  // the C library may allocate at first
    for (char const * text : GOOD_TEXTS) {
        AllocationCounter const allocations;
        EXPECT_TRUE(
            DateTimeUtil::parseDateTime(text, static_cast<unsigned int>(std::strlen(text)), &time));
        EXPECT_EQ(allocations.count(), 0) << text;
    }
}

}  // namespace
