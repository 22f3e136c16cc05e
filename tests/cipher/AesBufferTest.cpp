#include "tvk/cipher/aes_buffer.h"

#include <gtest/gtest.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "tests/support/AesBlock.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/CipherFamily.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/HexBytes.h"
#include "tests/support/OpenSslAes.h"
#include "tests/support/RandomBytes.h"

// Their linkage is C: declared with any other in the header, these would not compile.
extern "C" {
int aes_encbuf(char const *, int, char *, aes_ctx *, int *);
int aes_decbuf(char const *, int, char *, aes_ctx *, int *);
char * aes_enc(char const *, int, char const *, int, int *);
char * aes_dec(char const *, int, char const *, int, int *);
int aes_encrypt_buf(void const *, int, void *, aes_ctx *);
int aes_decrypt_buf(void const *, int, void *, aes_ctx *);
}

namespace tvk::test {

namespace {

constexpr std::size_t KEY_SIZES[] = {16, 24, 32};

struct FreeText {
    void operator()(char * text) const { std::free(text); }
};

/// The result of aes_enc or aes_dec.
std::string allocated(decltype(aes_enc) function, std::string_view in, std::string_view key) {
    ExactBuffer const text(in);
    ExactBuffer const exactKey(key);
    int size = -1;
    std::unique_ptr<char, FreeText> const result(
        function(text.data(), static_cast<int>(text.size()), exactKey.data(),
                 static_cast<int>(key.size()), &size));
    EXPECT_NE(result, nullptr);
    return std::string(result.get(), static_cast<std::size_t>(size));
}

/// OpenSSL's chaining with ciphertext stealing in the same form, for texts of 16 bytes and more.
std::string openSslStealing(std::string_view key, std::string_view start, std::string_view text) {
    auto const name = "AES-" + std::to_string(8 * key.size()) + "-CBC-CTS";
    EVP_CIPHER * const cipher = EVP_CIPHER_fetch(nullptr, name.c_str(), nullptr);
    EVP_CIPHER_CTX * const context = EVP_CIPHER_CTX_new();
    std::string mode = "CS2";
    OSSL_PARAM const params[] = {
        OSSL_PARAM_construct_utf8_string(OSSL_CIPHER_PARAM_CTS_MODE, mode.data(), 0),
        OSSL_PARAM_construct_end()};
    std::string out(text.size(), '\0');
    int size = 0;
    EXPECT_EQ(
        EVP_EncryptInit_ex2(context, cipher, unsignedBytes(key), unsignedBytes(start), params), 1);
    EXPECT_EQ(EVP_EncryptUpdate(context, reinterpret_cast<unsigned char *>(out.data()), &size,
                                unsignedBytes(text), static_cast<int>(text.size())),
              1);
    EXPECT_EQ(size, static_cast<int>(out.size()));
    EVP_CIPHER_CTX_free(context);
    EVP_CIPHER_free(cipher);
    return out;
}

}  // namespace

TEST(AesBuffer, ComesBackAtEveryLength) {
    RandomBytes random(1);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        for (std::size_t const keySize : KEY_SIZES) {
            std::string const key = random(keySize);
            aes_ctx encryption = encryptionContext(key);
            aes_ctx decryption = decryptionContext(key);
            for (std::size_t length = 0; length <= 300; ++length) {
                std::string const text = random(length);
                std::string const sealed = family.encrypt(text, encryption);
                ASSERT_EQ(family.decrypt(sealed, decryption), text) << family.name << ' ' << length;
            }
        }
    }
}

TEST(AesBuffer, ComesBackWhenLong) {
    RandomBytes random(2);
    std::string const key = random(16);
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        for (std::size_t const length : {65536U, 65537U, 65551U, 100000U}) {
            std::string const text = random(length);
            ASSERT_EQ(family.decrypt(family.encrypt(text, encryption), decryption), text);
        }
    }
}

TEST(AesBuffer, SealsAnEmptyTextInOneBlock) {
    std::string const key(16, 'k');
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    char sealed[16];
    char nothing = 'x';
    int size = -1;
    EXPECT_EQ(aes_encbuf(nullptr, 0, sealed, &encryption, &size), 0);
    EXPECT_EQ(size, 16);
    EXPECT_EQ(aes_decbuf(sealed, 16, &nothing, &decryption, &size), 0);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(aes_encrypt_buf(nullptr, 0, sealed, &encryption), 16);
    EXPECT_EQ(aes_decrypt_buf(sealed, 16, &nothing, &decryption), 0);
    EXPECT_EQ(nothing, 'x');
}

TEST(AesBuffer, SealsATextDifferentlyEachTime) {
    aes_ctx encryption = encryptionContext(std::string(16, 'k'));
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        for (std::size_t const length : {0U, 1U, 15U, 16U, 17U, 64U}) {
            std::string const text(length, 't');
            EXPECT_NE(family.encrypt(text, encryption), family.encrypt(text, encryption)) << length;
        }
    }
}

TEST(AesBuffer, StealsAsOpenSslDoes) {
    RandomBytes random(3);
    for (std::size_t const keySize : KEY_SIZES) {
        std::string const key = random(keySize);
        aes_ctx encryption = encryptionContext(key);
        for (std::size_t length = 16; length <= 100; ++length) {
            std::string const text = random(length);
            std::string const sealed = STEALING_FAMILY.encrypt(text, encryption);
            std::string const start = sealed.substr(0, 16);
            ASSERT_EQ(sealed, start + openSslStealing(key, start, text)) << length;
        }
    }
}

struct StealingAnswer {
    char const * name;
    char const * key;
    char const * start;
    char const * sealed;
    char const * text;
};

// RFC 3962, appendix B, the lengths that are no whole blocks; the chaining block is the start there.
// NIST SP 800-38A, F.2.1.
constexpr StealingAnswer STEALING_ANSWERS[] = {
    {"RFC 3962, 17 bytes", "636869636b656e207465726979616b69", "00000000000000000000000000000000",
     "c6353568f2bf8cb4d8a580362da7ff7f97", "4920776f756c64206c696b652074686520"},
    {"RFC 3962, 31 bytes", "636869636b656e207465726979616b69", "00000000000000000000000000000000",
     "fc00783e0efdb2c1d445d4c8eff7ed2297687268d6ecccc0c07b25e25ecfe5",
     "4920776f756c64206c696b65207468652047656e6572616c20476175277320"},
    {"RFC 3962, 47 bytes", "636869636b656e207465726979616b69", "00000000000000000000000000000000",
     "97687268d6ecccc0c07b25e25ecfe584b3fffd940c16a18c1b5549d2f838029e"
     "39312523a78662d5be7fcbcc98ebf5",
     "4920776f756c64206c696b65207468652047656e6572616c2047617527732043"
     "6869636b656e2c20706c656173652c"},
    {"SP 800-38A, F.2.1", "2b7e151628aed2a6abf7158809cf4f3c", "000102030405060708090a0b0c0d0e0f",
     "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
     "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7",
     "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
     "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710"},
};

TEST(AesBuffer, OpensPublishedTextsWithStealing) {
    for (StealingAnswer const & answer : STEALING_ANSWERS) {
        aes_ctx decryption = decryptionContext(hexBytes(answer.key));
        EXPECT_EQ(
            STEALING_FAMILY.decrypt(hexBytes(answer.start) + hexBytes(answer.sealed), decryption),
            hexBytes(answer.text))
            << answer.name;
    }
}

TEST(AesBuffer, DeliberateWholeBlocksEndEncipheredTwice) {
    RandomBytes random(4);
    std::string const key = random(16);
    OpenSslAes const peer(key);
    aes_ctx encryption = encryptionContext(key);
    std::string const text = random(32);
    std::string const sealed = OVERLAPPED_FAMILY.encrypt(text, encryption);
    ASSERT_EQ(sealed.size(), 48U);
    AesBlock const first = blockOf(sealed.substr(16));
    EXPECT_EQ(first, peer.encrypt(peer.decrypt(blockOf(sealed)) ^ blockOf(text)));
    AesBlock const second = peer.encrypt(first ^ blockOf(text.substr(16)));
    EXPECT_EQ(sealed.substr(32), bytesOf(peer.encrypt(second)));
}

TEST(AesBuffer, DeliberateShortStealingShowsTheFrontOfItsRandomBlock) {
    RandomBytes random(5);
    std::string const key = random(16);
    OpenSslAes const peer(key);
    aes_ctx encryption = encryptionContext(key);
    for (std::size_t length = 0; length <= 16; ++length) {
        std::string const text = random(length);
        std::string const sealed = STEALING_FAMILY.encrypt(text, encryption);
        std::string const padded = text + std::string(16 - length, '\0');
        AesBlock const randomBlock = peer.decrypt(blockOf(sealed.substr(length))) ^ blockOf(padded);
        EXPECT_EQ(sealed.substr(0, length), bytesOf(randomBlock).substr(0, length)) << length;
    }
}

TEST(AesBuffer, NeitherLayoutReadsTheOther) {
    RandomBytes random(6);
    std::string const key = random(16);
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    for (std::size_t const length : {8U, 16U, 40U, 64U}) {
        std::string const text = random(length);
        EXPECT_NE(OVERLAPPED_FAMILY.decrypt(STEALING_FAMILY.encrypt(text, encryption), decryption),
                  text);
        EXPECT_NE(STEALING_FAMILY.decrypt(OVERLAPPED_FAMILY.encrypt(text, encryption), decryption),
                  text);
    }
}

TEST(AesBuffer, GivesGarbageForADamagedTextOrAnotherKey) {
    RandomBytes random(7);
    std::string const key = random(16);
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    aes_ctx otherDecryption = decryptionContext(random(16));
    std::string const text = random(40);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        std::string sealed = family.encrypt(text, encryption);
        EXPECT_NE(family.decrypt(sealed, otherDecryption), text);
        sealed[20] = static_cast<char>(sealed[20] ^ 1);
        EXPECT_NE(family.decrypt(sealed, decryption), text);
    }
}

TEST(AesBuffer, ReportsNoContextOfTheOtherDirection) {
    RandomBytes random(8);
    std::string const key = random(16);
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    for (CipherFamily const & family : CIPHER_FAMILIES) {
        for (std::size_t length = 0; length <= 70; ++length) {
            std::string const text = random(length);
            // No block is enciphered on either way, so what is left of the layouts cancels out.
            std::string const unsealed = family.encrypt(text, decryption);
            EXPECT_EQ(family.decrypt(unsealed, encryption), text) << family.name << ' ' << length;
        }
    }
}

TEST(AesBuffer, AllocatesItsResultOnRequest) {
    RandomBytes random(9);
    std::string const key = random(16);
    for (std::size_t length = 0; length <= 100; ++length) {
        std::string const text = random(length);
        std::string const sealed = allocated(aes_enc, text, key);
        ASSERT_EQ(sealed.size(), length + 16);
        EXPECT_EQ(allocated(aes_dec, sealed, key), text);
        aes_ctx decryption = decryptionContext(key);
        EXPECT_EQ(OVERLAPPED_FAMILY.decrypt(sealed, decryption), text);
    }
}

TEST(AesBuffer, FillsAShortKeyUp) {
    RandomBytes random(10);
    std::string const text = random(50);
    for (std::size_t size = 0; size <= 16; ++size) {
        std::string const key = random(size);
        std::string const filled = key + std::string(16 - size, '\x12');
        EXPECT_EQ(allocated(aes_dec, allocated(aes_enc, text, key), filled), text) << size;
        EXPECT_EQ(allocated(aes_dec, allocated(aes_enc, text, filled), key), text) << size;
        aes_ctx decryption = decryptionContext(filled);
        EXPECT_EQ(OVERLAPPED_FAMILY.decrypt(allocated(aes_enc, text, key), decryption), text)
            << size;
    }
}

TEST(AesBuffer, CutsALongKey) {
    RandomBytes random(11);
    std::string const text = random(50);
    std::string const key = random(16);
    for (std::size_t const more : {1U, 8U, 16U, 100U}) {
        std::string const longKey = key + random(more);
        EXPECT_EQ(allocated(aes_dec, allocated(aes_enc, text, longKey), key), text);
        EXPECT_EQ(allocated(aes_dec, allocated(aes_enc, text, key), longKey), text);
    }
}

TEST(AesBuffer, TakesNullForAnEmptyKeyAndText) {
    int size = -1;
    std::unique_ptr<char, FreeText> const sealed(aes_enc(nullptr, 0, nullptr, 0, &size));
    ASSERT_EQ(size, 16);
    EXPECT_EQ(allocated(aes_dec, {sealed.get(), 16}, ""), "");
}

TEST(AesBuffer, AllocatesNothingButThatResult) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "the allocation functions belong to somebody else";
    }
    std::string const key(16, 'k');
    aes_ctx encryption = encryptionContext(key);
    aes_ctx decryption = decryptionContext(key);
    char const text[50] = {};
    char sealed[66];
    char opened[50];
    int size = 0;
    AllocationCounter const none;
    aes_encbuf(text, 50, sealed, &encryption, &size);
    aes_decbuf(sealed, 66, opened, &decryption, &size);
    aes_encrypt_buf(text, 50, sealed, &encryption);
    aes_decrypt_buf(sealed, 66, opened, &decryption);
    EXPECT_EQ(none.count(), 0);

    AllocationCounter const one;
    std::unique_ptr<char, FreeText> const result(aes_enc(text, 50, key.data(), 16, &size));
    EXPECT_EQ(one.count(), 1);
}

TEST(AesBuffer, GivesNullWithoutMemory) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "the allocation functions belong to somebody else";
    }
    char const sealed[32] = {};
    int size = -1;
    AllocationFailure failure;
    char * const encrypted = aes_enc(sealed, 32, "key", 3, &size);
    char * const decrypted = aes_dec(sealed, 32, "key", 3, &size);
    failure.end();
    EXPECT_EQ(encrypted, nullptr);
    EXPECT_EQ(decrypted, nullptr);
    EXPECT_EQ(size, -1);
}

}  // namespace tvk::test
