#pragma once

#include <ctime>

#include "tvk/platform/TimeVal.h"

namespace tvk::bench {

inline std::tm localTime(timeval const & time) {
    std::time_t const seconds = time.tv_sec;
    std::tm local;
    localtime_r(&seconds, &local);
    return local;
}

}  // namespace tvk::bench
