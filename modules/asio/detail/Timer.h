#pragma once

#include <functional>
#include <memory>

#include "modules/asio/EventLoop.h"

namespace tvk {

/// Runs a function on the thread of a loop when its time has come. It may be started anew, cancelled and
/// destroyed from anywhere on that thread, also from inside the function: what was started before then
/// never runs, even where its time has come already.
class Timer {
public:
    /// The loop must outlive the timer.
    explicit Timer(EventLoop & loop);
    ~Timer();

    Timer(Timer const &) = delete;
    Timer & operator=(Timer const &) = delete;

    /// Below 1 it runs as soon as it can, never from inside the call.
    void startAfter(long long milliSec, std::function<void()> function);
    void cancel();
    bool isRunning() const;  ///< Started, and its function neither entered nor cancelled.

private:
    struct State;

    std::shared_ptr<State> state_;
};

}  // namespace tvk
