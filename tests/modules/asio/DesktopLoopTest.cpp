#include "modules/asio/DesktopLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "tests/modules/asio/Driven.h"

namespace {

using tvk::DesktopLoop;

class DesktopLoopTest : public testing::Test {
protected:
    std::function<void()> note(char letter) {
        return [this, letter] { log_ += letter; };
    }

    std::atomic<int> wakes_ = 0;
    std::string log_;
    DesktopLoop loop_{[this] { ++wakes_; }};
};

TEST_F(DesktopLoopTest, RunsOneFunctionACallInTheirOrder) {
    EXPECT_FALSE(loop_.pollOne());
    loop_.post(note('a'));
    loop_.post(note('b'));
    EXPECT_EQ(log_, "");
    EXPECT_TRUE(loop_.pollOne());
    EXPECT_EQ(log_, "a");
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "ab");
    EXPECT_FALSE(loop_.pollOne());
}

TEST_F(DesktopLoopTest, WakesOnceUntilItIsFoundEmpty) {
    loop_.post(note('a'));
    EXPECT_EQ(wakes_, 1);
    loop_.post(note('b'));
    EXPECT_TRUE(loop_.pollOne());
    EXPECT_TRUE(loop_.pollOne());
    loop_.post(note('c'));  // empty by now, but nobody has found it so
    EXPECT_EQ(wakes_, 1);
    driveAll(loop_);
    loop_.post(note('d'));
    EXPECT_EQ(wakes_, 2);
}

TEST_F(DesktopLoopTest, RunsNothingButInsideItsCalls) {
    std::thread::id ran;
    std::thread other([&] { loop_.post([&] { ran = std::this_thread::get_id(); }); });
    other.join();
    EXPECT_EQ(ran, std::thread::id());
    EXPECT_TRUE(loop_.pollOne());
    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST_F(DesktopLoopTest, WaitsForAPostOfAnotherThread) {
    std::thread other([this] { loop_.post(note('a')); });
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "a");
    other.join();
}

TEST_F(DesktopLoopTest, StepsNest) {
    loop_.post([this] {
        log_ += '(';
        EXPECT_TRUE(loop_.runOne());
        log_ += ')';
    });
    loop_.post(note('a'));
    driveAll(loop_);
    EXPECT_EQ(log_, "(a)");
}

TEST_F(DesktopLoopTest, WhatAFunctionThrowsLeavesTheCall) {
    loop_.post([] { throw std::runtime_error("thrown"); });
    loop_.post(note('a'));
    EXPECT_THROW(loop_.pollOne(), std::runtime_error);
    EXPECT_TRUE(loop_.pollOne());
    EXPECT_EQ(log_, "a");
}

TEST_F(DesktopLoopTest, DestroysWhatHasNotRun) {
    bool ran = false;
    auto const held = std::make_shared<int>(0);
    {
        DesktopLoop loop([] {});
        loop.post([held, &ran] { ran = true; });
        EXPECT_EQ(held.use_count(), 2);
    }
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(ran);
}

TEST_F(DesktopLoopTest, MayEndInsideAFunctionOfItsOwn) {
    auto loop = std::make_unique<DesktopLoop>([] {});
    loop->post([&] {
        loop.reset();
        log_ += 'a';
    });
    DesktopLoop & borrowed = *loop;
    EXPECT_TRUE(borrowed.pollOne());
    EXPECT_EQ(log_, "a");
}

TEST_F(DesktopLoopTest, LosesNoPostAndNoWakeUp) {
    constexpr int THREADS = 3;
    constexpr int POSTS = 2000;
    int ran = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([&] {
            for (int post = 0; post < POSTS; ++post) {
                loop_.post([&ran] { ++ran; });
            }
        });
    }
    // As a desktop does it: it polls when it was woken, until there is nothing left.
    int answered = 0;
    auto const end = std::chrono::steady_clock::now() + PATIENCE;
    while (ran < THREADS * POSTS && std::chrono::steady_clock::now() < end) {
        if (wakes_ > answered) {
            answered = wakes_;
            driveAll(loop_);
        }
    }
    EXPECT_EQ(ran, THREADS * POSTS);
    for (std::thread & thread : threads) {
        thread.join();
    }
}

}  // namespace
