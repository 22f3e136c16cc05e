#include "tvk/text/DateTimeUtil.h"

#include "tvk/platform/Clock.h"

namespace tvk {

namespace {

constexpr long long MILLISECONDS_PER_SECOND = 1000;
constexpr long long MICROSECONDS_PER_MILLISECOND = 1000;
constexpr long long MICROSECONDS_PER_SECOND = 1000000;
constexpr long long SECONDS_PER_MINUTE = 60;
constexpr long long SECONDS_PER_HOUR = 3600;
constexpr long long SECONDS_PER_DAY = 86400;

// Times come from anywhere, and the system's fields may be 64 bits wide: these wrap.

long long add(long long left, long long right) {
    return static_cast<long long>(static_cast<unsigned long long>(left) +
                                  static_cast<unsigned long long>(right));
}

long long subtract(long long left, long long right) {
    return static_cast<long long>(static_cast<unsigned long long>(left) -
                                  static_cast<unsigned long long>(right));
}

long long multiply(long long left, long long right) {
    return static_cast<long long>(static_cast<unsigned long long>(left) *
                                  static_cast<unsigned long long>(right));
}

long long epochSeconds(int year, int month, int day, int hour, int minute, int second) {
    std::tm local{};
    local.tm_year = platform::low32(year - 1900LL);
    local.tm_mon = platform::low32(month - 1LL);
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = second;
    local.tm_isdst = -1;  // the calendar finds out
    return platform::localSeconds(local);
}

long long epochSeconds(_SYSTEMTIME const & time) {
    return epochSeconds(time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond);
}

}  // namespace

timeval DateTimeUtil::currentTime() {
    return win32SystemTimeToTimeval(platform::localSystemTime());
}

long long DateTimeUtil::currentTimeMilliSec() {
    return win32SystemTimeToMilliSec(platform::localSystemTime());
}

timeval DateTimeUtil::win32SystemTimeToTimeval(_SYSTEMTIME const & time) {
    return platform::makeTimeval(epochSeconds(time), time.wMilliseconds);
}

long long DateTimeUtil::win32SystemTimeToMilliSec(_SYSTEMTIME const & time) {
    return epochSeconds(time) * MILLISECONDS_PER_SECOND + time.wMilliseconds;
}

timeval DateTimeUtil::getTimeOfToday(int hour, int minute, int second) {
    long long const now = epochSeconds(platform::localSystemTime());
    std::tm local{};
    platform::localTime(now, &local);
    long long const ahead = subtract(hour, local.tm_hour) * SECONDS_PER_HOUR +
                            subtract(minute, local.tm_min) * SECONDS_PER_MINUTE +
                            subtract(second, local.tm_sec);
    return platform::makeTimeval(now + ahead, 0);
}

long long DateTimeUtil::timeToMilliSec(timeval const & time) {
    return add(multiply(time.tv_sec, MILLISECONDS_PER_SECOND),
               time.tv_usec / MICROSECONDS_PER_MILLISECOND);
}

timeval DateTimeUtil::milliSecToTime(long long milliSeconds) {
    return platform::makeTimeval(
        milliSeconds / MILLISECONDS_PER_SECOND,
        milliSeconds % MILLISECONDS_PER_SECOND * MICROSECONDS_PER_MILLISECOND);
}

long long DateTimeUtil::milliSecTimeDiffFrom(timeval const & first, timeval const & second) {
    return add(multiply(subtract(second.tv_sec, first.tv_sec), MILLISECONDS_PER_SECOND),
               subtract(second.tv_usec, first.tv_usec) / MICROSECONDS_PER_MILLISECOND);
}

timeval DateTimeUtil::timeDiffFrom(timeval const & first, timeval const & second) {
    long long seconds = subtract(second.tv_sec, first.tv_sec);
    long long microSeconds = subtract(second.tv_usec, first.tv_usec);
    if (second.tv_usec < first.tv_usec) {
        seconds = add(seconds, 1);  // up, as the header says
        microSeconds = add(microSeconds, MICROSECONDS_PER_SECOND);
    }
    return platform::makeTimeval(seconds, microSeconds);
}

void DateTimeUtil::toTM(timeval const & time, std::tm * brokenDown) {
    platform::localTime(time.tv_sec, brokenDown);
}

timeval DateTimeUtil::relativeDate(timeval const & time, int days) {
    return platform::makeTimeval(add(time.tv_sec, days * SECONDS_PER_DAY), time.tv_usec);
}

timeval DateTimeUtil::relativeTime(timeval const & time, long seconds) {
    return platform::makeTimeval(add(time.tv_sec, seconds), time.tv_usec);
}

timeval DateTimeUtil::addMilliSeconds(timeval const & time, long milliSeconds) {
    long long const seconds = milliSeconds / MILLISECONDS_PER_SECOND;
    long long const microSeconds =
        add(milliSeconds % MILLISECONDS_PER_SECOND * MICROSECONDS_PER_MILLISECOND, time.tv_usec);
    return platform::makeTimeval(add(time.tv_sec, seconds + microSeconds / MICROSECONDS_PER_SECOND),
                                 microSeconds % MICROSECONDS_PER_SECOND);
}

void DateTimeUtil::toEpochTime(int year, int month, int day, int hour, int minute, int second,
                               int usec, timeval * time) {
    *time = platform::makeTimeval(
        epochSeconds(year, month, day, hour, minute, second) + usec / MICROSECONDS_PER_SECOND,
        usec % MICROSECONDS_PER_SECOND);
}

}  // namespace tvk
