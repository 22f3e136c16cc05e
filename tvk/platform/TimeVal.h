#pragma once

/// The platform's own `timeval`. Its fields are wider than 32 bits on some systems; the library stores
/// only values cut to 32 bits.

#if defined(_WIN32)
#include <winsock2.h>
#else
#include <sys/time.h>
#endif

#include "tvk/platform/Numbers.h"

namespace tvk {

using ::timeval;

namespace platform {

/// A time of these two fields, each cut to its low 32 bits.
inline timeval makeTimeval(long long seconds, long long microseconds) noexcept {
    timeval time{};
    time.tv_sec = low32(seconds);
    time.tv_usec = low32(microseconds);
    return time;
}

}  // namespace platform

}  // namespace tvk
