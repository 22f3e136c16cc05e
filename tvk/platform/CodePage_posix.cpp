// The conversions by tables of our own, for platforms without calls for code pages. They go from
// UTF-8 to the code page and back at once; that UTF-16 stands between the two shows only in the two
// replacements for a character beyond U+FFFF.

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "tvk/platform/CodePage.h"
#include "tvk/platform/CodePageData.h"

namespace tvk::platform {

namespace {

using Byte = unsigned char;

constexpr char32_t REPLACEMENT = 0xFFFD;
constexpr char16_t UNDEFINED_IN_932 = 0x30FB;
constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;

// Where a conversion stands.
struct Place {
    Byte const * in;
    char * out;
};

std::uint64_t blockAt(Byte const * in) {
    std::uint64_t block;
    std::memcpy(&block, in, sizeof block);
    return block;
}

std::ptrdiff_t asciiBytesBefore(std::uint64_t highBits) {
    int const bits = std::endian::native == std::endian::little ? std::countr_zero(highBits)
                                                                : std::countl_zero(highBits);
    return bits / 8;
}

// Goes on to the first byte of 0x80 or above. A block is stored before it is looked at: the room is
// never smaller than the rest of the text.
inline Place copyAscii(Place place, Byte const * end) {
    constexpr std::ptrdiff_t BLOCK = sizeof(std::uint64_t);
    for (; end - place.in >= 2 * BLOCK; place.in += 2 * BLOCK, place.out += 2 * BLOCK) {
        std::uint64_t const blocks[2] = {blockAt(place.in), blockAt(place.in + BLOCK)};
        if (((blocks[0] | blocks[1]) & HIGH_BITS) != 0) {
            break;
        }
        std::memcpy(place.out, blocks, sizeof blocks);
    }
    for (; end - place.in >= BLOCK; place.in += BLOCK, place.out += BLOCK) {
        std::uint64_t const block = blockAt(place.in);
        std::memcpy(place.out, &block, sizeof block);
        if ((block & HIGH_BITS) != 0) {
            std::ptrdiff_t const count = asciiBytesBefore(block & HIGH_BITS);
            return {place.in + count, place.out + count};
        }
    }
    for (; place.in != end && *place.in < 0x80; ++place.in, ++place.out) {
        *place.out = static_cast<char>(*place.in);
    }
    return place;
}

// ASCII in blocks, and `other(Place)` for each character that is not. It is called at a byte of
// 0x80 or above.
template <class Other>
std::size_t convert(void const * text, std::size_t size, char * output, Other other) {
    auto const * const begin = static_cast<Byte const *>(text);
    Byte const * const end = begin + size;
    Place place = {begin, output};
    while (true) {
        place = copyAscii(place, end);
        if (place.in == end) {
            return static_cast<std::size_t>(place.out - output);
        }
        do {
            place = other(place, end);
        } while (place.in != end && *place.in >= 0x80);
    }
}

struct Utf8Character {
    char32_t codePoint;
    std::ptrdiff_t length;
};

// One character, or REPLACEMENT for the longest piece that could still have become one, at least a
// byte. Bytes that begin no character of at most four bytes are such pieces.
Utf8Character decodeUtf8(Byte const * in, Byte const * end) {
    unsigned const lead = *in;
    if (lead < 0x80) {
        return {lead, 1};
    }
    if (lead < 0xC2 || lead > 0xF4) {
        return {REPLACEMENT, 1};
    }
    std::ptrdiff_t const length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The first trail byte decides on overlong forms, surrogates and the end at U+10FFFF.
    unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t codePoint = lead & (0x7FU >> length);
    for (std::ptrdiff_t i = 1; i < length; ++i) {
        if (end - in == i || in[i] < lowest || in[i] > highest) {
            return {REPLACEMENT, i};
        }
        codePoint = codePoint << 6 | (in[i] & 0x3FU);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {codePoint, length};
}

// The character that ends right before `in`; REPLACEMENT where there is none. Looking back is safe:
// no lead byte and no ASCII byte is ever part of another character.
char32_t characterBefore(Byte const * begin, Byte const * in) {
    Byte const * lead = in;
    while (lead != begin && in - lead < 4) {
        --lead;
        if ((*lead & 0xC0) != 0x80) {
            Utf8Character const character = decodeUtf8(lead, in);
            return character.length == in - lead ? character.codePoint : REPLACEMENT;
        }
    }
    return REPLACEMENT;
}

// `unit` is 0x80 or above and no surrogate.
inline char * putUtf8(char * out, unsigned unit) {
    if (unit >= 0x800) {
        out[0] = static_cast<char>(0xE0 | unit >> 12);
        out[1] = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
        out[2] = static_cast<char>(0x80 | (unit & 0x3F));
        return out + 3;
    }
    out[0] = static_cast<char>(0xC0 | unit >> 6);
    out[1] = static_cast<char>(0x80 | (unit & 0x3F));
    return out + 2;
}

std::size_t repairUtf8(void const * text, std::size_t size, char * output) {
    return convert(text, size, output, [](Place place, Byte const * end) -> Place {
        Utf8Character const character = decodeUtf8(place.in, end);
        if (character.codePoint == REPLACEMENT) {
            return {place.in + character.length, putUtf8(place.out, REPLACEMENT)};
        }
        std::memcpy(place.out, place.in, static_cast<std::size_t>(character.length));
        return {place.in + character.length, place.out + character.length};
    });
}

// A code page to write to has: the code of a character of 0x80 or above, 0 if there is none; the
// compositions; and what is put for a UTF-16 unit without a code.
struct Windows31J {
    static unsigned codeOf(char32_t character) {
        if (character >= 0x10000) {
            return 0;
        }
        unsigned const page = character < 0x800 ? data::PAGE_OF_TWO_BYTES_932[character >> 6]
                                                : data::PAGE_OF_THREE_BYTES_932[character >> 6];
        return data::PAGES_932[page][character & 0x3F];
    }
    static bool composes(data::Composition const &) { return true; }
    static constexpr std::span<data::Composition const> COMPOSITIONS{data::COMPOSITIONS_932};
    static constexpr unsigned DEFAULT_CODE = 0x817C;
};

struct Windows1252 {
    static unsigned codeOf(char32_t character) {
        if (character >= 0xA0 && character <= 0xFF) {
            return character;
        }
        auto const * const end = data::SINGLES_1252 + 0x20;
        auto const * const found = std::find(data::SINGLES_1252, end, character);
        return found == end ? 0 : static_cast<unsigned>(found - data::SINGLES_1252) + 0x80;
    }
    static bool composes(data::Composition const &) { return true; }
    static constexpr std::span<data::Composition const> COMPOSITIONS{data::COMPOSITIONS_1252};
    static constexpr unsigned DEFAULT_CODE = 0x81;
};

struct Latin1 {
    static unsigned codeOf(char32_t character) { return character <= 0xFF ? character : 0; }
    // Code page 1252 is this one but for its codes below A0.
    static bool composes(data::Composition const & composition) { return composition.code >= 0xA0; }
    static constexpr std::span<data::Composition const> COMPOSITIONS{data::COMPOSITIONS_1252};
    static constexpr unsigned DEFAULT_CODE = 0x81;
};

inline char * putCode(char * out, unsigned code) {
    if (code > 0xFF) {
        out[0] = static_cast<char>(code >> 8);
        out[1] = static_cast<char>(code);
        return out + 2;
    }
    out[0] = static_cast<char>(code);
    return out + 1;
}

template <class CodePage>
data::Composition const * findComposition(char32_t base, char32_t mark) {
    auto const comesBefore = [](data::Composition const & composition, auto const & wanted) {
        return composition.mark != wanted.first ? composition.mark < wanted.first
                                                : composition.base < wanted.second;
    };
    auto const all = CodePage::COMPOSITIONS;
    auto const found = std::lower_bound(all.begin(), all.end(), std::pair(mark, base), comesBefore);
    if (found == all.end() || found->mark != mark || found->base != base ||
        !CodePage::composes(*found)) {
        return nullptr;
    }
    return &*found;
}

// Any character. A mark is composed with what stands before it in the text: it takes back the
// base's code, so that only marks pay for composition.
template <class CodePage>
[[gnu::noinline]] Place writeCharacter(Byte const * begin, Place place, Byte const * end) {
    Utf8Character const character = decodeUtf8(place.in, end);
    Byte const * const next = place.in + character.length;
    if (unsigned const code = CodePage::codeOf(character.codePoint); code != 0) {
        return {next, putCode(place.out, code)};
    }
    char32_t const before = characterBefore(begin, place.in);
    if (auto const * const composition = findComposition<CodePage>(before, character.codePoint)) {
        bool const isPair = before >= 0x80 && CodePage::codeOf(before) > 0xFF;
        return {next, putCode(place.out - (isPair ? 2 : 1), composition->code)};
    }
    char * out = putCode(place.out, CodePage::DEFAULT_CODE);
    if (character.codePoint >= 0x10000) {
        out = putCode(out, CodePage::DEFAULT_CODE);
    }
    return {next, out};
}

template <class CodePage>
std::size_t writeSingleBytes(void const * text, std::size_t size, char * output) {
    auto const * const begin = static_cast<Byte const *>(text);
    return convert(text, size, output, [begin](Place place, Byte const * end) {
        return writeCharacter<CodePage>(begin, place, end);
    });
}

// The code of the character of two or three bytes at `place`, found without decoding it; 0 sends it
// to the careful road. A code here comes from a well-formed character.
inline unsigned codeOfShape3(Byte const * in) {
    unsigned const middle = in[1] ^ 0x80U;
    unsigned const last = in[2] ^ 0x80U;
    if ((in[0] & 0xF0) != 0xE0 || (middle | last) > 0x3F) {
        return 0;
    }
    return data::PAGES_932[data::PAGE_OF_THREE_BYTES_932[(in[0] & 0xFU) << 6 | middle]][last];
}

inline unsigned codeOfShape2(Byte const * in) {
    unsigned const last = in[1] ^ 0x80U;
    if ((in[0] & 0xE0) != 0xC0 || last > 0x3F) {
        return 0;
    }
    return data::PAGES_932[data::PAGE_OF_TWO_BYTES_932[in[0] & 0x1FU]][last];
}

std::size_t write932(void const * text, std::size_t size, char * output) {
    auto const * const begin = static_cast<Byte const *>(text);
    return convert(text, size, output, [begin](Place place, Byte const * end) -> Place {
        if (end - place.in >= 3) {
            if (unsigned const code = codeOfShape3(place.in); code != 0) {
                return {place.in + 3, putCode(place.out, code)};
            }
        }
        if (end - place.in >= 2) {
            if (unsigned const code = codeOfShape2(place.in); code != 0) {
                return {place.in + 2, putCode(place.out, code)};
            }
        }
        return writeCharacter<Windows31J>(begin, place, end);
    });
}

std::size_t read932(void const * text, std::size_t size, char * output) {
    return convert(text, size, output, [](Place place, Byte const * end) -> Place {
        unsigned const lead = *place.in - 0x80U;
        bool const hasTrail = end - place.in >= 2;
        if (hasTrail && place.in[1] - data::FIRST_TRAIL_932 < data::TRAILS_932) {
            std::size_t const trail = place.in[1] - data::FIRST_TRAIL_932;
            if (char16_t const unit = data::ROWS_932[data::ROW_OF_LEAD_932[lead]][trail];
                unit != 0) {
                return {place.in + 2, putUtf8(place.out, unit)};
            }
        }
        if (char16_t const unit = data::SINGLES_932[lead]; unit != 0) {
            return {place.in + 1, putUtf8(place.out, unit)};
        }
        // Deliberate: a wrong trail byte goes with its lead byte even where it is ASCII, as on the
        // platform whose texts these are. Only NUL stays, so that no text loses its end.
        bool const takesTrail = hasTrail && place.in[1] != 0;
        return {place.in + (takesTrail ? 2 : 1), putUtf8(place.out, UNDEFINED_IN_932)};
    });
}

std::size_t read1252(void const * text, std::size_t size, char * output) {
    return convert(text, size, output, [](Place place, Byte const *) -> Place {
        return {place.in + 1, putUtf8(place.out, data::SINGLES_1252[*place.in - 0x80U])};
    });
}

std::size_t readLatin1(void const * text, std::size_t size, char * output) {
    return convert(text, size, output, [](Place place, Byte const *) -> Place {
        return {place.in + 1, putUtf8(place.out, *place.in)};
    });
}

}  // namespace

std::size_t utf8ToAnsi(void const * text, std::size_t size, char * output) {
    switch (ansiCodePage()) {
        case 932:
            return write932(text, size, output);
        case 1252:
            return writeSingleBytes<Windows1252>(text, size, output);
        case 28591:
            return writeSingleBytes<Latin1>(text, size, output);
        default:
            return repairUtf8(text, size, output);
    }
}

std::size_t ansiToUtf8(void const * text, std::size_t size, char * output) {
    switch (ansiCodePage()) {
        case 932:
            return read932(text, size, output);
        case 1252:
            return read1252(text, size, output);
        case 28591:
            return readLatin1(text, size, output);
        default:
            return repairUtf8(text, size, output);
    }
}

}  // namespace tvk::platform
