#include "examples/desk/model/LineBreaks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using desk::brokenIntoLines;

/// One for ASCII, two for what is wide.
double widthOf(std::string_view text) {
    double width = 0;
    for (char const byte : text) {
        auto const value = static_cast<unsigned char>(byte);
        width += value < 0x80 ? 1 : value >= 0xc0 ? 2 : 0;
    }
    return width;
}

std::string broken(std::string_view text, double width) {
    return brokenIntoLines(text, width, widthOf);
}

TEST(DeskLineBreaks, StandBetweenAnyTwoJapaneseCharacters) {
    EXPECT_EQ(broken("東西南北中央", 6), "東西南\n北中央");
    EXPECT_EQ(broken("東西南北中央", 100), "東西南北中央");
    EXPECT_EQ(broken("", 6), "");
}

TEST(DeskLineBreaks, KeepWordsAndNumbersWhole) {
    EXPECT_EQ(broken("価格は1,234.5円", 8), "価格は\n1,234.5\n円");
    EXPECT_EQ(broken("buy the board", 7), "buy the\nboard");
    EXPECT_EQ(broken("incomprehensible", 4), "incomprehensible") << "too wide by itself";
}

TEST(DeskLineBreaks, KeepMarksWhereTheyBelong) {
    EXPECT_EQ(broken("東西南、北", 6), "東西\n南、北") << "no closing mark at the start";
    EXPECT_EQ(broken("東西「南北」", 6), "東西\n「南\n北」") << "no opening mark at the end";
    EXPECT_EQ(broken("データー", 4), "デー\nター");
}

TEST(DeskLineBreaks, KeepLineFeeds) {
    EXPECT_EQ(broken("東\n\n西南北", 4), "東\n\n西南\n北");
    EXPECT_EQ(broken("東\n", 4), "東\n");
}

TEST(DeskLineBreaks, CopeWithBytesThatAreNoText) {
    EXPECT_EQ(broken("\xff\x80\xe6", 1), "\xff\x80\n\xe6");
    EXPECT_EQ(broken("\x80", 1), "\x80");
}

TEST(DeskLineBreaks, LoseNothingAndKeepTheWidth) {
    std::string const characters[] = {"東", "a", "7", " ", "、", "「", "\n", "の"};
    std::mt19937 random(11);
    for (int round = 0; round < 500; ++round) {
        std::string text;
        for (auto length = random() % 40; length > 0; --length) {
            text += characters[random() % std::size(characters)];
        }
        SCOPED_TRACE(text);
        std::string lines = broken(text, 12);
        auto const isSpace = [](char character) { return character == ' ' || character == '\n'; };
        std::string plain = text;
        plain.erase(std::remove_if(plain.begin(), plain.end(), isSpace), plain.end());
        lines.erase(std::remove_if(lines.begin(), lines.end(), isSpace), lines.end());
        EXPECT_EQ(lines, plain);
    }
}

}  // namespace
