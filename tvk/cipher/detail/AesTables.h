#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

/// The tables of AES, made by the compiler from the arithmetic of FIPS 197. A word holds a column of the
/// state, its first byte lowest.
namespace tvk::detail {

/// One table for each byte of a column: each is the one before with its words rotated by a byte.
using AesTable = std::array<std::array<std::uint32_t, 256>, 4>;

struct AesTables {
    AesTable encryptRound;  ///< SubBytes and MixColumns of a byte
    AesTable encryptLast;   ///< SubBytes alone
    AesTable decryptRound;  ///< InvSubBytes and InvMixColumns of a byte
    AesTable decryptLast;   ///< InvSubBytes alone
    AesTable inverseMix;    ///< InvMixColumns alone
    /// Powers of 2: as many as the longest key schedule of Rijndael takes. AES takes ten.
    std::array<std::uint32_t, 30> roundConstants;
};

/// The product of two bytes as polynomials modulo x^8 + x^4 + x^3 + x + 1 (FIPS 197, 4.2).
constexpr std::uint8_t fieldProduct(std::uint8_t a, std::uint8_t b) {
    unsigned int product = 0;
    unsigned int shifted = a;
    for (unsigned int bits = b; bits != 0; bits >>= 1) {
        product ^= (bits & 1) != 0 ? shifted : 0;
        shifted = (shifted << 1) ^ ((shifted & 0x80) != 0 ? 0x11BU : 0);
    }
    return static_cast<std::uint8_t>(product);
}

/// The S-box (FIPS 197, 5.1.1): the inverse in the field, and an affine step.
constexpr std::array<std::uint8_t, 256> makeSBox() {
    // 3 generates all bytes but 0, and F6 is its inverse: so the two walks meet each pair.
    std::array<std::uint8_t, 256> box{};
    std::uint8_t power = 1;
    std::uint8_t inverse = 1;
    for (int i = 0; i < 255; ++i) {
        box[power] =
            static_cast<std::uint8_t>(inverse ^ std::rotl(inverse, 1) ^ std::rotl(inverse, 2) ^
                                      std::rotl(inverse, 3) ^ std::rotl(inverse, 4) ^ 0x63);
        power = fieldProduct(power, 0x03);
        inverse = fieldProduct(inverse, 0xF6);
    }
    box[0] = 0x63;
    return box;
}

constexpr std::uint32_t columnOf(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d) {
    return a | static_cast<std::uint32_t>(b) << 8 | static_cast<std::uint32_t>(c) << 16 |
           static_cast<std::uint32_t>(d) << 24;
}

/// What a byte at the top of a column adds to MixColumns (FIPS 197, 5.1.3).
constexpr std::uint32_t mixedColumn(std::uint8_t byte) {
    return columnOf(fieldProduct(byte, 2), byte, byte, fieldProduct(byte, 3));
}

/// The same for InvMixColumns (FIPS 197, 5.3.3).
constexpr std::uint32_t inverseMixedColumn(std::uint8_t byte) {
    return columnOf(fieldProduct(byte, 14), fieldProduct(byte, 9), fieldProduct(byte, 13),
                    fieldProduct(byte, 11));
}

constexpr void setEntry(AesTable & table, std::size_t byte, std::uint32_t word) {
    for (std::size_t row = 0; row < table.size(); ++row) {
        table[row][byte] = std::rotl(word, static_cast<int>(8 * row));
    }
}

constexpr AesTables makeAesTables() {
    AesTables tables{};
    std::array<std::uint8_t, 256> const box = makeSBox();
    for (std::size_t i = 0; i < 256; ++i) {
        auto const byte = static_cast<std::uint8_t>(i);
        std::uint8_t const substitute = box[byte];
        setEntry(tables.encryptRound, byte, mixedColumn(substitute));
        setEntry(tables.encryptLast, byte, substitute);
        setEntry(tables.decryptRound, substitute, inverseMixedColumn(byte));
        setEntry(tables.decryptLast, substitute, byte);
        setEntry(tables.inverseMix, byte, inverseMixedColumn(byte));
    }
    std::uint8_t power = 1;
    for (std::uint32_t & constant : tables.roundConstants) {
        constant = power;
        power = fieldProduct(power, 2);
    }
    return tables;
}

alignas(64) inline constexpr AesTables AES_TABLES = makeAesTables();

/// Whether a table is one of four whose first has these words in front.
constexpr bool startsWith(AesTable const & table, std::uint32_t word0, std::uint32_t word1) {
    for (std::size_t row = 0; row < table.size(); ++row) {
        int const turn = static_cast<int>(8 * row);
        if (table[row][0] != std::rotl(word0, turn) || table[row][1] != std::rotl(word1, turn)) {
            return false;
        }
    }
    return true;
}

// The front of the tables as they are published.
static_assert(startsWith(AES_TABLES.encryptRound, 0xA56363C6, 0x847C7CF8));
static_assert(startsWith(AES_TABLES.encryptLast, 0x00000063, 0x0000007C));
static_assert(startsWith(AES_TABLES.decryptRound, 0x50A7F451, 0x5365417E));
static_assert(startsWith(AES_TABLES.decryptLast, 0x00000052, 0x00000009));
static_assert(startsWith(AES_TABLES.inverseMix, 0x00000000, 0x0B0D090E));
static_assert(AES_TABLES.roundConstants[0] == 1 && AES_TABLES.roundConstants[1] == 2);

}  // namespace tvk::detail
