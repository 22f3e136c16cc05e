#include "tvk/platform/TextRoom.h"

#include <gtest/gtest.h>

#include <string>

#include "tvk/platform/CString.h"

namespace {

using tvk::platform::textRoom;

/// A sanitizer sees a byte that may not be read.
unsigned int sumOfRoom(CString const & text) {
    unsigned int sum = 0;
    auto const length = static_cast<std::size_t>(text.GetLength());
    for (std::size_t i = 0; i < textRoom(length); ++i) {
        sum += static_cast<unsigned char>(text.GetString()[i]) & (i <= length ? 0xFFU : 0U);
    }
    return sum;
}

TEST(TextRoom, HoldsFourBytesOrTwentyOrTheText) {
    EXPECT_EQ(textRoom(0), 4u);
    EXPECT_EQ(textRoom(3), 4u);
    EXPECT_EQ(textRoom(4), 20u);
    EXPECT_EQ(textRoom(19), 20u);
    EXPECT_EQ(textRoom(20), 21u);
}

TEST(TextRoom, CanBeReadBehindTextsOfEveryOrigin) {
    for (int length = 0; length <= 70; ++length) {
        std::string const bytes(static_cast<std::size_t>(length), 'a');
        unsigned int const sum = 'a' * static_cast<unsigned int>(length);
        CString const made(bytes.data(), length);
        EXPECT_EQ(sumOfRoom(made), sum);
        EXPECT_EQ(sumOfRoom(CString('a', length)), sum);
        EXPECT_EQ(sumOfRoom(made.Left(length)), sum);
        EXPECT_EQ(sumOfRoom(made + ""), sum);
        CString grown;
        for (int i = 0; i < length; ++i) {
            grown += 'a';
        }
        EXPECT_EQ(sumOfRoom(grown), sum);
        CString written;
        written.GetBuffer(length);
        written.ReleaseBuffer(0);
        written = bytes.c_str();
        EXPECT_EQ(sumOfRoom(written), sum);
    }
    CString cut("0123456789012345678901234567890123456789");
    cut.GetBuffer(0);
    cut.ReleaseBuffer(5);
    EXPECT_EQ(sumOfRoom(cut), '0' * 5u + 10u);
}

}  // namespace
