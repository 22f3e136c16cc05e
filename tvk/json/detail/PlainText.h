#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tvk::detail {

/// Tells the bytes of a text that stand for themselves inside a JSON string from those that need
/// attention: quote, backslash, a slash that is to be escaped, what lies below 0x20, and 0x80 and
/// above. Eight bytes at a time.
class PlainText {
public:
    explicit PlainText(bool escapesSlash) : slash_(escapesSlash ? '/' : '"') {}

    /// Copies the bytes up to the first one that needs attention, and returns their number. Room:
    /// `length` bytes at `output`, of which those behind the result may change as well.
    std::size_t copy(char const * text, std::size_t length, char * output) const {
        std::size_t at = 0;
        for (; length - at >= 8; at += 8) {
            std::memcpy(output + at, text + at, 8);
            if (std::uint64_t const marks = attention(load<std::uint64_t>(text + at)); marks != 0) {
                return at + bytesBelow(marks);
            }
        }
        if (length - at >= 4) {
            constexpr std::uint64_t PLAIN_UPPER_HALF = 0x2020202000000000;
            std::memcpy(output + at, text + at, 4);
            std::uint64_t const word = load<std::uint32_t>(text + at) | PLAIN_UPPER_HALF;
            if (std::uint64_t const marks = attention(word); marks != 0) {
                return at + bytesBelow(marks);
            }
            at += 4;
        }
        for (; at < length && isPlain(text[at]); ++at) {
            output[at] = text[at];
        }
        return at;
    }

private:
    static constexpr std::uint64_t EACH_BYTE = 0x0101010101010101;
    static constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;

    /// The first byte becomes the lowest one on every processor.
    template <class Word>
    static Word load(char const * text) {
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

    /// The high bit of each byte that needs attention; above the first of them also of others.
    std::uint64_t attention(std::uint64_t word) const {
        auto const zeroBytes = [](std::uint64_t value) { return (value - EACH_BYTE) & ~value; };
        std::uint64_t const control = (word - EACH_BYTE * 0x20) & ~word;
        std::uint64_t const quote = zeroBytes(word ^ EACH_BYTE * '"');
        std::uint64_t const backslash = zeroBytes(word ^ EACH_BYTE * '\\');
        std::uint64_t const slash =
            zeroBytes(word ^ EACH_BYTE * static_cast<unsigned char>(slash_));
        return (control | quote | backslash | slash | word) & HIGH_BITS;
    }

    static std::size_t bytesBelow(std::uint64_t marks) {
        return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
    }

    bool isPlain(char character) const {
        return static_cast<unsigned char>(character) - 0x20u < 0x60 && character != '"' &&
               character != '\\' && character != slash_;
    }

    char slash_;  // the quote again where a slash is plain
};

}  // namespace tvk::detail
