// The layouts byte by byte: with the generator in a known state, the random block is known too.

#include <gtest/gtest.h>

#include <string>

#include "tests/cipher/detail/KnownRandomBlocks.h"
#include "tests/support/AesBlock.h"
#include "tests/support/CipherFamily.h"
#include "tests/support/OpenSslAes.h"
#include "tests/support/RandomBlockModel.h"
#include "tests/support/RandomBytes.h"

namespace tvk::test {

namespace {

/// The cipher of a test's key, from both sides.
struct Ciphers {
    explicit Ciphers(std::string const & key)
        : encryption(encryptionContext(key)), decryption(decryptionContext(key)), peer_(key) {}

    BlockFunction encrypt() const {
        return [this](AesBlock const & block) { return peer_.encrypt(block); };
    }
    BlockFunction decrypt() const {
        return [this](AesBlock const & block) { return peer_.decrypt(block); };
    }

    aes_ctx encryption;
    aes_ctx decryption;

private:
    OpenSslAes peer_;
};

}  // namespace

TEST(AesBufferLayout, IsThatOfTheModelAtEveryLength) {
    RandomBytes random(1);
    setRandomBlockState(0x89ABCDEF, 0x01234567);
    RandomBlockModel generator(0x89ABCDEF, 0x01234567);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        for (std::size_t const keySize : {16U, 24U, 32U}) {
            Ciphers ciphers(random(keySize));
            for (std::size_t length = 0; length <= 300; ++length) {
                std::string const text = random(length);
                ASSERT_EQ(family.encrypt(text, ciphers.encryption),
                          family.modelEncrypt(ciphers.encrypt(), generator.next(), text))
                    << family.name << ' ' << keySize << ' ' << length;
            }
        }
    }
}

TEST(AesBufferLayout, OpensAnyBytesAsTheModelDoes) {
    RandomBytes random(2);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        for (std::size_t const keySize : {16U, 24U, 32U}) {
            Ciphers ciphers(random(keySize));
            for (std::size_t length = 16; length <= 316; ++length) {
                std::string const sealed = random(length);
                ASSERT_EQ(family.decrypt(sealed, ciphers.decryption),
                          family.modelDecrypt(ciphers.decrypt(), sealed))
                    << family.name << ' ' << keySize << ' ' << length;
            }
        }
    }
}

TEST(AesBufferLayout, DrawsOneBlockForEachText) {
    RandomBytes random(3);
    Ciphers ciphers(random(16));
    setRandomBlockState(1, 2);
    RandomBlockModel generator(1, 2);
    for (int round = 0; round < 3; ++round) {
        for (CipherFamily const & family : CIPHER_FAMILIES) {
            for (std::size_t const length : {0U, 100U}) {
                family.encrypt(std::string(length, 't'), ciphers.encryption);
                generator.next();
            }
        }
    }
    EXPECT_EQ(STEALING_FAMILY.encrypt(std::string(16, 't'), ciphers.encryption).substr(0, 16),
              bytesOf(generator.next()));
}

TEST(AesBufferLayout, DrawsNothingToDecrypt) {
    Ciphers ciphers(std::string(16, 'k'));
    setRandomBlockState(3, 4);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        family.decrypt(std::string(70, 's'), ciphers.decryption);
    }
    EXPECT_EQ(STEALING_FAMILY.encrypt(std::string(16, 't'), ciphers.encryption).substr(0, 16),
              bytesOf(RandomBlockModel(3, 4).next()));
}

}  // namespace tvk::test
