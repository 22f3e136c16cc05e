#include "tvk/cipher/detail/AesTables.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>

namespace tvk::test {

namespace {

using detail::AES_TABLES;
using detail::AesTable;

/// The product by one shift for each bit of a factor.
unsigned int product(unsigned int a, unsigned int b) {
    unsigned int sum = 0;
    for (unsigned int bit = 0; bit < 8; ++bit) {
        unsigned int shifted = a;
        for (unsigned int i = 0; i < bit; ++i) {
            shifted = shifted << 1 ^ (shifted >= 0x80 ? 0x11BU : 0);
        }
        sum ^= (b >> bit & 1) * shifted;
    }
    return sum;
}

/// By trying all bytes, and bit by bit as FIPS 197 has it.
unsigned int substitute(unsigned int byte) {
    unsigned int inverse = 0;
    for (unsigned int other = 1; other < 256; ++other) {
        if (product(byte, other) == 1) {
            inverse = other;
        }
    }
    unsigned int result = 0;
    for (unsigned int i = 0; i < 8; ++i) {
        unsigned int const bit = (inverse >> i) ^ (inverse >> (i + 4) % 8) ^
                                 (inverse >> (i + 5) % 8) ^ (inverse >> (i + 6) % 8) ^
                                 (inverse >> (i + 7) % 8) ^ (0x63U >> i);
        result |= (bit & 1) << i;
    }
    return result;
}

std::uint32_t column(unsigned int byte, unsigned int a, unsigned int b, unsigned int c,
                     unsigned int d) {
    return product(byte, a) | product(byte, b) << 8 | product(byte, c) << 16 |
           product(byte, d) << 24;
}

void expectEntry(AesTable const & table, unsigned int byte, std::uint32_t word) {
    for (int row = 0; row < 4; ++row) {
        EXPECT_EQ(table[static_cast<std::size_t>(row)][byte], std::rotl(word, 8 * row)) << byte;
    }
}

}  // namespace

TEST(AesTables, HoldTheSteps) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
        unsigned int const box = substitute(byte);
        expectEntry(AES_TABLES.encryptRound, byte, column(box, 2, 1, 1, 3));
        expectEntry(AES_TABLES.encryptLast, byte, box);
        expectEntry(AES_TABLES.decryptRound, box, column(byte, 14, 9, 13, 11));
        expectEntry(AES_TABLES.decryptLast, box, byte);
        expectEntry(AES_TABLES.inverseMix, byte, column(byte, 14, 9, 13, 11));
    }
}

TEST(AesTables, HaveTheSBoxOfFips197) {
    struct Entry {
        std::size_t byte;
        std::uint32_t substitute;
    };
    for (Entry const entry :
         {Entry{0x00, 0x63}, Entry{0x53, 0xED}, Entry{0x9A, 0xB8}, Entry{0xFF, 0x16}}) {
        EXPECT_EQ(AES_TABLES.encryptLast[0][entry.byte], entry.substitute);
        EXPECT_EQ(AES_TABLES.decryptLast[0][entry.substitute], entry.byte);
    }
}

TEST(AesTables, HaveThePowersOfTwoAsRoundConstants) {
    unsigned int power = 1;
    for (std::uint32_t const constant : AES_TABLES.roundConstants) {
        EXPECT_EQ(constant, power);
        power = product(power, 2);
    }
    EXPECT_EQ(AES_TABLES.roundConstants[9], 0x36U);
}

}  // namespace tvk::test
