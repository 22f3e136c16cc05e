// A program of its own, in which the memory for the container is refused when the library is loaded.

#include <gtest/gtest.h>

#include <new>

#include "tvk/agent/KestrinContainer.h"

namespace {

int refusals = 0;  // counted before main

}  // namespace

/// The library asks for the container in this form; what else comes this way gets its memory.
void * operator new(std::size_t size, std::nothrow_t const &) noexcept {
    if (size == sizeof(tvk::KestrinContainer)) {
        ++refusals;
        return nullptr;
    }
    try {
        return ::operator new(size);
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

namespace tvk {
namespace {

int const REFUSALS_AT_LOAD = refusals;
KestrinContainer * const AT_LOAD = KestrinContainer::instance();

TEST(KestrinContainerWithoutMemory, IsNull) {
    EXPECT_GT(REFUSALS_AT_LOAD, 0);
    EXPECT_EQ(AT_LOAD, nullptr);
    EXPECT_EQ(KestrinContainer::instance(), nullptr);
    KestrinContainer::cleanup();
    EXPECT_EQ(KestrinContainer::instance(), nullptr);
}

}  // namespace
}  // namespace tvk
