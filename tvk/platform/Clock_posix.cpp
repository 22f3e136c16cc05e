#include <atomic>
#include <ctime>
#include <initializer_list>
#include <limits>

#include "tvk/platform/Clock.h"

namespace tvk::platform {

namespace {

bool fitsTime(long long seconds) {
    return seconds >= std::numeric_limits<std::time_t>::min() &&
           seconds <= std::numeric_limits<std::time_t>::max();
}

#if defined(__GLIBC__)

/// Days from 1970-01-01 to the day before a month of the Gregorian calendar begins; months count
/// from 0, and may lie out of their range.
long long daysBeforeMonth(long long year, long long month) {
    // Years are counted from a March long ago, so that a leap day is the last of its year and no
    // number is negative.
    constexpr long long CYCLES = 6000000;  // of 400 years; more than an int has years and months
    constexpr long long YEARS_PER_CYCLE = 400;
    constexpr long long DAYS_PER_CYCLE = 146097;
    constexpr long long DAYS_BEFORE_MARCH_OF_YEAR_0 = -719469;
    constexpr unsigned int MONTHS_PER_YEAR = 12;
    auto const months = static_cast<unsigned long long>(
        (year + CYCLES * YEARS_PER_CYCLE) * MONTHS_PER_YEAR + month - 2);
    unsigned long long const years = months / MONTHS_PER_YEAR;
    unsigned long long const centuries = years / 100;
    unsigned long long const days = years * 365 + years / 4 - centuries + centuries / 4 +
                                    (153 * (months % MONTHS_PER_YEAR) + 2) / 5;
    return static_cast<long long>(days) - CYCLES * DAYS_PER_CYCLE + DAYS_BEFORE_MARCH_OF_YEAR_0;
}

/// Seconds since the epoch of a time in UTC whose numbers may lie out of their ranges.
long long secondsInUtc(std::tm const & time) {
    long long const days = daysBeforeMonth(time.tm_year + 1900LL, time.tm_mon) + time.tm_mday;
    return ((days * 24 + time.tm_hour) * 60 + time.tm_min) * 60 + time.tm_sec;
}

template <class Number>
Number valueOf(Number & variable) {
    return std::atomic_ref(variable).load(std::memory_order_relaxed);
}

/// The answer of localSeconds where one question to the calendar gives it: in a zone without
/// daylight-saving time. False where mktime has to be asked.
///
/// The C library's own variables tell which offset to try. Another thread in the calendar may be
/// setting them; whatever they hold, a time is answered only when the calendar has confirmed it.
/// Zones with daylight-saving time are left to mktime, which has its own ways with an hour that the
/// clock repeats.
bool standardSeconds(std::tm const & brokenDown, long long * seconds) {
    if (brokenDown.tm_isdst >= 0 || valueOf(daylight) != 0) {
        return false;
    }
    tzset();  // as mktime does, so that a changed TZ is noticed
    if (valueOf(daylight) != 0) {
        return false;
    }
    long const west = valueOf(timezone);
    *seconds = secondsInUtc(brokenDown) + west;
    std::tm local;
    return localTime(*seconds, &local) && local.tm_gmtoff == -west &&
           local.tm_sec == brokenDown.tm_sec;  // not so where leap seconds count
}

#else

bool standardSeconds(std::tm const & /*brokenDown*/, long long * /*seconds*/) { return false; }

#endif

}  // namespace

bool localTime(long long seconds, std::tm * brokenDown) {
    if (fitsTime(seconds)) {
        auto const time = static_cast<std::time_t>(seconds);
        if (localtime_r(&time, brokenDown) != nullptr) {
            return true;
        }
    }
    *brokenDown = std::tm{};
    for (int std::tm::*const number : {&std::tm::tm_sec, &std::tm::tm_min, &std::tm::tm_hour,
                                       &std::tm::tm_mday, &std::tm::tm_mon, &std::tm::tm_year,
                                       &std::tm::tm_wday, &std::tm::tm_yday, &std::tm::tm_isdst}) {
        brokenDown->*number = -1;
    }
    return false;
}

long long makeTime(std::tm * brokenDown) { return std::mktime(brokenDown); }

long long localSeconds(std::tm const & brokenDown) {
    long long seconds = 0;
    if (standardSeconds(brokenDown, &seconds)) {
        return seconds;
    }
    std::tm inRange = brokenDown;
    return makeTime(&inRange);
}

}  // namespace tvk::platform
