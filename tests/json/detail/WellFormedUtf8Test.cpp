#include "tvk/json/detail/WellFormedUtf8.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tests/support/UsingCodePage.h"

namespace tvk::detail {
namespace {

bool isWellFormed(std::string_view text) {
    test::ExactBuffer const input(text);
    return WellFormedUtf8::is(input, text.size());
}

/// Well formed is what the conversion leaves as it is.
void expectAsConverted(std::string const & text) {
    CString const converted =
        platform::ansiToUtf8(text.data(), static_cast<unsigned int>(text.size()));
    bool const isUnchanged =
        std::string(converted.GetString(), static_cast<std::size_t>(converted.GetLength())) == text;
    ASSERT_EQ(isWellFormed(text), isUnchanged) << testing::PrintToString(text);
}

class WellFormed : public testing::Test {
private:
    test::UsingCodePage const utf8_{65001};
};

TEST_F(WellFormed, IsAnyTwoBytesAsTheConversionTakesThem) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            std::string const pair = {static_cast<char>(first), static_cast<char>(second)};
            expectAsConverted(pair);
            expectAsConverted(pair + "\x80");
            expectAsConverted(pair + "\x80\x80");
            expectAsConverted("\xE3\x81\x82" + pair + "\xBF\xE3\x81\x82");
            expectAsConverted("\xE3\x81\x82\xE3\x81\x82" + pair + "\xBF\x80\xE3\x81\x82 x");
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_F(WellFormed, IsWhatTheConversionLeavesOfRandomTexts) {
    constexpr unsigned int SEED = 53;
    SCOPED_TRACE("seed " + std::to_string(SEED));
    std::mt19937 random(SEED);
    std::string const pieces[] = {"a",
                                  "eight or more bytes",
                                  "\xC2\x80",
                                  "\xDF\xBF",
                                  "\xE0\xA0\x80",
                                  "\xE3\x81\x82\xE3\x81\x84\xE3\x81\x86",
                                  "\xED\x9F\xBF",
                                  "\xEF\xBF\xBD",
                                  "\xF0\x90\x80\x80",
                                  "\xF4\x8F\xBF\xBF"};
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        for (std::size_t i = random() % 12; i > 0; --i) {
            text += pieces[random() % std::size(pieces)];
        }
        expectAsConverted(text);
        if (!text.empty()) {
            text[random() % text.size()] = static_cast<char>(random());
            expectAsConverted(text);
            text.resize(random() % text.size());
            expectAsConverted(text);
        }
        if (HasFatalFailure()) {
            return;
        }
    }
}

}  // namespace
}  // namespace tvk::detail
