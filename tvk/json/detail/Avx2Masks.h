#pragma once

// For a place between TVK_BEGIN_TARGET and TVK_END_TARGET, behind the headers that this includes.

#include <immintrin.h>

#include <bit>
#include <cstdint>

#include "tvk/json/detail/BitPlaces.h"
#include "tvk/platform/TargetCode.h"

namespace tvk::detail {

namespace {

/// 64 bytes of text in two registers. A mask has a bit for each byte, the first one's lowest.
class Avx2Masks {
public:
    explicit Avx2Masks(char const * bytes)
        : low_(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(bytes))),
          high_(_mm256_loadu_si256(reinterpret_cast<__m256i const *>(bytes + 32))) {}

    /// Nothing to look at twice: no NUL, no backslash and no byte of 0x80 and above.
    bool isSimple() const {
        __m256i const nuls =
            _mm256_cmpeq_epi8(_mm256_min_epu8(low_, high_), _mm256_setzero_si256());
        __m256i const backslash = _mm256_set1_epi8('\\');
        __m256i const backslashes = _mm256_or_si256(_mm256_cmpeq_epi8(low_, backslash),
                                                    _mm256_cmpeq_epi8(high_, backslash));
        return _mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(low_, high_),
                                                    _mm256_or_si256(nuls, backslashes))) == 0;
    }

    std::uint64_t equal(char byte) const {
        __m256i const wanted = _mm256_set1_epi8(byte);
        return mask(_mm256_cmpeq_epi8(low_, wanted), _mm256_cmpeq_epi8(high_, wanted));
    }

    /// With bit 5 of each byte set: brackets and braces look alike then.
    std::uint64_t equalFolded(char byte) const {
        __m256i const fold = _mm256_set1_epi8(0x20);
        __m256i const wanted = _mm256_set1_epi8(byte);
        return mask(_mm256_cmpeq_epi8(_mm256_or_si256(low_, fold), wanted),
                    _mm256_cmpeq_epi8(_mm256_or_si256(high_, fold), wanted));
    }

    std::uint64_t atLeast(unsigned char byte) const {
        __m256i const least = _mm256_set1_epi8(static_cast<char>(byte));
        return mask(_mm256_cmpeq_epi8(_mm256_max_epu8(low_, least), low_),
                    _mm256_cmpeq_epi8(_mm256_max_epu8(high_, least), high_));
    }

    /// Each byte is compared with the one that its lower half picks; one with the high bit set picks
    /// a zero, which it is not.
    std::uint64_t isAnyOf(char const (&byLowerHalf)[16]) const {
        __m256i const bytes = _mm256_broadcastsi128_si256(
            _mm_loadu_si128(reinterpret_cast<__m128i const *>(byLowerHalf)));
        return mask(_mm256_cmpeq_epi8(_mm256_shuffle_epi8(bytes, low_), low_),
                    _mm256_cmpeq_epi8(_mm256_shuffle_epi8(bytes, high_), high_));
    }

    /// Each bit is the sum, without carry, of the mask's bits up to it.
    static std::uint64_t prefixXor(std::uint64_t mask) {
        __m128i const ones = _mm_set1_epi32(-1);
        __m128i const product = _mm_clmulepi64_si128(
            _mm_loadl_epi64(reinterpret_cast<__m128i const *>(&mask)), ones, 0);
        std::uint64_t sums;
        _mm_storel_epi64(reinterpret_cast<__m128i *>(&sums), product);
        return sums;
    }

    /// Writes `base` plus the place of each bit and returns the end. Room: 8 more than the bits.
    static std::uint32_t * append(std::uint64_t mask, std::uint32_t base, std::uint32_t * output) {
        int const count = std::popcount(mask);
        if (count <= FEW) {
            for (int i = 0; i < FEW; ++i) {
                output[i] = base + static_cast<std::uint32_t>(std::countr_zero(mask));
                mask &= mask - 1;
            }
            return output + count;
        }
        __m256i start = _mm256_set1_epi32(static_cast<int>(base));
        __m256i step = _mm256_set1_epi32(8);
        TVK_AS_IF_UNKNOWN(step);  // else each sum of steps becomes a constant of its own
        for (int i = 0; i < 8; ++i) {
            auto const bits = static_cast<std::uint8_t>(mask >> (8 * i));
            __m256i const places = _mm256_cvtepu8_epi32(
                _mm_loadl_epi64(reinterpret_cast<__m128i const *>(BIT_PLACES[bits].data())));
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(output),
                                _mm256_add_epi32(start, places));
            output += std::popcount(bits);
            start = _mm256_add_epi32(start, step);
        }
        return output;
    }

private:
    static constexpr int FEW = 8;

    static std::uint64_t mask(__m256i low, __m256i high) {
        auto const lowMask = static_cast<std::uint32_t>(_mm256_movemask_epi8(low));
        auto const highMask = static_cast<std::uint32_t>(_mm256_movemask_epi8(high));
        return std::uint64_t{highMask} << 32 | lowMask;
    }

    __m256i low_;
    __m256i high_;
};

}  // namespace

}  // namespace tvk::detail
