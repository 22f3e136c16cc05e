#include "tests/support/HeapUse.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <thread>

#include "tvk/platform/CString.h"

namespace {

using tvk::test::HeapUse;

class HeapUseTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!HeapUse::available()) {
            GTEST_SKIP() << "the heap is not watched in this build";
        }
    }
};

TEST_F(HeapUseTest, FollowsEachAllocationFunction) {
    HeapUse const use;
    void * volatile block = std::malloc(1000);
    EXPECT_GE(use.bytes(), 1000);
    EXPECT_LT(use.bytes(), 1100);
    EXPECT_EQ(use.blocks(), 1);
    block = std::realloc(block, 5000);
    EXPECT_GE(use.bytes(), 5000);
    EXPECT_LT(use.bytes(), 5100);
    EXPECT_EQ(use.blocks(), 1);
    std::free(block);
    EXPECT_EQ(use.bytes(), 0);
    block = std::calloc(10, 100);
    EXPECT_GE(use.bytes(), 1000);
    std::free(block);
    block = std::aligned_alloc(256, 1024);
    EXPECT_GE(use.bytes(), 1024);
    std::free(block);
    EXPECT_EQ(use.bytes(), 0);
    EXPECT_EQ(use.blocks(), 0);
}

TEST_F(HeapUseTest, ReallocMayTakeAndGiveBack) {
    HeapUse const use;
    void * volatile block = std::realloc(nullptr, 1000);
    EXPECT_EQ(use.blocks(), 1);
    block = std::realloc(block, 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(use.blocks(), 0);
    EXPECT_EQ(use.bytes(), 0);
}

TEST_F(HeapUseTest, RemembersThePeak) {
    HeapUse const use;
    EXPECT_EQ(use.peak(), 0);
    { CString const text('x', 10000); }
    EXPECT_EQ(use.bytes(), 0);
    EXPECT_GE(use.peak(), 10000);
    EXPECT_LT(use.peak(), 10200);
}

TEST_F(HeapUseTest, BlocksFromBeforeCountBelowZero) {
    // Volatile: a compiler that sees both ends of the block's life may leave it out.
    void * volatile block = std::malloc(1000);
    HeapUse const use;
    std::free(block);
    EXPECT_LE(use.bytes(), -1000);
    EXPECT_EQ(use.blocks(), -1);
    EXPECT_EQ(use.peak(), 0);
}

TEST_F(HeapUseTest, StartsAnewEachTime) {
    auto const text = std::make_unique<CString>();
    {
        HeapUse const use;
        *text = CString('x', 1000);
        EXPECT_GE(use.bytes(), 1000);
    }
    HeapUse const use;
    EXPECT_EQ(use.bytes(), 0);
    EXPECT_EQ(use.peak(), 0);
}

TEST_F(HeapUseTest, LeavesOtherThreadsAlone) {
    auto big = std::make_unique<std::unique_ptr<char[]>>();
    std::thread other([&big] {
        HeapUse const use;
        *big = std::make_unique<char[]>(100000);
        EXPECT_GE(use.bytes(), 100000);
    });
    HeapUse const use;
    other.join();
    EXPECT_LT(use.bytes(), 1000);
    EXPECT_LT(use.peak(), 1000);
}

}  // namespace
