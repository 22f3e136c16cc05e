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

// Eight bytes, the first in the lowest place.
std::uint64_t blockAt(Byte const * in) {
    std::uint64_t block;
    std::memcpy(&block, in, sizeof block);
    return std::endian::native == std::endian::little ? block : __builtin_bswap64(block);
}

// Goes on to the first byte of 0x80 or above. A block is stored before it is looked at: the room is
// never smaller than the rest of the text.
inline Place copyAscii(Place place, Byte const * end) {
    constexpr std::ptrdiff_t BLOCK = sizeof(std::uint64_t);
    if (end - place.in >= 2 && place.in[0] < 0x80 && place.in[1] >= 0x80) {
        *place.out = static_cast<char>(*place.in);
        return {place.in + 1, place.out + 1};
    }
    for (; end - place.in >= 2 * BLOCK; place.in += 2 * BLOCK, place.out += 2 * BLOCK) {
        if (((blockAt(place.in) | blockAt(place.in + BLOCK)) & HIGH_BITS) != 0) {
            break;
        }
        std::memcpy(place.out, place.in, 2 * BLOCK);
    }
    for (; end - place.in >= BLOCK; place.in += BLOCK, place.out += BLOCK) {
        std::memcpy(place.out, place.in, BLOCK);
        if (std::uint64_t const high = blockAt(place.in) & HIGH_BITS; high != 0) {
            std::ptrdiff_t const count = std::countr_zero(high) / 8;
            return {place.in + count, place.out + count};
        }
    }
    for (; place.in != end && *place.in < 0x80; ++place.in, ++place.out) {
        *place.out = static_cast<char>(*place.in);
    }
    return place;
}

// ASCII in blocks, and `other(place, end)` at each byte of 0x80 or above that follows: it takes at
// least one character.
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

// `unit` is 0x800 or above and no surrogate.
inline char * putUtf8Of3(char * out, unsigned unit) {
    out[0] = static_cast<char>(0xE0 | unit >> 12);
    out[1] = static_cast<char>(0x80 | (unit >> 6 & 0x3F));
    out[2] = static_cast<char>(0x80 | (unit & 0x3F));
    return out + 3;
}

// The same with 0x80 or above.
inline char * putUtf8(char * out, unsigned unit) {
    if (unit >= 0x800) {
        return putUtf8Of3(out, unit);
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
        return data::PAGES_932[page + (character & 0x3F)];
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

// Characters are found in the tables by the bits of their bytes, without decoding them. Where there
// is a code, the character was well formed; all else goes the careful road.

constexpr unsigned SHAPE_OF_3_MASK = 0xC0C0F0;
constexpr unsigned SHAPE_OF_3 = 0x8080E0;

// `bytes` has the shape of a character of three bytes, the first in the lowest place.
inline unsigned codeOf3(std::uint64_t bytes) {
    unsigned const page = data::PAGE_OF_THREE_BYTES_932[(bytes & 0xF) << 6 | (bytes >> 8 & 0x3F)];
    return data::PAGES_932[page + (bytes >> 16 & 0x3F)];
}

// Two characters of three bytes at a time.
inline Place writePairs(Place place, Byte const * end) {
    constexpr std::uint64_t MASK = std::uint64_t{SHAPE_OF_3_MASK} << 24 | SHAPE_OF_3_MASK;
    constexpr std::uint64_t SHAPE = std::uint64_t{SHAPE_OF_3} << 24 | SHAPE_OF_3;
    for (; end - place.in >= 8; place.in += 6) {
        std::uint64_t const block = blockAt(place.in);
        if ((block & MASK) != SHAPE) {
            break;
        }
        unsigned const first = codeOf3(block);
        unsigned const second = codeOf3(block >> 24);
        if (first == 0 || second == 0) {
            break;
        }
        place.out = putCode(putCode(place.out, first), second);
    }
    return place;
}

inline Place write932Character(Byte const * begin, Place place, Byte const * end) {
    Byte const * const in = place.in;
    if (end - in >= 3) {
        unsigned const bytes = in[0] | unsigned{in[1]} << 8 | unsigned{in[2]} << 16;
        if ((bytes & SHAPE_OF_3_MASK) == SHAPE_OF_3) {
            if (unsigned const code = codeOf3(bytes); code != 0) {
                return {in + 3, putCode(place.out, code)};
            }
        }
    }
    if (end - in >= 2 && (in[0] & 0xE0) == 0xC0 && (in[1] & 0xC0) == 0x80) {
        unsigned const page = data::PAGE_OF_TWO_BYTES_932[in[0] & 0x1F];
        if (unsigned const code = data::PAGES_932[page + (in[1] & 0x3FU)]; code != 0) {
            return {in + 2, putCode(place.out, code)};
        }
    }
    return writeCharacter<Windows31J>(begin, place, end);
}

std::size_t write932(void const * text, std::size_t size, char * output) {
    auto const * const begin = static_cast<Byte const *>(text);
    return convert(text, size, output, [begin](Place place, Byte const * end) {
        Place const behindPairs = writePairs(place, end);
        return behindPairs.in != place.in ? behindPairs : write932Character(begin, place, end);
    });
}

// The character of a lead byte and a trail byte; 0 if they have none.
inline unsigned characterOfPair(unsigned lead, unsigned trail) {
    std::size_t const place = trail - data::FIRST_TRAIL_932;
    return place < data::TRAILS_932 ? data::ROWS_932[data::ROW_OF_LEAD_932[lead - 0x80] + place]
                                    : 0U;
}

inline Place readPairs(Place place, Byte const * end) {
    for (; end - place.in >= 2 && *place.in >= 0x80; place.in += 2) {
        unsigned const unit = characterOfPair(place.in[0], place.in[1]);
        if (unit < 0x800) {
            break;
        }
        place.out = putUtf8Of3(place.out, unit);
    }
    return place;
}

inline Place readHalfWidthForms(Place place, Byte const * end) {
    for (; place.in != end && *place.in - 0xA1U < 0x3F; ++place.in) {
        place.out = putUtf8Of3(place.out, *place.in - 0xA1U + 0xFF61U);
    }
    return place;
}

Place read932Character(Place place, Byte const * end) {
    bool const hasTrail = end - place.in >= 2;
    if (hasTrail) {
        if (unsigned const unit = characterOfPair(place.in[0], place.in[1]); unit != 0) {
            return {place.in + 2, putUtf8(place.out, unit)};
        }
    }
    if (char16_t const unit = data::SINGLES_932[*place.in - 0x80U]; unit != 0) {
        return {place.in + 1, putUtf8(place.out, unit)};
    }
    // Deliberate: a wrong trail byte goes with its lead byte even where it is ASCII, as on the
    // platform whose texts these are. Only NUL stays, so that no text loses its end.
    bool const takesTrail = hasTrail && place.in[1] != 0;
    return {place.in + (takesTrail ? 2 : 1), putUtf8(place.out, UNDEFINED_IN_932)};
}

std::size_t read932(void const * text, std::size_t size, char * output) {
    return convert(text, size, output, [](Place place, Byte const * end) {
        Place const behindRun = readHalfWidthForms(readPairs(place, end), end);
        return behindRun.in != place.in ? behindRun : read932Character(place, end);
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

int characterInCodePage(unsigned int codePage, void const * bytes, std::size_t size) {
    auto const * const in = static_cast<Byte const *>(bytes);
    bool const isKnown = codePage == 932 || codePage == 1252 || codePage == 28591;
    if (isKnown && size == 1 && in[0] < 0x80) {
        return in[0];
    }
    unsigned character = 0;
    if (size == 2 && codePage == 932 && in[0] >= 0x80) {
        character = characterOfPair(in[0], in[1]);
    } else if (size == 1 && codePage == 932) {
        character = data::SINGLES_932[in[0] - 0x80U];
    } else if (size == 1 && codePage == 1252) {
        character = data::SINGLES_1252[in[0] - 0x80U];
    } else if (size == 1 && codePage == 28591) {
        character = in[0];
    }
    return character == 0 ? -1 : static_cast<int>(character);
}

}  // namespace tvk::platform
