#include "examples/backend/Price.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace tvk::test {

using backend::priceOf;
using backend::textOf;

TEST(BackendPrice, IsWrittenInYen) {
    EXPECT_EQ(textOf(0), "0");
    EXPECT_EQ(textOf(25'400), "2540");
    EXPECT_EQ(textOf(8'455), "845.5");
    EXPECT_EQ(textOf(1), "0.1");
    EXPECT_EQ(textOf(-1), "-0.1");
    EXPECT_EQ(textOf(-120), "-12");
}

TEST(BackendPrice, IsReadFromYen) {
    EXPECT_EQ(priceOf(0.0), 0);
    EXPECT_EQ(priceOf(2540.0), 25'400);
    EXPECT_EQ(priceOf(845.5), 8'455);
    EXPECT_EQ(priceOf(0.1), 1);
    EXPECT_EQ(priceOf(1e8), 1'000'000'000);
    for (double const yen :
         {-0.1, 0.05, 845.55, 1e8 + 1, std::nan(""), std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(priceOf(yen)) << yen;
    }
}

TEST(BackendPrice, ComesBackFromItsText) {
    for (backend::Price price = 0; price < 2'000; ++price) {
        EXPECT_EQ(priceOf(std::stod(textOf(price))), price);
    }
}

}  // namespace tvk::test
