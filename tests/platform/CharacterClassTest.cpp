#include "tvk/platform/CharacterClass.h"

#include <gtest/gtest.h>

#include <cctype>

namespace {

using namespace tvk::platform;

// The test program runs in the "C" locale, so the C library's own functions are the model.
TEST(CharacterClass, AgreesWithTheCLocaleOnEveryByte) {
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        char const character = static_cast<char>(static_cast<unsigned char>(byte));
        EXPECT_EQ(isSpace(character), std::isspace(byte) != 0);
        EXPECT_EQ(isAlnum(character), std::isalnum(byte) != 0);
        EXPECT_EQ(isDigit(character), std::isdigit(byte) != 0);
        EXPECT_EQ(isUpper(character), std::isupper(byte) != 0);
        EXPECT_EQ(isLower(character), std::islower(byte) != 0);
        EXPECT_EQ(static_cast<unsigned char>(toLower(character)), std::tolower(byte));
        EXPECT_EQ(static_cast<unsigned char>(toUpper(character)), std::toupper(byte));
    }
}

TEST(CharacterClass, HighBytesBelongToNoClass) {
    for (int byte = 0x80; byte < 256; ++byte) {
        char const character = static_cast<char>(static_cast<unsigned char>(byte));
        EXPECT_FALSE(isSpace(character) || isAlnum(character)) << byte;
        EXPECT_EQ(toLower(character), character);
        EXPECT_EQ(toUpper(character), character);
    }
}

}  // namespace
