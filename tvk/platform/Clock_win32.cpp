#include <time.h>

#include "tvk/platform/Clock.h"

namespace tvk::platform {

bool localTime(long long seconds, std::tm * brokenDown) {
    __time64_t const time = seconds;
    return _localtime64_s(brokenDown, &time) == 0;  // on failure it stores the -1s itself
}

long long makeTime(std::tm * brokenDown) { return _mktime64(brokenDown); }

long long localSeconds(std::tm const & brokenDown) {
    std::tm inRange = brokenDown;
    return makeTime(&inRange);
}

}  // namespace tvk::platform
