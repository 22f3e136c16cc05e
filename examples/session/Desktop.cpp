#include "examples/session/Desktop.h"

#include <cstddef>
#include <utility>

namespace session {

namespace {

constexpr std::size_t PORTION = 64;  // of callbacks

}  // namespace

bool Desktop::until(tvk::TcpKestrin & agent, Condition const & condition,
                    std::chrono::milliseconds atMost) {
    auto const end = std::chrono::steady_clock::now() + atMost;
    while (!condition()) {
        bool const mayHaveMore = agent.poll(PORTION) == PORTION;
        if (!mayHaveMore && !condition() && !sleepUntil(end)) {
            return condition();
        }
        if (std::chrono::steady_clock::now() >= end) {
            return condition();
        }
    }
    return true;
}

void Desktop::wake() {
    {
        std::lock_guard const lock(mutex_);
        isWoken_ = true;
    }
    woken_.notify_one();
}

bool Desktop::sleepUntil(std::chrono::steady_clock::time_point end) {
    std::unique_lock lock(mutex_);
    bool const was = woken_.wait_until(lock, end, [this] { return isWoken_; });
    isWoken_ = false;
    return was;
}

}  // namespace session
