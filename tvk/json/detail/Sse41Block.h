#pragma once

// For a place between TVK_BEGIN_TARGET and TVK_END_TARGET, behind the headers that this includes.

#include <smmintrin.h>

#include <bit>
#include <cstdint>

#include "tvk/json/detail/HashPowers.h"

namespace tvk::detail {

namespace {

/// As PlainBlock, with 16 bytes in a vector register.
class Sse41Block {
public:
    static constexpr unsigned int SIZE = 16;

    explicit Sse41Block(char const * bytes)
        : bytes_(_mm_loadu_si128(reinterpret_cast<__m128i const *>(bytes))) {}

    explicit Sse41Block(__m128i bytes) : bytes_(bytes) {}

    void store(char * output) const {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(output), bytes_);
    }

    unsigned int plainPrefix() const {
        __m128i const quotes = _mm_cmpeq_epi8(bytes_, _mm_set1_epi8('"'));
        __m128i const backslashes = _mm_cmpeq_epi8(bytes_, _mm_set1_epi8('\\'));
        __m128i const nuls = _mm_cmpeq_epi8(bytes_, _mm_setzero_si128());
        __m128i const marks =
            _mm_or_si128(_mm_or_si128(quotes, backslashes), _mm_or_si128(nuls, bytes_));
        return static_cast<unsigned int>(std::countr_zero(maskOf(marks) | 0x10000u));
    }

    /// A bit for each digit.
    unsigned int digits() const {
        // Moved so that the digits are the ten smallest signed values.
        __m128i const moved = _mm_add_epi8(bytes_, _mm_set1_epi8(static_cast<char>(0x80 - '0')));
        return maskOf(_mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(0x80 + 10)), moved));
    }

    unsigned int digitPrefix() const {
        return static_cast<unsigned int>(std::countr_one(digits()));
    }

    unsigned int blankPrefix() const {
        return static_cast<unsigned int>(
            std::countr_one(maskOf(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(' ')))));
    }

    /// The hash with the first `count` bytes folded in: one dot product with the powers of 33. The
    /// bytes are moved to the end of the register, with zeros before them.
    std::uint32_t folded(std::uint32_t hash, unsigned int count) const {
        __m128i const places = _mm_loadu_si128(reinterpret_cast<__m128i const *>(PLACES + count));
        return hash * POWERS[count] + dotProduct(_mm_shuffle_epi8(bytes_, places));
    }

    /// With all of them.
    std::uint32_t folded(std::uint32_t hash) const {
        return hash * POWERS[SIZE] + dotProduct(bytes_);
    }

private:
    static constexpr auto POWERS = powersOf<SIZE + 1>(HASH_FACTOR);

    /// From n on, the places for n bytes that are to end a register; a high bit gives a zero.
    alignas(32) static constexpr std::uint8_t PLACES[2 * SIZE] = {
        0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
        0x80, 0x80, 0x80, 0x80, 0x80, 0,    1,    2,    3,    4,    5,
        6,    7,    8,    9,    10,   11,   12,   13,   14,   15};

    static std::uint32_t dotProduct(__m128i bytes) {
        // The bytes are the signed operand.
        __m128i const pairs = _mm_maddubs_epi16(_mm_set1_epi16(1 << 8 | 33), bytes);
        __m128i const quads = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 33 * 33));
        __m128i const products = _mm_mullo_epi32(
            quads, _mm_setr_epi32(static_cast<int>(POWERS[12]), static_cast<int>(POWERS[8]),
                                  static_cast<int>(POWERS[4]), 1));
        __m128i const halves = _mm_add_epi32(products, _mm_unpackhi_epi64(products, products));
        __m128i const sum = _mm_add_epi32(halves, _mm_shuffle_epi32(halves, 1));
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum));
    }

    static unsigned int maskOf(__m128i bytes) {
        return static_cast<unsigned int>(_mm_movemask_epi8(bytes));
    }

    __m128i bytes_;
};

}  // namespace

}  // namespace tvk::detail
