#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tvk/json/detail/TextBlock.h"
#include "tvk/platform/TextRoom.h"

namespace tvk::detail {

/// Copies bytes of a text that stand for themselves inside a JSON string, up to those that need
/// attention: quote, backslash, a slash that is to be escaped, what lies below 0x20, and, as
/// `HIGH_BYTES` says, 0x80 and above. Sixteen bytes at a time; nothing behind the text is read.
template <HighBytes HIGH_BYTES, class Block = TextBlock>
class PlainBytes {
public:
    explicit PlainBytes(bool escapesSlash) : slash_(Block::patternOf(escapesSlash ? '/' : '"')) {}

    /// Copies the bytes up to the first one that needs attention, and returns their number. Room:
    /// `length` bytes at `output`, of which those behind the result may change as well.
    std::size_t copy(char const * text, std::size_t length, char * output) const {
        std::size_t at = 0;
        for (; length - at >= Block::SIZE; at += Block::SIZE) {
            std::memcpy(output + at, text + at, Block::SIZE);
            std::size_t const plain = plainBytes(Block(text + at));
            if (plain != Block::SIZE) {
                return at + plain;
            }
        }
        return at + copyShort(text + at, length - at, output + at);
    }

    /// False, with any bytes in the room, where one of them needs attention.
    bool copyAll(char const * text, std::size_t length, char * output) const {
        if (length < Block::SIZE) {
            return copyShort(text, length, output) == length;
        }
        std::size_t const last = length - Block::SIZE;
        for (std::size_t at = 0; at < last; at += Block::SIZE) {
            std::memcpy(output + at, text + at, Block::SIZE);
            if (plainBytes(Block(text + at)) != Block::SIZE) {
                return false;
            }
        }
        std::memcpy(output + last, text + last, Block::SIZE);
        return plainBytes(Block(text + last)) == Block::SIZE;
    }

    /// The same for up to a block of bytes at the start of a CString, which can be read beyond its
    /// end. Room: a block at `output`.
    bool copyStart(char const * text, std::size_t length, char * output) const {
        if (length >= platform::LONGER_TEXT) {
            std::memcpy(output, text, Block::SIZE);
            return plainBytes(Block(text)) >= length;
        }
        std::memcpy(output, text, sizeof(std::uint32_t));
        return plainBytes(Block(loadWord<std::uint32_t>(text), 0)) >= length;
    }

private:
    static constexpr std::uint64_t PLAIN = 0x2020202020202020;

    std::size_t plainBytes(Block const & block) const {
        return block.template plainBytes<HIGH_BYTES>(slash_);
    }

    /// copy() for less than a block: in two pieces that meet or overlap.
    std::size_t copyShort(char const * text, std::size_t length, char * output) const {
        if (length >= 8) {
            return copyEnds<std::uint64_t>(text, length, output);
        }
        if (length >= 4) {
            return copyEnds<std::uint32_t>(text, length, output);
        }
        return length == 0 ? 0 : copyUpTo3(text, length, output);
    }

    template <class Word>
    std::size_t copyEnds(char const * text, std::size_t length, char * output) const {
        constexpr std::size_t HALF = sizeof(Word);
        std::uint64_t const first = loadWord<Word>(text);
        std::uint64_t const last = loadWord<Word>(text + length - HALF);
        std::memcpy(output, text, HALF);
        std::memcpy(output + length - HALF, text + length - HALF, HALF);
        std::size_t plain;
        if constexpr (HALF == 8) {
            plain = plainBytes(Block(first, last));
        } else {
            plain = plainBytes(Block(first | last << 32, PLAIN));
        }
        return plain < HALF ? plain : plain < 2 * HALF ? length - 2 * HALF + plain : length;
    }

    /// The first byte, the one in the middle and the last one are all.
    std::size_t copyUpTo3(char const * text, std::size_t length, char * output) const {
        std::size_t const places[] = {0, length / 2, length - 1};
        std::uint64_t bytes = PLAIN << 24;
        for (std::size_t i = 0; i < 3; ++i) {
            char const byte = text[places[i]];
            output[places[i]] = byte;
            bytes |= std::uint64_t{static_cast<unsigned char>(byte)} << (8 * i);
        }
        std::size_t const plain = plainBytes(Block(bytes, PLAIN));
        return plain < 3 ? places[plain] : length;
    }

    typename Block::Pattern slash_;  // the quote again where a slash is plain
};

using PlainAscii = PlainBytes<HighBytes::NEED_ATTENTION>;
using PlainUtf8 = PlainBytes<HighBytes::PLAIN>;

}  // namespace tvk::detail
