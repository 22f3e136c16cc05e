#include "tvk/platform/TimeVal.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

static_assert(std::is_same_v<tvk::timeval, ::timeval>);

TEST(TimeVal, StoresWhatFits) {
    timeval const time = tvk::platform::makeTimeval(1718000000, 999999);
    EXPECT_EQ(time.tv_sec, 1718000000);
    EXPECT_EQ(time.tv_usec, 999999);
    EXPECT_EQ(tvk::platform::makeTimeval(-5, -6).tv_sec, -5);
    EXPECT_EQ(tvk::platform::makeTimeval(-5, -6).tv_usec, -6);
}

TEST(TimeVal, CutsBothFieldsTo32Bits) {
    timeval const time = tvk::platform::makeTimeval(0x180000000LL, 0x1ffffffffLL);
    EXPECT_EQ(time.tv_sec, -0x80000000LL);
    EXPECT_EQ(time.tv_usec, -1);
}

}  // namespace
