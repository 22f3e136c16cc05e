#include "tests/support/ExactBuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

namespace {

using tvk::test::ExactBuffer;

std::string_view contentOf(ExactBuffer const & buffer) { return {buffer.data(), buffer.size()}; }

TEST(ExactBuffer, HoldsTheBytes) {
    std::string const bytes("a\0b\xff", 4);
    ExactBuffer const fromText{std::string_view(bytes)};
    EXPECT_EQ(contentOf(fromText), bytes);
    EXPECT_EQ(fromText.length(), 4U);
    ExactBuffer const fromBytes(bytes.data(), bytes.size());
    EXPECT_EQ(contentOf(fromBytes), bytes);
}

TEST(ExactBuffer, HoldsNothing) {
    ExactBuffer const buffer("");
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_NE(buffer.data(), nullptr);
}

TEST(ExactBuffer, KeepsItsPlaceWhenMoved) {
    ExactBuffer source("text");
    char const * const place = source.data();
    ExactBuffer const target(std::move(source));
    EXPECT_EQ(target.data(), place);
    EXPECT_EQ(contentOf(target), "text");
}

}  // namespace
