#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "examples/inprocess_agent/Timeline.h"

namespace tvk::test {

using inprocess::Timeline;
using Seen = std::vector<std::string>;

namespace {

/// Plans an event that notes its name and the time.
void plan(Timeline & timeline, Seen & seen, int milliSeconds, std::string const & name) {
    timeline.after(milliSeconds, [&timeline, &seen, name] {
        seen.push_back(name + std::to_string(timeline.now()));
    });
}

}  // namespace

TEST(InProcessTimeline, StandsStillUntilItIsAdvanced) {
    Timeline timeline;
    Seen seen;
    EXPECT_EQ(timeline.now(), 0);
    plan(timeline, seen, 0, "a");
    EXPECT_EQ(seen, Seen());
    timeline.advance(0);
    EXPECT_EQ(seen, Seen{"a0"});
    timeline.advance(7);
    EXPECT_EQ(timeline.now(), 7);
}

TEST(InProcessTimeline, KeepsTheOrderOfTimesAndOfPlanning) {
    Timeline timeline;
    Seen seen;
    plan(timeline, seen, 5, "a");
    plan(timeline, seen, 3, "b");
    plan(timeline, seen, 5, "c");
    plan(timeline, seen, -1, "d");
    plan(timeline, seen, 6, "e");
    timeline.advance(5);
    EXPECT_EQ(seen, (Seen{"d0", "b3", "a5", "c5"}));
    timeline.advance(1);
    EXPECT_EQ(seen.back(), "e6");
}

TEST(InProcessTimeline, TakesATimeBelow0As0) {
    Timeline timeline;
    timeline.advance(5);
    timeline.advance(-5);
    EXPECT_EQ(timeline.now(), 5);
}

TEST(InProcessTimeline, LetsAnEventPlanAnother) {
    Timeline timeline;
    Seen seen;
    timeline.after(2, [&] {
        plan(timeline, seen, 0, "a");
        plan(timeline, seen, 2, "b");
        plan(timeline, seen, 9, "c");
    });
    timeline.advance(4);
    EXPECT_EQ(seen, (Seen{"a2", "b4"}));
}

TEST(InProcessTimeline, LetsAnEventForgetTheOthers) {
    Timeline timeline;
    Seen seen;
    timeline.after(1, [&] { timeline.clear(); });
    plan(timeline, seen, 1, "a");
    plan(timeline, seen, 2, "b");
    timeline.advance(9);
    EXPECT_EQ(seen, Seen());
    EXPECT_EQ(timeline.now(), 9);
}

TEST(InProcessTimeline, LetsAnEventAdvanceTheClock) {
    Timeline timeline;
    Seen seen;
    timeline.after(1, [&] { timeline.advance(10); });
    plan(timeline, seen, 4, "a");
    plan(timeline, seen, 12, "b");
    timeline.advance(5);
    EXPECT_EQ(seen, Seen{"a4"});
    EXPECT_EQ(timeline.now(), 11);
    timeline.advance(1);
    EXPECT_EQ(seen.back(), "b12");
}

TEST(InProcessTimeline, AdvancesUntilACondition) {
    Timeline timeline;
    Seen seen;
    plan(timeline, seen, 3, "a");
    plan(timeline, seen, 5, "b");
    plan(timeline, seen, 7, "c");
    timeline.advanceUntil([&] { return seen.size() == 2; });
    EXPECT_EQ(timeline.now(), 5);
    timeline.advanceUntil([] { return false; });
    EXPECT_EQ(seen, (Seen{"a3", "b5", "c7"}));
    timeline.advanceUntil([] { return false; });
    EXPECT_EQ(timeline.now(), 7);
}

TEST(InProcessTimeline, LosesNothingButTheEventThatThrows) {
    Timeline timeline;
    Seen seen;
    timeline.after(1, [] { throw std::runtime_error("event"); });
    plan(timeline, seen, 1, "a");
    EXPECT_THROW(timeline.advance(5), std::runtime_error);
    EXPECT_EQ(timeline.now(), 1);
    timeline.advance(0);
    EXPECT_EQ(seen, Seen{"a1"});
}

TEST(InProcessTimeline, AgreesWithAStableSort) {
    for (unsigned int seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        Timeline timeline;
        Seen seen;
        std::vector<std::pair<int, std::string>> expected;
        for (int i = 0; i < 100; ++i) {
            auto const due = static_cast<int>(random() % 30);
            std::string const name = std::to_string(i) + "@";
            plan(timeline, seen, due, name);
            expected.emplace_back(due, name + std::to_string(due));
        }
        std::stable_sort(
            expected.begin(), expected.end(),
            [](auto const & left, auto const & right) { return left.first < right.first; });
        while (timeline.now() < 30) {
            timeline.advance(static_cast<int>(random() % 4));
        }
        ASSERT_EQ(seen.size(), expected.size());
        for (std::size_t i = 0; i < seen.size(); ++i) {
            EXPECT_EQ(seen[i], expected[i].second);
        }
    }
}

}  // namespace tvk::test
