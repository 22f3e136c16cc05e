#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "tvk/cipher/aes.h"
#include "tvk/cipher/detail/AesTables.h"

/// The rounds of AES on states in registers.
namespace tvk::detail {

constexpr std::size_t AES_BLOCK = 16;

/// The four columns of a block.
struct AesState {
    std::uint32_t a, b, c, d;

    friend AesState operator^(AesState const & x, AesState const & y) {
        return {x.a ^ y.a, x.b ^ y.b, x.c ^ y.c, x.d ^ y.d};
    }
};

/// The word as it stands in memory, bytes in little-endian order, and back.
constexpr std::uint32_t littleEndian(std::uint32_t word) {
    if constexpr (std::endian::native == std::endian::little) {
        return word;
    } else {
        return columnOf(static_cast<std::uint8_t>(word >> 24),
                        static_cast<std::uint8_t>(word >> 16), static_cast<std::uint8_t>(word >> 8),
                        static_cast<std::uint8_t>(word));
    }
}

inline std::uint32_t loadWord(unsigned char const * bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return littleEndian(word);
}

inline void storeWord(std::uint32_t word, unsigned char * bytes) {
    word = littleEndian(word);
    std::memcpy(bytes, &word, sizeof word);
}

inline AesState loadBlock(unsigned char const * bytes) {
    return {loadWord(bytes), loadWord(bytes + 4), loadWord(bytes + 8), loadWord(bytes + 12)};
}

inline void storeBlock(AesState const & state, unsigned char * bytes) {
    storeWord(state.a, bytes);
    storeWord(state.b, bytes + 4);
    storeWord(state.c, bytes + 8);
    storeWord(state.d, bytes + 12);
}

inline AesState roundKey(std::uint32_t const * keys) {
    return {keys[0], keys[1], keys[2], keys[3]};
}

/// A column of the next state: a byte of each column given, each through the table of its row.
inline std::uint32_t lookUp(AesTable const & table, std::uint32_t row0, std::uint32_t row1,
                            std::uint32_t row2, std::uint32_t row3) {
    return table[0][row0 & 0xFF] ^ table[1][row1 >> 8 & 0xFF] ^ table[2][row2 >> 16 & 0xFF] ^
           table[3][row3 >> 24];
}

/// The same with a word of the key added, in two sums of two look-ups: where each block waits for the one
/// before, that is a step less to wait for.
inline std::uint32_t lookUpInPairs(AesTable const & table, std::uint32_t key, std::uint32_t row0,
                                   std::uint32_t row1, std::uint32_t row2, std::uint32_t row3) {
    std::uint32_t const outer = key ^ table[3][row3 >> 24] ^ table[0][row0 & 0xFF];
    std::uint32_t const inner = table[2][row2 >> 16 & 0xFF] ^ table[1][row1 >> 8 & 0xFF];
    return outer ^ inner;
}

struct AesEncryption {
    static constexpr std::uint32_t FLAG = 1;
    static constexpr int NEXT_KEY = 4;
    static constexpr AesTable const & ROUND = AES_TABLES.encryptRound;
    static constexpr AesTable const & LAST = AES_TABLES.encryptLast;

    static std::uint32_t const * firstKey(aes_ctx const & ctx) { return ctx.keySchedule; }
    static std::uint32_t middleKeyWord(std::uint32_t word) { return word; }

    /// ShiftRows takes row n from n columns to the right.
    static AesState round(AesTable const & table, AesState const & s, std::uint32_t const * key) {
        return {lookUpInPairs(table, key[0], s.a, s.b, s.c, s.d),
                lookUpInPairs(table, key[1], s.b, s.c, s.d, s.a),
                lookUpInPairs(table, key[2], s.c, s.d, s.a, s.b),
                lookUpInPairs(table, key[3], s.d, s.a, s.b, s.c)};
    }
};

struct AesDecryption {
    static constexpr std::uint32_t FLAG = 2;
    static constexpr int NEXT_KEY = -4;
    static constexpr AesTable const & ROUND = AES_TABLES.decryptRound;
    static constexpr AesTable const & LAST = AES_TABLES.decryptLast;

    static std::uint32_t const * firstKey(aes_ctx const & ctx) {
        return ctx.keySchedule + 4 * std::size_t{ctx.roundCount};
    }
    /// The equivalent inverse cipher (FIPS 197, 5.3.5) has its keys between the first and the last one
    /// gone through InvMixColumns.
    static std::uint32_t middleKeyWord(std::uint32_t word) {
        return lookUp(AES_TABLES.inverseMix, word, word, word, word);
    }

    /// InvShiftRows takes row n from n columns to the left.
    static AesState round(AesTable const & table, AesState const & s, std::uint32_t const * key) {
        return {
            lookUp(table, s.a, s.d, s.c, s.b) ^ key[0], lookUp(table, s.b, s.a, s.d, s.c) ^ key[1],
            lookUp(table, s.c, s.b, s.a, s.d) ^ key[2], lookUp(table, s.d, s.c, s.b, s.a) ^ key[3]};
    }
};

/// Full rounds, one for each of the indices, with the keys behind `key`.
template <class Direction, int... INDICES, class... States>
[[gnu::always_inline]] inline std::uint32_t const * fullRounds(
    std::integer_sequence<int, INDICES...>, std::uint32_t const * key, States &... states) {
    auto const next = [&] {
        key += Direction::NEXT_KEY;
        ((states = Direction::round(Direction::ROUND, states, key)), ...);
    };
    ((static_cast<void>(INDICES), next()), ...);
    return key;
}

/// Takes blocks through all rounds, whatever the direction of the schedule. Several blocks go side
/// by side, so that the look-ups of one fill the time in which another waits for its own.
template <class Direction, class... States>
[[gnu::always_inline]] inline void runRounds(aes_ctx const & ctx, States &... states) {
    std::uint32_t const * key = Direction::firstKey(ctx);
    ((states = states ^ roundKey(key)), ...);
    switch (ctx.roundCount) {
        case 14:  // NOLINT(bugprone-branch-clone): runs into the next on purpose
            key = fullRounds<Direction>(std::make_integer_sequence<int, 2>(), key, states...);
            [[fallthrough]];
        case 12:
            key = fullRounds<Direction>(std::make_integer_sequence<int, 2>(), key, states...);
            [[fallthrough]];
        case 10:
            key = fullRounds<Direction>(std::make_integer_sequence<int, 9>(), key, states...);
            key += Direction::NEXT_KEY;
            ((states = Direction::round(Direction::LAST, states, key)), ...);
            break;
        default:
            break;
    }
}

}  // namespace tvk::detail
