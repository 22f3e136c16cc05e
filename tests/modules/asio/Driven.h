#pragma once

#include <chrono>
#include <thread>

#include "modules/asio/EventLoop.h"

/// How long a test waits for what must happen. Only a failing test waits that long.
constexpr std::chrono::seconds PATIENCE(20);

/// Runs the loop until the condition holds; false where it does not come to hold.
template <class Condition>
bool driveUntil(tvk::EventLoop & loop, Condition condition) {
    auto const end = std::chrono::steady_clock::now() + PATIENCE;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        if (!loop.pollOne()) {
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
    }
    return true;
}

/// Runs what is ready, and what that makes ready.
inline void driveAll(tvk::EventLoop & loop) {
    while (loop.pollOne()) {
    }
}
