#include "tests/support/AllocationCounter.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TVK_TEST_SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define TVK_TEST_SANITIZED
#endif
#endif

#if defined(__GLIBC__) && !defined(TVK_TEST_SANITIZED)
#define TVK_TEST_COUNTS_ALLOCATIONS
#endif

namespace tvk::test {

namespace {

// Per thread, so that counting costs no atomic operation and other threads do not disturb a test.
constinit thread_local long long allocationTotal = 0;

}  // namespace

long long AllocationCounter::total() noexcept { return allocationTotal; }

#if defined(TVK_TEST_COUNTS_ALLOCATIONS)
bool AllocationCounter::available() noexcept { return true; }
#else
bool AllocationCounter::available() noexcept { return false; }
#endif

}  // namespace tvk::test

#if defined(TVK_TEST_COUNTS_ALLOCATIONS)

// The program's definitions stand before those of the C library, for its shared libraries too. They
// use the same heap, so the C library's free and malloc_usable_size go on working.
extern "C" {

void * __libc_malloc(std::size_t size) noexcept;
void * __libc_calloc(std::size_t count, std::size_t size) noexcept;
void * __libc_realloc(void * block, std::size_t size) noexcept;
void * __libc_memalign(std::size_t alignment, std::size_t size) noexcept;

void * malloc(std::size_t size) noexcept {
    ++tvk::test::allocationTotal;
    return __libc_malloc(size);
}

void * calloc(std::size_t count, std::size_t size) noexcept {
    ++tvk::test::allocationTotal;
    return __libc_calloc(count, size);
}

void * realloc(void * block, std::size_t size) noexcept {
    ++tvk::test::allocationTotal;
    return __libc_realloc(block, size);
}

void * memalign(std::size_t alignment, std::size_t size) noexcept {
    ++tvk::test::allocationTotal;
    return __libc_memalign(alignment, size);
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
