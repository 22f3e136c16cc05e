#include "tvk/json/detail/Scan.h"
#include "tvk/platform/Processor.h"

#if TVK_PROCESSOR_X86

#include <smmintrin.h>

#include <bit>
#include <cstdint>
#include <cstring>

#include "tvk/json/JsonOptions.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/json/detail/HashPowers.h"
#include "tvk/json/detail/ScannerErrors.h"
#include "tvk/platform/TargetCode.h"

TVK_BEGIN_TARGET("sse4.1")

#include "tvk/json/detail/Scanner.h"

namespace tvk::detail {

namespace {

constexpr auto POWERS = powersOf<17>(HASH_FACTOR);
constexpr auto INVERSE_POWERS = powersOf<17>(inverseOf(HASH_FACTOR));

/// 16 bytes set and 16 clear: from 16 - n on, a mask of the first n bytes.
alignas(32) constexpr std::uint8_t PREFIX_MASKS[32] = {
    0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/// As PlainBlock, with 16 bytes in a vector register.
class Sse41Block {
public:
    static constexpr std::size_t SIZE = 16;

    explicit Sse41Block(char const * bytes)
        : bytes_(_mm_loadu_si128(reinterpret_cast<__m128i const *>(bytes))) {}

    void store(char * output) const {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(output), bytes_);
    }

    unsigned int plainPrefix() const {
        __m128i const quotes = _mm_cmpeq_epi8(bytes_, _mm_set1_epi8('"'));
        __m128i const backslashes = _mm_cmpeq_epi8(bytes_, _mm_set1_epi8('\\'));
        __m128i const nuls = _mm_cmpeq_epi8(bytes_, _mm_setzero_si128());
        __m128i const marks =
            _mm_or_si128(_mm_or_si128(quotes, backslashes), _mm_or_si128(nuls, bytes_));
        auto const mask = static_cast<unsigned int>(_mm_movemask_epi8(marks));
        return static_cast<unsigned int>(std::countr_zero(mask | 0x10000u));
    }

    unsigned int digitPrefix() const {
        // Moved so that the digits are the ten smallest signed values.
        __m128i const moved = _mm_add_epi8(bytes_, _mm_set1_epi8(static_cast<char>(0x80 - '0')));
        return prefixOf(_mm_cmpgt_epi8(_mm_set1_epi8(static_cast<char>(0x80 + 10)), moved));
    }

    unsigned int blankPrefix() const {
        return prefixOf(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(' ')));
    }

    /// One dot product with the powers of 33. The bytes behind the prefix are cleared, which leaves
    /// a power of 33 too many: it is taken out by the inverse.
    std::uint32_t folded(std::uint32_t hash, unsigned int count) const {
        __m128i const prefix = _mm_and_si128(
            bytes_,
            _mm_loadu_si128(reinterpret_cast<__m128i const *>(PREFIX_MASKS + SIZE - count)));
        __m128i const pairs = _mm_maddubs_epi16(_mm_set1_epi16(1 << 8 | 33), prefix);
        __m128i const quads = _mm_madd_epi16(pairs, _mm_set1_epi32(1 << 16 | 33 * 33));
        __m128i const products = _mm_mullo_epi32(
            quads, _mm_setr_epi32(static_cast<int>(POWERS[12]), static_cast<int>(POWERS[8]),
                                  static_cast<int>(POWERS[4]), 1));
        __m128i const halves = _mm_add_epi32(products, _mm_unpackhi_epi64(products, products));
        __m128i const sum = _mm_add_epi32(halves, _mm_shuffle_epi32(halves, 1));
        auto const dot = static_cast<std::uint32_t>(_mm_cvtsi128_si32(sum));
        return hash * POWERS[count] + dot * INVERSE_POWERS[SIZE - count];
    }

private:
    /// How many bytes are set before the first one that is clear.
    static unsigned int prefixOf(__m128i bytes) {
        return static_cast<unsigned int>(
            std::countr_one(static_cast<unsigned int>(_mm_movemask_epi8(bytes))));
    }

    __m128i bytes_;
};

struct Sse41Code {
    template <class Handler>
    static unsigned int scan(ScanEntry entry, char const * data, unsigned int length,
                             Handler & handler, int options) {
        return Scanner<Sse41Block, Handler>(data, length, handler, options).scan(entry);
    }
};

constexpr ScanVariant SSE41 = ScanVariant::of<Sse41Code>("SSE4.1");

}  // namespace

}  // namespace tvk::detail

TVK_END_TARGET

namespace tvk::detail {

ScanVariant const * scanVariantSse41() { return platform::hasSse41() ? &SSE41 : nullptr; }

}  // namespace tvk::detail

#else

namespace tvk::detail {

ScanVariant const * scanVariantSse41() { return nullptr; }

}  // namespace tvk::detail

#endif
