#include "tvk/platform/Clock.h"

#include <chrono>
#include <cstdint>

#if defined(__x86_64__) || defined(__i386__)
#include <x86intrin.h>
#define TVK_HAS_TIME_STAMP
#elif defined(_M_X64) || defined(_M_IX86)
#include <intrin.h>
#define TVK_HAS_TIME_STAMP
#endif

namespace tvk::platform {

namespace {

constexpr long long MICROSECONDS_PER_SECOND = 1000000;

template <class Unit, class Clock>
long long now() {
    return std::chrono::duration_cast<Unit>(Clock::now().time_since_epoch()).count();
}

std::uint16_t field(long long value) { return static_cast<std::uint16_t>(value); }

}  // namespace

long long currentMicroseconds() {
    return now<std::chrono::microseconds, std::chrono::system_clock>();
}

long long currentSeconds() { return now<std::chrono::seconds, std::chrono::system_clock>(); }

timeval currentTimeval() {
    long long const time = currentMicroseconds();
    return makeTimeval(time / MICROSECONDS_PER_SECOND, time % MICROSECONDS_PER_SECOND);
}

SYSTEMTIME localSystemTime() {
    long long const time = currentMicroseconds();
    std::tm local{};
    localTime(time / MICROSECONDS_PER_SECOND, &local);
    SYSTEMTIME result{};
    result.wYear = field(local.tm_year + 1900);
    result.wMonth = field(local.tm_mon + 1);
    result.wDayOfWeek = field(local.tm_wday);
    result.wDay = field(local.tm_mday);
    result.wHour = field(local.tm_hour);
    result.wMinute = field(local.tm_min);
    result.wSecond = field(local.tm_sec);
    result.wMilliseconds = field(time % MICROSECONDS_PER_SECOND / 1000);
    return result;
}

long long monotonicNanoseconds() {
    return now<std::chrono::nanoseconds, std::chrono::steady_clock>();
}

unsigned long long timeStampCounter() {
#if defined(TVK_HAS_TIME_STAMP)
    // The fences keep the reading in its place among the instructions around it.
    _mm_lfence();
    unsigned long long const stamp = __rdtsc();
    _mm_lfence();
    return stamp;
#else
    return static_cast<unsigned long long>(monotonicNanoseconds());
#endif
}

}  // namespace tvk::platform
