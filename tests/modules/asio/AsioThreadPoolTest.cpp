#include "modules/asio/AsioThreadPool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

using tvk::AsioThreadPool;
using tvk::ThreadPool;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds PATIENCE(20);

class FunctionTask : public ThreadPool::Task {
public:
    explicit FunctionTask(std::function<void()> function) : function_(std::move(function)) {}
    void run() override { function_(); }

private:
    std::function<void()> function_;
};

/// Keeps a thread of a pool until it is opened.
class Gate : public ThreadPool::Task {
public:
    explicit Gate(ThreadPool & pool) {
        pool.execute(this);
        entered_.get_future().wait();
    }
    void run() override {
        entered_.set_value();
        opened_.get_future().wait();
    }
    void open() { opened_.set_value(); }

private:
    std::promise<void> entered_;
    std::promise<void> opened_;
};

/// What ran, in its order.
class Log {
public:
    void add(int number) {
        std::lock_guard const lock(mutex_);
        numbers_.push_back(number);
        grown_.notify_all();
    }
    bool waitFor(std::size_t count) {
        std::unique_lock lock(mutex_);
        return grown_.wait_for(lock, PATIENCE, [&] { return numbers_.size() >= count; });
    }
    std::vector<int> numbers() {
        std::lock_guard const lock(mutex_);
        return numbers_;
    }

private:
    std::mutex mutex_;
    std::condition_variable grown_;
    std::vector<int> numbers_;
};

std::vector<std::unique_ptr<FunctionTask>> tasksThatLog(Log & log, int count) {
    std::vector<std::unique_ptr<FunctionTask>> tasks;
    for (int number = 0; number < count; ++number) {
        tasks.push_back(std::make_unique<FunctionTask>([&log, number] { log.add(number); }));
    }
    return tasks;
}

TEST(AsioThreadPoolTest, CountsItsThreads) {
    EXPECT_EQ(AsioThreadPool(3).getThreadCount(), 3U);
    EXPECT_EQ(AsioThreadPool(0).getThreadCount(),
              std::max(1U, std::thread::hardware_concurrency()));
}

TEST(AsioThreadPoolTest, RunsEachEntryOnce) {
    Log log;
    auto const tasks = tasksThatLog(log, 3);
    AsioThreadPool pool(1);
    for (int const number : {0, 1, 1, 2, 0}) {
        EXPECT_TRUE(pool.execute(tasks[static_cast<std::size_t>(number)].get()));
    }
    ASSERT_TRUE(log.waitFor(5));
    EXPECT_EQ(log.numbers(), (std::vector<int>{0, 1, 1, 2, 0}));
    EXPECT_EQ(pool.getPendingCount(), 0U);
}

TEST(AsioThreadPoolTest, RunsAsManyAtOnceAsItHasThreads) {
    AsioThreadPool pool(3);
    Gate first(pool);
    Gate second(pool);
    Gate third(pool);  // each is entered before the next is made
    Log log;
    auto const tasks = tasksThatLog(log, 1);
    pool.execute(tasks[0].get());
    EXPECT_EQ(pool.getPendingCount(), 1U);
    first.open();
    EXPECT_TRUE(log.waitFor(1));
    second.open();
    third.open();
}

TEST(AsioThreadPoolTest, RunsNothingBeforeItsTime) {
    Log log;
    auto const tasks = tasksThatLog(log, 1);
    AsioThreadPool pool(2);
    auto const before = Clock::now();
    EXPECT_TRUE(pool.executeAfter(tasks[0].get(), 30));
    EXPECT_EQ(pool.getPendingCount(), 1U);
    ASSERT_TRUE(log.waitFor(1));
    EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(30));
}

TEST(AsioThreadPoolTest, StartsInTheOrderOfTheTimes) {
    Log log;
    auto const tasks = tasksThatLog(log, 6);
    AsioThreadPool pool(1);
    Gate gate(pool);
    int const delays[] = {40, 20, 0, 60, 1, -5};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_TRUE(pool.executeAfter(tasks[i].get(), delays[i]));
    }
    EXPECT_EQ(pool.getPendingCount(), 6U);
    gate.open();
    ASSERT_TRUE(log.waitFor(6));
    std::vector<int> const order = log.numbers();
    auto const place = [&](int number) {
        return std::find(order.begin(), order.end(), number) - order.begin();
    };
    EXPECT_LT(place(2), place(5));  // both at once, in the order of their entering
    EXPECT_LT(place(2), place(1));
    EXPECT_LT(place(4), place(1));
    EXPECT_LT(place(1), place(0));
    EXPECT_LT(place(0), place(3));
}

TEST(AsioThreadPoolTest, CancelsAllEntriesOfATaskThatWait) {
    Log log;
    auto const tasks = tasksThatLog(log, 2);
    AsioThreadPool pool(1);
    Gate gate(pool);
    EXPECT_FALSE(pool.cancel(&gate));  // it runs
    EXPECT_FALSE(pool.cancel(tasks[0].get()));
    pool.execute(tasks[0].get());
    pool.executeAfter(tasks[0].get(), 3'600'000);
    pool.execute(tasks[1].get());
    EXPECT_TRUE(pool.cancel(tasks[0].get()));
    EXPECT_FALSE(pool.cancel(tasks[0].get()));
    EXPECT_EQ(pool.getPendingCount(), 1U);
    gate.open();
    ASSERT_TRUE(log.waitFor(1));
    pool.shutdown();
    EXPECT_EQ(log.numbers(), std::vector<int>{1});
}

TEST(AsioThreadPoolTest, GoesOnBehindACancelledTime) {
    Log log;
    auto const tasks = tasksThatLog(log, 2);
    AsioThreadPool pool(1);
    pool.executeAfter(tasks[0].get(), 20);
    pool.executeAfter(tasks[1].get(), 40);
    EXPECT_TRUE(pool.cancel(tasks[0].get()));
    ASSERT_TRUE(log.waitFor(1));
    EXPECT_EQ(log.numbers(), std::vector<int>{1});
}

TEST(AsioThreadPoolTest, AnEarlierTimeComesBeforeALaterOneThatWasSet) {
    Log log;
    auto const tasks = tasksThatLog(log, 2);
    AsioThreadPool pool(1);
    pool.executeAfter(tasks[0].get(), 3'600'000);
    pool.executeAfter(tasks[1].get(), 1);
    ASSERT_TRUE(log.waitFor(1));
    EXPECT_EQ(log.numbers(), std::vector<int>{1});
    EXPECT_EQ(pool.getPendingCount(), 1U);
}

TEST(AsioThreadPoolTest, ShutdownTakesOutWhatWaitsAndWaitsForWhatRuns) {
    Log log;
    auto const tasks = tasksThatLog(log, 1);
    AsioThreadPool pool(1);
    Gate gate(pool);
    pool.execute(tasks[0].get());
    pool.executeAfter(tasks[0].get(), 1);
    std::atomic<bool> opened = false;
    std::thread opener([&] {
        while (pool.getPendingCount() > 0) {
            std::this_thread::yield();
        }
        opened = true;
        gate.open();
    });
    pool.shutdown();
    EXPECT_TRUE(opened);
    opener.join();
    EXPECT_TRUE(log.numbers().empty());
    EXPECT_FALSE(pool.execute(tasks[0].get()));
    EXPECT_FALSE(pool.executeAfter(tasks[0].get(), 1));
    EXPECT_EQ(pool.getPendingCount(), 0U);
    pool.shutdown();
}

TEST(AsioThreadPoolTest, EndsAsIfByShutdown) {
    Log log;
    auto const tasks = tasksThatLog(log, 1);
    {
        AsioThreadPool pool(2);
        pool.executeAfter(tasks[0].get(), 3'600'000);
    }
    EXPECT_TRUE(log.numbers().empty());
}

/// Ends inside run, so that a pool that touched it afterwards would touch freed memory.
class EndsInside : public ThreadPool::Task {
public:
    explicit EndsInside(std::atomic<int> & ended) : ended_(ended) {}
    void run() override {
        std::atomic<int> & ended = ended_;
        delete this;
        ++ended;
    }

private:
    std::atomic<int> & ended_;
};

TEST(AsioThreadPoolTest, LeavesATaskAloneThatEndsInsideRun) {
    std::atomic<int> ended = 0;
    AsioThreadPool pool(2);
    for (int i = 0; i < 200; ++i) {
        pool.executeAfter(new EndsInside(ended), i % 3);
    }
    auto const end = Clock::now() + PATIENCE;
    while (ended < 200 && Clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(ended, 200);
}

TEST(AsioThreadPoolTest, TakesCallsFromInsideRun) {
    AsioThreadPool pool(1);
    Log log;
    auto const tasks = tasksThatLog(log, 2);
    FunctionTask outer([&] {
        pool.execute(tasks[0].get());
        pool.executeAfter(tasks[1].get(), 3'600'000);
        EXPECT_EQ(pool.getPendingCount(), 2U);
        EXPECT_TRUE(pool.cancel(tasks[1].get()));
        EXPECT_EQ(pool.getThreadCount(), 1U);
    });
    pool.execute(&outer);
    ASSERT_TRUE(log.waitFor(1));
    EXPECT_EQ(pool.getPendingCount(), 0U);
}

TEST(AsioThreadPoolTest, TakesCallsFromSeveralThreads) {
    constexpr int THREADS = 4;
    constexpr int ENTRIES = 500;
    std::atomic<int> runs = 0;
    FunctionTask counted([&runs] { ++runs; });
    FunctionTask never([] { ADD_FAILURE() << "its time does not come"; });
    AsioThreadPool pool(2);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < THREADS; ++thread) {
        threads.emplace_back([&] {
            for (int i = 0; i < ENTRIES; ++i) {
                pool.executeAfter(&counted, i % 2);
                pool.executeAfter(&never, 3'600'000);
                if (i % 10 == 0) {
                    pool.cancel(&never);
                }
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    pool.cancel(&never);
    auto const end = Clock::now() + PATIENCE;
    while (runs < THREADS * ENTRIES && Clock::now() < end) {
        std::this_thread::yield();
    }
    EXPECT_EQ(runs, THREADS * ENTRIES);
}

/// What a plain list of entries would do. The pool reads the clock for itself, so the model knows a time
/// only between two readings of its own.
class PoolModel {
public:
    struct Entry {
        int number;
        Clock::time_point from;
        Clock::time_point to;
    };

    void enter(int number, int delay, Clock::time_point before, Clock::time_point after) {
        auto const ahead = std::chrono::milliseconds(std::max(delay, 0));
        entries_.push_back({number, before + ahead, after + ahead});
    }
    bool cancel(int number) {
        return std::erase_if(entries_,
                             [&](Entry const & entry) { return entry.number == number; }) > 0;
    }
    std::size_t size() const { return entries_.size(); }

    Clock::time_point lastTime() const {
        Clock::time_point last{};
        for (Entry const & entry : entries_) {
            last = std::max(last, entry.to);
        }
        return last;
    }

    /// Takes out the entry that ran. False where there is none, or one that waits is before it for sure.
    bool run(int number) {
        // Entries of one task are alike; the first one of it is the earliest.
        auto const ran = std::min_element(entries_.begin(), entries_.end(),
                                          [&](Entry const & a, Entry const & b) {
                                              bool const mine = a.number == number;
                                              bool const other = b.number == number;
                                              return mine && (!other || a.from < b.from);
                                          });
        if (ran == entries_.end() || ran->number != number) {
            return false;
        }
        Entry const entry = *ran;
        entries_.erase(ran);
        return std::none_of(entries_.begin(), entries_.end(),
                            [&](Entry const & other) { return other.to < entry.from; });
    }

private:
    std::vector<Entry> entries_;
};

TEST(AsioThreadPoolTest, DoesWhatAPlainListWouldDo) {
    constexpr int TASKS = 8;
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        std::mt19937 random(seed);
        Log log;
        auto const tasks = tasksThatLog(log, TASKS);
        AsioThreadPool pool(1);
        Gate gate(pool);
        PoolModel model;
        for (int step = 0; step < 60; ++step) {
            int const number = static_cast<int>(random() % TASKS);
            auto * const task = tasks[static_cast<std::size_t>(number)].get();
            if (random() % 5 == 0) {
                ASSERT_EQ(pool.cancel(task), model.cancel(number)) << seed;
            } else {
                int const delay = static_cast<int>(random() % 12) - 2;
                auto const before = Clock::now();
                ASSERT_TRUE(random() % 4 == 0 && delay <= 0 ? pool.execute(task)
                                                            : pool.executeAfter(task, delay));
                model.enter(number, delay, before, Clock::now());
            }
            ASSERT_EQ(pool.getPendingCount(), model.size()) << seed;
        }
        // With all times past, nothing but their order decides.
        std::this_thread::sleep_until(model.lastTime());
        std::size_t const count = model.size();
        gate.open();
        ASSERT_TRUE(log.waitFor(count));
        for (int const number : log.numbers()) {
            EXPECT_TRUE(model.run(number)) << seed;
        }
        EXPECT_EQ(model.size(), 0U);
    }
}

}  // namespace
