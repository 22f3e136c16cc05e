#pragma once

#include <gtest/gtest.h>

#include <ctime>
#include <ostream>
#include <string>

#include "tests/support/TimeZone.h"

namespace tvk::test {

/// A zone of which tests know the clock.
struct KnownZone {
    char const * name;
    char const * summerName;  ///< that of its clock in July
    long winterOffset;        ///< seconds east of UTC in January 2014
    long summerOffset;        ///< in July 2014
};

/// Zones by their rules, which every system reads, and by the names that its zone files have.
inline constexpr KnownZone KNOWN_ZONES[] = {
    {"JST-9", "JST", 32400, 32400},
    {"EST5EDT,M3.2.0,M11.1.0", "EDT", -18000, -14400},
    {"GMT0BST,M3.5.0/1,M10.5.0", "BST", 0, 3600},
    {"UTC0", "UTC", 0, 0},
    {"IST-5:30", "IST", 19800, 19800},
    {"Asia/Tokyo", "JST", 32400, 32400},
    {"America/New_York", "EDT", -18000, -14400},
    {"Europe/London", "BST", 0, 3600},
    {"UTC", "UTC", 0, 0},
    {"Asia/Kolkata", "IST", 19800, 19800},
};

inline void PrintTo(KnownZone const & zone, std::ostream * output) { *output << zone.name; }

/// Whether the zone that is set is that one; the C library takes UTC for a name that it has no file of.
inline bool isInForce(KnownZone const & zone) {
    std::time_t const winter = 1388631845;  // 2014-01-02 03:04:05 UTC
    std::time_t const summer = 1404270245;  // 2014-07-02 03:04:05 UTC
    std::tm inWinter{};
    std::tm inSummer{};
    localtime_r(&winter, &inWinter);
    localtime_r(&summer, &inSummer);
    return inWinter.tm_gmtoff == zone.winterOffset && inSummer.tm_gmtoff == zone.summerOffset &&
           std::string(inSummer.tm_zone) == zone.summerName;
}

/// A test that runs in a zone of KNOWN_ZONES, and fails where the system lacks it.
class KnownZoneTest : public ::testing::TestWithParam<KnownZone> {
protected:
    void SetUp() override {
        ASSERT_TRUE(isInForce(GetParam()))
            << "the system has no zone " << GetParam().name << "; is tzdata installed?";
    }

private:
    TimeZone zone_{GetParam().name};
};

}  // namespace tvk::test
