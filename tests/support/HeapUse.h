#pragma once

namespace tvk::test {

/// What the current thread takes from the heap and gives back from its construction on, in whichever
/// module of the process: the blocks at their usable sizes. A block that was there before and is given back
/// counts below zero. One at a time on a thread.
///
///     HeapUse const use;
///     auto const tree = parse(text);
///     std::printf("%lld bytes, %lld at most\n", use.bytes(), use.peak());
class HeapUse {
public:
    /// False where the allocation functions belong to somebody else, such as a sanitizer; all is 0
    /// there.
    static bool available() noexcept;

    HeapUse() noexcept;
    HeapUse(HeapUse const &) = delete;
    HeapUse & operator=(HeapUse const &) = delete;
    ~HeapUse();

    long long bytes() const noexcept;
    long long blocks() const noexcept;
    long long peak() const noexcept;  ///< the most bytes so far, 0 at least
};

}  // namespace tvk::test
