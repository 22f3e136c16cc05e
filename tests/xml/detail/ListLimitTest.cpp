#include "tvk/xml/detail/ListLimit.h"

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <memory>

namespace tvk::detail {
namespace {

/// Lets a container hold three elements.
template <class T>
struct SmallAllocator : std::allocator<T> {
    SmallAllocator() = default;
    template <class U>
    SmallAllocator(SmallAllocator<U> const &) {}
    template <class U>
    struct rebind {
        using other = SmallAllocator<U>;
    };

    std::size_t max_size() const { return 3; }
};

using SmallList = std::list<int, SmallAllocator<int>>;

void expectTooLong(std::function<void()> const & act) {
    try {
        act();
        ADD_FAILURE() << "no length error";
    } catch (std::length_error const & error) {
        EXPECT_STREQ(error.what(), "list too long");
    }
}

TEST(ListLimit, AFullListRefusesAndStaysAsItWas) {
    SmallList list;
    append(list, 2);
    append(list, 3);
    prepend(list, 1);
    expectTooLong([&] { append(list, 4); });
    expectTooLong([&] { prepend(list, 0); });
    EXPECT_EQ(list, (SmallList{1, 2, 3}));
    list.pop_front();
    append(list, 4);
    EXPECT_EQ(list, (SmallList{2, 3, 4}));
}

}  // namespace
}  // namespace tvk::detail
