#include "tvk/text/detail/PercentCoders.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceUrl.h"

namespace {

using namespace std::literals;
using namespace tvk::test;
using tvk::detail::PercentCoders;
using tvk::detail::PercentDecoded;

struct Form {
    char const * name;
    PercentCoders const * coders;
};

class PercentCodersTest : public ::testing::TestWithParam<Form> {
protected:
    void SetUp() override {
        if (GetParam().coders == nullptr) {
            GTEST_SKIP() << "this processor does not have what the code needs";
        }
    }

    /// `shift` moves the text and its result away from round addresses.
    static void expectEncodingOfTheModel(std::string const & bytes, std::size_t shift = 0) {
        ExactBuffer const data(std::string(shift, '?') + bytes);
        ExactBuffer room(std::string(shift + 3 * bytes.size(), '?'));
        char * const end =
            GetParam().coders->encode(data.data() + shift, bytes.size(), room.data() + shift);
        ASSERT_EQ(std::string(room.data() + shift, end), referenceUrlEncode(bytes));
        ASSERT_EQ(std::string_view(room.data(), shift), std::string(shift, '?'));
    }

    static void expectDecodingOfTheModel(std::string const & text, std::size_t shift = 0) {
        ExactBuffer const data(std::string(shift, '%') + text);
        ExactBuffer room(std::string(shift + text.size(), '?'));
        PercentDecoded const decoded =
            GetParam().coders->decode(data.data() + shift, text.size(), room.data() + shift);
        DecodedUrl const expected = referenceUrlDecode(text);
        ASSERT_EQ(std::string(room.data() + shift, decoded.end), expected.bytes) << text;
        ASSERT_EQ(decoded.read, expected.failure ? expected.failure->position : text.size())
            << text;
        ASSERT_EQ(std::string_view(room.data(), shift), std::string(shift, '?'));
    }

    /// Bytes of which about one in `every` is none that is copied.
    static std::string bytesWithEscapes(std::mt19937 & random, std::size_t size,
                                        unsigned long every) {
        constexpr std::string_view COPIED = "abcXYZ019-_.~ +";
        std::string bytes(size, '\0');
        for (char & byte : bytes) {
            byte = random() % every == 0 ? static_cast<char>(random())
                                         : COPIED[random() % COPIED.size()];
        }
        return bytes;
    }

    /// Text of which about one character in `every` is a sequence.
    static std::string textWithSequences(std::mt19937 & random, std::size_t size,
                                         unsigned long every) {
        constexpr std::string_view DIGITS = "0123456789abcdefABCDEFgzGZ";
        std::string text;
        while (text.size() < size) {
            if (random() % every == 0) {
                text += {'%', DIGITS[random() % DIGITS.size()], DIGITS[random() % DIGITS.size()]};
            } else {
                text += "aZ0+-\x80\xFF\0"sv[random() % 8];
            }
        }
        return text;
    }
};

TEST_P(PercentCodersTest, EncodeAsTheModelAtEveryLength) {
    std::mt19937 random(20270);
    for (std::size_t size = 0; size <= 200; ++size) {
        for (unsigned long const every : {1UL, 2UL, 4UL, 10UL, 100UL}) {
            expectEncodingOfTheModel(bytesWithEscapes(random, size, every), size % 37);
        }
        expectEncodingOfTheModel(std::string(size, 'a'));
        expectEncodingOfTheModel(std::string(size, '\xE3'));
        expectEncodingOfTheModel(std::string(size, ' '));
    }
}

TEST_P(PercentCodersTest, EncodeEveryByteInEveryPlace) {
    for (int byte = 0; byte < 256; ++byte) {
        for (std::size_t place = 0; place < 70; ++place) {
            std::string bytes(70, 'a');
            bytes[place] = static_cast<char>(byte);
            expectEncodingOfTheModel(bytes);
        }
    }
}

TEST_P(PercentCodersTest, EncodeWhereTheRoomIsTight) {
    // The more is escaped, the less room is left behind what was written.
    for (std::size_t size = 30; size <= 140; ++size) {
        for (std::size_t copied = 0; copied <= 8; ++copied) {
            for (std::size_t place = 0; place + copied <= size; place += 7) {
                std::string bytes(size, '%');
                bytes.replace(place, copied, copied, 'x');
                expectEncodingOfTheModel(bytes);
            }
        }
    }
}

TEST_P(PercentCodersTest, DecodeAsTheModelAtEveryLength) {
    std::mt19937 random(20271);
    for (std::size_t size = 0; size <= 200; ++size) {
        for (unsigned long const every : {1UL, 2UL, 4UL, 10UL, 100UL}) {
            std::string const text = textWithSequences(random, size, every);
            expectDecodingOfTheModel(text, size % 37);
            expectDecodingOfTheModel(text.substr(0, size), size % 29);  // may cut a sequence
        }
        expectDecodingOfTheModel(std::string(size, 'a'));
        expectDecodingOfTheModel(std::string(size, '+'));
        expectDecodingOfTheModel(std::string(size, '%'));
    }
}

TEST_P(PercentCodersTest, DecodeAsTheModelAroundASequenceAnywhere) {
    for (std::string const & middle :
         {"%41"s, "%zZ"s,  "%41%42"s,    "%4"s,    "%"s,    "%%41"s,  "%4%41"s,
          "%g:"s, "%:g"s,  "%/0"s,       "%0@"s,   "%`a"s,  "%a{"s,   "%[0"s,
          "%(0"s, "%0\0"s, "%\xC1\x41"s, "%41%4"s, "%41%"s, "+%2B+"s, "%2525"s}) {
        for (std::size_t before = 0; before <= 70; ++before) {
            for (std::size_t const behind : {0U, 1U, 2U, 3U, 30U, 31U, 32U, 33U, 64U}) {
                expectDecodingOfTheModel(std::string(before, 'a') + middle +
                                         std::string(behind, 'b'));
            }
        }
    }
}

TEST_P(PercentCodersTest, DecodeEveryPairOfDigits) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            std::string const sequence = {'%', static_cast<char>(first), static_cast<char>(second)};
            expectDecodingOfTheModel(std::string(20, 'a') + sequence + std::string(20, 'a'));
        }
    }
}

TEST_P(PercentCodersTest, DecodeAsTheModelWithABadByteAnywhere) {
    std::mt19937 random(20272);
    for (int round = 0; round < 3000; ++round) {
        std::string text = textWithSequences(random, 1 + random() % 150, 1 + random() % 6);
        text[random() % text.size()] = static_cast<char>(random());
        expectDecodingOfTheModel(text, random() % 64);
    }
}

std::string nameOf(::testing::TestParamInfo<Form> const & form) { return form.param.name; }

INSTANTIATE_TEST_SUITE_P(Forms, PercentCodersTest,
                         ::testing::Values(Form{"Plain", &tvk::detail::plainPercentCoders()},
                                           Form{"Avx2", tvk::detail::percentCodersWithAvx2()},
                                           Form{"Best", &tvk::detail::bestPercentCoders()}),
                         nameOf);

}  // namespace
