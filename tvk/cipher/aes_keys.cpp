// The key functions of aes.h.

#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#include "tvk/cipher/aes.h"
#include "tvk/cipher/detail/AesRounds.h"
#include "tvk/cipher/detail/AesTables.h"

namespace {

using namespace tvk::detail;

constexpr std::uint32_t BLOCK_SIZE_FLAG = AES_BLOCK;

std::uint32_t substituted(std::uint32_t column) {
    return lookUp(AES_TABLES.encryptLast, column, column, column, column);
}

/// The key expansion of FIPS 197, 5.2, from a key of six or eight words. `put` gets each word of the schedule
/// with its index.
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

/// SubWord(RotWord(word)) of FIPS 197, 5.2, added to `sum`. The byte that takes two steps to come by is
/// added last: each word of a short key waits for the one before.
[[gnu::always_inline]] inline std::uint32_t plusSubstituted(std::uint32_t sum, std::uint32_t word) {
    AesTable const & table = AES_TABLES.encryptLast;
    std::uint32_t const outer = sum ^ table[3][word & 0xFF];
    std::uint32_t const inner = table[0][word >> 8 & 0xFF] ^ table[2][word >> 24];
    return outer ^ inner ^ table[1][word >> 16 & 0xFF];
}

// A key of four words is expanded by the last words of its groups alone. They are a sequence of their own:
//     last[k] = last[k - 4] + constant[k] + SubWord(RotWord(last[k - 1]))
// since what the words between add cancels out, and the others of a group are the sums
//     last[k] + last[k - 1],   last[k] + last[k - 2],   last[k] + last[k - 1] + last[k - 2] + last[k - 3].
// Of the three groups before the key only these words exist. InvMixColumns is linear, so the sums hold for
// words that have gone through it too: it takes one word a group instead of four.

constexpr std::size_t SHORT_KEY_ROUNDS = 10;

/// The last words of group -3 and on.
using LastWords = std::array<std::uint32_t, SHORT_KEY_ROUNDS + 4>;

/// The group whose last word is last[3].
[[gnu::always_inline]] inline void putGroup(std::uint32_t const * last, std::uint32_t * out) {
    out[3] = last[3];
    out[2] = last[3] ^ last[2];
    out[1] = last[3] ^ last[1];
    out[0] = out[1] ^ last[2] ^ last[0];
}

template <class Direction, std::size_t... INDICES>
void buildShortSchedule(unsigned char const * key, aes_ctx & ctx, std::index_sequence<INDICES...>) {
    AesState const words = loadBlock(key);
    LastWords last;
    LastWords middle;
    last[2] = words.c ^ words.d;
    last[1] = words.b ^ words.d;
    last[0] = words.a ^ words.b ^ last[2];
    last[3] = words.d;
    for (std::size_t i = 0; i < 4; ++i) {
        middle[i] = Direction::middleKeyWord(last[i]);
    }
    auto const addGroup = [&](std::size_t i) {
        last[i + 4] = plusSubstituted(last[i] ^ AES_TABLES.roundConstants[i], last[i + 3]);
        middle[i + 4] = Direction::middleKeyWord(last[i + 4]);
        putGroup(&(i + 1 < SHORT_KEY_ROUNDS ? middle : last)[i + 1], ctx.keySchedule + 4 * (i + 1));
    };
    (addGroup(INDICES), ...);
    ctx.roundCount = SHORT_KEY_ROUNDS;
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
            buildShortSchedule<Direction>(key, ctx, std::make_index_sequence<SHORT_KEY_ROUNDS>());
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

}  // namespace

std::uint16_t aes_enc_key(unsigned char const * key, unsigned int keyLength, aes_ctx * ctx) {
    return setKey<AesEncryption>(key, keyLength, *ctx);
}

std::uint16_t aes_dec_key(unsigned char const * key, unsigned int keyLength, aes_ctx * ctx) {
    return setKey<AesDecryption>(key, keyLength, *ctx);
}
