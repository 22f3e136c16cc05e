#include "tvk/platform/SimpleMutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationFailure.h"

namespace {

using tvk::SimpleMutex;
using tvk::test::AllocationFailure;

static_assert(sizeof(SimpleMutex) == sizeof(void *));
static_assert(!std::is_copy_constructible_v<SimpleMutex> &&
              !std::is_copy_assignable_v<SimpleMutex>);
static_assert(!std::is_polymorphic_v<SimpleMutex>);

/// A thread that wants the mutex once, and tells whether it got it.
class Contender {
public:
    explicit Contender(SimpleMutex & mutex)
        : thread_([this, &mutex] {
              std::lock_guard<SimpleMutex> const guard(mutex);
              got_ = true;
          }) {}
    Contender(Contender const &) = delete;
    Contender & operator=(Contender const &) = delete;
    ~Contender() { thread_.join(); }

    /// A wrong lock would let it through at once; a right one is never reported as wrong.
    bool isKeptOut() const {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        return !got_;
    }
    bool getsThrough() const {
        for (int wait = 0; wait < 2000 && !got_; ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return got_;
    }

private:
    std::atomic<bool> got_{false};
    std::thread thread_;
};

TEST(SimpleMutex, HasAHandle) {
    SimpleMutex const mutex;
    SimpleMutex const other;
    EXPECT_NE(mutex.getImpl(), nullptr);
    EXPECT_NE(mutex.getImpl(), other.getImpl());
}

TEST(SimpleMutex, KeepsOtherThreadsOut) {
    SimpleMutex mutex;
    mutex.lock();
    Contender const contender(mutex);
    EXPECT_TRUE(contender.isKeptOut());
    mutex.unlock();
    EXPECT_TRUE(contender.getsThrough());
}

TEST(SimpleMutex, IsUnlockedAsOftenAsItWasLocked) {
    SimpleMutex mutex;
    mutex.lock();
    mutex.lock();
    mutex.lock();
    Contender const contender(mutex);
    mutex.unlock();
    mutex.unlock();
    EXPECT_TRUE(contender.isKeptOut());
    mutex.unlock();
    EXPECT_TRUE(contender.getsThrough());
}

TEST(SimpleMutex, UnlockingWhatNobodyHoldsDoesNothing) {
    SimpleMutex mutex;
    mutex.unlock();
    mutex.unlock();
    mutex.lock();
    Contender const contender(mutex);
    EXPECT_TRUE(contender.isKeptOut());
    mutex.unlock();
    mutex.unlock();
    EXPECT_TRUE(contender.getsThrough());
}

TEST(SimpleMutex, UnlockingWhatAnotherThreadHoldsDoesNothing) {
    SimpleMutex mutex;
    mutex.lock();
    std::thread([&mutex] { mutex.unlock(); }).join();
    Contender const contender(mutex);
    EXPECT_TRUE(contender.isKeptOut());
    mutex.unlock();
    EXPECT_TRUE(contender.getsThrough());
}

TEST(SimpleMutex, GuardsACounter) {
    constexpr int THREADS = 8;
    constexpr int ROUNDS = 20000;
    SimpleMutex mutex;
    long long counter = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < ROUNDS; ++round) {
                std::lock_guard<SimpleMutex> const outer(mutex);
                std::lock_guard<SimpleMutex> const inner(mutex);
                ++counter;
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter, static_cast<long long>(THREADS) * ROUNDS);
}

TEST(SimpleMutex, WithoutAHandleLocksNothing) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    AllocationFailure failure;
    SimpleMutex mutex;
    failure.end();
    ASSERT_EQ(mutex.getImpl(), nullptr);
    mutex.unlock();
    mutex.lock();
    Contender const contender(mutex);
    EXPECT_TRUE(contender.getsThrough());
    mutex.unlock();
}

}  // namespace
