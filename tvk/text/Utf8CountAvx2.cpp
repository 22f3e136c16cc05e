// Built for AVX2 where the processor family has it; only countRegularUtf8WithAvx2 leads here.

#include "tvk/platform/Processor.h"
#include "tvk/text/detail/Utf8Count.h"

#if TVK_PROCESSOR_X86

#include <immintrin.h>

#include "tvk/text/detail/Utf8BatchCount.h"

namespace tvk::detail {

namespace {

/// Two vector registers of 32 bytes.
class Avx2Batch {
public:
    static constexpr unsigned int SIZE = 64;

    explicit Avx2Batch(char const * bytes) : bytes_(bytes) {}

    bool isAscii() const {
        __m256i const any = _mm256_or_si256(vector(0), vector(32));
        return _mm256_movemask_epi8(any) == 0;
    }

    bool isRegular(unsigned int * trails) const {
        __m256i wrong = _mm256_setzero_si256();
        __m256i highest = _mm256_setzero_si256();
        __m256i trailCounts = _mm256_setzero_si256();
        for (int at = 0; at < static_cast<int>(SIZE); at += 32) {
            __m256i const here = vector(at);
            __m256i const trail = _mm256_cmpgt_epi8(bytesOf(0xC0), here);  // signed: 80 to BF
            __m256i const wanted = _mm256_or_si256(
                atLeast(0xC0, vector(at - 1)),
                _mm256_or_si256(atLeast(0xE0, vector(at - 2)), atLeast(0xF0, vector(at - 3))));
            __m256i const unwanted = _mm256_cmpeq_epi8(wanted, _mm256_setzero_si256());
            wrong = _mm256_or_si256(wrong, _mm256_cmpeq_epi8(trail, unwanted));
            highest = _mm256_max_epu8(highest, here);
            trailCounts = _mm256_sub_epi8(trailCounts, trail);
        }
        wrong = _mm256_or_si256(wrong, atLeast(0xF8, highest));
        *trails = sumOf(trailCounts);
        return _mm256_testz_si256(wrong, wrong) != 0;
    }

private:
    __m256i vector(int offset) const {
        return _mm256_loadu_si256(reinterpret_cast<__m256i const *>(bytes_ + offset));
    }

    static __m256i bytesOf(int value) { return _mm256_set1_epi8(static_cast<char>(value)); }

    /// Not zero where the byte is at least the limit.
    static __m256i atLeast(int limit, __m256i bytes) {
        return _mm256_subs_epu8(bytes, bytesOf(limit - 1));
    }

    static unsigned int sumOf(__m256i bytes) {
        __m256i const sums = _mm256_sad_epu8(bytes, _mm256_setzero_si256());
        __m128i const halves =
            _mm_add_epi64(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
        return static_cast<unsigned int>(_mm_extract_epi16(halves, 0) +
                                         _mm_extract_epi16(halves, 4));
    }

    char const * bytes_;
};

Utf8Run countRegularUtf8Avx2(char const * data, unsigned int length, unsigned int position) {
    return Utf8BatchCount<Avx2Batch>::count(data, length, position);
}

}  // namespace

CountRegularUtf8 countRegularUtf8WithAvx2() {
    return platform::hasAvx2() ? countRegularUtf8Avx2 : nullptr;
}

}  // namespace tvk::detail

#else

namespace tvk::detail {

CountRegularUtf8 countRegularUtf8WithAvx2() { return nullptr; }

}  // namespace tvk::detail

#endif
