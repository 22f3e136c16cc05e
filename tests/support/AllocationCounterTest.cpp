#include "tests/support/AllocationCounter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "tvk/platform/CString.h"

namespace {

using tvk::test::AllocationCounter;

class AllocationCounterTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (!AllocationCounter::available()) {
            GTEST_SKIP() << "allocations are not counted in this build";
        }
    }
};

// Read through a volatile pointer, so that no compiler drops the pair of calls.
void use(void * block) {
    void * volatile kept = block;
    std::free(kept);
}

TEST_F(AllocationCounterTest, CountsEachAllocationFunction) {
    AllocationCounter allocations;
    use(std::malloc(10));
    EXPECT_EQ(allocations.count(), 1);
    use(std::calloc(2, 10));
    EXPECT_EQ(allocations.count(), 2);
    use(std::realloc(nullptr, 10));
    EXPECT_EQ(allocations.count(), 3);
    use(std::aligned_alloc(64, 128));
    EXPECT_EQ(allocations.count(), 4);
    auto const object = std::make_unique<std::string>(100, 'x');
    EXPECT_EQ(allocations.count(), 6);
}

TEST_F(AllocationCounterTest, CountsInsideTheLibrary) {
    AllocationCounter allocations;
    CString const text("made on the library's side");
    EXPECT_EQ(allocations.count(), 1);
}

TEST_F(AllocationCounterTest, CountersOverlap) {
    AllocationCounter outer;
    use(std::malloc(1));
    AllocationCounter inner;
    use(std::malloc(1));
    EXPECT_EQ(inner.count(), 1);
    EXPECT_EQ(outer.count(), 2);
}

}  // namespace
