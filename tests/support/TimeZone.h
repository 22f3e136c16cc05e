#pragma once

#include <cstdlib>
#include <ctime>
#include <string>

namespace tvk::test {

/// The time zone of the process, for as long as it lives.
class TimeZone {
public:
    explicit TimeZone(char const * zone) {
        if (char const * const before = std::getenv("TZ")) {
            before_ = before;
            hadOne_ = true;
        }
        setenv("TZ", zone, 1);
        tzset();
    }
    TimeZone(TimeZone const &) = delete;
    TimeZone & operator=(TimeZone const &) = delete;
    ~TimeZone() {
        hadOne_ ? setenv("TZ", before_.c_str(), 1) : unsetenv("TZ");
        tzset();
    }

private:
    std::string before_;
    bool hadOne_ = false;
};

}  // namespace tvk::test
