#include "modules/asio/AsioThreadPool.h"

#include <algorithm>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>
#include <asio/thread_pool.hpp>
#include <chrono>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace tvk {

namespace {

using Clock = std::chrono::steady_clock;

unsigned int threadCountFor(unsigned int wanted) {
    return wanted > 0 ? wanted : std::max(1U, std::thread::hardware_concurrency());
}

}  // namespace

/// Entries wait in the order of their times. A step of a thread takes the first one whose time has come,
/// whichever it was entered for. While entries wait, either the time of the first has come and a step is
/// on its way, or the timer is set for it.
class AsioThreadPool::Impl {
public:
    explicit Impl(unsigned int threadCount)
        : threadCount_(threadCountFor(threadCount)), pool_(threadCount_), timer_(pool_) {}

    bool enter(Task * task, int milliSeconds) {
        auto const time = Clock::now() + std::chrono::milliseconds(std::max(milliSeconds, 0));
        std::lock_guard const lock(mutex_);
        if (closed_) {
            return false;
        }
        auto const place = waiting_.emplace_hint(waiting_.end(), std::pair(time, ++entered_), task);
        if (milliSeconds <= 0) {
            postStep();
        } else if (place == waiting_.begin()) {
            setTimer();
        }
        return true;
    }

    bool cancel(Task const * task) {
        std::lock_guard const lock(mutex_);
        return std::erase_if(waiting_,
                             [task](auto const & entry) { return entry.second == task; }) > 0;
    }

    unsigned int threadCount() const { return threadCount_; }

    unsigned int pendingCount() const {
        std::lock_guard const lock(mutex_);
        return static_cast<unsigned int>(waiting_.size());
    }

    void shutdown() {
        {
            std::lock_guard const lock(mutex_);
            closed_ = true;
            waiting_.clear();
            timer_.cancel();
        }
        pool_.join();
    }

private:
    void postStep() {
        asio::post(pool_, [this] { step(); });
    }

    /// For the first entry.
    void setTimer() {
        timer_.expires_at(waiting_.begin()->first.first);
        timer_.async_wait([this](asio::error_code const & code) {
            if (!code) {
                step();
            }
        });
    }

    void step() {
        if (Task * const task = takeFirst()) {
            task->run();
        }
    }

    Task * takeFirst() {
        std::lock_guard const lock(mutex_);
        auto const now = Clock::now();
        Task * task = nullptr;
        if (firstIsDue(now)) {
            task = waiting_.begin()->second;
            waiting_.erase(waiting_.begin());
        }
        if (firstIsDue(now)) {
            postStep();  // another thread may be free
        } else if (!waiting_.empty()) {
            setTimer();
        }
        return task;
    }

    bool firstIsDue(Clock::time_point now) const {
        return !waiting_.empty() && waiting_.begin()->first.first <= now;
    }

    unsigned int const threadCount_;
    mutable std::mutex mutex_;  // guards all below but the pool
    std::map<std::pair<Clock::time_point, unsigned long long>, Task *> waiting_;
    unsigned long long entered_ = 0;
    bool closed_ = false;
    asio::thread_pool pool_;
    asio::steady_timer timer_;
};

AsioThreadPool::AsioThreadPool(unsigned int threadCount)
    : impl_(std::make_unique<Impl>(threadCount)) {}

// Nothing is thrown but where the system refuses a lock or a timer, which leaves no way to end.
AsioThreadPool::~AsioThreadPool() {  // NOLINT(bugprone-exception-escape)
    impl_->shutdown();
}

bool AsioThreadPool::execute(Task * task) { return impl_->enter(task, 0); }

bool AsioThreadPool::executeAfter(Task * task, int milliSeconds) {
    return impl_->enter(task, milliSeconds);
}

bool AsioThreadPool::cancel(Task const * task) { return impl_->cancel(task); }

unsigned int AsioThreadPool::getThreadCount() const { return impl_->threadCount(); }

unsigned int AsioThreadPool::getPendingCount() const { return impl_->pendingCount(); }

void AsioThreadPool::shutdown() { impl_->shutdown(); }

}  // namespace tvk
