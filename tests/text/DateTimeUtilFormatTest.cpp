// Writing: the format functions.

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "tests/support/AllocationCounter.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/DateTimeModel.h"
#include "tests/support/KnownZones.h"
#include "tests/support/PrintCString.h"
#include "tests/support/TimeZone.h"
#include "tvk/text/DateTimeUtil.h"

namespace {

using namespace tvk::test;
using tvk::CString;
using tvk::DateTimeUtil;

template <CString (*FUNCTION)(timeval const &)>
CString withoutSeparator(timeval const & time, char /*separator*/) {
    return FUNCTION(time);
}

constexpr DateTimeForm FORMS[] = {
    {"formatShortDisplayDateTime", DateTimeUtil::formatShortDisplayDateTime,
     "%04d%c%02d%c%02d %02d:%02d:%02d", true, true, true, 0},
    {"formatDisplayDateTime", DateTimeUtil::formatDisplayDateTime,
     "%04d%c%02d%c%02d %02d:%02d:%02d.%03d", true, true, true, 1000},
    {"formatDisplayDateTime2", DateTimeUtil::formatDisplayDateTime2,
     "%04d%c%02d%c%02d %02d:%02d:%02d.%06d", true, true, true, 1},
    {"formatDisplayDate", DateTimeUtil::formatDisplayDate, "%04d%c%02d%c%02d", true, true, false,
     0},
    {"formatDisplayTime", withoutSeparator<DateTimeUtil::formatDisplayTime>, "%02d:%02d:%02d",
     false, false, true, 0},
    {"formatDisplayTime1", withoutSeparator<DateTimeUtil::formatDisplayTime1>,
     "%02d:%02d:%02d.%03d", false, false, true, 1000},
    {"formatDisplayTime2", withoutSeparator<DateTimeUtil::formatDisplayTime2>,
     "%02d:%02d:%02d.%06d", false, false, true, 1},
    {"formatShortDateTime", withoutSeparator<DateTimeUtil::formatShortDateTime>,
     "%04d%02d%02d%02d%02d%02d", true, false, true, 0},
    {"formatDateTime", withoutSeparator<DateTimeUtil::formatDateTime>,
     "%04d%02d%02d%02d%02d%02d%03d", true, false, true, 1000},
    {"formatDateTime2", withoutSeparator<DateTimeUtil::formatDateTime2>,
     "%04d%02d%02d%02d%02d%02d%06d", true, false, true, 1},
    {"formatDate", withoutSeparator<DateTimeUtil::formatDate>, "%04d%02d%02d", true, false, false,
     0},
    {"formatTime", withoutSeparator<DateTimeUtil::formatTime>, "%02d%02d%02d", false, false, true,
     0},
    {"formatTime1", withoutSeparator<DateTimeUtil::formatTime1>, "%02d%02d%02d%03d", false, false,
     true, 1000},
    {"formatTime2", withoutSeparator<DateTimeUtil::formatTime2>, "%02d%02d%02d%06d", false, false,
     true, 1},
};

void compareWithModel(timeval const & time, char separator) {
    for (DateTimeForm const & form : FORMS) {
        CString const text = form.function(time, separator);
        std::string const expected = referenceDateTimeText(form, time, separator);
        ASSERT_EQ(text, expected.c_str())
            << form.name << " of " << time.tv_sec << " s and " << time.tv_usec << " us";
        ASSERT_EQ(text.GetLength(), static_cast<int>(expected.size()));
    }
}

/// Times near today, wild ones, and the ends of what fits.
class TimeSource {
public:
    explicit TimeSource(unsigned int seed) : random_(seed) {}

    timeval next() {
        long long const seconds = number(4000000000);
        return timeOf(seconds, number(1000000));
    }

    char separator() { return random_() % 2 == 0 ? '/' : static_cast<char>(random_()); }

private:
    long long number(long long limit) {
        constexpr long long ENDS[] = {0,
                                      -1,
                                      999999,
                                      1000000,
                                      -999999,
                                      INT_MAX,
                                      INT_MIN,
                                      1LL << 32,
                                      std::numeric_limits<long long>::max(),
                                      std::numeric_limits<long long>::min()};
        auto const bits = static_cast<long long>(random_());
        switch (random_() % 4) {
            case 0:
                return bits >> random_() % 64;
            case 1:
                return ENDS[random_() % std::size(ENDS)];
            default:
                return bits % limit;
        }
    }

    std::mt19937_64 random_;
};

class FormatZone : public KnownZoneTest {
protected:
    timeval const morning_ = timeOf(1388631845 - GetParam().winterOffset, 678901);
};

INSTANTIATE_TEST_SUITE_P(Zones, FormatZone, ::testing::ValuesIn(KNOWN_ZONES));

TEST_P(FormatZone, WritesEveryForm) {
    timeval const & t = morning_;
    EXPECT_EQ(DateTimeUtil::formatShortDisplayDateTime(t, '/'), "2014/01/02 03:04:05");
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime(t, '-'), "2014-01-02 03:04:05.678");
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(t, '.'), "2014.01.02 03:04:05.678901");
    EXPECT_EQ(DateTimeUtil::formatDisplayDate(t, '_'), "2014_01_02");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime(t), "03:04:05");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime1(t), "03:04:05.678");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime2(t), "03:04:05.678901");
    EXPECT_EQ(DateTimeUtil::formatShortDateTime(t), "20140102030405");
    EXPECT_EQ(DateTimeUtil::formatDateTime(t), "20140102030405678");
    EXPECT_EQ(DateTimeUtil::formatDateTime2(t), "20140102030405678901");
    EXPECT_EQ(DateTimeUtil::formatDate(t), "20140102");
    EXPECT_EQ(DateTimeUtil::formatTime(t), "030405");
    EXPECT_EQ(DateTimeUtil::formatTime1(t), "030405678");
    EXPECT_EQ(DateTimeUtil::formatTime2(t), "030405678901");
    EXPECT_EQ(DateTimeUtil::formatTime(t, "%Y %j %H%%"), "2014 002 03%");
}

TEST_P(FormatZone, WritesWhatTheModelWritesOnEachChangeOfTheClock) {
    for (long long const change : {1710054000, 1730613600, 1711846800, 1729990800}) {
        for (long long const away : {-3601, -3600, -1800, -1, 0, 1, 1800, 3599, 3600}) {
            compareWithModel(timeOf(change + away, 5), '/');
        }
    }
}

TEST_P(FormatZone, WritesWhatTheModelWritesOnRandomTimes) {
    TimeSource times(20140102);
    for (int i = 0; i < 4000; ++i) {
        compareWithModel(times.next(), times.separator());
    }
}

/// A form that can be read back, and how exactly it holds the microseconds; 0 for not at all.
struct RoundTrip {
    CString (*function)(timeval const & time, char separator);
    bool hasTime;
    int unit;
};

TEST_P(FormatZone, WhatIsWrittenWithADateIsReadBack) {
    constexpr RoundTrip TRIPS[] = {
        {DateTimeUtil::formatDisplayDateTime, true, 1000},
        {DateTimeUtil::formatDisplayDateTime2, true, 1},
        {DateTimeUtil::formatDisplayDate, false, 0},
        {withoutSeparator<DateTimeUtil::formatShortDateTime>, true, 0},
        {withoutSeparator<DateTimeUtil::formatDateTime>, true, 1000},
        {withoutSeparator<DateTimeUtil::formatDateTime2>, true, 1},
        {withoutSeparator<DateTimeUtil::formatDate>, false, 0},
    };
    std::mt19937 random(5);
    for (int i = 0; i < 1000; ++i) {
        timeval const time = timeOf(static_cast<int>(random() >> 1), random() % 1000000);
        for (RoundTrip const & trip : TRIPS) {
            char const separator = "/-."[random() % 3];
            CString const text = trip.function(time, separator);
            timeval read{};
            ASSERT_TRUE(DateTimeUtil::parseDateTime(
                text, static_cast<unsigned int>(text.GetLength()), &read))
                << text.GetString();
            ASSERT_EQ(trip.function(read, separator), text);
            ASSERT_EQ(read.tv_usec, trip.unit == 0 ? 0 : time.tv_usec / trip.unit * trip.unit);
            // Nearer than an hour, which may stand on the clock twice.
            std::tm local = referenceLocalTime(time.tv_sec);
            if (!trip.hasTime) {
                local.tm_hour = local.tm_min = local.tm_sec = 0;
                local.tm_isdst = -1;
            }
            ASSERT_LE(std::abs(read.tv_sec - std::mktime(&local)), 3600) << text.GetString();
        }
    }
}

TEST_P(FormatZone, WhatIsWrittenOfTodayIsReadBack) {
    constexpr RoundTrip TRIPS[] = {
        {withoutSeparator<DateTimeUtil::formatDisplayTime>, true, 0},
        {withoutSeparator<DateTimeUtil::formatDisplayTime1>, true, 1000},
        {withoutSeparator<DateTimeUtil::formatDisplayTime2>, true, 1},
        {withoutSeparator<DateTimeUtil::formatTime>, true, 0},
        {withoutSeparator<DateTimeUtil::formatTime1>, true, 1000},
        {withoutSeparator<DateTimeUtil::formatTime2>, true, 1},
    };
    for (RoundTrip const & trip : TRIPS) {
        std::tm today{};
        timeval time{};
        timeval read{};
        do {
            time = timeOf(secondsNow(), 678901);
            today = referenceLocalTime(time.tv_sec);
            CString const text = trip.function(time, '/');
            ASSERT_TRUE(DateTimeUtil::parseDateTime(
                text, static_cast<unsigned int>(text.GetLength()), &read));
        } while (referenceLocalTime(secondsNow()).tm_mday != today.tm_mday);
        EXPECT_EQ(read.tv_usec, trip.unit == 0 ? 0 : 678901 / trip.unit * trip.unit);
        EXPECT_EQ(trip.function(read, '/'), trip.function(timeOf(time.tv_sec, read.tv_usec), '/'));
        EXPECT_LE(std::abs(read.tv_sec - time.tv_sec), 3600);
    }
}

/// The numbers are what matters here; the times are those of UTC.
class Format : public ::testing::Test {
protected:
    static long long secondsOf(int year) {
        std::tm date{};
        date.tm_year = year - 1900;
        date.tm_mday = 1;
        return std::mktime(&date);
    }

private:
    TimeZone zone_{"UTC0"};
};

TEST_F(Format, PadsShortNumbersWithZeros) {
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(timeOf(secondsOf(7), 8), '/'),
              "0007/01/01 00:00:00.000008");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime1(timeOf(0, 9999)), "00:00:00.009");
}

TEST_F(Format, WritesEachTimeOfADayAndEachFraction) {
    for (int second = 0; second < 86400; second += 7) {
        compareWithModel(timeOf(1388620800 + second, second * 11 % 1000000), '/');
    }
    for (int milliseconds = -20; milliseconds < 1020; ++milliseconds) {
        compareWithModel(timeOf(1388620800, milliseconds * 1000 + 999), '/');
    }
}

TEST_F(Format, WritesEachDayOfAYearAndEachYear) {
    for (int day = 0; day < 366; ++day) {
        compareWithModel(timeOf(secondsOf(2012) + day * 86400LL, 0), '/');
    }
    for (int year = -1100; year < 11000; year += 13) {
        compareWithModel(timeOf(secondsOf(year), 0), '/');
    }
    for (int const year : {-1000, -999, -1, 0, 999, 1000, 9999, 10000}) {
        compareWithModel(timeOf(secondsOf(year), 0), '/');
    }
}

TEST_F(Format, ASignCountsInTheWidth) {
    EXPECT_EQ(DateTimeUtil::formatDate(timeOf(secondsOf(-7), 0)), "-0070101");
    EXPECT_EQ(DateTimeUtil::formatDate(timeOf(secondsOf(-7000), 0)), "-70000101");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime1(timeOf(0, -5000)), "00:00:00.-05");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime1(timeOf(0, -5)), "00:00:00.000");
    EXPECT_EQ(DateTimeUtil::formatDisplayTime2(timeOf(0, -5)), "00:00:00.-00005");
}

TEST_F(Format, WideNumbersPassTheirWidth) {
    EXPECT_EQ(DateTimeUtil::formatDisplayTime1(timeOf(0, 1234567)), "00:00:00.1234");
    EXPECT_EQ(DateTimeUtil::formatTime2(timeOf(0, INT_MIN)), "000000-2147483648");
    EXPECT_EQ(DateTimeUtil::formatTime1(timeOf(0, INT_MIN)), "000000-2147483");
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(timeOf(0, INT_MIN), '/'),
              "1970/01/01 00:00:00.-2147483648");
    EXPECT_EQ(DateTimeUtil::formatShortDisplayDateTime(timeOf(secondsOf(1234567), 0), '/'),
              "1234567/01/01 00:00:00");
}

TEST_F(Format, CutsAt31Characters) {
    timeval const far = timeOf(secondsOf(2000000000), 123456);
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(far, '/'), "2000000000/01/01 00:00:00.12345");
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime(far, '/'), "2000000000/01/01 00:00:00.123");
    timeval const further = timeOf(secondsOf(2000000000), INT_MIN);
    EXPECT_EQ(DateTimeUtil::formatDateTime2(further), "20000000000101000000-2147483648");
    timeval const before = timeOf(secondsOf(-2000000000), INT_MIN);
    EXPECT_EQ(DateTimeUtil::formatDateTime2(before), "-20000000000101000000-214748364");
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(before, '/'), "-2000000000/01/01 00:00:00.-214");
}

TEST_F(Format, AYearBeyondTheNumbersWraps) {
    // The last year that the calendar knows is INT_MAX + 1900.
    long long const last = 67768036191676799;
    timeval const time = timeOf(last, 0);
    EXPECT_EQ(DateTimeUtil::formatDate(time), "-21474817491231");
    compareWithModel(time, '/');
    compareWithModel(timeOf(last + 1, 0), '/');
}

TEST_F(Format, ATimeThatCannotBeIsWrittenAsMinusOnes) {
    timeval const none = timeOf(std::numeric_limits<long long>::max(), 678901);
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(none, '/'), "1899/00/-1 -1:-1:-1.678901");
    EXPECT_EQ(DateTimeUtil::formatTime(none, "%H"), "-1");
}

TEST_F(Format, ANulAsSeparatorEndsTheText) {
    timeval const time = timeOf(1388631845, 678901);
    for (auto const function :
         {DateTimeUtil::formatShortDisplayDateTime, DateTimeUtil::formatDisplayDateTime,
          DateTimeUtil::formatDisplayDateTime2, DateTimeUtil::formatDisplayDate}) {
        CString const text = function(time, '\0');
        EXPECT_EQ(text, "2014");
        EXPECT_EQ(text.GetLength(), 4);
    }
}

TEST_F(Format, AnyByteMayBeTheSeparator) {
    timeval const time = timeOf(1388631845, 678901);
    for (int byte = 0; byte < 256; ++byte) {
        compareWithModel(time, static_cast<char>(byte));
    }
}

TEST_F(Format, WritesTheSameUnderACommaLocale) {
    CommaLocale const locale;
    if (!locale.isSet()) {
        GTEST_SKIP() << "no locale with a decimal comma can be had here";
    }
    EXPECT_EQ(DateTimeUtil::formatDisplayDateTime2(timeOf(1388631845, 678901), '/'),
              "2014/01/02 03:04:05.678901");
    TimeSource times(678);
    for (int i = 0; i < 4000; ++i) {
        compareWithModel(times.next(), times.separator());
    }
}

TEST_F(Format, FollowsAFormatOfTheCaller) {
    timeval const time = timeOf(1388631845, 678901);
    EXPECT_EQ(DateTimeUtil::formatTime(time, "%Y-%m-%dT%H:%M:%S"), "2014-01-02T03:04:05");
    EXPECT_EQ(DateTimeUtil::formatTime(time, "plain"), "plain");
    EXPECT_EQ(DateTimeUtil::formatTime(time, ""), "");
    EXPECT_EQ(DateTimeUtil::formatTime(timeOf(-1, 0), "%Y"), "1969");
    EXPECT_EQ(DateTimeUtil::formatTime(timeOf(0x100000000, 0), "%Y"), "2106");
}

TEST_F(Format, AFormatOfTheCallerHasRoomFor39Characters) {
    timeval const time = timeOf(1388631845, 0);
    std::string const most(35, 'x');
    EXPECT_EQ(DateTimeUtil::formatTime(time, (most + "%Y").c_str()), (most + "2014").c_str());
    EXPECT_EQ(DateTimeUtil::formatTime(time, (most + "x%Y").c_str()), "");
}

TEST_F(Format, TakesTheResultFromTheHeapAndNothingElse) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    timeval const time = timeOf(1388631845, 678901);
    DateTimeUtil::formatTime(time);  // the C library may allocate at first
    for (DateTimeForm const & form : FORMS) {
        AllocationCounter const allocations;
        CString const text = form.function(time, '/');
        EXPECT_EQ(allocations.count(), 1) << form.name;
    }
}

}  // namespace
