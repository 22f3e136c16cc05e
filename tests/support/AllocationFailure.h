#pragma once

namespace tvk::test {

/// Makes the heap allocations of the current thread fail, in whichever module of the process, until its
/// end. One at a time on a thread; the expectations of a test allocate too, so they stand behind end().
class AllocationFailure {
public:
    /// False where the allocation functions belong to somebody else, such as a sanitizer; nothing
    /// fails there.
    static bool available() noexcept;

    /// The first `allowed` allocations still succeed.
    explicit AllocationFailure(long long allowed = 0) noexcept;
    AllocationFailure(AllocationFailure const &) = delete;
    AllocationFailure & operator=(AllocationFailure const &) = delete;
    ~AllocationFailure() { end(); }

    void end() noexcept;
};

}  // namespace tvk::test
