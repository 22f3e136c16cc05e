#include "modules/asio/DesktopLoop.h"

#include <asio/any_io_executor.hpp>
#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>

#include "modules/asio/detail/EventLoopImpl.h"

namespace tvk {

namespace {

/// A function of a type of its own, which may be one that only moves.
class Entry {
public:
    virtual ~Entry() = default;

    Entry(Entry const &) = delete;
    Entry & operator=(Entry const &) = delete;

    virtual void run() = 0;

protected:
    Entry() = default;
};

template <class Function>
class FunctionEntry final : public Entry {
public:
    explicit FunctionEntry(Function && function) : function_(std::move(function)) {}
    explicit FunctionEntry(Function const & function) : function_(function) {}

    void run() override { std::move(function_)(); }

private:
    Function function_;
};

/// What waits for the application's thread.
class Queue {
public:
    explicit Queue(std::function<void()> wake) : wake_(std::move(wake)) {}

    void put(std::unique_ptr<Entry> entry) {
        bool wakes = false;
        {
            std::lock_guard const lock(mutex_);
            if (closed_) {
                return;
            }
            entries_.push_back(std::move(entry));
            wakes = std::exchange(foundEmpty_, false);
        }
        filled_.notify_one();
        if (wakes) {
            wake_();
        }
    }

    std::unique_ptr<Entry> take() {
        std::lock_guard const lock(mutex_);
        if (entries_.empty()) {
            foundEmpty_ = true;
            return nullptr;
        }
        return takeFirst();
    }

    std::unique_ptr<Entry> waitAndTake() {
        std::unique_lock lock(mutex_);
        filled_.wait(lock, [this] { return !entries_.empty(); });
        return takeFirst();
    }

    /// Destroys what waits, and from now on what comes.
    void close() {
        std::deque<std::unique_ptr<Entry>> entries;
        {
            std::lock_guard const lock(mutex_);
            closed_ = true;
            entries.swap(entries_);
        }
    }

private:
    std::unique_ptr<Entry> takeFirst() {
        std::unique_ptr<Entry> entry = std::move(entries_.front());
        entries_.pop_front();
        return entry;
    }

    std::function<void()> const wake_;
    std::mutex mutex_;
    std::condition_variable filled_;
    std::deque<std::unique_ptr<Entry>> entries_;
    bool foundEmpty_ = true;
    bool closed_ = false;
};

/// Runs nothing itself: handlers of what is made with it go into the queue.
class QueueExecutor {
public:
    QueueExecutor(asio::io_context & context, std::shared_ptr<Queue> queue)
        : context_(&context), queue_(std::move(queue)) {}

    asio::execution_context & query(asio::execution::context_t) const noexcept { return *context_; }
    static constexpr asio::execution::blocking_t query(asio::execution::blocking_t) noexcept {
        return asio::execution::blocking.never;
    }

    template <class Function>
    void execute(Function && function) const {
        using Held = std::decay_t<Function>;
        queue_->put(std::make_unique<FunctionEntry<Held>>(std::forward<Function>(function)));
    }

    friend bool operator==(QueueExecutor const & a, QueueExecutor const & b) noexcept {
        return a.queue_ == b.queue_;
    }

private:
    asio::io_context * context_;
    std::shared_ptr<Queue> queue_;
};

class QueueLoop final : public EventLoop::Impl {
public:
    explicit QueueLoop(std::function<void()> wake)
        : queue_(std::make_shared<Queue>(std::move(wake))),
          work_(context_.get_executor()),
          thread_([this] { context_.run(); }) {}

    ~QueueLoop() override {
        context_.stop();
        thread_.join();
        // Before the context ends: what a handler holds may be made on it.
        queue_->close();
    }

    asio::any_io_executor executor() override { return QueueExecutor(context_, queue_); }

    void post(std::function<void()> function) override {
        QueueExecutor(context_, queue_).execute(std::move(function));
    }

    bool pollOne() override { return run(queue_->take()); }
    bool runOne() override { return run(queue_->waitAndTake()); }

    // Nothing stops this loop.
    void beginDrive() override {}
    void endDrive() override {}

private:
    /// The entry may be what ends the loop: nothing of it is touched behind the run.
    static bool run(std::unique_ptr<Entry> entry) {
        if (entry == nullptr) {
            return false;
        }
        entry->run();
        return true;
    }

    asio::io_context context_;
    std::shared_ptr<Queue> queue_;
    asio::executor_work_guard<asio::io_context::executor_type> work_;
    std::thread thread_;
};

}  // namespace

DesktopLoop::DesktopLoop(std::function<void()> wake)
    : EventLoop(std::make_unique<QueueLoop>(std::move(wake))) {}

DesktopLoop::~DesktopLoop() = default;

}  // namespace tvk
