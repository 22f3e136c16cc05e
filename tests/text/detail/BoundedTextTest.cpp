#include "tvk/text/detail/BoundedText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <new>

#include "tests/support/PrintCString.h"

namespace tvk::detail {
namespace {

TEST(BoundedText, HoldsWhatWasWritten) {
    auto const write = [](char * out) { return std::copy_n("a\0b", 3, out); };
    CString const expected("a\0b", 3);
    EXPECT_EQ(boundedText(3, write), expected);
    EXPECT_EQ(boundedText(300, write), expected);
}

TEST(BoundedText, IsEmptyWhereNothingWasWritten) {
    EXPECT_EQ(boundedText(9, [](char * out) { return out; }), "");
}

TEST(BoundedText, AsksForNothingWithoutRoom) {
    auto const write = [](char * out) {
        ADD_FAILURE() << "called";
        return out;
    };
    EXPECT_EQ(boundedText(0, write), "");
}

TEST(BoundedText, TakesBoundsUpToTheLongestText) {
    auto const write = [](char * out) { return std::copy_n("ab", 2, out); };
    EXPECT_EQ(boundedText(0x7fffffff, write), "ab");
}

TEST(BoundedText, RefusesBoundsThatNoTextHolds) {
    auto const write = [](char * out) {
        ADD_FAILURE() << "called";
        return out;
    };
    for (std::uint64_t const bound : {std::uint64_t{0x80000000}, std::uint64_t{0xffffffff},
                                      std::uint64_t{0x100000001}, ~std::uint64_t{0}}) {
        EXPECT_THROW(boundedText(bound, write), std::bad_alloc) << bound;
    }
}

}  // namespace
}  // namespace tvk::detail
