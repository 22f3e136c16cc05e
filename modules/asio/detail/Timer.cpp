#include "modules/asio/detail/Timer.h"

#include <algorithm>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <utility>

#include "modules/asio/detail/EventLoopImpl.h"

namespace tvk {

struct Timer::State {
    explicit State(EventLoop & loop) : timer(loop.impl().executor()) {}

    asio::steady_timer timer;
    std::function<void()> function;  // empty while nothing is started
    unsigned long long round = 0;    // tells a handler of an earlier start
};

Timer::Timer(EventLoop & loop) : state_(std::make_shared<State>(loop)) {}

Timer::~Timer() = default;

void Timer::startAfter(long long milliSec, std::function<void()> function) {
    // A clock counts nanoseconds in 64 bits; a hundred years are within it.
    constexpr long long LONGEST = 100LL * 366 * 24 * 60 * 60 * 1000;
    state_->timer.expires_after(std::chrono::milliseconds(std::clamp(milliSec, 0LL, LONGEST)));
    state_->function = std::move(function);
    unsigned long long const round = ++state_->round;
    state_->timer.async_wait(
        [weak = std::weak_ptr<State>(state_), round](asio::error_code const &) {
            auto const state = weak.lock();
            if (state == nullptr || state->round != round || !state->function) {
                return;
            }
            // Taken out first: it may start the timer anew, or end it.
            std::exchange(state->function, nullptr)();
        });
}

void Timer::cancel() {
    state_->function = nullptr;
    state_->timer.cancel();
}

bool Timer::isRunning() const { return static_cast<bool>(state_->function); }

}  // namespace tvk
