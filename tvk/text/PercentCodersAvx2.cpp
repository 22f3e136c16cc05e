// Built for AVX2 where the processor family has it; only percentCodersWithAvx2 leads here.

#include <cstring>

#include "tvk/platform/Processor.h"
#include "tvk/text/detail/PercentAlphabet.h"
#include "tvk/text/detail/PercentCoders.h"

#if TVK_PROCESSOR_X86

#include <immintrin.h>

namespace tvk::detail {

namespace {

constexpr std::size_t BLOCK = 32;
/// Shorter texts are not worth a block.
constexpr std::size_t FEWEST = 8;

__m256i load(char const * bytes) {
    return _mm256_loadu_si256(reinterpret_cast<__m256i const *>(bytes));
}

__m256i eachOf(int byte) { return _mm256_set1_epi8(static_cast<char>(byte)); }

/// A table of 16 bytes for both halves.
__m256i tableOf(void const * bytes) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<__m128i const *>(bytes)));
}

/// `yes` where all bits of `mask` are set, `no` where none is. Not by blending: g++ 12 takes the sign of plain
/// char for that of the mask, and so never blends where char is unsigned.
__m256i choose(__m256i mask, __m256i yes, __m256i no) {
    return _mm256_or_si256(_mm256_and_si256(mask, yes), _mm256_andnot_si256(mask, no));
}

unsigned int maskOf(__m256i bytes) {
    return static_cast<unsigned int>(_mm256_movemask_epi8(bytes));
}

/// The lowest `count` bits. Requires: less than 32.
unsigned int lowest(std::size_t count) { return (1U << count) - 1; }

unsigned int bitsIn(unsigned int mask) { return static_cast<unsigned int>(_mm_popcnt_u32(mask)); }

/// Room for a text that is too short to be read in blocks.
using ShortText = char[2 * BLOCK];

/// The block that ends with the text. A text of less than `fewest` bytes is copied, with zeros in front.
char const * lastBlock(char const * data, std::size_t size, std::size_t fewest, ShortText & copy) {
    if (size >= fewest) {
        return data + size - BLOCK;
    }
    std::memset(copy, 0, sizeof copy);
    std::memcpy(copy + sizeof copy - size, data, size);
    return copy + BLOCK;
}

/// Writes what the last block gives, `length` bytes behind `before` that were written already. Those are
/// written once more where there is the room for all that `write` touches; else it writes elsewhere.
template <std::size_t LONGEST, class Write>
char * writeLast(char * out, std::size_t before, std::size_t length, bool hasRoom, Write write) {
    if (hasRoom) {
        return write(out - before);
    }
    char room[LONGEST];
    write(room);
    std::memcpy(out, room + before, length);
    return out + length;
}

// --- Encoding ---

/// A byte is copied if the bits of its two halves have one in common.
struct CopiedBits {
    constexpr CopiedBits() {
        for (unsigned int byte = 0x20; byte < 0x80; ++byte) {
            if (byte == ' ' || isCopiedByPercentCoding(byte)) {
                unsigned int const bit = 1U << ((byte >> 4) - 2);
                high[byte >> 4] = static_cast<unsigned char>(bit);
                low[byte & 15] = static_cast<unsigned char>(low[byte & 15] | bit);
            }
        }
    }

    unsigned char high[16] = {};
    unsigned char low[16] = {};
};

constexpr CopiedBits COPIED_BITS;

constexpr unsigned int GROUP = 4;  // bytes that are written by one store

/// For each choice of bytes in a group that are escaped: which bytes of their texts are written. A text is four
/// bytes long, three of which are used.
struct GroupOrders {
    constexpr GroupOrders() {
        for (unsigned int escapes = 0; escapes < 16; ++escapes) {
            unsigned char length = 0;
            for (unsigned int byte = 0; byte < GROUP; ++byte) {
                unsigned int const used = (escapes >> byte & 1) != 0 ? 3 : 1;
                for (unsigned int i = 0; i < used; ++i) {
                    places[escapes][length++] = static_cast<unsigned char>(GROUP * byte + i);
                }
            }
            lengths[escapes] = length;
        }
    }

    alignas(16) unsigned char places[16][16] = {};
    unsigned char lengths[16] = {};
};

constexpr GroupOrders GROUP_ORDERS;

/// A block, and what becomes of it.
class EncodedBlock {
public:
    explicit EncodedBlock(__m256i bytes) {
        __m256i const halfMask = eachOf(15);
        high_ = _mm256_and_si256(_mm256_srli_epi16(bytes, 4), halfMask);
        low_ = _mm256_and_si256(bytes, halfMask);
        __m256i const bits = _mm256_and_si256(_mm256_shuffle_epi8(tableOf(COPIED_BITS.high), high_),
                                              _mm256_shuffle_epi8(tableOf(COPIED_BITS.low), low_));
        __m256i const escaped = _mm256_cmpeq_epi8(bits, _mm256_setzero_si256());
        __m256i const blank = _mm256_cmpeq_epi8(bytes, eachOf(' '));
        __m256i const copied = _mm256_add_epi8(bytes, _mm256_and_si256(blank, eachOf('+' - ' ')));
        first_ = choose(escaped, eachOf('%'), copied);
        escapes_ = maskOf(escaped);
    }

    /// A bit for each byte that is escaped.
    unsigned int escapes() const { return escapes_; }

    /// Writes its text, and up to GROUP_SLACK bytes behind what it returns the end of.
    char * write(char * out) const {
        if (escapes_ == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), first_);
            return out + BLOCK;
        }
        __m256i const seconds = _mm256_shuffle_epi8(tableOf(FIRST_PERCENT_DIGITS), high_);
        __m256i const thirds = _mm256_shuffle_epi8(tableOf(SECOND_PERCENT_DIGITS), low_);
        __m256i const lowHeads = _mm256_unpacklo_epi8(first_, seconds);
        __m256i const highHeads = _mm256_unpackhi_epi8(first_, seconds);
        __m256i const lowTails = _mm256_unpacklo_epi8(thirds, thirds);
        __m256i const highTails = _mm256_unpackhi_epi8(thirds, thirds);
        // Each has a group of either half of the block.
        __m256i const groups[] = {_mm256_unpacklo_epi16(lowHeads, lowTails),
                                  _mm256_unpackhi_epi16(lowHeads, lowTails),
                                  _mm256_unpacklo_epi16(highHeads, highTails),
                                  _mm256_unpackhi_epi16(highHeads, highTails)};
        unsigned int escapes = escapes_;
        for (__m256i const & group : groups) {
            out = writeGroup(_mm256_castsi256_si128(group), escapes & 15, out);
            escapes >>= GROUP;
        }
        for (__m256i const & group : groups) {
            out = writeGroup(_mm256_extracti128_si256(group, 1), escapes & 15, out);
            escapes >>= GROUP;
        }
        return out;
    }

private:
    static char * writeGroup(__m128i texts, unsigned int escapes, char * out) {
        __m128i const places =
            _mm_load_si128(reinterpret_cast<__m128i const *>(GROUP_ORDERS.places[escapes]));
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out), _mm_shuffle_epi8(texts, places));
        return out + GROUP_ORDERS.lengths[escapes];
    }

    __m256i high_;
    __m256i low_;
    __m256i first_;
    unsigned int escapes_;
};

/// Behind the last byte that a group writes may be this many that it touches.
constexpr std::size_t GROUP_SLACK = GROUP * GROUP - GROUP;

/// The last bytes of a text, of which there are at most BLOCK.
char * encodeTail(char const * data, std::size_t size, std::size_t done, char * out,
                  char const * roomEnd) {
    ShortText copy;
    EncodedBlock const block(load(lastBlock(data, size, BLOCK, copy)));
    std::size_t const passed = BLOCK - (size - done);
    std::size_t const before = passed + std::size_t{2} * bitsIn(block.escapes() & lowest(passed));
    std::size_t const length = BLOCK + std::size_t{2} * bitsIn(block.escapes()) - before;
    bool const hasRoom =
        size >= BLOCK && static_cast<std::size_t>(roomEnd - out) >= length + GROUP_SLACK;
    return writeLast<3 * BLOCK + GROUP_SLACK>(out, before, length, hasRoom,
                                              [&](char * place) { return block.write(place); });
}

char * encode(char const * data, std::size_t size, char * out) {
    if (size < FEWEST) {
        return plainPercentCoders().encode(data, size, out);
    }
    char const * const roomEnd = out + 3 * size;
    // Two bytes behind a block have the room for the slack.
    std::size_t done = 0;
    for (; size - done >= BLOCK + 2; done += BLOCK) {
        out = EncodedBlock(load(data + done)).write(out);
    }
    if (size - done > BLOCK) {
        out = plainPercentCoders().encode(data + done, 1, out);
        ++done;
    }
    return done < size ? encodeTail(data, size, done, out, roomEnd) : out;
}

// --- Decoding ---

constexpr unsigned int PART = 8;  // bytes that are closed up by one look-up

/// For each choice of bytes in a part that are kept: their places.
struct KeptPlaces {
    constexpr KeptPlaces() {
        for (unsigned int kept = 0; kept < 256; ++kept) {
            unsigned int count = 0;
            for (unsigned int byte = 0; byte < PART; ++byte) {
                if ((kept >> byte & 1) != 0) {
                    places[kept][count++] = static_cast<unsigned char>(byte);
                }
            }
        }
    }

    alignas(8) unsigned char places[256][PART] = {};
};

constexpr KeptPlaces KEPT_PLACES;

/// The values of digits of base 36, and which bytes are such.
struct Digits {
    explicit Digits(__m256i bytes) {
        __m256i const figures = _mm256_sub_epi8(bytes, eachOf('0'));
        __m256i const letters = _mm256_sub_epi8(_mm256_or_si256(bytes, eachOf(0x20)), eachOf('a'));
        __m256i const isFigure = _mm256_cmpeq_epi8(_mm256_min_epu8(figures, eachOf(9)), figures);
        __m256i const isLetter = _mm256_cmpeq_epi8(_mm256_min_epu8(letters, eachOf(25)), letters);
        valid = _mm256_or_si256(isFigure, isLetter);
        values = choose(isFigure, figures, _mm256_add_epi8(letters, eachOf(10)));
    }

    __m256i values;
    __m256i valid;
};

/// A block in which the byte of a sequence stands in place of its last digit. Whether sequences that begin in a
/// block end well is told by the block with their last digit.
class DecodedBlock {
public:
    /// Requires: two bytes before `text`.
    explicit DecodedBlock(char const * text)
        : DecodedBlock(load(text), load(text - 1), load(text - 2)) {}

    /// The first of a text.
    static DecodedBlock first(char const * text) {
        __m256i const bytes = load(text);
        __m256i const upwards = _mm256_permute2x128_si256(bytes, bytes, 0x08);
        return {bytes, _mm256_alignr_epi8(bytes, upwards, 15),
                _mm256_alignr_epi8(bytes, upwards, 14)};
    }

    bool isGood() const { return good_; }

    /// How many of the first `count` bytes are kept. Requires: less than BLOCK.
    unsigned int keptOf(std::size_t count) const { return bitsIn(kept_ & lowest(count)); }
    unsigned int kept() const { return bitsIn(kept_); }

    /// Writes what is kept, and up to PART bytes behind what it returns the end of unless that is all.
    char * write(char * out) const {
        if (kept_ == 0xFFFFFFFF) {
            _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), bytes_);
            return out + BLOCK;
        }
        __m128i const low = _mm256_castsi256_si128(bytes_);
        __m128i const high = _mm256_extracti128_si256(bytes_, 1);
        out = writePart(low, kept_ & 0xFF, out);
        out = writePart(_mm_unpackhi_epi64(low, low), kept_ >> 8 & 0xFF, out);
        out = writePart(high, kept_ >> 16 & 0xFF, out);
        return writePart(_mm_unpackhi_epi64(high, high), kept_ >> 24, out);
    }

private:
    DecodedBlock(__m256i bytes, __m256i oneBefore, __m256i twoBefore) {
        __m256i const percent = eachOf('%');
        __m256i const isPercent = _mm256_cmpeq_epi8(bytes, percent);
        __m256i const isFirst = _mm256_cmpeq_epi8(oneBefore, percent);
        __m256i const isSecond = _mm256_cmpeq_epi8(twoBefore, percent);
        Digits const firsts(oneBefore);
        Digits const seconds(bytes);
        __m256i const values = _mm256_add_epi8(
            _mm256_and_si256(_mm256_slli_epi16(firsts.values, 4), eachOf(0xF0)), seconds.values);
        __m256i const plus = _mm256_cmpeq_epi8(bytes, eachOf('+'));
        __m256i const copied = _mm256_sub_epi8(bytes, _mm256_and_si256(plus, eachOf('+' - ' ')));
        bytes_ = choose(isSecond, values, copied);
        kept_ = ~maskOf(_mm256_or_si256(isPercent, isFirst));
        good_ = _mm256_testc_si256(_mm256_and_si256(firsts.valid, seconds.valid), isSecond) != 0;
    }

    static char * writePart(__m128i bytes, unsigned int kept, char * out) {
        __m128i const places =
            _mm_loadl_epi64(reinterpret_cast<__m128i const *>(KEPT_PLACES.places[kept]));
        _mm_storel_epi64(reinterpret_cast<__m128i *>(out), _mm_shuffle_epi8(bytes, places));
        return out + bitsIn(kept);
    }

    __m256i bytes_;
    unsigned int kept_;
    bool good_;
};

/// Goes on behind `done` bytes of good blocks, byte by byte. A sequence that was open there is read from its start.
PercentDecoded decodeRest(char const * data, std::size_t size, std::size_t done, char * out) {
    if (done >= 2 && data[done - 2] == '%') {
        done -= 2;
    } else if (done >= 1 && data[done - 1] == '%') {
        done -= 1;
    }
    PercentDecoded const rest = plainPercentCoders().decode(data + done, size - done, out);
    return {done + rest.read, rest.end};
}

/// The last bytes of a text, of which there are less than BLOCK.
PercentDecoded decodeTail(char const * data, std::size_t size, std::size_t done, char * out,
                          char const * roomEnd) {
    constexpr std::size_t READ = BLOCK + 2;
    ShortText copy;
    DecodedBlock const block(lastBlock(data, size, READ, copy));
    if (!block.isGood()) {
        return decodeRest(data, size, done, out);
    }
    std::size_t const before = block.keptOf(BLOCK - (size - done));
    std::size_t const length = block.kept() - before;
    bool const hasRoom = size >= READ && static_cast<std::size_t>(roomEnd - out) >= length + PART;
    out = writeLast<BLOCK + PART>(out, before, length, hasRoom,
                                  [&](char * place) { return block.write(place); });
    return decodeRest(data, size, size, out);
}

PercentDecoded decode(char const * data, std::size_t size, char * out) {
    if (size < FEWEST) {
        return plainPercentCoders().decode(data, size, out);
    }
    char const * const roomEnd = out + size;
    std::size_t done = 0;
    while (size - done >= BLOCK) {
        DecodedBlock const block =
            done == 0 ? DecodedBlock::first(data) : DecodedBlock(data + done);
        if (!block.isGood()) {
            return decodeRest(data, size, done, out);
        }
        out = block.write(out);
        done += BLOCK;
    }
    return done < size ? decodeTail(data, size, done, out, roomEnd)
                       : decodeRest(data, size, done, out);
}

constexpr PercentCoders AVX2 = {encode, decode};

}  // namespace

PercentCoders const * percentCodersWithAvx2() { return platform::hasAvx2() ? &AVX2 : nullptr; }

}  // namespace tvk::detail

#endif
