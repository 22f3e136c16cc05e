#include "tvk/cipher/aes.h"

#include <array>
#include <bit>
#include <cstddef>

#include "tvk/cipher/detail/AesRounds.h"
#include "tvk/cipher/detail/AesTables.h"

namespace {

using namespace tvk::detail;

constexpr std::uint32_t BLOCK_SIZE_FLAG = AES_BLOCK;

std::uint32_t substituted(std::uint32_t column) {
    return lookUp(AES_TABLES.encryptLast, column, column, column, column);
}

/// The key expansion of FIPS 197, 5.2, from a key of four, six or eight words. `put` gets each word of the
/// schedule with its index.
template <std::size_t KEY_WORDS, class Put>
void expandKey(unsigned char const * key, Put put) {
    constexpr std::size_t WORDS = 4 * (KEY_WORDS + 7);
    std::array<std::uint32_t, KEY_WORDS> group;
    for (std::size_t i = 0; i < KEY_WORDS; ++i) {
        group[i] = loadWord(key + 4 * i);
        put(i, group[i]);
    }
    for (std::size_t first = KEY_WORDS; first < WORDS; first += KEY_WORDS) {
        // A word is the sum of those of the group before up to its place, and one look-up. Only the
        // look-up waits for the word before, so that the sums take no time.
        std::uint32_t lookedUp = substituted(std::rotr(group[KEY_WORDS - 1], 8));
        std::uint32_t sum = AES_TABLES.roundConstants[first / KEY_WORDS - 1];
        for (std::size_t i = 0; i < KEY_WORDS && first + i < WORDS; ++i) {
            if (KEY_WORDS == 8 && i == 4) {
                lookedUp = substituted(group[3]);
                sum = 0;
            }
            sum ^= group[i];
            group[i] = sum ^ lookedUp;
            put(first + i, group[i]);
        }
    }
}

/// The schedule as the block functions of the direction want it.
template <std::size_t KEY_WORDS, class Direction>
void buildSchedule(unsigned char const * key, aes_ctx & ctx) {
    constexpr std::size_t ROUNDS = KEY_WORDS + 6;
    expandKey<KEY_WORDS>(key, [&ctx](std::size_t index, std::uint32_t word) {
        bool const isMiddle = index >= 4 && index < 4 * ROUNDS;
        ctx.keySchedule[index] = isMiddle ? Direction::middleKeyWord(word) : word;
    });
    ctx.roundCount = ROUNDS;
}

template <class Direction>
std::uint16_t setKey(unsigned char const * key, unsigned int keyLength, aes_ctx & ctx) {
    ctx.blockFlags = BLOCK_SIZE_FLAG | Direction::FLAG;
    for (std::size_t i = 0; i < 4; ++i) {
        ctx.keySchedule[i] = loadWord(key + 4 * i);
    }
    switch (keyLength) {
        case 16:
            buildSchedule<4, Direction>(key, ctx);
            return 1;
        case 24:
            buildSchedule<6, Direction>(key, ctx);
            return 1;
        case 32:
            buildSchedule<8, Direction>(key, ctx);
            return 1;
        default:
            // Deliberate: the flags and the first words stay, so that the block functions take this
            // context, run no round and give back the input XORed with these words.
            ctx.roundCount = 0;
            return 0;
    }
}

template <class Direction>
std::uint16_t cipherBlock(unsigned char const * in, unsigned char * out, aes_ctx const & ctx) {
    if ((ctx.blockFlags & Direction::FLAG) == 0) {
        return 0;
    }
    AesState state = loadBlock(in);
    runRounds<Direction>(ctx, state);
    storeBlock(state, out);
    return 1;
}

}  // namespace

std::uint16_t aes_enc_key(unsigned char const * key, unsigned int keyLength, aes_ctx * ctx) {
    return setKey<AesEncryption>(key, keyLength, *ctx);
}

std::uint16_t aes_dec_key(unsigned char const * key, unsigned int keyLength, aes_ctx * ctx) {
    return setKey<AesDecryption>(key, keyLength, *ctx);
}

std::uint16_t aes_enc_blk(unsigned char const * in, unsigned char * out, aes_ctx const * ctx) {
    return cipherBlock<AesEncryption>(in, out, *ctx);
}

std::uint16_t aes_dec_blk(unsigned char const * in, unsigned char * out, aes_ctx const * ctx) {
    return cipherBlock<AesDecryption>(in, out, *ctx);
}
