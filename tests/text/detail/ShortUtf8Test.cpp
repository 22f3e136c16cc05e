#include "tvk/text/detail/ShortUtf8.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceUtf8.h"

namespace {

using namespace tvk::test;
using tvk::detail::shortUtf8;
using tvk::detail::trustedShortUtf8;
using tvk::detail::Utf8Sequence;

/// What the model decodes where that is no longer than `longest`; else none.
Utf8Sequence expectedAt(std::string const & text, unsigned int position, TrailBytes trails,
                        unsigned int longest) {
    DecodedCharacter const character = referenceDecode(text, position, trails);
    return character.failure.empty() && character.size <= longest
               ? Utf8Sequence{character.codePoint, character.size}
               : Utf8Sequence{0, 0};
}

void expectSame(Utf8Sequence result, Utf8Sequence expected, std::string const & text) {
    EXPECT_EQ(result.codePoint, expected.codePoint) << ::testing::PrintToString(text);
    EXPECT_EQ(result.size, expected.size) << ::testing::PrintToString(text);
}

void expectShort(std::string const & text) {
    ExactBuffer const data(text);
    for (unsigned int position = 0; position <= data.length(); ++position) {
        expectSame(shortUtf8(data, data.length(), position),
                   expectedAt(text, position, TrailBytes::TESTED, 3), text.substr(position));
    }
}

TEST(ShortUtf8, IsWhatTheModelSaysAtEveryPlaceOfEveryTwoBytes) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            std::string const bytes = {static_cast<char>(first), static_cast<char>(second)};
            expectShort(bytes);
            expectShort(bytes + '\x80');
            expectShort(bytes + '\xBF');
            expectShort(bytes + '\x7F');
            expectShort(bytes + '\xC0');
        }
    }
}

TEST(ShortUtf8, IsWhatTheModelSaysOnRandomBytes) {
    constexpr char ALPHABET[] = "a\x00\x7F\x80\x81\xBF\xC0\xC3\xDF\xE0\xE3\xEF\xF0\xF8\xFC\xFF";
    std::mt19937 random(20250);
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 12, '\0');
        for (char & byte : text) {
            byte = ALPHABET[random() % (sizeof ALPHABET - 1)];
        }
        expectShort(text);
    }
}

TEST(ShortUtf8, TakesNothingBehindTheEnd) {
    for (unsigned int const position : {1U, 2U, 0x7fffffffU, 0xffffffffU}) {
        expectSame(shortUtf8(ExactBuffer("A"), 1, position), {0, 0}, "A");
    }
}

TEST(ShortUtf8, TrustsUpToFourBytes) {
    for (int lead = 0; lead < 256; ++lead) {
        for (int trail = 0; trail < 256; ++trail) {
            std::string text(4, static_cast<char>(trail));
            text[0] = static_cast<char>(lead);
            expectSame(trustedShortUtf8(ExactBuffer(text), 0),
                       expectedAt(text, 0, TrailBytes::TAKEN_AS_THEY_COME, 4), text);
        }
    }
}

}  // namespace
