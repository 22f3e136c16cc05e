#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

#include "modules/asio/DesktopLoop.h"
#include "modules/asio/TcpKestrin.h"

namespace session {

/// The loop of an application that has one of its own: it sleeps until the agent's loop wakes it, then
/// lets the agent work in small portions. A window system would draw and take clicks between two of
/// them.
class Desktop {
public:
    using Condition = std::function<bool()>;

    std::shared_ptr<tvk::EventLoop> const & loop() const { return loop_; }

    /// Runs until the condition holds, at most so long. Whether it holds.
    bool until(tvk::TcpKestrin & agent, Condition const & condition,
               std::chrono::milliseconds atMost);

private:
    void wake();
    bool sleepUntil(std::chrono::steady_clock::time_point end);

    std::mutex mutex_;
    std::condition_variable woken_;
    bool isWoken_ = false;
    // Ends first, and with it the calls of wake.
    std::shared_ptr<tvk::EventLoop> loop_ = std::make_shared<tvk::DesktopLoop>([this] { wake(); });
};

}  // namespace session
