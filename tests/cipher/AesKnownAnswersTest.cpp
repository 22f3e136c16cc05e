#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/AesBlock.h"
#include "tests/support/HexBytes.h"
#include "tvk/cipher/aes.h"

// The files of data/, whose README.md tells where they are from. A case is a paragraph of lines
// "NAME = value", below the heading [ENCRYPT] or [DECRYPT].

namespace tvk::test {

namespace {

struct Case {
    bool encrypts;
    std::string key, plain, sealed;
};

std::vector<Case> casesOf(std::string const & name) {
    std::ifstream file(std::string(TVK_AES_KNOWN_ANSWERS) + '/' + name + ".rsp");
    EXPECT_TRUE(file) << name;
    std::vector<Case> cases;
    std::map<std::string, std::string> fields;
    bool encrypts = true;
    auto const finish = [&] {
        if (!fields.empty()) {
            cases.push_back({encrypts, hexBytes(fields.at("KEY")), hexBytes(fields.at("PLAINTEXT")),
                             hexBytes(fields.at("CIPHERTEXT"))});
            fields.clear();
        }
    };
    for (std::string line; std::getline(file, line);) {
        std::size_t const sign = line.find(" = ");
        if (line.empty()) {
            finish();
        } else if (line[0] == '[') {
            encrypts = line == "[ENCRYPT]";
        } else if (line[0] != '#') {
            fields[line.substr(0, sign)] = line.substr(sign + 3);
        }
    }
    finish();
    return cases;
}

class Cipher {
public:
    Cipher(std::string_view key, bool encrypts) : run_(encrypts ? aes_enc_blk : aes_dec_blk) {
        auto const setKey = encrypts ? aes_enc_key : aes_dec_key;
        EXPECT_EQ(setKey(unsignedBytes(key), static_cast<unsigned int>(key.size()), &ctx_), 1);
    }

    AesBlock operator()(AesBlock const & block) const {
        AesBlock result{};
        EXPECT_EQ(run_(block.data(), result.data(), &ctx_), 1);
        return result;
    }

    std::string operator()(std::string_view blocks) const {
        std::string result;
        for (; !blocks.empty(); blocks.remove_prefix(16)) {
            result += bytesOf((*this)(blockOf(blocks)));
        }
        return result;
    }

private:
    aes_ctx ctx_{};
    decltype(&aes_enc_blk) run_;
};

struct File {
    char const * name;
    std::size_t cases[3];  ///< for keys of 128, 192 and 256 bits, both directions
};

constexpr char const * KEY_BITS[] = {"128", "192", "256"};

class AesKnownAnswers : public testing::TestWithParam<File> {};

}  // namespace

TEST_P(AesKnownAnswers, AreGiven) {
    for (std::size_t i = 0; i < 3; ++i) {
        std::string const name = std::string(GetParam().name) + KEY_BITS[i];
        SCOPED_TRACE(name);
        std::vector<Case> const cases = casesOf(name);
        EXPECT_EQ(cases.size(), GetParam().cases[i]);
        for (Case const & answer : cases) {
            Cipher const cipher(answer.key, answer.encrypts);
            std::string const & in = answer.encrypts ? answer.plain : answer.sealed;
            std::string const & out = answer.encrypts ? answer.sealed : answer.plain;
            ASSERT_EQ(cipher(in), out) << testing::PrintToString(answer.key);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(OfNist, AesKnownAnswers,
                         testing::Values(File{"ECBGFSbox", {14, 12, 10}},
                                         File{"ECBKeySbox", {42, 48, 32}},
                                         File{"ECBVarKey", {256, 384, 512}},
                                         File{"ECBVarTxt", {256, 256, 256}},
                                         File{"ECBMMT", {20, 20, 20}}),
                         [](auto const & row) { return std::string(row.param.name); });

// Each result is the last of 1000 blocks, each made from the one before. The next key is the sum of this
// one and as many of the last result bytes as it has.
TEST(AesMonteCarlo, IsGiven) {
    for (char const * const bits : KEY_BITS) {
        std::vector<Case> const cases = casesOf(std::string("ECBMCT") + bits);
        ASSERT_EQ(cases.size(), 200U);
        for (std::size_t count = 0; count < cases.size(); ++count) {
            SCOPED_TRACE(std::string(bits) + ' ' + std::to_string(count));
            Case const & answer = cases[count];
            Cipher const cipher(answer.key, answer.encrypts);
            AesBlock before{};
            AesBlock block = blockOf(answer.encrypts ? answer.plain : answer.sealed);
            for (int i = 0; i < 1000; ++i) {
                before = block;
                block = cipher(block);
            }
            ASSERT_EQ(bytesOf(block), answer.encrypts ? answer.sealed : answer.plain);

            if (count + 1 < cases.size() && cases[count + 1].encrypts == answer.encrypts) {
                std::string const results = bytesOf(before) + bytesOf(block);
                std::string nextKey = answer.key;
                for (std::size_t i = 0; i < nextKey.size(); ++i) {
                    nextKey[i] = static_cast<char>(nextKey[i] ^
                                                   results[results.size() - nextKey.size() + i]);
                }
                ASSERT_EQ(cases[count + 1].key, nextKey);
            }
        }
    }
}

}  // namespace tvk::test
