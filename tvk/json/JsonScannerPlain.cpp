#include <bit>
#include <cstdint>
#include <cstring>

#include "tvk/json/detail/Scanner.h"

namespace tvk::detail {

namespace {

/// Bytes of text that are looked at together, in a plain 64-bit word.
class PlainBlock {
public:
    static constexpr unsigned int SIZE = 8;

    explicit PlainBlock(char const * bytes) { std::memcpy(&word_, bytes, SIZE); }

    void store(char * output) const { std::memcpy(output, &word_, SIZE); }

    /// How many bytes come before the first one that needs attention: a quote, a backslash, a NUL
    /// or a byte of 0x80 and above.
    unsigned int plainPrefix() const {
        // The lowest marked byte is exact: a borrow only runs to higher ones.
        std::uint64_t const word = littleEndian();
        std::uint64_t const marks =
            (zeroBytes(word) | zeroBytes(word ^ QUOTES) | zeroBytes(word ^ BACKSLASHES) | word) &
            HIGH_BITS;
        return static_cast<unsigned int>(std::countr_zero(marks)) / 8;
    }

    /// How many bytes are digits before the first one that is none.
    unsigned int digitPrefix() const {
        // A digit has the high half 3 and keeps it when 6 is added; a carry only runs to higher ones.
        std::uint64_t const word = littleEndian();
        std::uint64_t const others = ((word ^ DIGITS) | ((word + 6 * ONES) ^ DIGITS)) & HIGH_HALVES;
        return static_cast<unsigned int>(std::countr_zero(others)) / 8;
    }

    /// How many bytes are blanks before the first one that is none.
    unsigned int blankPrefix() const {
        return static_cast<unsigned int>(std::countr_zero(littleEndian() ^ BLANKS)) / 8;
    }

    /// The hash with the first `count` bytes folded in.
    std::uint32_t folded(std::uint32_t hash, unsigned int count) const {
        signed char bytes[SIZE];
        std::memcpy(bytes, &word_, SIZE);
        for (unsigned int i = 0; i < count; ++i) {
            hash = hash * HASH_FACTOR + static_cast<std::uint32_t>(bytes[i]);
        }
        return hash;
    }

private:
    static constexpr std::uint64_t ONES = 0x0101010101010101;
    static constexpr std::uint64_t HIGH_BITS = 0x80 * ONES;
    static constexpr std::uint64_t QUOTES = '"' * ONES;
    static constexpr std::uint64_t BACKSLASHES = '\\' * ONES;

    static constexpr std::uint64_t HIGH_HALVES = 0xF0 * ONES;
    static constexpr std::uint64_t DIGITS = '0' * ONES;
    static constexpr std::uint64_t BLANKS = ' ' * ONES;

    static std::uint64_t zeroBytes(std::uint64_t word) { return (word - ONES) & ~word; }

    std::uint64_t littleEndian() const {
        if constexpr (std::endian::native == std::endian::little) {
            return word_;
        }
        std::uint64_t swapped = 0;
        for (unsigned int i = 0; i < SIZE; ++i) {
            swapped |= (word_ >> (8 * i) & 0xFF) << (56 - 8 * i);
        }
        return swapped;
    }

    std::uint64_t word_;
};

constexpr auto PLAIN = ScanVariant::of<CarefulCode<PlainBlock>>("plain");

}  // namespace

ScanVariant const * scanVariantPlain() { return &PLAIN; }

}  // namespace tvk::detail
