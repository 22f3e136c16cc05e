#include "examples/desk/Text.h"

#include <gtest/gtest.h>

namespace {

TEST(DeskText, GoesFromTheCodePageToTheScreenAndBack) {
    CString const name = "\x93\x8c\x97\xc5\x93\x64\x8b\x40";  // code page 932
    EXPECT_EQ(desk::utf8(name), "東稜電機");
    EXPECT_EQ(desk::ansi("東稜電機"), name);
}

TEST(DeskText, ShowsNoControlCharacters) {
    EXPECT_EQ(desk::utf8(CString("a\x1b[31m\x7f\tb\nc", 11)), "a[31mb\nc");
    EXPECT_EQ(desk::utf8(CString("a\0b", 3)), "ab");
}

TEST(DeskText, KeepsAnEmptyTextEmpty) {
    EXPECT_EQ(desk::utf8(CString()), "");
    EXPECT_EQ(desk::ansi(""), CString());
}

}  // namespace
