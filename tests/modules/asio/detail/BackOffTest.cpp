#include "modules/asio/detail/BackOff.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using tvk::detail::BackOff;

std::vector<int> waits(BackOff & backOff, int count) {
    std::vector<int> result;
    for (int at = 0; at < count; ++at) {
        result.push_back(backOff.next());
    }
    return result;
}

TEST(BackOffTest, GrowsUpToTheMaximum) {
    BackOff backOff(250, 3000, 2.0, 0.0, 1);
    EXPECT_EQ(backOff.last(), 0);
    EXPECT_EQ(waits(backOff, 6), (std::vector<int>{250, 500, 1000, 2000, 3000, 3000}));
    EXPECT_EQ(backOff.last(), 3000);
    backOff.reset();
    EXPECT_EQ(backOff.last(), 0);
    EXPECT_EQ(waits(backOff, 2), (std::vector<int>{250, 500}));
}

TEST(BackOffTest, StaysAtTheMaximumForever) {
    BackOff backOff(1, 2'000'000'000, 10.0, 0.0, 1);
    waits(backOff, 1000);
    EXPECT_EQ(backOff.next(), 2'000'000'000);
}

TEST(BackOffTest, MayStandStill) {
    BackOff constant(100, 100, 1.0, 0.0, 1);
    EXPECT_EQ(waits(constant, 3), (std::vector<int>{100, 100, 100}));
    BackOff nothing(0, 0, 2.0, 0.5, 1);
    EXPECT_EQ(waits(nothing, 3), (std::vector<int>{0, 0, 0}));
}

TEST(BackOffTest, IsShortenedByNoMoreThanTheJitter) {
    BackOff backOff(1000, 1000, 1.0, 0.25, 42);
    bool isDifferent = false;
    for (int at = 0; at < 1000; ++at) {
        int const wait = backOff.next();
        ASSERT_GE(wait, 750);
        ASSERT_LE(wait, 1000);
        isDifferent = isDifferent || wait < 900;
    }
    EXPECT_TRUE(isDifferent);
}

TEST(BackOffTest, IsTheSameForOneSeed) {
    BackOff a(1000, 100'000, 1.5, 1.0, 7);
    BackOff b(1000, 100'000, 1.5, 1.0, 7);
    BackOff c(1000, 100'000, 1.5, 1.0, 8);
    std::vector<int> const ofA = waits(a, 20);
    EXPECT_EQ(ofA, waits(b, 20));
    EXPECT_NE(ofA, waits(c, 20));
}

}  // namespace
