// Built for SSE4.1 where the processor family has it; only byteEncodersWithSse41 leads here.

#include "tvk/platform/Processor.h"
#include "tvk/text/detail/ByteEncoders.h"

#if TVK_PROCESSOR_X86

#include <smmintrin.h>

namespace tvk::detail {

namespace {

__m128i load(void const * bytes) { return _mm_loadu_si128(static_cast<__m128i const *>(bytes)); }

void store(__m128i bytes, char * out) { _mm_storeu_si128(reinterpret_cast<__m128i *>(out), bytes); }

/// Four groups of base64: of each the bytes 1, 0, 2, 1 in a dword, so that each of the four indices lies
/// within a word.
__m128i base64Of(__m128i groups, __m128i distances) {
    // Factors shift: the first and third index down, to the low byte of their words, the others up.
    __m128i const low = _mm_mulhi_epu16(_mm_and_si128(groups, _mm_set1_epi32(0x0FC0FC00)),
                                        _mm_set1_epi32(0x04000040));
    __m128i const high = _mm_mullo_epi16(_mm_and_si128(groups, _mm_set1_epi32(0x003F03F0)),
                                         _mm_set1_epi32(0x01000010));
    __m128i const indices = _mm_or_si128(low, high);
    // 0 for the first 26 indices, 1 for the next, then one number for each.
    __m128i const places = _mm_sub_epi8(_mm_subs_epu8(indices, _mm_set1_epi8(51)),
                                        _mm_cmpgt_epi8(indices, _mm_set1_epi8(25)));
    return _mm_add_epi8(indices, _mm_shuffle_epi8(distances, places));
}

void encodeBase64(unsigned char const * data, std::size_t groups, Base64Alphabet const & alphabet,
                  char * out) {
    __m128i const distances = load(alphabet.distances);
    __m128i const inFront = _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10);
    __m128i const atEnd = _mm_setr_epi8(5, 4, 6, 5, 8, 7, 9, 8, 11, 10, 12, 11, 14, 13, 15, 14);
    auto const encode = [&](unsigned char const * bytes, __m128i order, std::size_t group) {
        store(base64Of(_mm_shuffle_epi8(load(bytes), order), distances), out + 4 * group);
    };
    // Of 16 bytes loaded 12 are used: at the start of the data the first, from there on the last.
    encode(data, inFront, 0);
    std::size_t const last = groups - 4;
    for (std::size_t group = 4; group < last; group += 4) {
        encode(data + 3 * group - 4, atEnd, group);
    }
    encode(data + 3 * last - 4, atEnd, last);
}

__m128i digitsOf(__m128i bytes) {
    return _mm_shuffle_epi8(load("0123456789ABCDEF"), _mm_and_si128(bytes, _mm_set1_epi8(15)));
}

void hexOf16(unsigned char const * data, char * out) {
    __m128i const bytes = load(data);
    __m128i const first = digitsOf(_mm_srli_epi16(bytes, 4));
    __m128i const second = digitsOf(bytes);
    store(_mm_unpacklo_epi8(first, second), out);
    store(_mm_unpackhi_epi8(first, second), out + 16);
}

void encodeHex(unsigned char const * data, std::size_t size, char * out) {
    std::size_t const last = size - 16;
    for (std::size_t at = 0; at < last; at += 16) {
        hexOf16(data + at, out + 2 * at);
    }
    hexOf16(data + last, out + 2 * last);
}

constexpr ByteEncoders SSE41 = {encodeBase64, encodeHex};

}  // namespace

ByteEncoders const * byteEncodersWithSse41() { return platform::hasSse41() ? &SSE41 : nullptr; }

}  // namespace tvk::detail

#endif
