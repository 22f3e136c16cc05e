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

}  // namespace tvk::platform
