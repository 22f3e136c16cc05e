#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/ReferenceStringWriter.h"
#include "tvk/json/JsonUtil.h"

namespace {

using tvk::JSON_ESCAPE_SLASH;
using tvk::JsonUtil;
using tvk::test::ReferenceStringWriter;
using tvk::test::writeWithLibrary;
using tvk::test::WrittenString;

std::string written(std::string_view text, int options = 0) {
    WrittenString const outcome =
        writeWithLibrary(text, static_cast<unsigned int>(2 * text.size() + 10), options);
    EXPECT_EQ(outcome.error, "");
    return outcome.output;
}

void expectAsModelled(std::string_view text, unsigned int outputSize, int options) {
    ASSERT_EQ(writeWithLibrary(text, outputSize, options),
              ReferenceStringWriter(text, outputSize, options).run())
        << ::testing::PrintToString(std::string(text)) << " into " << outputSize << ", options "
        << options;
}

void expectAsModelled(std::string_view text) {
    auto const enough = static_cast<unsigned int>(2 * text.size() + 8);
    for (unsigned int outputSize = 0; outputSize <= enough; ++outputSize) {
        expectAsModelled(text, outputSize, 0);
        expectAsModelled(text, outputSize, JSON_ESCAPE_SLASH);
    }
}

struct Escape {
    char const * name;
    std::string_view text;
    std::string_view output;
    int options = 0;
};

constexpr Escape ESCAPES[] = {
    {"quote", "\"", "\\\""},
    {"backslash", "\\", "\\\\"},
    {"slash", "a/b", "a/b"},
    {"slash, escaped", "a/b", "a\\/b", JSON_ESCAPE_SLASH},
    {"line feed", "\n", "\\n"},
    {"carriage return", "\r", "\\r"},
    {"tab", "\t", "\\t"},
    {"form feed", "\f", "\\f"},
    {"backspace", "\b", "\\b"},
    {"tab, quote and backslash", "\t\"\\", "\\t\\\"\\\\"},
    {"control characters stay raw", "\x01\x0B\x1F\x7F", "\x01\x0B\x1F\x7F"},
    {"NUL ends the text", std::string_view("ab\0cd", 5), "ab"},
    {"NUL far in front of the end", std::string_view("0123456789\0 0123456789 0123456789", 33),
     "0123456789"},
    {"two bytes", "\xC3\xA9", "\xC3\xA9"},
    {"three bytes", "\xE3\x81\x82/\xE3\x81\x84", "\xE3\x81\x82/\xE3\x81\x84"},
    {"four bytes", "\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"},
    {"five bytes", "\xF8\x80\xA0\x80\x80", "\xF8\x80\xA0\x80\x80"},
    {"six bytes", "\xFD\xBF\xBF\xBF\xBF\xBF", "\xFD\xBF\xBF\xBF\xBF\xBF"},
    {"an overlong NUL ends the text", "a\xC0\x80z", "a"},
    {"options of names do nothing", "a\"/", "a\\\"/", tvk::JSON_UNQUOTED_NAMES},
};

TEST(JsonStringWriter, EscapesByCodePoint) {
    for (Escape const & row : ESCAPES) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(written(row.text, row.options), row.output);
        expectAsModelled(row.text);
    }
}

TEST(JsonStringWriter, WritesNothingForNoText) {
    unsigned int written = 7;
    EXPECT_EQ(JsonUtil::writeUnquotedJsonStringValue("abc", 0, nullptr, 0, &written, 0), 0u);
    EXPECT_EQ(written, 0u);
    EXPECT_EQ(JsonUtil::writeUnquotedJsonStringValue(nullptr, 0, nullptr, 0, nullptr, 0), 0u);
}

TEST(JsonStringWriter, TakesANullPlaceForTheCount) {
    char output[16] = {};
    EXPECT_EQ(JsonUtil::writeUnquotedJsonStringValue("ab", 2, output, 16, nullptr, 0), 2u);
    EXPECT_STREQ(output, "ab");
}

TEST(JsonStringWriter, WritesNothingWithoutRoom) {
    WrittenString const outcome = writeWithLibrary("plain", 0, 0);
    EXPECT_EQ(outcome.consumed, 0u);
    EXPECT_EQ(outcome.output, "");
}

TEST(JsonStringWriter, WantsOneByteMoreThanItWrites) {
    EXPECT_EQ(writeWithLibrary("ab", 2, 0).output, "a");
    EXPECT_EQ(writeWithLibrary("ab", 3, 0).output, "ab");
    EXPECT_EQ(writeWithLibrary("a\"", 3, 0).output, "a");
    EXPECT_EQ(writeWithLibrary("a\"", 4, 0).output, "a\\\"");
    EXPECT_EQ(writeWithLibrary("\xE3\x81\x82", 3, 0).output, "");
    EXPECT_EQ(writeWithLibrary("\xE3\x81\x82", 4, 0).output, "\xE3\x81\x82");
}

TEST(JsonStringWriter, TellsWhereItWasCut) {
    WrittenString const outcome = writeWithLibrary("01234567\"9", 10, 0);
    EXPECT_EQ(outcome.output, "01234567");
    EXPECT_EQ(outcome.consumed, 8u);
}

TEST(JsonStringWriter, LosesTheLastEscapeInRoomOfTwiceTheLength) {
    EXPECT_EQ(writeWithLibrary("\"\"\"\"", 8, 0).output, "\\\"\\\"\\\"");
    EXPECT_EQ(writeWithLibrary("\"\"\"\"", 9, 0).output, "\\\"\\\"\\\"\\\"");
}

TEST(JsonStringWriter, DeliberatelyWritesLineFeedAndPlainSlashWithoutRoom) {
    EXPECT_EQ(writeWithLibrary("\n", 0, 0).output, "\\n");
    EXPECT_EQ(writeWithLibrary("/", 0, 0).output, "/");
    EXPECT_EQ(writeWithLibrary("/", 0, JSON_ESCAPE_SLASH).output, "");
    EXPECT_EQ(writeWithLibrary("ab\n/\n\tc", 3, 0).output, "ab\\n/\\n");
    EXPECT_EQ(writeWithLibrary("\r", 0, 0).output, "");
}

TEST(JsonStringWriter, DeliberatelyCountsOneByteForAnOverlongEscape) {
    EXPECT_EQ(writeWithLibrary("\xC0\xA2", 20, 0).error,
              "invalid message data near position 1: unable to decide UTF-8 character length");
    EXPECT_EQ(writeWithLibrary("a\xC0\xAF", 20, 0).error,
              "invalid message data near position 2: unable to decide UTF-8 character length");
}

struct BadText {
    char const * name;
    std::string_view text;
    unsigned int outputSize;
    char const * error;  // behind the common words
};

// 40 bytes are room for the fast loop, 5 for the careful one alone.
constexpr BadText BAD_TEXTS[] = {
    {"stray trail byte", "ab\x80", 40, "2: unable to decide UTF-8 character length"},
    {"stray trail byte, careful", "ab\x80", 5, "2: unable to decide UTF-8 character length"},
    {"FE", "\xFE", 40, "0: unable to decide UTF-8 character length"},
    {"FF, careful", "\xFF", 5, "0: unable to decide UTF-8 character length"},
    {"cut 2", "a\xC3", 40, "1: no enough bytes(at least 2 bytes expected)"},
    {"cut 2, careful", "a\xC3", 5, "1: no enough bytes(at least 2 bytes expected)"},
    {"cut 3", "\xE3\x81", 40, "0: no enough bytes(at least 3 bytes expected)"},
    {"cut 3, careful", "\xE3\x81", 5, "0: no enough bytes(at least 3 bytes expected)"},
    {"cut 4", "\xF0\x9F\x98", 40, "0: no enough bytes(at least 4 bytes expected)"},
    {"cut 5", "\xF8\x80\x80\x80", 40, "0: no enough bytes(at least 5 bytes expected)"},
    {"cut 6", "\xFC\x80\x80\x80\x80", 40, "0: no enough bytes(at least 6 bytes expected)"},
    {"cut 6, careful", "\xFC\x80\x80\x80\x80", 0, "0: no enough bytes(at least 6 bytes expected)"},
    {"trail 2, careful", "\xC3\x28", 5, "0: invalid UTF-8 2-byte sequence"},
    {"trail 3, careful", "ab\xE3\x81\x28", 5, "2: invalid UTF-8 3-byte sequence"},
    {"trail 4, careful", "\xF0\x9F\x98\x28", 5, "0: invalid UTF-8 4-byte sequence"},
    {"trail 5, careful", "\xF8\x80\x80\x80\x28", 5, "0: invalid UTF-8 5-byte sequence"},
    {"trail 6, careful", "\xFC\x80\x80\x80\x80\x28", 5, "0: invalid UTF-8 6-byte sequence"},
    {"decoding comes before the room", "\x80", 0, "0: unable to decide UTF-8 character length"},
};

TEST(JsonStringWriter, RefusesBadUtf8WithTheExactText) {
    for (BadText const & row : BAD_TEXTS) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(writeWithLibrary(row.text, row.outputSize, 0).error,
                  std::string("invalid message data near position ") + row.error);
        expectAsModelled(row.text);
    }
}

TEST(JsonStringWriter, TestsTrailBytesOnlyNearTheEndOfTheRoom) {
    EXPECT_EQ(writeWithLibrary("\xC3\x28", 7, 0).output, "\xC3\x28");
    EXPECT_EQ(writeWithLibrary("\xC3\x28", 6, 0).error,
              "invalid message data near position 0: invalid UTF-8 2-byte sequence");
}

TEST(JsonStringWriter, FindsASpecialByteAtEveryPlace) {
    std::vector<std::string> const specials = {
        "\"",       "\\",           "/",    "\n",
        "\x01",     "\x1F",         "\x7F", std::string(1, '\0'),
        "\xC3\xA9", "\xE3\x81\x82", "\x80", "\xC0\xA2",
        "\xFF"};
    for (std::string const & special : specials) {
        for (std::size_t length = 0; length < 35; ++length) {
            for (std::size_t place = 0; place <= length; ++place) {
                std::string text(length, 'x');
                text.insert(place, special);
                auto const size = static_cast<unsigned int>(text.size());
                for (unsigned int const room : {2 * size + 8, 2 * size, size + 1, size / 2}) {
                    expectAsModelled(text, room, 0);
                    expectAsModelled(text, room, JSON_ESCAPE_SLASH);
                }
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

TEST(JsonStringWriter, AgreesWithTheModelOnRandomTexts) {
    constexpr unsigned int SEED = 97;
    SCOPED_TRACE("seed " + std::to_string(SEED));
    std::mt19937 random(SEED);
    std::vector<std::string> const good = {"a",
                                           "b",
                                           "Z",
                                           "0",
                                           "plain text",
                                           "\"",
                                           "\\",
                                           "/",
                                           "\n",
                                           "\r",
                                           "\t",
                                           "\f",
                                           "\b",
                                           "\x01",
                                           "\x7F",
                                           "\xC3\xA9",
                                           "\xE3\x81\x82",
                                           "\xE6\x97\xA5\xE6\x9C\xAC",
                                           "\xF0\x9F\x98\x80",
                                           "\xF8\x80\xA0\x80\x80",
                                           "\xFD\xBF\xBF\xBF\xBF\xBF"};
    std::vector<std::string> const bad = {std::string(1, '\0'),
                                          "\x80",
                                          "\xBF",
                                          "\xC3",
                                          "\xE3\x81",
                                          "\xF0\x9F",
                                          "\xF8",
                                          "\xFC",
                                          "\xFE",
                                          "\xFF",
                                          "\xC0\x80",
                                          "\xC0\xA2",
                                          "\xC1\x9C",
                                          "\xC0\xAF",
                                          "\xE0\x80\xA2",
                                          "\xF0\x80\x80\x8A",
                                          "\xF8\x80\x80\x80\x8D",
                                          "\xFC\x80\x80\x80\x80\x89"};
    for (int round = 0; round < 1500; ++round) {
        std::string text;
        std::size_t const pieces = random() % 12;
        for (std::size_t i = 0; i < pieces; ++i) {
            bool const isBad = random() % 16 == 0;
            std::vector<std::string> const & source = isBad ? bad : good;
            text += source[random() % source.size()];
        }
        expectAsModelled(text);
        if (HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
