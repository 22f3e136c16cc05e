#include "tvk/values/detail/PlaceLimit.h"

#include <gtest/gtest.h>

#include "tests/values/ExpectTooLong.h"

namespace tvk::detail {
namespace {

TEST(PlaceLimit, IsTheSameOnEveryPlatform) {
    EXPECT_EQ(MAXIMUM_PLACES, 1073741823u);
    EXPECT_NO_THROW(requirePlaces(0));
    EXPECT_NO_THROW(requirePlaces(0x3fffffff));
    for (std::size_t const places : {std::size_t{0x40000000}, ~std::size_t{0}}) {
        test::expectTooLong([&] { requirePlaces(places); });
    }
}

TEST(PlaceLimit, ReservingIsRefusedBeforeAnythingIsAllocated) {
    std::vector<char> places(3);
    std::size_t const capacity = places.capacity();
    EXPECT_THROW(reservePlaces(places, 0x40000000), std::length_error);
    EXPECT_EQ(places.capacity(), capacity);
    reservePlaces(places, 100);
    EXPECT_GE(places.capacity(), 100u);
    EXPECT_EQ(places.size(), 3u);
}

}  // namespace
}  // namespace tvk::detail
