#include "modules/asio/detail/Timer.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "modules/asio/DesktopLoop.h"
#include "tests/modules/asio/Driven.h"

namespace {

using tvk::DesktopLoop;
using tvk::EventLoop;
using tvk::Timer;

/// Each test runs on both kinds of loop.
class TimerTest : public testing::TestWithParam<bool> {
protected:
    TimerTest() {
        if (GetParam()) {
            loop_ = std::make_unique<DesktopLoop>([] {});
        } else {
            loop_ = std::make_unique<EventLoop>(context_);
        }
        timer_ = std::make_unique<Timer>(*loop_);
    }

    std::function<void()> note(char letter) {
        return [this, letter] { log_ += letter; };
    }

    bool driveUntilLogged(std::string const & text) {
        return driveUntil(*loop_, [&] { return log_ == text; });
    }

    /// Runs the loop until a timer that was started later than all others has run.
    void driveBeyondAllTimes() {
        Timer last(*loop_);
        bool done = false;
        last.startAfter(20, [&] { done = true; });
        EXPECT_TRUE(driveUntil(*loop_, [&] { return done; }));
    }

    asio::io_context context_;
    std::unique_ptr<EventLoop> loop_;
    std::unique_ptr<Timer> timer_;
    std::string log_;
};

std::string nameOfLoop(testing::TestParamInfo<bool> const & loop) {
    return loop.param ? "Desktop" : "Context";
}

INSTANTIATE_TEST_SUITE_P(, TimerTest, testing::Bool(), nameOfLoop);

TEST_P(TimerTest, RunsItsFunctionOnceWhenItsTimeHasCome) {
    auto const before = std::chrono::steady_clock::now();
    timer_->startAfter(15, note('a'));
    EXPECT_TRUE(timer_->isRunning());
    ASSERT_TRUE(driveUntilLogged("a"));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(15));
    EXPECT_FALSE(timer_->isRunning());
    driveBeyondAllTimes();
    EXPECT_EQ(log_, "a");
}

TEST_P(TimerTest, NeverRunsInsideTheCall) {
    for (long long const time : {0LL, -1LL, -9'000'000'000'000'000'000LL}) {
        log_.clear();
        timer_->startAfter(time, note('a'));
        EXPECT_EQ(log_, "");
        EXPECT_TRUE(driveUntilLogged("a"));
    }
}

TEST_P(TimerTest, TakesATimeThatDoesNotCome) {
    timer_->startAfter(9'000'000'000'000'000'000LL, note('a'));
    driveBeyondAllTimes();
    EXPECT_EQ(log_, "");
    EXPECT_TRUE(timer_->isRunning());
}

TEST_P(TimerTest, ACancelledFunctionDoesNotRun) {
    timer_->startAfter(1, note('a'));
    timer_->cancel();
    EXPECT_FALSE(timer_->isRunning());
    driveBeyondAllTimes();
    timer_->cancel();
    EXPECT_EQ(log_, "");
}

TEST_P(TimerTest, ARestartReplacesTheFunction) {
    timer_->startAfter(1, note('a'));
    timer_->startAfter(2, note('b'));
    driveBeyondAllTimes();
    EXPECT_EQ(log_, "b");
}

/// Two timers whose times have both come: the function of one meets the other with its handler on its way.
class DueTimersTest : public TimerTest {
protected:
    template <class Action>
    void whileTheOtherIsDue(Action action) {
        Timer first(*loop_);
        first.startAfter(0, [&] { action(); });
        timer_->startAfter(1, note('x'));
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        driveBeyondAllTimes();
    }
};

INSTANTIATE_TEST_SUITE_P(, DueTimersTest, testing::Bool(), nameOfLoop);

TEST_P(DueTimersTest, CancelStopsAFunctionWhoseTimeHasCome) {
    whileTheOtherIsDue([&] { timer_->cancel(); });
    EXPECT_EQ(log_, "");
}

TEST_P(DueTimersTest, ARestartStopsAFunctionWhoseTimeHasCome) {
    whileTheOtherIsDue([&] { timer_->startAfter(0, note('b')); });
    EXPECT_EQ(log_, "b");
}

TEST_P(DueTimersTest, TheEndOfTheTimerStopsAFunctionWhoseTimeHasCome) {
    whileTheOtherIsDue([&] { timer_.reset(); });
    EXPECT_EQ(log_, "");
}

TEST_P(TimerTest, MayBeStartedCancelledAndEndedInsideItsFunction) {
    timer_->startAfter(0, [this] {
        log_ += 'a';
        timer_->cancel();
        timer_->startAfter(0, [this] {
            log_ += 'b';
            timer_.reset();
            log_ += 'c';
        });
    });
    EXPECT_TRUE(driveUntilLogged("abc"));
}

TEST_P(TimerTest, LetsGoOfItsFunction) {
    auto const held = std::make_shared<int>(0);
    timer_->startAfter(3'600'000, [held] {});
    EXPECT_EQ(held.use_count(), 2);
    timer_->cancel();
    EXPECT_EQ(held.use_count(), 1);
    timer_->startAfter(0, [held] {});
    driveBeyondAllTimes();
    EXPECT_EQ(held.use_count(), 1);
    timer_->startAfter(3'600'000, [held] {});
    timer_.reset();
    EXPECT_EQ(held.use_count(), 1);
}

}  // namespace
