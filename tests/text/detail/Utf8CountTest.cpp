#include "tvk/text/detail/Utf8Count.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceUtf8.h"

namespace {

using namespace tvk::test;
using tvk::detail::CountRegularUtf8;
using tvk::detail::Utf8Run;

class CountRegularUtf8Test : public ::testing::TestWithParam<CountRegularUtf8> {
protected:
    void SetUp() override {
        if (GetParam() == nullptr) {
            GTEST_SKIP() << "this processor does not have what the code needs";
        }
    }

    /// Starts at each place that a walk comes to, and requires that it goes on in its steps.
    /// Returns the most bytes counted at once.
    static unsigned int expectStepsOfAWalk(std::string const & text) {
        ExactBuffer const data(text);
        unsigned int longest = 0;
        for (unsigned int position = 0; position < data.length();) {
            DecodedCharacter const character =
                referenceDecode(text, position, TrailBytes::TAKEN_AS_THEY_COME);
            if (position >= 3) {
                Utf8Run const run = GetParam()(data, data.length(), position);
                DecodedCharacter const walked =
                    referenceCount(std::string_view(text).substr(position, run.bytes));
                EXPECT_EQ(walked.failure, "") << ::testing::PrintToString(text) << position;
                EXPECT_EQ(walked.codePoint, static_cast<int>(run.characters))
                    << ::testing::PrintToString(text) << position;
                longest = std::max(longest, run.bytes);
            }
            if (!character.failure.empty()) {
                break;
            }
            position += character.size;
        }
        return longest;
    }

    static std::string repeated(std::string const & piece, std::size_t size) {
        std::string text;
        while (text.size() < size) {
            text += piece;
        }
        return text;
    }
};

std::string const PIECES[] = {"a",
                              "\xC3\xA9",
                              "\xE6\x97\xA5",
                              "\xF0\x9F\x98\x80",
                              "ab\xE6\x97\xA5\xC2\xA5",
                              "\xF0\x9F\x98\x80\xE6\x97\xA5x",
                              std::string(100, 'a') + "\xE6\x97\xA5"};

TEST_P(CountRegularUtf8Test, CountsLongTextsInBlocks) {
    for (std::string const & piece : PIECES) {
        EXPECT_GT(expectStepsOfAWalk(repeated(piece, 600)), 256U) << piece;
    }
}

TEST_P(CountRegularUtf8Test, StopsBeforeAnythingIrregular) {
    for (std::string const & piece : PIECES) {
        std::string const text = repeated(piece, 300);
        for (std::size_t place = 0; place < text.size(); ++place) {
            for (int const special : {0x41, 0x80, 0xBF, 0xC0, 0xE3, 0xF0, 0xF8, 0xFC, 0xFF}) {
                std::string changed = text;
                changed[place] = static_cast<char>(special);
                if (place % 5 == static_cast<std::size_t>(special) % 5) {
                    expectStepsOfAWalk(changed);
                }
            }
        }
    }
}

// A lead that the walk passes over, inside a longer sequence, must not pair with a later trail byte.
TEST_P(CountRegularUtf8Test, KnowsNothingOfLeadsThatTheWalkPassedOver) {
    for (std::string const swallowed : {"\xE3\xC3\xC3",
                                        "\xF0"
                                        "aa\xE3",
                                        "\xF8\xF0\xF0\xF0\xF0", "\xC3\xF0"}) {
        for (std::size_t trails = 0; trails < 4; ++trails) {
            std::string const text =
                "abcd" + swallowed + std::string(trails, '\x80') + repeated("\xE6\x97\xA5", 300);
            ExactBuffer const data(text);
            auto const position = static_cast<unsigned int>(4 + swallowed.size());
            Utf8Run const run = GetParam()(data, data.length(), position);
            if (trails != 0) {
                EXPECT_EQ(run.bytes, 0U) << trails;
            }
            expectStepsOfAWalk(text);
        }
    }
}

TEST_P(CountRegularUtf8Test, AgreesWithAWalkOnRandomText) {
    std::mt19937 random(20261);
    for (int round = 0; round < 300; ++round) {
        std::string text;
        while (text.size() < 500) {
            text += repeated(PIECES[random() % std::size(PIECES)], random() % 200);
        }
        for (auto count = random() % 3; count > 0; --count) {
            text[random() % text.size()] = static_cast<char>(random() % 256);
        }
        text.resize(text.size() - random() % 4);
        expectStepsOfAWalk(text);
    }
}

INSTANTIATE_TEST_SUITE_P(Plain, CountRegularUtf8Test,
                         ::testing::Values(tvk::detail::countRegularUtf8Plain));
INSTANTIATE_TEST_SUITE_P(Avx2, CountRegularUtf8Test,
                         ::testing::Values(tvk::detail::countRegularUtf8WithAvx2()));

}  // namespace
