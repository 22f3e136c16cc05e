#pragma once

// For a place between TVK_BEGIN_TARGET and TVK_END_TARGET, behind the headers that this includes.

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "tvk/json/detail/HashPowers.h"
#include "tvk/json/detail/Sse41Block.h"

namespace tvk::detail {

namespace {

/// As Sse41Block, with 32 bytes.
class Avx2Block {
public:
    static constexpr unsigned int SIZE = 32;

    explicit Avx2Block(char const * bytes)
        : bytes_(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(bytes))) {}

    void store(char * output) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(output), bytes_);
    }

    unsigned int plainPrefix() const {
        __m256i const quotes = _mm256_cmpeq_epi8(bytes_, _mm256_set1_epi8('"'));
        __m256i const backslashes = _mm256_cmpeq_epi8(bytes_, _mm256_set1_epi8('\\'));
        __m256i const nuls = _mm256_cmpeq_epi8(bytes_, _mm256_setzero_si256());
        __m256i const marks =
            _mm256_or_si256(_mm256_or_si256(quotes, backslashes), _mm256_or_si256(nuls, bytes_));
        return static_cast<unsigned int>(std::countr_zero(maskOf(marks)));
    }

    std::uint32_t digits() const {
        __m256i const moved =
            _mm256_add_epi8(bytes_, _mm256_set1_epi8(static_cast<char>(0x80 - '0')));
        return maskOf(_mm256_cmpgt_epi8(_mm256_set1_epi8(static_cast<char>(0x80 + 10)), moved));
    }

    unsigned int digitPrefix() const {
        return static_cast<unsigned int>(std::countr_one(digits()));
    }

    unsigned int blankPrefix() const {
        return static_cast<unsigned int>(
            std::countr_one(maskOf(_mm256_cmpeq_epi8(bytes_, _mm256_set1_epi8(' ')))));
    }

    /// The bytes behind the prefix are cleared, which leaves powers of 33 too many: they are taken
    /// out by the inverse. Few bytes take the shorter way.
    std::uint32_t folded(std::uint32_t hash, unsigned int count) const {
        if (count <= Sse41Block::SIZE) {
            return Sse41Block(_mm256_castsi256_si128(bytes_)).folded(hash, count);
        }
        __m256i const prefix =
            _mm256_loadu_si256(reinterpret_cast<__m256i const *>(PREFIX_MASKS + SIZE - count));
        return hash * POWERS[count] +
               dotProduct(_mm256_and_si256(bytes_, prefix)) * INVERSE_POWERS[SIZE - count];
    }

    std::uint32_t folded(std::uint32_t hash) const {
        return hash * POWERS[SIZE] + dotProduct(bytes_);
    }

private:
    static constexpr auto POWERS = powersOf<SIZE + 1>(HASH_FACTOR);
    static constexpr auto INVERSE_POWERS = powersOf<SIZE + 1>(inverseOf(HASH_FACTOR));

    /// From SIZE - n on, a mask of the first n bytes.
    alignas(64) static constexpr std::uint8_t PREFIX_MASKS[2 * SIZE] = {
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

    static constexpr int power(int exponent) {
        return static_cast<int>(POWERS[static_cast<unsigned int>(exponent)]);
    }

    static std::uint32_t dotProduct(__m256i bytes) {
        __m256i const pairs = _mm256_maddubs_epi16(_mm256_set1_epi16(1 << 8 | 33), bytes);
        __m256i const quads = _mm256_madd_epi16(pairs, _mm256_set1_epi32(1 << 16 | 33 * 33));
        __m256i const products =
            _mm256_mullo_epi32(quads, _mm256_setr_epi32(power(28), power(24), power(20), power(16),
                                                        power(12), power(8), power(4), 1));
        __m128i const halves =
            _mm_add_epi32(_mm256_castsi256_si128(products), _mm256_extracti128_si256(products, 1));
        __m128i const quarters = _mm_add_epi32(halves, _mm_unpackhi_epi64(halves, halves));
        __m128i const sum = _mm_add_epi32(quarters, _mm_shuffle_epi32(quarters, 1));
        return static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum));
    }

    static std::uint32_t maskOf(__m256i bytes) {
        return static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes));
    }

    __m256i bytes_;
};

}  // namespace

}  // namespace tvk::detail
