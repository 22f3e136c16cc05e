#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// TVK_TEXT_BLOCK_SSE2: every processor that this build is for has SSE2.
#if defined(__SSE2__) || defined(_M_X64)
#define TVK_TEXT_BLOCK_SSE2 1
#include <emmintrin.h>
#else
#define TVK_TEXT_BLOCK_SSE2 0
#endif

namespace tvk::detail {

/// The first byte becomes the lowest one of the number on every processor.
template <class Word>
Word loadWord(char const * text) {
    Word word;
    std::memcpy(&word, text, sizeof word);
    if constexpr (std::endian::native == std::endian::big) {
        Word turned = 0;
        for (std::size_t i = 0; i < sizeof word; ++i) {
            turned = static_cast<Word>(turned << 8 | (word >> (8 * i) & 0xFF));
        }
        word = turned;
    }
    return word;
}

/// Bytes of 0x80 and above in a JSON string: parts of characters that are known to be well formed,
/// or a text that is not UTF-8 yet.
enum class HighBytes { PLAIN, NEED_ATTENTION };

// Both forms of a block of sixteen bytes tell how many bytes stand before the first one that needs
// attention in a JSON string: quote, backslash, `slash`, which is the quote again where a slash is
// plain, what lies below 0x20, and perhaps what is 0x80 and above. A byte in all places of a block is
// a Pattern.

/// Two words: the form for every processor.
class WordBlock {
public:
    using Pattern = std::uint64_t;

    static constexpr std::size_t SIZE = 16;

    static Pattern patternOf(char byte) { return EACH_BYTE * static_cast<unsigned char>(byte); }

    explicit WordBlock(char const * text)
        : WordBlock(loadWord<std::uint64_t>(text), loadWord<std::uint64_t>(text + 8)) {}
    WordBlock(std::uint64_t first, std::uint64_t second) : first_(first), second_(second) {}

    template <HighBytes HIGH_BYTES>
    std::size_t plainBytes(Pattern const & slash) const {
        if (std::uint64_t const marks = attention<HIGH_BYTES>(first_, slash); marks != 0) {
            return bytesBelow(marks);
        }
        std::uint64_t const marks = attention<HIGH_BYTES>(second_, slash);
        return marks == 0 ? SIZE : SIZE / 2 + bytesBelow(marks);
    }

private:
    static constexpr std::uint64_t EACH_BYTE = 0x0101010101010101;
    static constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;

    /// The high bit of each byte that needs attention; above the first of them also of others.
    template <HighBytes HIGH_BYTES>
    static std::uint64_t attention(std::uint64_t word, Pattern slash) {
        auto const equals = [word](Pattern pattern) {
            std::uint64_t const difference = word ^ pattern;
            return (difference - EACH_BYTE) & ~difference;
        };
        std::uint64_t const control = (word - EACH_BYTE * 0x20) & ~word;
        std::uint64_t const high = HIGH_BYTES == HighBytes::PLAIN ? 0 : word;
        return (control | equals(patternOf('"')) | equals(patternOf('\\')) | equals(slash) | high) &
               HIGH_BITS;
    }

    static std::size_t bytesBelow(std::uint64_t marks) {
        return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
    }

    std::uint64_t first_;
    std::uint64_t second_;
};

#if TVK_TEXT_BLOCK_SSE2

/// One vector register.
class Sse2Block {
public:
    using Pattern = __m128i;

    static constexpr std::size_t SIZE = 16;

    static Pattern patternOf(char byte) { return _mm_set1_epi8(byte); }

    explicit Sse2Block(char const * text)
        : bytes_(_mm_loadu_si128(reinterpret_cast<__m128i const *>(text))) {}
    Sse2Block(std::uint64_t first, std::uint64_t second)
        : bytes_(_mm_set_epi64x(static_cast<long long>(second), static_cast<long long>(first))) {}

    template <HighBytes HIGH_BYTES>
    std::size_t plainBytes(Pattern const & slash) const {
        __m128i const special = _mm_or_si128(
            _mm_or_si128(equals(patternOf('"')), equals(patternOf('\\'))), equals(slash));
        __m128i const marks = _mm_or_si128(special, control<HIGH_BYTES>());
        return static_cast<std::size_t>(
            std::countr_zero(static_cast<unsigned int>(_mm_movemask_epi8(marks)) | 1U << SIZE));
    }

private:
    __m128i equals(__m128i pattern) const { return _mm_cmpeq_epi8(bytes_, pattern); }

    template <HighBytes HIGH_BYTES>
    __m128i control() const {
        if constexpr (HIGH_BYTES == HighBytes::PLAIN) {
            return _mm_cmpeq_epi8(_mm_min_epu8(bytes_, _mm_set1_epi8(0x1F)), bytes_);
        } else {
            // As signed bytes the high ones are below 0x20 too.
            return _mm_cmplt_epi8(bytes_, _mm_set1_epi8(0x20));
        }
    }

    __m128i bytes_;
};

using TextBlock = Sse2Block;

#else

using TextBlock = WordBlock;

#endif

}  // namespace tvk::detail
