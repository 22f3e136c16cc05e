#include "tvk/text/detail/ByteEncoders.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tests/support/RandomBytes.h"
#include "tests/support/ReferenceBase64.h"

namespace {

using namespace tvk::test;
using tvk::detail::Base64Alphabet;
using tvk::detail::ByteEncoders;

struct Form {
    char const * name;
    ByteEncoders const * encoders;
    std::size_t fewestGroups;
    std::size_t fewestBytes;
};

struct Alphabet {
    Base64Alphabet characters;
    std::string_view lastTwo;
};

constexpr Alphabet ALPHABETS[] = {
    {{'+', '/'}, "+/"}, {{'-', '_'}, "-_"}, {{'\x01', '\x7F'}, "\x01\x7F"}};

std::string referenceHex(std::string_view bytes) {
    std::string text;
    for (char const byte : bytes) {
        text += "0123456789ABCDEF"[static_cast<unsigned char>(byte) >> 4];
        text += "0123456789ABCDEF"[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

/// What `encode` writes, with a block of the exact size for the result as for the data. `shift` moves
/// both away from round addresses, data towards the end of their blocks.
template <class Encode>
std::string encoded(std::string const & bytes, std::size_t length, std::size_t shift,
                    Encode encode) {
    ExactBuffer const data(std::string(shift, '?') + bytes);
    ExactBuffer text(std::string(shift + length, '?'));
    encode(reinterpret_cast<unsigned char const *>(data.data() + shift), text.data() + shift);
    EXPECT_EQ(std::string_view(text.data(), shift), std::string(shift, '?'));
    return {text.data() + shift, length};
}

class ByteEncodersTest : public ::testing::TestWithParam<Form> {
protected:
    void SetUp() override {
        if (GetParam().encoders == nullptr) {
            GTEST_SKIP() << "this processor does not have what the code needs";
        }
    }

    static void expectBase64OfTheModel(std::string const & bytes, std::size_t shift) {
        for (Alphabet const & alphabet : ALPHABETS) {
            std::size_t const groups = bytes.size() / 3;
            ASSERT_EQ(encoded(bytes, 4 * groups, shift,
                              [&](unsigned char const * data, char * out) {
                                  GetParam().encoders->base64(data, groups, alphabet.characters,
                                                              out);
                              }),
                      referenceBase64(bytes, alphabet.lastTwo))
                << groups << ' ' << shift;
        }
    }

    static void expectHexOfTheModel(std::string const & bytes, std::size_t shift) {
        ASSERT_EQ(encoded(bytes, 2 * bytes.size(), shift,
                          [&](unsigned char const * data, char * out) {
                              GetParam().encoders->hex(data, bytes.size(), out);
                          }),
                  referenceHex(bytes))
            << bytes.size() << ' ' << shift;
    }
};

TEST_P(ByteEncodersTest, AgreeWithTheModelOnRandomBytesOfEveryLength) {
    RandomBytes randomBytes(20263);
    for (std::size_t groups = GetParam().fewestGroups; groups <= 100; ++groups) {
        expectBase64OfTheModel(randomBytes(3 * groups), groups % 7);
    }
    for (std::size_t size = GetParam().fewestBytes; size <= 300; ++size) {
        expectHexOfTheModel(randomBytes(size), size % 7);
    }
}

TEST_P(ByteEncodersTest, TakeAnyAddress) {
    RandomBytes randomBytes(20264);
    for (std::size_t shift = 0; shift < 64; ++shift) {
        expectBase64OfTheModel(randomBytes(93), shift);
        expectHexOfTheModel(randomBytes(101), shift);
    }
}

TEST_P(ByteEncodersTest, KnowEveryIndexAndEveryByteInEveryPlace) {
    std::string indices;
    for (unsigned int index = 0; index < 64; ++index) {
        unsigned int const group =
            index << 18 | (index + 17) % 64 << 12 | (index + 34) % 64 << 6 | (index + 51) % 64;
        indices += {static_cast<char>(group >> 16), static_cast<char>(group >> 8),
                    static_cast<char>(group)};
    }
    std::string everyByte;
    for (int byte = 0; byte < 256; ++byte) {
        everyByte += static_cast<char>(byte);
    }
    for (std::size_t turn = 0; turn < 64; ++turn) {
        expectBase64OfTheModel(indices.substr(3 * turn) + indices.substr(0, 3 * turn), 0);
        expectHexOfTheModel(everyByte.substr(turn) + everyByte.substr(0, turn), 0);
    }
}

std::string nameOf(::testing::TestParamInfo<Form> const & form) { return form.param.name; }

constexpr std::size_t GROUPS = tvk::detail::FEWEST_VECTOR_GROUPS;
constexpr std::size_t BYTES = tvk::detail::FEWEST_VECTOR_BYTES;

INSTANTIATE_TEST_SUITE_P(
    Forms, ByteEncodersTest,
    ::testing::Values(Form{"Plain", &tvk::detail::plainByteEncoders(), 0, 0},
                      Form{"Sse41", tvk::detail::byteEncodersWithSse41(), GROUPS, BYTES},
                      Form{"Avx2", tvk::detail::byteEncodersWithAvx2(), GROUPS, BYTES},
                      Form{"Best", &tvk::detail::bestByteEncoders(), GROUPS, BYTES}),
    nameOf);

}  // namespace
