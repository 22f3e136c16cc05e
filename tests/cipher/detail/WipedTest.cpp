#include "tvk/cipher/detail/Wiped.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace tvk::test {

TEST(Wiped, ZeroesItsBytesAndNoOthers) {
    std::array<unsigned char, 32> bytes{};
    bytes.fill(0xA5);
    detail::wipe(bytes.data() + 4, 20);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        EXPECT_EQ(bytes[i], i >= 4 && i < 24 ? 0 : 0xA5) << i;
    }
}

TEST(Wiped, StartsWithZero) {
    detail::Wiped<std::array<unsigned char, 32>> value;
    EXPECT_EQ(std::count(value.get().begin(), value.get().end(), 0), 32);
}

}  // namespace tvk::test
