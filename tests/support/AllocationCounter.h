#pragma once

namespace tvk::test {

/// Counts the heap allocations of the current thread from its construction on: malloc, calloc,
/// realloc and the aligned forms, and with them every operator new, in whichever module of the
/// process the call stands. Several counters may overlap.
///
///     if (!AllocationCounter::available()) GTEST_SKIP() << "allocations are not counted here";
///     AllocationCounter allocations;
///     CString const copy(text);
///     EXPECT_EQ(allocations.count(), 0);
class AllocationCounter {
public:
    /// False where the allocation functions belong to somebody else, such as a sanitizer; count()
    /// is 0 there.
    static bool available() noexcept;

    AllocationCounter() noexcept : before_(total()) {}

    long long count() const noexcept { return total() - before_; }

private:
    static long long total() noexcept;

    long long before_;
};

}  // namespace tvk::test
