// Built for AVX2 where the processor family has it; only byteEncodersWithAvx2 leads here.

#include "tvk/platform/Processor.h"
#include "tvk/text/detail/ByteEncoders.h"

#if TVK_PROCESSOR_X86

#include <immintrin.h>

namespace tvk::detail {

namespace {

__m128i load16(void const * bytes) { return _mm_loadu_si128(static_cast<__m128i const *>(bytes)); }

void store32(__m256i bytes, char * out) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), bytes);
}

/// A table for _mm256_shuffle_epi8, which looks up in each half apart.
__m256i tableOf(void const * bytes) { return _mm256_broadcastsi128_si256(load16(bytes)); }

/// Eight groups of base64: 24 bytes to 32 characters.
__m256i base64Of(unsigned char const * data, __m256i distances) {
    // A dword gets the bytes 1, 0, 2, 1 of its group: each of the four indices then lies within a word.
    __m256i const order = _mm256_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10,  //
                                           5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
    __m256i const halves =
        _mm256_inserti128_si256(_mm256_castsi128_si256(load16(data)), load16(data + 8), 1);
    __m256i const groups = _mm256_shuffle_epi8(halves, order);
    // Factors shift: the first and third index down, to the low byte of their words, the others up.
    __m256i const low = _mm256_mulhi_epu16(_mm256_and_si256(groups, _mm256_set1_epi32(0x0FC0FC00)),
                                           _mm256_set1_epi32(0x04000040));
    __m256i const high = _mm256_mullo_epi16(_mm256_and_si256(groups, _mm256_set1_epi32(0x003F03F0)),
                                            _mm256_set1_epi32(0x01000010));
    __m256i const indices = _mm256_or_si256(low, high);
    // 0 for the first 26 indices, 1 for the next, then one number for each.
    __m256i const places = _mm256_sub_epi8(_mm256_subs_epu8(indices, _mm256_set1_epi8(51)),
                                           _mm256_cmpgt_epi8(indices, _mm256_set1_epi8(25)));
    return _mm256_add_epi8(indices, _mm256_shuffle_epi8(distances, places));
}

void encodeBase64(unsigned char const * data, std::size_t groups, Base64Alphabet const & alphabet,
                  char * out) {
    __m256i const distances = tableOf(alphabet.distances);
    std::size_t const last = groups - FEWEST_VECTOR_GROUPS;
    for (std::size_t group = 0; group < last; group += FEWEST_VECTOR_GROUPS) {
        store32(base64Of(data + 3 * group, distances), out + 4 * group);
    }
    store32(base64Of(data + 3 * last, distances), out + 4 * last);
}

__m256i digits() { return tableOf("0123456789ABCDEF"); }

__m256i lowNibbles(__m256i bytes) { return _mm256_and_si256(bytes, _mm256_set1_epi8(15)); }

void hexOf16(unsigned char const * data, char * out) {
    __m256i const words = _mm256_cvtepu8_epi16(load16(data));
    __m256i const swapped =
        _mm256_or_si256(_mm256_srli_epi16(words, 4), _mm256_slli_epi16(words, 8));
    store32(_mm256_shuffle_epi8(digits(), lowNibbles(swapped)), out);
}

void hexOf32(unsigned char const * data, char * out) {
    // The unpacking takes the low halves of both lanes, then the high ones.
    __m256i const bytes = _mm256_permute4x64_epi64(
        _mm256_loadu_si256(reinterpret_cast<__m256i const *>(data)), _MM_SHUFFLE(3, 1, 2, 0));
    __m256i const first = _mm256_shuffle_epi8(digits(), lowNibbles(_mm256_srli_epi16(bytes, 4)));
    __m256i const second = _mm256_shuffle_epi8(digits(), lowNibbles(bytes));
    store32(_mm256_unpacklo_epi8(first, second), out);
    store32(_mm256_unpackhi_epi8(first, second), out + 32);
}

void encodeHex(unsigned char const * data, std::size_t size, char * out) {
    if (size < 32) {
        std::size_t const last = size - 16;
        hexOf16(data, out);
        hexOf16(data + last, out + 2 * last);
        return;
    }
    std::size_t const last = size - 32;
    for (std::size_t at = 0; at < last; at += 32) {
        hexOf32(data + at, out + 2 * at);
    }
    hexOf32(data + last, out + 2 * last);
}

constexpr ByteEncoders AVX2 = {encodeBase64, encodeHex};

}  // namespace

ByteEncoders const * byteEncodersWithAvx2() { return platform::hasAvx2() ? &AVX2 : nullptr; }

}  // namespace tvk::detail

#endif
