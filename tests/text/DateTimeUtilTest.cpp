// The clock, the calendar and the sums. Reading and writing have files of their own.

#include "tvk/text/DateTimeUtil.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <ctime>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/DateTimeModel.h"
#include "tests/support/KnownZones.h"
#include "tests/support/TimeZone.h"

namespace {

using namespace tvk::test;
using ::testing::AnyOf;
using tvk::DateTimeUtil;

constexpr long long LOWEST = std::numeric_limits<long long>::min();
constexpr long long HIGHEST = std::numeric_limits<long long>::max();

constexpr char NEW_YORK[] = "EST5EDT,M3.2.0,M11.1.0";
constexpr char LONDON[] = "GMT0BST,M3.5.0/1,M10.5.0";
constexpr char TOKYO[] = "JST-9";

using Fields = std::pair<long long, long long>;

Fields fieldsOf(timeval const & time) { return {time.tv_sec, time.tv_usec}; }

/// The model of a 32-bit store.
int cut(long long value) { return static_cast<int>(static_cast<unsigned int>(value)); }

// Arithmetic of 128 bits, cut at the end, is the model of sums that wrap.
__extension__ using Wide = __int128;

long long wrapped(Wide value) {
    return static_cast<long long>(static_cast<unsigned long long>(value));
}

Fields cutFields(Wide seconds, Wide microseconds) {
    return {cut(wrapped(seconds)), cut(wrapped(microseconds))};
}

_SYSTEMTIME systemTime(int year, int month, int day, int hour, int minute, int second,
                       int milliseconds) {
    _SYSTEMTIME time{};
    time.wYear = static_cast<unsigned short>(year);
    time.wMonth = static_cast<unsigned short>(month);
    time.wDay = static_cast<unsigned short>(day);
    time.wHour = static_cast<unsigned short>(hour);
    time.wMinute = static_cast<unsigned short>(minute);
    time.wSecond = static_cast<unsigned short>(second);
    time.wMilliseconds = static_cast<unsigned short>(milliseconds);
    return time;
}

Fields epochTime(int year, int month, int day, int hour, int minute, int second, int usec = 0) {
    timeval time{};
    DateTimeUtil::toEpochTime(year, month, day, hour, minute, second, usec, &time);
    return fieldsOf(time);
}

long long nowMilliseconds() {
    using std::chrono::milliseconds;
    auto const now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(now).count();
}

/// All that must hold in each zone.
class DateTimeZone : public KnownZoneTest {};

INSTANTIATE_TEST_SUITE_P(Zones, DateTimeZone, ::testing::ValuesIn(KNOWN_ZONES));

TEST_P(DateTimeZone, MakesTimesOfLocalDates) {
    KnownZone const & zone = GetParam();
    EXPECT_EQ(epochTime(2014, 1, 2, 3, 4, 5), Fields(1388631845 - zone.winterOffset, 0));
    EXPECT_EQ(epochTime(2014, 7, 2, 3, 4, 5), Fields(1404270245 - zone.summerOffset, 0));
    EXPECT_EQ(epochTime(2014, 1, 2, 3, 4, 5, 999999),
              Fields(1388631845 - zone.winterOffset, 999999));
}

TEST_P(DateTimeZone, RollsOverNumbersOutOfRange) {
    Fields const plain = epochTime(2014, 1, 2, 3, 4, 5);
    EXPECT_EQ(epochTime(2013, 13, 2, 3, 4, 5), plain);
    EXPECT_EQ(epochTime(2015, -11, 2, 3, 4, 5), plain);
    EXPECT_EQ(epochTime(2013, 12, 33, 3, 4, 5), plain);
    EXPECT_EQ(epochTime(2014, 1, 1, 27, 4, 5), plain);
    EXPECT_EQ(epochTime(2014, 1, 2, 2, 64, 5), plain);
    EXPECT_EQ(epochTime(2014, 1, 2, 3, 3, 65), plain);
    EXPECT_EQ(epochTime(2014, 1, 2, 3, 5, -55), plain);
}

TEST_P(DateTimeZone, MakesTimesOfSystemTimes) {
    long long const winter = 1388631845 - GetParam().winterOffset;
    long long const summer = 1404270245 - GetParam().summerOffset;
    EXPECT_EQ(DateTimeUtil::win32SystemTimeToMilliSec(systemTime(2014, 1, 2, 3, 4, 5, 678)),
              winter * 1000 + 678);
    EXPECT_EQ(DateTimeUtil::win32SystemTimeToMilliSec(systemTime(2014, 7, 2, 3, 4, 5, 999)),
              summer * 1000 + 999);
    EXPECT_EQ(DateTimeUtil::win32SystemTimeToTimeval(systemTime(2014, 7, 2, 3, 4, 5, 0)).tv_sec,
              summer);
}

TEST_P(DateTimeZone, BreaksTimesDown) {
    std::tm local{};
    DateTimeUtil::toTM(timeOf(1404270245 - GetParam().summerOffset, 999999), &local);
    EXPECT_EQ(local.tm_year, 114);
    EXPECT_EQ(local.tm_mon, 6);
    EXPECT_EQ(local.tm_mday, 2);
    EXPECT_EQ(local.tm_hour, 3);
    EXPECT_EQ(local.tm_min, 4);
    EXPECT_EQ(local.tm_sec, 5);
    EXPECT_EQ(local.tm_wday, 3);
    EXPECT_EQ(local.tm_yday, 182);
    EXPECT_EQ(local.tm_isdst, GetParam().summerOffset == GetParam().winterOffset ? 0 : 1);
}

TEST_P(DateTimeZone, TellsTheTime) {
    for (int i = 0; i < 3; ++i) {
        long long const before = nowMilliseconds();
        long long const now = DateTimeUtil::currentTimeMilliSec();
        timeval const time = DateTimeUtil::currentTime();
        long long const after = nowMilliseconds();
        EXPECT_GE(now, before);
        EXPECT_LE(now, after);
        EXPECT_GE(time.tv_sec, cut(before / 1000));
        EXPECT_LE(time.tv_sec, cut(after / 1000));
    }
}

TEST_P(DateTimeZone, TellsTimesOfToday) {
    for (auto const & [hour, minute, second] :
         {std::tuple(0, 0, 0), std::tuple(23, 59, 59), std::tuple(25, 0, 0), std::tuple(-1, 75, -3),
          std::tuple(1000000, -1000000, 1000000)}) {
        std::tm now{};
        timeval today{};
        long long seconds = 0;
        do {
            seconds = secondsNow();
            now = referenceLocalTime(seconds);
            today = DateTimeUtil::getTimeOfToday(hour, minute, second);
        } while (referenceLocalTime(secondsNow()).tm_mday != now.tm_mday);
        seconds +=
            (hour - now.tm_hour) * 3600LL + (minute - now.tm_min) * 60LL + (second - now.tm_sec);
        EXPECT_EQ(fieldsOf(today), Fields(cut(seconds), 0)) << hour;
    }
}

TEST(DateTimeUtil, MidnightIsATimeOfToday) {
    TimeZone const zone(TOKYO);
    std::tm midnight{};
    std::tm now{};
    do {
        now = referenceLocalTime(secondsNow());
        DateTimeUtil::toTM(DateTimeUtil::getTimeOfToday(0, 0, 0), &midnight);
    } while (referenceLocalTime(secondsNow()).tm_mday != now.tm_mday);
    EXPECT_EQ(midnight.tm_yday, now.tm_yday);
    EXPECT_EQ(midnight.tm_hour, 0);
    EXPECT_EQ(midnight.tm_min, 0);
    EXPECT_EQ(midnight.tm_sec, 0);
}

TEST(DateTimeUtil, TimesOfTodayMayLieFarAway) {
    TimeZone const zone(TOKYO);
    timeval const before = DateTimeUtil::getTimeOfToday(0, 0, 0);
    timeval const far = DateTimeUtil::getTimeOfToday(INT_MAX, INT_MIN, INT_MAX);
    timeval const after = DateTimeUtil::getTimeOfToday(0, 0, 0);
    long long const ahead = INT_MAX * 3600LL + INT_MIN * 60LL + INT_MAX;
    EXPECT_THAT(far.tv_sec, AnyOf(cut(before.tv_sec + ahead), cut(after.tv_sec + ahead)));
}

/// A zone where it is about noon, and whose clock went an hour forward at 3 this morning.
std::string zoneThatChangedToday() {
    std::tm utc{};
    std::time_t const now = secondsNow();
    gmtime_r(&now, &utc);
    int const west = utc.tm_hour - 12;  // of UTC, in summer
    std::time_t const local = now - west * 3600;
    gmtime_r(&local, &utc);
    std::string const day = std::to_string(utc.tm_yday);
    return "AAA" + std::to_string(west + 1) + "BBB" + std::to_string(west) + "," + day + "/3," +
           (utc.tm_yday < 300 ? "363/3" : "2/3");
}

TEST(DateTimeUtil, DeliberateTimesOfTodayAreCountedFromNow) {
    TimeZone const zone(zoneThatChangedToday().c_str());
    std::tm now{};
    timeval midnight{};
    do {
        now = referenceLocalTime(secondsNow());
        midnight = DateTimeUtil::getTimeOfToday(0, 0, 0);
    } while (referenceLocalTime(secondsNow()).tm_hour != now.tm_hour);
    ASSERT_EQ(now.tm_hour, 12);
    ASSERT_EQ(now.tm_isdst, 1);
    // 11 hours ago it was midnight; 12 hours ago it was 11 in the evening.
    std::tm local{};
    DateTimeUtil::toTM(midnight, &local);
    EXPECT_EQ(local.tm_hour, 23);
}

TEST(DateTimeUtil, DeliberateMillisecondsStandInTheMicroseconds) {
    TimeZone const zone(TOKYO);
    timeval const time =
        DateTimeUtil::win32SystemTimeToTimeval(systemTime(2014, 1, 2, 3, 4, 5, 678));
    EXPECT_EQ(fieldsOf(time), Fields(1388599445, 678));
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(time), 1388599445000);
    EXPECT_STREQ(DateTimeUtil::formatDisplayDateTime(time, '/'), "2014/01/02 03:04:05.000");
    EXPECT_STREQ(DateTimeUtil::formatDisplayDateTime2(time, '/'), "2014/01/02 03:04:05.000678");
    for (int i = 0; i < 100; ++i) {
        timeval const now = DateTimeUtil::currentTime();
        ASSERT_GE(now.tv_usec, 0);
        ASSERT_LE(now.tv_usec, 999);
    }
}

TEST(DateTimeUtil, CurrentTimesShowTheMilliseconds) {
    // Between two readings of the exact clock with less than a second between them, the milliseconds
    // are theirs.
    long long before = 0;
    long long after = 0;
    timeval now{};
    do {
        before = DateTimeUtil::currentTimeMilliSec();
        now = DateTimeUtil::currentTime();
        after = DateTimeUtil::currentTimeMilliSec();
    } while (before / 1000 != after / 1000);
    EXPECT_GE(now.tv_usec, before % 1000);
    EXPECT_LE(now.tv_usec, after % 1000);
}

TEST(DateTimeUtil, SystemTimesRollOver) {
    TimeZone const zone(TOKYO);
    EXPECT_EQ(
        fieldsOf(DateTimeUtil::win32SystemTimeToTimeval(systemTime(2013, 13, 1, 27, 3, 65, 65535))),
        Fields(1388599445, 65535));
    EXPECT_EQ(DateTimeUtil::win32SystemTimeToMilliSec(systemTime(2013, 13, 1, 27, 3, 65, 65535)),
              1388599445000 + 65535);
    EXPECT_EQ(DateTimeUtil::win32SystemTimeToMilliSec(systemTime(1970, 0, 1, 9, 0, 0, 0)),
              -31LL * 86400 * 1000);
}

TEST(DateTimeUtil, SystemTimesBeyond32BitsAreCutInTimesOnly) {
    TimeZone const zone(TOKYO);
    _SYSTEMTIME const far = systemTime(3000, 1, 1, 0, 0, 0, 1);
    EXPECT_EQ(DateTimeUtil::win32SystemTimeToMilliSec(far), 32503647600001);
    EXPECT_EQ(fieldsOf(DateTimeUtil::win32SystemTimeToTimeval(far)), Fields(cut(32503647600), 1));
}

TEST(DateTimeUtil, MakesTimesOnBothSidesOfTheClockChanges) {
    for (char const * name : {NEW_YORK, "America/New_York"}) {
        SCOPED_TRACE(name);
        TimeZone const zone(name);
        EXPECT_EQ(epochTime(2024, 3, 10, 1, 59, 59), Fields(1710054000 - 1, 0));
        EXPECT_EQ(epochTime(2024, 3, 10, 3, 0, 0), Fields(1710054000, 0));
        EXPECT_EQ(epochTime(2024, 11, 3, 0, 59, 59), Fields(1730613600 - 3601, 0));
        EXPECT_EQ(epochTime(2024, 11, 3, 2, 0, 0), Fields(1730613600 + 3600, 0));
    }
    for (char const * name : {LONDON, "Europe/London"}) {
        SCOPED_TRACE(name);
        TimeZone const zone(name);
        EXPECT_EQ(epochTime(2024, 3, 31, 0, 59, 59), Fields(1711846800 - 1, 0));
        EXPECT_EQ(epochTime(2024, 3, 31, 2, 0, 0), Fields(1711846800, 0));
        EXPECT_EQ(epochTime(2024, 10, 27, 0, 59, 59), Fields(1729990800 - 3601, 0));
        EXPECT_EQ(epochTime(2024, 10, 27, 2, 0, 0), Fields(1729990800 + 3600, 0));
    }
}

TEST(DateTimeUtil, AnHourThatTheClockSkipsIsOneBesideIt) {
    TimeZone const zone(NEW_YORK);
    EXPECT_THAT(epochTime(2024, 3, 10, 2, 30, 0).first,
                AnyOf(1710054000 - 1800, 1710054000 + 1800));
}

TEST(DateTimeUtil, AnHourThatTheClockRepeatsIsOneOfBoth) {
    TimeZone const zone(NEW_YORK);
    for (int const month : {1, 7}) {
        epochTime(2024, month, 1, 0, 0, 0);
        EXPECT_THAT(epochTime(2024, 11, 3, 1, 30, 0).first,
                    AnyOf(1730613600 - 1800, 1730613600 + 1800));
    }
}

TEST(DateTimeUtil, BreaksTimesDownOnBothSidesOfTheClockChanges) {
    struct Row {
        char const * zone;
        long long seconds;
        int hour;
        int minute;
        int isSummer;
    };
    for (Row const & row : {
             Row{NEW_YORK, 1710054000 - 1, 1, 59, 0},
             Row{NEW_YORK, 1710054000, 3, 0, 1},
             Row{NEW_YORK, 1730613600 - 1800, 1, 30, 1},
             Row{NEW_YORK, 1730613600 - 1, 1, 59, 1},
             Row{NEW_YORK, 1730613600, 1, 0, 0},
             Row{NEW_YORK, 1730613600 + 1800, 1, 30, 0},
             Row{LONDON, 1711846800 - 1, 0, 59, 0},
             Row{LONDON, 1711846800, 2, 0, 1},
             Row{LONDON, 1729990800 - 1, 1, 59, 1},
             Row{LONDON, 1729990800, 1, 0, 0},
         }) {
        SCOPED_TRACE(row.seconds);
        TimeZone const zone(row.zone);
        std::tm local{};
        DateTimeUtil::toTM(timeOf(row.seconds, 0), &local);
        EXPECT_EQ(local.tm_hour, row.hour);
        EXPECT_EQ(local.tm_min, row.minute);
        EXPECT_EQ(local.tm_isdst, row.isSummer);
    }
}

TEST(DateTimeUtil, BreaksDownTheSecondsAsTheyAre) {
    TimeZone const zone("UTC0");
    std::tm local{};
    DateTimeUtil::toTM(timeOf(0x100000000, 0), &local);
    EXPECT_EQ(local.tm_year, 206);
    DateTimeUtil::toTM(timeOf(-1, 0), &local);
    EXPECT_EQ(local.tm_year, 69);
    DateTimeUtil::toTM(timeOf(HIGHEST, 0), &local);
    EXPECT_EQ(local.tm_year, -1);
    EXPECT_EQ(local.tm_mday, -1);
}

TEST(DateTimeUtil, CarriesTheMicrosecondsOfADate) {
    TimeZone const zone("UTC0");
    EXPECT_EQ(epochTime(1970, 1, 1, 0, 0, 10, 1000000), Fields(11, 0));
    EXPECT_EQ(epochTime(1970, 1, 1, 0, 0, 10, 2500000), Fields(12, 500000));
    EXPECT_EQ(epochTime(1970, 1, 1, 0, 0, 10, -1), Fields(10, -1));
    EXPECT_EQ(epochTime(1970, 1, 1, 0, 0, 10, -1000001), Fields(9, -1));
    EXPECT_EQ(epochTime(1970, 1, 1, 0, 0, 10, INT_MAX), Fields(10 + 2147, 483647));
    EXPECT_EQ(epochTime(1970, 1, 1, 0, 0, 10, INT_MIN), Fields(10 - 2147, -483648));
}

TEST(DateTimeUtil, DatesBeyond32BitsAreCut) {
    TimeZone const zone("UTC0");
    EXPECT_EQ(epochTime(2038, 1, 19, 3, 14, 7), Fields(INT_MAX, 0));
    EXPECT_EQ(epochTime(2038, 1, 19, 3, 14, 8), Fields(INT_MIN, 0));
    EXPECT_EQ(epochTime(2038, 1, 19, 3, 14, 7, 1000000), Fields(INT_MIN, 0));
    EXPECT_EQ(epochTime(3000, 1, 1, 0, 0, 0), Fields(cut(32503680000), 0));
}

TEST(DateTimeUtil, ADateWithoutATimeIsMinusOne) {
    TimeZone const zone("UTC0");
    EXPECT_EQ(epochTime(INT_MAX, INT_MAX, 1, 0, 0, 0), Fields(-1, 0));
    EXPECT_EQ(epochTime(INT_MAX, INT_MAX, 1, 0, 0, 0, 1500000), Fields(0, 500000));
}

TEST(DateTimeUtil, TheLowestYearAndMonthWrap) {
    TimeZone const zone("UTC0");
    // INT_MIN less 1900 is the year INT_MAX - 1899 to the calendar; so is the month.
    std::tm model{};
    model.tm_year = INT_MAX - 1899;
    model.tm_mday = 1;
    model.tm_isdst = -1;
    EXPECT_EQ(epochTime(INT_MIN, 1, 1, 0, 0, 0).first, cut(std::mktime(&model)));
    model = {};
    model.tm_year = 70;
    model.tm_mon = INT_MAX;
    model.tm_mday = 1;
    model.tm_isdst = -1;
    EXPECT_EQ(epochTime(1970, INT_MIN, 1, 0, 0, 0).first, cut(std::mktime(&model)));
}

TEST(DateTimeUtil, ManyThreadsReadAndWriteAtOnce) {
    constexpr int FIRST = 1388631845;
    for (char const * name : {"Asia/Tokyo", NEW_YORK}) {
        TimeZone const zone(name);
        std::atomic<int> wrong = 0;
        std::vector<std::thread> threads;
        for (int number = 0; number < 4; ++number) {
            threads.emplace_back([&wrong, number] {
                for (int i = 0; i < 2000; ++i) {
                    timeval const time = timeOf(FIRST + i * 7919 + number, i * 499);
                    tvk::CString const text = DateTimeUtil::formatDisplayDateTime2(time, '/');
                    timeval read{};
                    bool const isRead = DateTimeUtil::parseDateTime(text, 26, &read);
                    if (!isRead || fieldsOf(read) != fieldsOf(time)) {
                        ++wrong;
                    }
                }
            });
        }
        for (std::thread & thread : threads) {
            thread.join();
        }
        EXPECT_EQ(wrong, 0) << name;
    }
}

TEST(DateTimeUtil, TurnsTimesIntoMilliseconds) {
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(timeOf(1, 500000)), 1500);
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(timeOf(1, 999)), 1000);
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(timeOf(-2, 500000)), -1500);
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(timeOf(0, -1999)), -1);
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(timeOf(INT_MAX, 999999)), 2147483647999);
    EXPECT_EQ(DateTimeUtil::timeToMilliSec(timeOf(INT_MIN, INT_MIN)), -2147483648000 - 2147483);
}

TEST(DateTimeUtil, TurnsMillisecondsIntoTimes) {
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(1500)), Fields(1, 500000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(0)), Fields(0, 0));
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(999)), Fields(0, 999000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(-1500)), Fields(-1, -500000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(2147483648001)), Fields(INT_MIN, 1000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(HIGHEST)), Fields(cut(HIGHEST / 1000), 807000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(LOWEST)), Fields(cut(LOWEST / 1000), -808000));
}

TEST(DateTimeUtil, MillisecondsSurviveTheWayThroughATime) {
    for (long long const milliseconds : {0LL, 1LL, 1500LL, -1500LL, 1388599445678LL, -1LL}) {
        EXPECT_EQ(DateTimeUtil::timeToMilliSec(DateTimeUtil::milliSecToTime(milliseconds)),
                  milliseconds);
    }
}

TEST(DateTimeUtil, TellsDifferencesInMilliseconds) {
    EXPECT_EQ(DateTimeUtil::milliSecTimeDiffFrom(timeOf(10, 900000), timeOf(12, 100000)), 1200);
    EXPECT_EQ(DateTimeUtil::milliSecTimeDiffFrom(timeOf(12, 100000), timeOf(10, 900000)), -1200);
    EXPECT_EQ(DateTimeUtil::milliSecTimeDiffFrom(timeOf(10, 1), timeOf(10, 1000)), 0);
    EXPECT_EQ(DateTimeUtil::milliSecTimeDiffFrom(timeOf(INT_MIN, 0), timeOf(INT_MAX, 0)),
              4294967295000);
}

TEST(DateTimeUtil, TellsDifferences) {
    EXPECT_EQ(fieldsOf(DateTimeUtil::timeDiffFrom(timeOf(10, 100000), timeOf(12, 900000))),
              Fields(2, 800000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::timeDiffFrom(timeOf(10, 5), timeOf(12, 5))), Fields(2, 0));
    EXPECT_EQ(fieldsOf(DateTimeUtil::timeDiffFrom(timeOf(12, 0), timeOf(10, 7))), Fields(-2, 7));
}

TEST(DateTimeUtil, DeliberateADifferenceThatBorrowsIsTwoSecondsTooGreat) {
    EXPECT_EQ(fieldsOf(DateTimeUtil::timeDiffFrom(timeOf(10, 900000), timeOf(12, 100000))),
              Fields(3, 200000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::timeDiffFrom(timeOf(10, 1), timeOf(10, 0))),
              Fields(1, 999999));
}

TEST(DateTimeUtil, MovesTimesByDaysAndSeconds) {
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeDate(timeOf(10, 7), 2)), Fields(172810, 7));
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeDate(timeOf(10, -7), -1)), Fields(-86390, -7));
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeDate(timeOf(10, 7), INT_MAX)),
              Fields(cut(10 + INT_MAX * 86400LL), 7));
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeDate(timeOf(10, 7), INT_MIN)),
              Fields(cut(10 + INT_MIN * 86400LL), 7));
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeTime(timeOf(10, 7), 5)), Fields(15, 7));
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeTime(timeOf(10, 7), -15)), Fields(-5, 7));
    EXPECT_EQ(fieldsOf(DateTimeUtil::relativeTime(timeOf(INT_MAX, 7), 1)), Fields(INT_MIN, 7));
}

TEST(DateTimeUtil, ADayIsADayAlsoWhereTheClockChanges) {
    TimeZone const zone(NEW_YORK);
    std::tm local{};
    DateTimeUtil::toTM(DateTimeUtil::relativeDate(timeOf(1710054000 - 3600, 0), 1), &local);
    EXPECT_EQ(local.tm_mday, 11);
    EXPECT_EQ(local.tm_hour, 2);  // 1 o'clock the day before
}

TEST(DateTimeUtil, AddsMilliseconds) {
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(10, 900000), 200)), Fields(11, 100000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(10, 900000), -1000)),
              Fields(9, 900000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(10, 900000), -1)), Fields(10, 899000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(10, 100000), 2345)),
              Fields(12, 445000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(INT_MAX, 999999), 1)),
              Fields(INT_MIN, 999));
}

TEST(DateTimeUtil, AddingNegativeMillisecondsMayLeaveNegativeMicroseconds) {
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(10, 100000), -200)),
              Fields(10, -100000));
    EXPECT_EQ(fieldsOf(DateTimeUtil::addMilliSeconds(timeOf(10, 0), -1999)), Fields(9, -999000));
}

/// Numbers of all sizes, the ends of 32 and 64 bits among them.
class WildNumbers {
public:
    explicit WildNumbers(unsigned int seed) : random_(seed) {}

    long long next() {
        constexpr long long ENDS[] = {0,       1,       -1,        INT_MAX,     INT_MIN,
                                      HIGHEST, LOWEST,  999999,    1000000,     -999999,
                                      999,     -999999, 1LL << 32, -(1LL << 32)};
        auto const bits = static_cast<long long>(random_());
        return random_() % 4 == 0 ? ENDS[random_() % std::size(ENDS)] : bits >> random_() % 64;
    }

    timeval time() {
        long long const seconds = next();
        return timeOf(seconds, next());
    }

private:
    std::mt19937_64 random_;
};

TEST(DateTimeUtil, SumsWrapAndAreCutAsTheModelSays) {
    WildNumbers wild(20140102);
    for (int i = 0; i < 100000; ++i) {
        timeval const a = wild.time();
        timeval const b = wild.time();
        long long const number = wild.next();
        SCOPED_TRACE(::testing::PrintToString(std::tuple(fieldsOf(a), fieldsOf(b), number)));
        Wide const seconds = static_cast<Wide>(b.tv_sec) - a.tv_sec;
        Wide const micro = static_cast<Wide>(b.tv_usec) - a.tv_usec;
        ASSERT_EQ(DateTimeUtil::timeToMilliSec(a),
                  wrapped(static_cast<Wide>(a.tv_sec) * 1000 + a.tv_usec / 1000));
        ASSERT_EQ(fieldsOf(DateTimeUtil::milliSecToTime(number)),
                  cutFields(number / 1000, number % 1000 * 1000));
        ASSERT_EQ(DateTimeUtil::milliSecTimeDiffFrom(a, b),
                  wrapped(seconds * 1000 + wrapped(micro) / 1000));
        bool const borrows = b.tv_usec < a.tv_usec;
        ASSERT_EQ(fieldsOf(DateTimeUtil::timeDiffFrom(a, b)),
                  cutFields(seconds + (borrows ? 1 : 0), micro + (borrows ? 1000000 : 0)));
        ASSERT_EQ(fieldsOf(DateTimeUtil::relativeDate(a, cut(number))),
                  cutFields(a.tv_sec + static_cast<Wide>(cut(number)) * 86400, a.tv_usec));
        ASSERT_EQ(fieldsOf(DateTimeUtil::relativeTime(a, static_cast<long>(number))),
                  cutFields(static_cast<Wide>(a.tv_sec) + static_cast<long>(number), a.tv_usec));
        auto const added = static_cast<long>(number);
        long long const sum = wrapped(static_cast<Wide>(added % 1000) * 1000 + a.tv_usec);
        ASSERT_EQ(
            fieldsOf(DateTimeUtil::addMilliSeconds(a, added)),
            cutFields(static_cast<Wide>(a.tv_sec) + added / 1000 + sum / 1000000, sum % 1000000));
    }
}

}  // namespace
