#pragma once

#include <ctime>

#include "tvk/platform/SystemTime.h"
#include "tvk/platform/TimeVal.h"

/// Clocks and the calendar of the operating system. Broken-down times are local times.
/// Threads: any thread may call any of these.
namespace tvk::platform {

/// Microseconds since 1970-01-01 00:00:00 UTC.
long long currentMicroseconds();

/// The same in whole seconds.
long long currentSeconds();

/// Microseconds since the epoch as a timeval.
timeval currentTimeval();

/// The local time to the millisecond.
SYSTEMTIME localSystemTime();

/// Breaks down seconds since the epoch. False, with every number of `*brokenDown` -1, where the system
/// has no such time.
bool localTime(long long seconds, std::tm * brokenDown);

/// Seconds since the epoch of a local time whose numbers may lie out of their ranges; they are
/// brought into them. -1 where the system has no such time.
long long makeTime(std::tm * brokenDown);

/// The answer of makeTime, at less cost; the numbers stay as they are.
long long localSeconds(std::tm const & brokenDown);

/// Nanoseconds of a clock that never goes back; its zero means nothing.
long long monotonicNanoseconds();

/// A fast counter that changes between any two readings far enough apart: the processor's time stamp
/// where it has one, else the monotonic clock.
unsigned long long timeStampCounter();

}  // namespace tvk::platform
