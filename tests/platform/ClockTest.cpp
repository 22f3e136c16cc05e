#include "tvk/platform/Clock.h"

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <string>

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
