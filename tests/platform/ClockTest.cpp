#include "tvk/platform/Clock.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <utility>

#include "tests/support/TimeZone.h"

namespace {

using namespace tvk::platform;
using tvk::test::TimeZone;

std::tm calendar(int year, int month, int day, int hour, int minute, int second) {
    std::tm time{};
    time.tm_year = year - 1900;
    time.tm_mon = month - 1;
    time.tm_mday = day;
    time.tm_hour = hour;
    time.tm_min = minute;
    time.tm_sec = second;
    time.tm_isdst = -1;
    return time;
}

std::string textOf(std::tm const & time) {
    char text[64];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S %w %j", &time)};
}

std::string localText(long long seconds) {
    std::tm time{};
    return localTime(seconds, &time) ? textOf(time) : "none";
}

TEST(Clock, TellsTheTimeOfTheSystem) {
    long long const before = static_cast<long long>(std::time(nullptr));
    long long const now = currentMicroseconds();
    long long const after = static_cast<long long>(std::time(nullptr));
    EXPECT_GE(now, (before - 1) * 1000000);  // time() may lag a tick behind
    EXPECT_LT(now, (after + 1) * 1000000);
}

TEST(Clock, TellsTheTimeInSeconds) {
    long long const before = currentMicroseconds();
    long long const now = currentSeconds();
    long long const after = currentMicroseconds();
    EXPECT_GE(now, before / 1000000);
    EXPECT_LE(now, after / 1000000);
}

TEST(Clock, TellsTheTimeAsATimeval) {
    long long const before = currentMicroseconds();
    timeval const now = currentTimeval();
    long long const after = currentMicroseconds();
    EXPECT_GE(now.tv_usec, 0);
    EXPECT_LT(now.tv_usec, 1000000);
    EXPECT_GE(now.tv_sec, low32(before / 1000000));
    EXPECT_LE(now.tv_sec, low32(after / 1000000));
}

TEST(Clock, BreaksDownLocalTimes) {
    TimeZone const tokyo("JST-9");
    EXPECT_EQ(localText(0), "1970-01-01 09:00:00 4 001");
    EXPECT_EQ(localText(1388631845), "2014-01-02 12:04:05 4 002");
    EXPECT_EQ(localText(-1), "1970-01-01 08:59:59 4 001");
    EXPECT_EQ(localText(0x7fffffffLL), "2038-01-19 12:14:07 2 019");
    EXPECT_EQ(localText(0x80000000LL), "2038-01-19 12:14:08 2 019");
}

TEST(Clock, RefusesATimeWithoutAYear) {
    std::tm time{};
    EXPECT_FALSE(localTime(std::numeric_limits<long long>::max(), &time));
    for (int const number : {time.tm_sec, time.tm_min, time.tm_hour, time.tm_mday, time.tm_mon,
                             time.tm_year, time.tm_wday, time.tm_yday, time.tm_isdst}) {
        EXPECT_EQ(number, -1);
    }
}

TEST(Clock, MakesTimesAndBringsTheirNumbersIntoRange) {
    TimeZone const tokyo("JST-9");
    std::tm time = calendar(2013, 13, 2, 11, 63, 65);
    EXPECT_EQ(makeTime(&time), 1388631845);
    EXPECT_EQ(textOf(time), "2014-01-02 12:04:05 4 002");
}

TEST(Clock, MakesTimesOnBothSidesOfAClockChange) {
    TimeZone const berlin("CET-1CEST,M3.5.0,M10.5.0/3");
    std::tm time = calendar(2024, 3, 31, 0, 0, 0);
    EXPECT_EQ(makeTime(&time), 1711839600);
    time.tm_hour = 12;
    time.tm_isdst = -1;
    EXPECT_EQ(makeTime(&time), 1711839600 + 11 * 3600);
    EXPECT_EQ(time.tm_isdst, 1);
    EXPECT_EQ(localText(1711839600 + 11 * 3600), "2024-03-31 12:00:00 0 091");
}

TEST(Clock, AnswersMinusOneForATimeThatCannotBe) {
    std::tm time{};
    time.tm_year = std::numeric_limits<int>::max();
    time.tm_mon = std::numeric_limits<int>::max();
    EXPECT_EQ(makeTime(&time), -1);
}

/// mktime, which brings the numbers of its copy into their ranges.
long long referenceSeconds(std::tm time) { return std::mktime(&time); }

bool hasSameNumbers(std::tm const & left, std::tm const & right) {
    return left.tm_sec == right.tm_sec && left.tm_min == right.tm_min &&
           left.tm_hour == right.tm_hour && left.tm_mday == right.tm_mday &&
           left.tm_mon == right.tm_mon && left.tm_year == right.tm_year;
}

/// Expects localSeconds to give what mktime gives, or, of an hour that the clock repeats, the other
/// reading.
void compareWithMktime(std::tm const & wanted) {
    long long const seconds = localSeconds(wanted);
    std::tm inRange = wanted;
    long long const reference = std::mktime(&inRange);
    if (seconds != reference) {
        std::tm local{};
        ASSERT_TRUE(localTime(seconds, &local)) << textOf(inRange);
        ASSERT_TRUE(hasSameNumbers(local, inRange)) << seconds << " for " << textOf(inRange);
    }
}

/// Zones of all kinds; "right" ones count leap seconds.
constexpr char const * ZONES[] = {
    "UTC0",
    "JST-9",
    "NST3:30",
    "AAA-5:45:30",
    "EST5EDT,M3.2.0,M11.1.0",
    "IST-1GMT0,M10.5.0,M3.5.0/1",
    "UTC",
    "Asia/Tokyo",
    "Asia/Kolkata",
    "America/New_York",
    "Europe/London",
    "Europe/Dublin",
    "Europe/Moscow",
    "Africa/Casablanca",
    "Australia/Lord_Howe",
    "Pacific/Apia",
    "Asia/Pyongyang",
    "America/Caracas",
    "right/Asia/Tokyo",
    "right/UTC",
};

TEST(Clock, LocalSecondsAreThoseOfMktime) {
    std::mt19937 random(20140102);
    auto const below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned int>(limit));
    };
    for (char const * name : ZONES) {
        SCOPED_TRACE(name);
        TimeZone const zone(name);
        for (int i = 0; i < 10000; ++i) {
            std::tm const time = calendar(1900 + below(200), 1 + below(12), 1 + below(31),
                                          below(24), below(60), below(60));
            ASSERT_NO_FATAL_FAILURE(compareWithMktime(time));
        }
        for (int i = 0; i < 10000; ++i) {
            std::tm const time = calendar(below(20000) - 10000, below(400) - 200, below(800) - 400,
                                          below(200) - 100, below(400) - 200, below(400) - 200);
            ASSERT_NO_FATAL_FAILURE(compareWithMktime(time));
        }
    }
}

TEST(Clock, LocalSecondsAreThoseOfMktimeAroundEachChangeOfTheClock) {
    for (char const * name : ZONES) {
        SCOPED_TRACE(name);
        TimeZone const zone(name);
        constexpr int STEP = 3 * 3600;
        std::tm before{};
        localTime(-STEP, &before);
        for (int seconds = 0; seconds < INT_MAX - STEP; seconds += STEP) {
            std::tm local{};
            localTime(seconds, &local);
            if (local.tm_gmtoff != before.tm_gmtoff) {
                std::tm time = before;
                time.tm_sec = 0;
                for (time.tm_min -= 120; time.tm_min < 600; time.tm_min += 10) {
                    time.tm_isdst = -1;
                    ASSERT_NO_FATAL_FAILURE(compareWithMktime(time));
                }
            }
            before = local;
        }
    }
}

TEST(Clock, LocalSecondsOfExtremeNumbersAreThoseOfMktime) {
    constexpr int ENDS[] = {INT_MIN, INT_MIN + 1900, -1, 0, 1, 59, 60, INT_MAX - 1900, INT_MAX};
    for (char const * name : {"UTC0", "Asia/Tokyo", "America/New_York"}) {
        SCOPED_TRACE(name);
        TimeZone const zone(name);
        for (int std::tm::*const first :
             {&std::tm::tm_year, &std::tm::tm_mon, &std::tm::tm_mday, &std::tm::tm_hour}) {
            for (int std::tm::*const second :
                 {&std::tm::tm_mon, &std::tm::tm_mday, &std::tm::tm_min, &std::tm::tm_sec}) {
                for (int const firstEnd : ENDS) {
                    for (int const secondEnd : ENDS) {
                        std::tm time = calendar(2014, 1, 2, 3, 4, 5);
                        time.*first = firstEnd;
                        time.*second = secondEnd;
                        ASSERT_EQ(localSeconds(time), referenceSeconds(time))
                            << firstEnd << ' ' << secondEnd;
                    }
                }
            }
        }
    }
}

TEST(Clock, LocalSecondsFollowTheFlagOfDaylightSavingTime) {
    for (char const * name : {"JST-9", "EST5EDT,M3.2.0,M11.1.0"}) {
        SCOPED_TRACE(name);
        TimeZone const zone(name);
        for (int const flag : {-1, 0, 1}) {
            for (int const month : {1, 7}) {
                std::tm time = calendar(2014, month, 2, 3, 4, 5);
                time.tm_isdst = flag;
                EXPECT_EQ(localSeconds(time), referenceSeconds(time)) << flag;
            }
        }
    }
}

TEST(Clock, LocalSecondsLeaveTheNumbersAlone) {
    TimeZone const tokyo("JST-9");
    std::tm const time = calendar(2013, 13, 2, 11, 63, 65);
    EXPECT_EQ(localSeconds(time), 1388631845);
    EXPECT_EQ(time.tm_mon, 12);
    EXPECT_EQ(time.tm_isdst, -1);
}

TEST(Clock, LocalSecondsLeaveErrnoAlone) {
    TimeZone const tokyo("JST-9");
    localSeconds(calendar(2014, 1, 2, 3, 4, 5));
    errno = 12345;
    localSeconds(calendar(2014, 1, 2, 3, 4, 5));
    EXPECT_EQ(errno, 12345);
}

TEST(Clock, LocalSecondsNoticeAZoneThatIsSetWithoutAWord) {
    TimeZone const restored("UTC0");
    std::tm const time = calendar(2014, 7, 2, 3, 4, 5);
    for (auto const & [zone, seconds] :
         {std::pair("JST-9", 1404237845LL), std::pair("EST5EDT,M3.2.0,M11.1.0", 1404284645LL),
          std::pair("Asia/Tokyo", 1404237845LL), std::pair("UTC0", 1404270245LL),
          std::pair("Asia/Kolkata", 1404250445LL)}) {
        setenv("TZ", zone, 1);
        EXPECT_EQ(localSeconds(time), seconds) << zone;
    }
}

TEST(Clock, LocalSecondsAreMinusOneForATimeThatCannotBe) {
    std::tm time{};
    time.tm_year = std::numeric_limits<int>::max();
    time.tm_mon = std::numeric_limits<int>::max();
    time.tm_isdst = -1;
    EXPECT_EQ(localSeconds(time), -1);
}

TEST(Clock, TellsTheLocalSystemTime) {
    for (char const * zone : {"UTC0", "JST-9"}) {
        TimeZone const set(zone);
        long long const before = currentMicroseconds() / 1000;
        SYSTEMTIME const now = localSystemTime();
        long long const after = currentMicroseconds() / 1000;
        std::tm time =
            calendar(now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond);
        long long const milliseconds = makeTime(&time) * 1000 + now.wMilliseconds;
        EXPECT_GE(milliseconds, before);
        EXPECT_LE(milliseconds, after);
        EXPECT_EQ(now.wDayOfWeek, time.tm_wday);
        EXPECT_LT(now.wMilliseconds, 1000);
    }
}

TEST(Clock, MonotonicClockGoesForward) {
    long long before = monotonicNanoseconds();
    for (int i = 0; i < 10000; ++i) {
        long long const now = monotonicNanoseconds();
        ASSERT_GE(now, before);
        before = now;
    }
}

TEST(Clock, TimeStampCounterChanges) {
    unsigned long long const first = timeStampCounter();
    unsigned long long second = timeStampCounter();
    for (int i = 0; i < 1000000 && second == first; ++i) {
        second = timeStampCounter();
    }
    EXPECT_NE(first, second);
}

}  // namespace
