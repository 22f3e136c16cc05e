#pragma once

// For a place between TVK_BEGIN_TARGET and TVK_END_TARGET, behind the headers that this includes.

#include <immintrin.h>

#include <bit>
#include <cstdint>

namespace tvk::detail {

namespace {

/// As Avx2Masks, with 64 bytes in one register.
class Avx512Masks {
public:
    explicit Avx512Masks(char const * bytes) : bytes_(_mm512_loadu_si512(bytes)) {}

    bool isSimple() const {
        std::uint64_t const nuls = _mm512_testn_epi8_mask(bytes_, bytes_);
        return (nuls | equal('\\') | _mm512_movepi8_mask(bytes_)) == 0;
    }

    std::uint64_t equal(char byte) const {
        return _mm512_cmpeq_epi8_mask(bytes_, _mm512_set1_epi8(byte));
    }

    std::uint64_t equalFolded(char byte) const {
        return _mm512_cmpeq_epi8_mask(_mm512_or_si512(bytes_, _mm512_set1_epi8(0x20)),
                                      _mm512_set1_epi8(byte));
    }

    std::uint64_t atLeast(unsigned char byte) const {
        return _mm512_cmpge_epu8_mask(bytes_, _mm512_set1_epi8(static_cast<char>(byte)));
    }

    std::uint64_t isAnyOf(char const (&byLowerHalf)[16]) const {
        __m512i const bytes = _mm512_maskz_broadcast_i32x4(
            EACH, _mm_loadu_si128(reinterpret_cast<__m128i const *>(byLowerHalf)));
        return _mm512_cmpeq_epi8_mask(_mm512_shuffle_epi8(bytes, bytes_), bytes_);
    }

    static std::uint64_t prefixXor(std::uint64_t mask) {
        __m128i const product = _mm_clmulepi64_si128(
            _mm_loadl_epi64(reinterpret_cast<__m128i const *>(&mask)), _mm_set1_epi32(-1), 0);
        std::uint64_t sums;
        _mm_storel_epi64(reinterpret_cast<__m128i *>(&sums), product);
        return sums;
    }

    /// Writes `base` plus the place of each bit and returns the end. Room: 16 more than the bits.
    static std::uint32_t * append(std::uint64_t mask, std::uint32_t base, std::uint32_t * output) {
        std::uint32_t * const end = output + std::popcount(mask);
        __m512i const all = _mm512_loadu_si512(PLACES);
        __m512i const start = _mm512_set1_epi32(static_cast<int>(base));
        alignas(64) std::uint8_t places[64];
        _mm512_storeu_si512(places, _mm512_maskz_compress_epi8(mask, all));
        std::uint8_t const * from = places;
        do {
            __m512i const some = _mm512_maskz_cvtepu8_epi32(
                EACH, _mm_loadu_si128(reinterpret_cast<__m128i const *>(from)));
            _mm512_storeu_si512(output, _mm512_add_epi32(start, some));
            from += 16;
            output += 16;
        } while (output < end);
        return end;
    }

private:
    // g++ 12 warns of its own forms without a mask.
    static constexpr __mmask16 EACH = 0xFFFF;

    alignas(64) static constexpr std::uint8_t PLACES[64] = {
        0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
        22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41, 42, 43,
        44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 63};

    __m512i bytes_;
};

}  // namespace

}  // namespace tvk::detail
