#include "tvk/cipher/aes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/AesBlock.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/HexBytes.h"
#include "tests/support/OpenSslAes.h"
#include "tests/support/RandomBytes.h"

// Their linkage is C: declared with any other in the header, these would not compile.
extern "C" {
std::uint16_t aes_enc_key(unsigned char const *, unsigned int, aes_ctx *);
std::uint16_t aes_dec_key(unsigned char const *, unsigned int, aes_ctx *);
std::uint16_t aes_enc_blk(unsigned char const *, unsigned char *, aes_ctx const *);
std::uint16_t aes_dec_blk(unsigned char const *, unsigned char *, aes_ctx const *);
}

namespace tvk::test {

namespace {

static_assert(std::is_standard_layout_v<aes_ctx> && std::is_trivial_v<aes_ctx>);
static_assert(sizeof(aes_ctx) == 264);
static_assert(offsetof(aes_ctx, keySchedule) == 0);
static_assert(offsetof(aes_ctx, roundCount) == 256);
static_assert(offsetof(aes_ctx, blockFlags) == 260);

using KeyFunction = decltype(aes_enc_key);
using BlockFunctionPointer = decltype(&aes_enc_blk);

/// One direction of the cipher.
struct Direction {
    char const * name;
    KeyFunction * setKey;
    BlockFunctionPointer run;
    std::uint32_t flag;
};

constexpr Direction ENCRYPTION = {"encryption", aes_enc_key, aes_enc_blk, 1};
constexpr Direction DECRYPTION = {"decryption", aes_dec_key, aes_dec_blk, 2};
constexpr Direction DIRECTIONS[] = {ENCRYPTION, DECRYPTION};

constexpr std::size_t KEY_SIZES[] = {16, 24, 32};

unsigned char * unsignedRoom(ExactBuffer & buffer) {
    return reinterpret_cast<unsigned char *>(buffer.data());
}

std::uint16_t setKey(Direction const & direction, std::string_view key, aes_ctx * ctx) {
    ExactBuffer const exact(key);
    return direction.setKey(unsignedBytes({exact.data(), exact.size()}), exact.length(), ctx);
}

aes_ctx contextOf(Direction const & direction, std::string_view key) {
    aes_ctx ctx{};
    EXPECT_EQ(setKey(direction, key, &ctx), 1);
    return ctx;
}

/// From one buffer of the exact size into another.
std::string run(Direction const & direction, aes_ctx const & ctx, std::string_view block) {
    ExactBuffer const in(block);
    ExactBuffer out(std::string(16, '\xA5'));
    EXPECT_EQ(direction.run(unsignedBytes({in.data(), in.size()}), unsignedRoom(out), &ctx), 1);
    return std::string(out.data(), out.size());
}

/// A word as FIPS 197 prints it, its first byte highest.
std::uint32_t printed(std::uint32_t word) {
    return (word & 0xFF) << 24 | (word >> 8 & 0xFF) << 16 | (word >> 16 & 0xFF) << 8 | word >> 24;
}

/// The bytes of a round key as they meet those of a block.
AesBlock roundKeyOf(aes_ctx const & ctx, std::size_t index) {
    AesBlock key{};
    for (std::size_t i = 0; i < key.size(); ++i) {
        key[i] = static_cast<unsigned char>(ctx.keySchedule[4 * index + i / 4] >> (8 * (i % 4)));
    }
    return key;
}

/// The product of polynomials of 8 bits, then the remainder of the division by that of AES.
unsigned int fieldProduct(unsigned int a, unsigned int b) {
    unsigned int product = 0;
    for (unsigned int bit = 0; bit < 8; ++bit) {
        product ^= (b >> bit & 1) * (a << bit);
    }
    for (unsigned int bit = 15; bit >= 8; --bit) {
        product ^= (product >> bit & 1) * (0x11BU << (bit - 8));
    }
    return product;
}

/// InvMixColumns as FIPS 197 writes it out.
std::uint32_t inverseMixedColumn(std::uint32_t column) {
    constexpr unsigned int FACTORS[] = {14, 11, 13, 9};
    std::uint32_t mixed = 0;
    for (unsigned int row = 0; row < 4; ++row) {
        for (unsigned int other = 0; other < 4; ++other) {
            unsigned int const factor = FACTORS[(other + 4 - row) % 4];
            mixed ^= fieldProduct(column >> (8 * other) & 0xFF, factor) << (8 * row);
        }
    }
    return mixed;
}

struct Example {
    char const * name;
    char const * key;
    char const * plain;
    char const * sealed;
};

constexpr Example FIPS_197_EXAMPLES[] = {
    {"appendix B", "2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734",
     "3925841d02dc09fbdc118597196a0b32"},
    {"appendix C.1", "000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff",
     "69c4e0d86a7b0430d8cdb78070b4c55a"},
    {"appendix C.2", "000102030405060708090a0b0c0d0e0f1011121314151617",
     "00112233445566778899aabbccddeeff", "dda97ca4864cdfe06eaf70a0ec0d7191"},
    {"appendix C.3", "000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f",
     "00112233445566778899aabbccddeeff", "8ea2b7ca516745bfeafc49904b496089"},
};

}  // namespace

TEST(Aes, GivesTheExamplesOfFips197) {
    for (Example const & example : FIPS_197_EXAMPLES) {
        SCOPED_TRACE(example.name);
        std::string const key = hexBytes(example.key);
        std::string const plain = hexBytes(example.plain);
        std::string const sealed = hexBytes(example.sealed);
        EXPECT_EQ(run(ENCRYPTION, contextOf(ENCRYPTION, key), plain), sealed);
        EXPECT_EQ(run(DECRYPTION, contextOf(DECRYPTION, key), sealed), plain);
    }
}

TEST(Aes, AgreesWithOpenSslOnRandomKeysAndBlocks) {
    RandomBytes random(197);
    for (std::size_t const keySize : KEY_SIZES) {
        for (int keys = 0; keys < 60; ++keys) {
            std::string const key = random(keySize);
            OpenSslAes const peer(key);
            aes_ctx const encryption = contextOf(ENCRYPTION, key);
            aes_ctx const decryption = contextOf(DECRYPTION, key);
            for (int blocks = 0; blocks < 20; ++blocks) {
                std::string const block = random(16);
                ASSERT_EQ(run(ENCRYPTION, encryption, block),
                          bytesOf(peer.encrypt(blockOf(block))));
                ASSERT_EQ(run(DECRYPTION, decryption, block),
                          bytesOf(peer.decrypt(blockOf(block))));
            }
        }
    }
}

TEST(Aes, TellsRoundsAndDirectionInTheContext) {
    RandomBytes random(1);
    for (std::size_t const keySize : KEY_SIZES) {
        std::string const key = random(keySize);
        EXPECT_EQ(contextOf(ENCRYPTION, key).roundCount, keySize / 4 + 6);
        EXPECT_EQ(contextOf(DECRYPTION, key).roundCount, keySize / 4 + 6);
        EXPECT_EQ(contextOf(ENCRYPTION, key).blockFlags, 0x11U);
        EXPECT_EQ(contextOf(DECRYPTION, key).blockFlags, 0x12U);
    }
}

TEST(Aes, ExpandsTheKeysOfFips197) {
    aes_ctx const c128 = contextOf(ENCRYPTION, hexBytes("2b7e151628aed2a6abf7158809cf4f3c"));
    EXPECT_EQ(printed(c128.keySchedule[4]), 0xA0FAFE17U);
    EXPECT_EQ(printed(c128.keySchedule[43]), 0xB6630CA6U);
    aes_ctx const c192 =
        contextOf(ENCRYPTION, hexBytes("8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b"));
    EXPECT_EQ(printed(c192.keySchedule[6]), 0xFE0C91F7U);
    EXPECT_EQ(printed(c192.keySchedule[51]), 0x01002202U);
    aes_ctx const c256 = contextOf(
        ENCRYPTION, hexBytes("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4"));
    EXPECT_EQ(printed(c256.keySchedule[8]), 0x9BA35411U);
    EXPECT_EQ(printed(c256.keySchedule[59]), 0x706C631EU);
}

TEST(Aes, KeepsTheKeysOfDecryptionInTheOrderOfEncryption) {
    RandomBytes random(2);
    for (std::size_t const keySize : KEY_SIZES) {
        std::string const key = random(keySize);
        aes_ctx const encryption = contextOf(ENCRYPTION, key);
        aes_ctx const decryption = contextOf(DECRYPTION, key);
        std::size_t const last = 4 * encryption.roundCount;
        for (std::size_t i = 0; i < last + 4; ++i) {
            bool const isMiddle = i >= 4 && i < last;
            std::uint32_t const word = encryption.keySchedule[i];
            ASSERT_EQ(decryption.keySchedule[i], isMiddle ? inverseMixedColumn(word) : word) << i;
        }
    }
}

TEST(Aes, LeavesTheWordsBehindAScheduleAlone) {
    for (Direction const & direction : DIRECTIONS) {
        for (std::size_t const keySize : KEY_SIZES) {
            aes_ctx ctx;
            std::memset(&ctx, 0xA5, sizeof ctx);
            setKey(direction, std::string(keySize, 'k'), &ctx);
            for (std::size_t i = 4 * (ctx.roundCount + 1); i < 64; ++i) {
                ASSERT_EQ(ctx.keySchedule[i], 0xA5A5A5A5U) << keySize << ' ' << i;
            }
        }
    }
}

TEST(Aes, RefusesOtherKeyLengths) {
    RandomBytes random(3);
    std::string const key = random(16);  // no more than these are read
    ExactBuffer const exact(key);
    for (Direction const & direction : DIRECTIONS) {
        for (unsigned int const length :
             {0U,  1U,  4U,  8U,  10U, 12U,  14U,  15U,  17U,         20U,        23U,
              25U, 28U, 31U, 33U, 64U, 128U, 192U, 256U, 0x80000010U, 0xFFFFFFFFU}) {
            SCOPED_TRACE(length);
            aes_ctx ctx;
            std::memset(&ctx, 0xA5, sizeof ctx);
            EXPECT_EQ(direction.setKey(unsignedBytes({exact.data(), exact.size()}), length, &ctx),
                      0);
            EXPECT_EQ(ctx.roundCount, 0U);
            EXPECT_EQ(ctx.blockFlags, 16 + direction.flag);
            EXPECT_EQ(bytesOf(roundKeyOf(ctx, 0)), key);
            EXPECT_EQ(ctx.keySchedule[4], 0xA5A5A5A5U);
        }
    }
}

TEST(Aes, DeliberateARefusedKeyLeavesAContextThatWhitens) {
    std::string const key = hexBytes("000102030405060708090a0b0c0d0e0f");
    for (Direction const & direction : DIRECTIONS) {
        aes_ctx ctx{};
        EXPECT_EQ(direction.setKey(unsignedBytes(key), 20, &ctx), 0);
        EXPECT_EQ(run(direction, ctx, hexBytes("ffeeddccbbaa99887766554433221100")),
                  hexBytes("ffefdfcfbfaf9f8f7f6f5f4f3f2f1f0f"));
    }
}

TEST(Aes, OtherRoundCountsRunNoRound) {
    RandomBytes random(4);
    aes_ctx ctx = contextOf(ENCRYPTION, random(32));
    for (std::uint32_t & word : ctx.keySchedule) {
        std::memcpy(&word, random(4).data(), 4);
    }
    ctx.blockFlags = 0x13;
    std::string const block = random(16);
    for (std::uint32_t rounds = 0; rounds < 16; ++rounds) {
        SCOPED_TRACE(rounds);
        ctx.roundCount = rounds;
        std::string const whitened = bytesOf(blockOf(block) ^ roundKeyOf(ctx, 0));
        std::string const whitenedLast = bytesOf(blockOf(block) ^ roundKeyOf(ctx, rounds));
        bool const isCipher = rounds == 10 || rounds == 12 || rounds == 14;
        EXPECT_EQ(run(ENCRYPTION, ctx, block) == whitened, !isCipher);
        EXPECT_EQ(run(DECRYPTION, ctx, block) == whitenedLast, !isCipher);
    }
}

TEST(Aes, RefusesAContextOfTheOtherDirection) {
    RandomBytes random(5);
    std::string const key = random(16);
    std::string const block = random(16);
    auto const expectRefusal = [&](Direction const & direction, aes_ctx const & ctx) {
        ExactBuffer const in(block);
        ExactBuffer out(std::string(16, '\xA5'));
        EXPECT_EQ(direction.run(unsignedBytes({in.data(), in.size()}), unsignedRoom(out), &ctx), 0);
        EXPECT_EQ(std::string(out.data(), out.size()), std::string(16, '\xA5'));
    };
    expectRefusal(ENCRYPTION, contextOf(DECRYPTION, key));
    expectRefusal(DECRYPTION, contextOf(ENCRYPTION, key));
    expectRefusal(ENCRYPTION, aes_ctx{});
    expectRefusal(DECRYPTION, aes_ctx{});
}

TEST(Aes, AsksForOneBitOfTheFlags) {
    RandomBytes random(6);
    std::string const key = random(16);
    std::string const block = random(16);
    for (Direction const & direction : DIRECTIONS) {
        aes_ctx ctx = contextOf(direction, key);
        std::string const expected = run(direction, ctx, block);
        for (std::uint32_t const others : {0U, 3U, 0x13U, 0xFFFFFFFFU}) {
            ctx.blockFlags = others | direction.flag;
            EXPECT_EQ(run(direction, ctx, block), expected) << direction.name << ' ' << others;
            ctx.blockFlags = others & ~direction.flag;
            unsigned char out[16];
            EXPECT_EQ(direction.run(unsignedBytes(block), out, &ctx), 0) << direction.name;
        }
    }
}

TEST(Aes, TakesOverlappingBlocksAtAnyPlace) {
    RandomBytes random(7);
    for (Direction const & direction : DIRECTIONS) {
        for (std::size_t const keySize : KEY_SIZES) {
            aes_ctx const ctx = contextOf(direction, random(keySize));
            for (int shift = -15; shift <= 15; ++shift) {
                SCOPED_TRACE(shift);
                // The two blocks and nothing else, so that every start has its alignment too.
                auto const size = static_cast<std::size_t>(16 + std::abs(shift));
                auto const inPlace = static_cast<std::size_t>(std::max(-shift, 0));
                auto const outPlace = static_cast<std::size_t>(std::max(shift, 0));
                std::string const before = random(size);
                ExactBuffer memory(before);
                unsigned char * const bytes = unsignedRoom(memory);
                ASSERT_EQ(direction.run(bytes + inPlace, bytes + outPlace, &ctx), 1);

                std::string expected = before;
                expected.replace(outPlace, 16, run(direction, ctx, before.substr(inPlace, 16)));
                EXPECT_EQ(std::string(memory.data(), memory.size()), expected);
            }
        }
    }
}

TEST(Aes, TakesKeysAtAnyAlignment) {
    RandomBytes random(8);
    for (std::size_t place = 0; place < 8; ++place) {
        std::string const memory = random(place + 32);
        aes_ctx ctx{};
        ASSERT_EQ(aes_enc_key(unsignedBytes(memory) + place, 32, &ctx), 1);
        aes_ctx const expected = contextOf(ENCRYPTION, memory.substr(place));
        EXPECT_EQ(std::memcmp(&ctx, &expected, sizeof ctx), 0);
    }
}

TEST(Aes, AllocatesNothing) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "the allocation functions belong to somebody else";
    }
    std::string const key(16, 'k');
    unsigned char block[16] = {};
    AllocationCounter const counter;
    aes_ctx ctx{};
    aes_enc_key(unsignedBytes(key), 16, &ctx);
    aes_enc_blk(block, block, &ctx);
    aes_dec_key(unsignedBytes(key), 16, &ctx);
    aes_dec_blk(block, block, &ctx);
    EXPECT_EQ(counter.count(), 0);
}

}  // namespace tvk::test
