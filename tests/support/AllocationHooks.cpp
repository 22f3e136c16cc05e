#include <cerrno>
#include <cstddef>
#include <cstdlib>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/HeapUse.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TVK_TEST_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define TVK_TEST_SANITIZED
#endif
#endif

#if defined(__GLIBC__) && !defined(TVK_TEST_SANITIZED)
#define TVK_TEST_OWNS_ALLOCATION
#endif

#if defined(TVK_TEST_OWNS_ALLOCATION)
#include <malloc.h>

constexpr bool OWNS_ALLOCATION = true;
#else
constexpr bool OWNS_ALLOCATION = false;
#endif

namespace tvk::test {

namespace {

constexpr long long NEVER_FAIL = -1;

// Per thread, so that counting costs no atomic operation and other threads do not disturb a test.
constinit thread_local long long allocationTotal = 0;
constinit thread_local long long allowedAllocations = NEVER_FAIL;

/// Called before each allocation: counts it, and tells whether it may go on.
[[maybe_unused]] bool beginAllocation() noexcept {
    if (allowedAllocations == 0) {
        errno = ENOMEM;
        return false;
    }
    if (allowedAllocations > 0) {
        --allowedAllocations;
    }
    ++allocationTotal;
    return true;
}

constinit thread_local bool isHeapWatched = false;
constinit thread_local long long heapBytes = 0;
constinit thread_local long long heapBlocks = 0;
constinit thread_local long long heapPeak = 0;

#if defined(TVK_TEST_OWNS_ALLOCATION)
void * taken(void * block) noexcept {
    if (isHeapWatched && block != nullptr) {
        heapBytes += static_cast<long long>(malloc_usable_size(block));
        heapPeak = heapBytes > heapPeak ? heapBytes : heapPeak;
        ++heapBlocks;
    }
    return block;
}

void givenBack(std::size_t usableSize) noexcept {
    heapBytes -= static_cast<long long>(usableSize);
    --heapBlocks;
}
#endif

}  // namespace

bool AllocationCounter::available() noexcept { return OWNS_ALLOCATION; }

long long AllocationCounter::total() noexcept { return allocationTotal; }

bool AllocationFailure::available() noexcept { return OWNS_ALLOCATION; }

AllocationFailure::AllocationFailure(long long allowed) noexcept { allowedAllocations = allowed; }

void AllocationFailure::end() noexcept { allowedAllocations = NEVER_FAIL; }

bool HeapUse::available() noexcept { return OWNS_ALLOCATION; }

HeapUse::HeapUse() noexcept {
    isHeapWatched = true;
    heapBytes = heapBlocks = heapPeak = 0;
}

HeapUse::~HeapUse() { isHeapWatched = false; }

long long HeapUse::bytes() const noexcept { return heapBytes; }

long long HeapUse::blocks() const noexcept { return heapBlocks; }

long long HeapUse::peak() const noexcept { return heapPeak; }

}  // namespace tvk::test

#if defined(TVK_TEST_OWNS_ALLOCATION)

// The program's definitions stand before those of the C library, for its shared libraries too. They
// use the same heap, so the C library's free and malloc_usable_size go on working.
extern "C" {

void * __libc_malloc(std::size_t size) noexcept;
void * __libc_calloc(std::size_t count, std::size_t size) noexcept;
void * __libc_realloc(void * block, std::size_t size) noexcept;
void * __libc_memalign(std::size_t alignment, std::size_t size) noexcept;
void __libc_free(void * block) noexcept;

void * malloc(std::size_t size) noexcept {
    return tvk::test::beginAllocation() ? tvk::test::taken(__libc_malloc(size)) : nullptr;
}

void * calloc(std::size_t count, std::size_t size) noexcept {
    return tvk::test::beginAllocation() ? tvk::test::taken(__libc_calloc(count, size)) : nullptr;
}

void * realloc(void * block, std::size_t size) noexcept {
    if (!tvk::test::beginAllocation()) {
        return nullptr;
    }
    if (!tvk::test::isHeapWatched) {
        return __libc_realloc(block, size);
    }
    std::size_t const before = block == nullptr ? 0 : malloc_usable_size(block);
    void * const result = __libc_realloc(block, size);
    // A null result leaves the block alone, unless it was asked for nothing: that gives it back.
    if (block != nullptr && (result != nullptr || size == 0)) {
        tvk::test::givenBack(before);
    }
    return tvk::test::taken(result);
}

void free(void * block) noexcept {
    if (tvk::test::isHeapWatched && block != nullptr) {
        tvk::test::givenBack(malloc_usable_size(block));
    }
    __libc_free(block);
}

void * memalign(std::size_t alignment, std::size_t size) noexcept {
    return tvk::test::beginAllocation() ? tvk::test::taken(__libc_memalign(alignment, size))
                                        : nullptr;
}

void * aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}

int posix_memalign(void ** block, std::size_t alignment, std::size_t size) noexcept {
    if (alignment % sizeof(void *) != 0 || (alignment & (alignment - 1)) != 0 || alignment == 0) {
        return EINVAL;
    }
    void * const fresh = memalign(alignment, size);
    if (fresh == nullptr) {
        return ENOMEM;
    }
    *block = fresh;
    return 0;
}
}

#endif
