#include "modules/asio/EventLoop.h"

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using tvk::EventLoop;

class EventLoopTest : public testing::Test {
protected:
    std::function<void()> note(char letter) {
        return [this, letter] { log_ += letter; };
    }

    asio::io_context context_;
    EventLoop loop_{context_};
    std::string log_;
};

TEST_F(EventLoopTest, RunsOneFunctionACallInTheirOrder) {
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

TEST_F(EventLoopTest, LeavesTheContextToTheApplication) {
    loop_.post(note('a'));
    asio::post(context_, note('b'));
    EXPECT_EQ(context_.run(), 2U);
    EXPECT_EQ(log_, "ab");
    EXPECT_TRUE(context_.stopped());  // nothing of the loop's keeps the context running
}

TEST_F(EventLoopTest, GoesOnBehindAContextThatHadNothingToDo) {
    EXPECT_EQ(context_.run(), 0U);
    loop_.post(note('a'));
    EXPECT_TRUE(loop_.pollOne());
    loop_.post(note('b'));
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "ab");
}

TEST_F(EventLoopTest, GoesOnBehindAContextThatWasStopped) {
    context_.stop();
    loop_.post(note('a'));
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "a");
}

TEST_F(EventLoopTest, WaitsForAPostOfAnotherThread) {
    std::thread other([this] { loop_.post(note('a')); });
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "a");
    other.join();
}

TEST_F(EventLoopTest, AStopEndsTheWait) {
    std::thread other;
    loop_.post([&] { other = std::thread([this] { context_.stop(); }); });
    EventLoop::Drive const drive(loop_);
    EXPECT_TRUE(loop_.runOne());
    EXPECT_FALSE(loop_.runOne());
    EXPECT_FALSE(loop_.runOne());
    other.join();
}

TEST_F(EventLoopTest, AStopBetweenTwoStepsOfADriveIsNotLost) {
    {
        EventLoop::Drive const drive(loop_);
        EventLoop::Drive const inner(loop_);
        loop_.post(note('a'));
        context_.stop();
        EXPECT_FALSE(loop_.runOne());
        EXPECT_FALSE(loop_.pollOne());
    }
    EventLoop::Drive const next(loop_);
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "a");
}

TEST_F(EventLoopTest, ANestedStepFindsWhatTheFunctionAroundItPosted) {
    // One thread in the context: what a function posts goes to a list of that thread.
    asio::io_context single(1);
    EventLoop loop(single);
    loop.post([&] {
        log_ += '(';
        loop.post(note('a'));
        EXPECT_TRUE(loop.runOne());
        log_ += ')';
    });
    EXPECT_EQ(single.run(), 1U);
    EXPECT_EQ(log_, "(a)");
}

TEST_F(EventLoopTest, ANestedStepDoesNotRestartAContextThatWasStopped) {
    loop_.post([this] {
        loop_.post(note('a'));
        context_.stop();
        EXPECT_FALSE(loop_.runOne());
        EXPECT_FALSE(loop_.pollOne());
    });
    EXPECT_EQ(context_.run(), 1U);
    EXPECT_EQ(log_, "");
    EXPECT_TRUE(context_.stopped());
}

TEST_F(EventLoopTest, WhatAFunctionThrowsLeavesTheCall) {
    loop_.post([] { throw std::runtime_error("thrown"); });
    loop_.post(note('a'));
    EXPECT_THROW(loop_.runOne(), std::runtime_error);
    EXPECT_TRUE(loop_.runOne());
    EXPECT_EQ(log_, "a");
}

}  // namespace
