#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace tvk::test {

/// The error of a list or of sub-messages that would pass the limit of places.
inline void expectTooLong(std::function<void()> const & act) {
    try {
        act();
        ADD_FAILURE() << "no length error";
    } catch (std::length_error const & error) {
        EXPECT_STREQ(error.what(), "vector too long");
    }
}

}  // namespace tvk::test
