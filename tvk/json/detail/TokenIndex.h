#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <utility>

#include "tvk/platform/TargetCode.h"

namespace tvk::detail {

/// The places in a text where tokens start and strings end, found by arithmetic on masks of 64 bytes
/// and made a window ahead of the scanner that reads it.
///
/// Masks:   64 bytes of text, see Avx2Masks.
/// Entries: ascending positions, of
///          - each quote that opens or closes a string, and each backslash inside one;
///          - outside of strings each bracket and the first byte of each number, word or other run;
///          - a comma or colon that does not stand right behind a token. The others are left out:
///            whoever looks behind a token sees them.
///          So the first entry at or behind the end of a token, or behind a comma or colon that was
///          left out, is the next byte that is no space.
/// Trust:   it ends for good before a block with a byte that only the careful scanner can judge: a
///          NUL, bytes of 0x80 and above that do not have the shape of UTF-8, or a character that is
///          written longer than needed. A text that may have comments or names without quotes must
///          not come here.
template <class Masks>
class TokenIndex {
public:
    /// Requires: length >= SHORTEST.
    TokenIndex(char const * data, unsigned int length) : data_(data), length_(length) {}

    static constexpr unsigned int SHORTEST = 64;

    /// The entries that are there.
    std::uint32_t const * begin() const { return entries_; }
    std::uint32_t const * end() const { return end_; }

    /// Drops the entries before `next`, which leaves no more than KEPT, and adds those of a window.
    /// Sets `next` to where that entry is now. False where the text or the trust ends.
    bool refill(std::uint32_t const ** next) {
        if (at_ == length_) {
            return false;
        }
        end_ = std::copy(*next, end(), entries_);
        *next = entries_;
        unsigned int const window = at_ + std::min(length_ - at_, WINDOW);
        while (window - at_ >= BLOCK && at_ != length_) {
            addBlock<false>(0);
        }
        if (window == length_ && at_ != length_) {
            addBlock<true>(BLOCK - (length_ - at_));
        }
        return true;
    }

private:
    static constexpr unsigned int BLOCK = 64;
    static constexpr unsigned int WINDOW = 1024;
    static constexpr unsigned int KEPT = 8;  // entries

    // By the lower half of a byte; 15 and 0 stand where there is none.
    static constexpr char SPACES[16] = {' ',  15,   15,   15, 15,   15,   15, 15,
                                        '\b', '\t', '\n', 15, '\f', '\r', 15, 0};
    static constexpr char SEPARATORS[16] = {15, 15, 15,  15, 15,  15, 15, 15,
                                            15, 15, ':', 15, ',', 15, 15, 0};

    /// The quotes that are no escaped ones, and the backslashes.
    struct Strings {
        std::uint64_t quotes;
        std::uint64_t backslashes;
    };

    /// What the bits before a block's lowest one would be.
    struct Before {
        std::uint64_t escaped = 0;    // 1 where the last backslash escapes the block's first byte
        std::uint64_t inString = 0;   // all ones inside a string
        std::uint64_t scalar = 0;     // 1 behind a byte of a number or word
        std::uint64_t separable = 1;  // 1 behind space, a separator or an opening bracket
        std::uint64_t trails = 0;     // the trail bytes of UTF-8 that are due
        std::uint64_t e0 = 0;         // 1 behind a byte E0
        std::uint64_t f0 = 0;         // 1 behind a byte F0
    };

    /// The next block. IS_LAST: it ends with the text, and `seen` bytes were in the one before.
    template <bool IS_LAST>
    TVK_INLINE void addBlock(unsigned int seen) {
        auto const shifted = [seen](std::uint64_t mask) { return IS_LAST ? mask >> seen : mask; };

        Masks const block(data_ + at_ - (IS_LAST ? seen : 0));
        Strings strings = {shifted(block.equal('"')), 0};
        if (!block.isSimple() || (before_.trails | before_.escaped) != 0) {
            if (!hasShapeOfText(at_ - seen, seen)) {
                length_ = at_;
                return;
            }
            strings = withEscapes(at_ - seen, seen);
        }
        std::uint64_t const quotes = strings.quotes;
        std::uint64_t const backslashes = strings.backslashes;
        std::uint64_t const spaces = shifted(block.isAnyOf(SPACES));
        std::uint64_t const separators = shifted(block.isAnyOf(SEPARATORS));
        std::uint64_t const openers = shifted(block.equalFolded('{'));
        std::uint64_t const closers = shifted(block.equalFolded('}'));

        std::uint64_t const inside = Masks::prefixXor(quotes) ^ before_.inString;
        before_.inString = 0 - (inside >> 63);

        std::uint64_t const separable = spaces | separators | openers;
        std::uint64_t const scalars = ~(quotes | separable | closers);
        std::uint64_t const starts = scalars & ~follows(scalars, &before_.scalar);
        std::uint64_t const odd = separators & follows(separable, &before_.separable);

        std::uint64_t entries =
            quotes | (backslashes & inside) | ((openers | closers | starts | odd) & ~inside);
        if (IS_LAST) {
            entries &= ~std::uint64_t{0} >> seen;
        }
        end_ = Masks::append(entries, at_, end_);
        at_ += BLOCK - (IS_LAST ? seen : 0);
    }

    /// The bytes behind those of the mask; `carry` is the lowest one before, and the next after.
    static std::uint64_t follows(std::uint64_t mask, std::uint64_t * carry) {
        std::uint64_t const behind = mask << 1 | *carry;
        *carry = mask >> 63;
        return behind;
    }

    TVK_NOINLINE Strings withEscapes(unsigned int start, unsigned int seen) {
        Masks const block(data_ + start);
        std::uint64_t const backslashes = block.equal('\\') >> seen;
        return {block.equal('"') >> seen & ~escapedBy(backslashes), backslashes};
    }

    /// The bytes behind an odd number of backslashes.
    std::uint64_t escapedBy(std::uint64_t backslashes) {
        constexpr std::uint64_t EVEN = 0x5555555555555555;
        std::uint64_t const first = before_.escaped;
        backslashes &= ~first;
        // A sum carries each run that starts at an even place to the place behind its end.
        std::uint64_t const starts = backslashes & ~(backslashes << 1);
        std::uint64_t const evenSum = backslashes + (starts & EVEN);
        std::uint64_t const oddSum = backslashes + (starts & ~EVEN);
        before_.escaped = oddSum < backslashes ? 1 : 0;
        return first | (((evenSum & ~EVEN) | (oddSum & EVEN)) & ~backslashes);
    }

    /// Whether there is no NUL, the trail bytes are just those that the lead bytes announce, and no
    /// character is written longer than needed or with more than four bytes.
    TVK_NOINLINE bool hasShapeOfText(unsigned int start, unsigned int seen) {
        Masks const block(data_ + start);
        auto const atLeast = [&](unsigned char byte) { return block.atLeast(byte) >> seen; };
        if (block.equal('\0') != 0) {
            return false;
        }
        std::uint64_t const high = atLeast(0x80);
        if ((high | before_.trails) == 0) {
            return true;
        }
        std::uint64_t const leads = atLeast(0xC0);
        std::uint64_t const longLeads = atLeast(0xE0);
        std::uint64_t const longestLeads = atLeast(0xF0);
        std::uint64_t const trails = high & ~leads;
        std::uint64_t const due = leads << 1 | longLeads << 2 | longestLeads << 3 | before_.trails;
        before_.trails = leads >> 63 | longLeads >> 62 | longestLeads >> 61;

        std::uint64_t const e0 = longLeads & ~atLeast(0xE1);
        std::uint64_t const f0 = longestLeads & ~atLeast(0xF1);
        std::uint64_t const overlong = (leads & ~atLeast(0xC2)) |
                                       (follows(e0, &before_.e0) & ~atLeast(0xA0)) |
                                       (follows(f0, &before_.f0) & ~atLeast(0x90));
        return ((trails ^ due) | overlong | atLeast(0xF8)) == 0;
    }

    char const * const data_;
    unsigned int length_;  // of what can be trusted
    unsigned int at_ = 0;  // the first byte that has not been looked at
    Before before_;
    std::uint32_t * end_ = entries_;
    std::uint32_t entries_[KEPT + WINDOW + 16];  // what Masks::append asks for behind them
};

}  // namespace tvk::detail
