#include "tests/support/AllocationFailure.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <thread>

#include "tvk/platform/CString.h"

namespace {

using tvk::test::AllocationFailure;

class AllocationFailureTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!AllocationFailure::available()) {
            GTEST_SKIP() << "allocations cannot be made to fail in this build";
        }
    }
};

bool canAllocate() {
    void * const volatile block = std::malloc(10);
    std::free(block);
    return block != nullptr;
}

TEST_F(AllocationFailureTest, FailsUntilItsEnd) {
    {
        AllocationFailure failure;
        errno = 0;
        bool const could = canAllocate();
        int const error = errno;
        failure.end();
        EXPECT_FALSE(could);
        EXPECT_EQ(error, ENOMEM);
    }
    EXPECT_TRUE(canAllocate());
}

TEST_F(AllocationFailureTest, LetsTheFirstOnesThrough) {
    AllocationFailure failure(2);
    bool const first = canAllocate();
    bool const second = canAllocate();
    bool const third = canAllocate();
    failure.end();
    EXPECT_TRUE(first);
    EXPECT_TRUE(second);
    EXPECT_FALSE(third);
}

TEST_F(AllocationFailureTest, ReachesTheLibraryAndOperatorNew) {
    bool library = false;
    bool plainNew = false;
    AllocationFailure failure;
    try {
        CString const text("text");
    } catch (std::bad_alloc const &) {
        library = true;
    }
    // Called as a function: a new expression may be left out by the compiler.
    void * const memory = ::operator new(1, std::nothrow);
    plainNew = memory == nullptr;
    failure.end();
    ::operator delete(memory);
    EXPECT_TRUE(library);
    EXPECT_TRUE(plainNew);
}

TEST_F(AllocationFailureTest, LeavesOtherThreadsAlone) {
    std::atomic<bool> begun{false};
    std::atomic<bool> could{false};
    std::thread other([&] {
        begun.wait(false);
        could = canAllocate();
    });
    {
        AllocationFailure const failure;
        begun = true;
        begun.notify_one();
        other.join();
    }
    EXPECT_TRUE(could);
}

}  // namespace
