#pragma once

#include <cstddef>
#include <cstdint>

#include "tvk/json/detail/TextBlock.h"

namespace tvk::detail {

/// Characters of at most four bytes, none of them overlong, a surrogate or beyond U+10FFFF: what a
/// conversion from the code page 65001 leaves as it is.
class WellFormedUtf8 {
public:
    static bool is(char const * text, std::size_t length) {
        auto const * at = reinterpret_cast<unsigned char const *>(text);
        auto const * const end = at + length;
        while (at != end) {
            at = behindAscii(at, end);
            at = behindPairs(at, end);
            if (at == end) {
                return true;
            }
            std::size_t const size = characterSize(at, end);
            if (size == 0) {
                return false;
            }
            at += size;
        }
        return true;
    }

private:
    using Bytes = unsigned char const *;

    static std::uint64_t wordAt(Bytes at) {
        return loadWord<std::uint64_t>(reinterpret_cast<char const *>(at));
    }

    static Bytes behindAscii(Bytes at, Bytes end) {
        constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;
        for (; end - at >= 8; at += 8) {
            if (std::uint64_t const high = wordAt(at) & HIGH_BITS; high != 0) {
                return at + std::countr_zero(high) / 8;
            }
        }
        while (at != end && *at < 0x80) {
            ++at;
        }
        return at;
    }

    /// Two characters of three bytes at a time, but for those whose first byte limits the second.
    static Bytes behindPairs(Bytes at, Bytes end) {
        constexpr std::uint64_t MASK = 0xC0C0F0C0C0F0;
        constexpr std::uint64_t SHAPE = 0x8080E08080E0;
        constexpr unsigned int LIMITING = 1U << 0x0 | 1U << 0xD;  // E0 and ED
        for (; end - at >= 8; at += 6) {
            std::uint64_t const word = wordAt(at);
            if ((word & MASK) != SHAPE || (LIMITING >> (word & 0xF) & 1) != 0 ||
                (LIMITING >> (word >> 24 & 0xF) & 1) != 0) {
                break;
            }
        }
        return at;
    }

    /// 0 where no character stands.
    static std::size_t characterSize(Bytes at, Bytes end) {
        unsigned int const lead = *at;
        if (lead < 0x80) {
            return 1;
        }
        if (lead < 0xC2 || lead > 0xF4) {
            return 0;
        }
        std::size_t const size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
        if (static_cast<std::size_t>(end - at) < size) {
            return 0;
        }
        // The second byte decides on overlong forms, surrogates and the end at U+10FFFF.
        unsigned int const lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        unsigned int const highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        if (at[1] < lowest || at[1] > highest) {
            return 0;
        }
        for (std::size_t i = 2; i < size; ++i) {
            if ((at[i] & 0xC0) != 0x80) {
                return 0;
            }
        }
        return size;
    }
};

}  // namespace tvk::detail
