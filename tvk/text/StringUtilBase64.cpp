#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tvk/text/StringUtil.h"
#include "tvk/text/detail/BoundedText.h"
#include "tvk/text/detail/ByteEncoders.h"

namespace tvk {

namespace {

using detail::Base64Alphabet;

constexpr Base64Alphabet STANDARD('+', '/');
constexpr Base64Alphabet FOR_URLS('-', '_');

constexpr std::size_t BREAK = 2;  // CR LF
constexpr std::size_t FIRST_LINE = 76;
constexpr std::size_t LATER_LINE = FIRST_LINE - BREAK;

/// Four characters for the 24 bits of three bytes.
void writeGroup(unsigned int bits, Base64Alphabet const & alphabet, char * out) {
    out[0] = alphabet.characters[bits >> 18];
    out[1] = alphabet.characters[bits >> 12 & 63];
    out[2] = alphabet.characters[bits >> 6 & 63];
    out[3] = alphabet.characters[bits & 63];
}

void writeGroups(unsigned char const * data, std::size_t groups, Base64Alphabet const & alphabet,
                 char * out) {
    if (groups >= detail::FEWEST_VECTOR_GROUPS) {
        detail::bestByteEncoders().base64(data, groups, alphabet, out);
        return;
    }
    for (; groups > 0; --groups, data += 3, out += 4) {
        unsigned int const high = data[0];
        unsigned int const middle = data[1];
        writeGroup(high << 16 | middle << 8 | data[2], alphabet, out);
    }
}

void writeLastGroup(unsigned char const * data, std::size_t size, Base64Alphabet const & alphabet,
                    char * out) {
    unsigned int const second = size == 2 ? data[1] : 0U;
    writeGroup(static_cast<unsigned int>(data[0]) << 16 | second << 8, alphabet, out);
    if (size == 1) {
        out[2] = '=';
    }
    out[3] = '=';
}

/// Returns the place behind the last character written.
char * encode(unsigned char const * data, std::size_t size, Base64Alphabet const & alphabet,
              char * out) {
    std::size_t const groups = size / 3;
    std::size_t const rest = size % 3;
    writeGroups(data, groups, alphabet, out);
    out += 4 * groups;
    if (rest > 0) {
        writeLastGroup(data + 3 * groups, rest, alphabet, out);
        out += 4;
    }
    return out;
}

/// How many breaks a text of `length` characters gets: one before each line behind the first.
std::uint64_t breaksOf(std::uint64_t length) {
    return length <= FIRST_LINE ? 0 : (length - FIRST_LINE + LATER_LINE - 1) / LATER_LINE;
}

/// Moves the lines of the text at `from` to `out`, with a break between two of them. `out` lies as
/// far before `from` as the breaks are long in all, so no line is overwritten before it is moved.
void moveLines(char const * from, char const * end, char * out) {
    std::memmove(out, from, FIRST_LINE);
    out += FIRST_LINE;
    from += FIRST_LINE;
    while (from != end) {
        std::size_t const line = std::min(static_cast<std::size_t>(end - from), LATER_LINE);
        std::memcpy(out, "\r\n", BREAK);
        std::memmove(out + BREAK, from, line);
        out += BREAK + line;
        from += line;
    }
}

CString base64(void const * data, unsigned int size, Base64Alphabet const & alphabet,
               bool lineBreaks) {
    std::uint64_t const length = (std::uint64_t{size} + 2) / 3 * 4;
    std::uint64_t const breaks = lineBreaks ? breaksOf(length) : 0;
    return detail::boundedText(length + BREAK * breaks, [=, &alphabet](char * first) {
        char * const unbroken = first + BREAK * breaks;
        char * const end =
            encode(static_cast<unsigned char const *>(data), size, alphabet, unbroken);
        if (breaks > 0) {
            moveLines(unbroken, end, first);
        }
        return end;
    });
}

}  // namespace

CString StringUtil::base64Encode(void const * data, unsigned int size, bool lineBreaks) {
    return base64(data, size, STANDARD, lineBreaks);
}

CString StringUtil::base64UrlEncode(void const * data, unsigned int size) {
    return base64(data, size, FOR_URLS, false);
}

}  // namespace tvk
