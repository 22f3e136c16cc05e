#include "tvk/json/detail/ScannerErrors.h"

#include <algorithm>
#include <cstdarg>

#include "tvk/json/JsonUtil.h"
#include "tvk/platform/Format.h"
#include "tvk/text/detail/Utf8Codec.h"

namespace tvk::detail {

namespace {

/// A copy of the input from `from` on, of at most LIMIT bytes. `%s` prints it up to a NUL in it.
template <unsigned int LIMIT>
struct Excerpt {
    Excerpt(ScanPlace place, unsigned int from) {
        unsigned int const size = std::min(LIMIT, place.length - from);
        std::copy_n(place.data + from, size, text);
        text[size] = '\0';
    }
    char text[LIMIT + 1];
};

using ShortExcerpt = Excerpt<128>;
using LongExcerpt = Excerpt<256>;

/// The texts are written as C texts: a NUL that `%c` puts into one ends it.
template <unsigned int ROOM>
[[noreturn]] void fail(char const * format, ...) TVK_PRINTF_LIKE(1, 2);

template <unsigned int ROOM>
void fail(char const * format, ...) {
    char message[ROOM];
    va_list arguments;
    va_start(arguments, format);
    platform::formatInto(message, sizeof message, format, arguments);
    va_end(arguments);
    throw JsonUtil::XParsingError(message);
}

constexpr unsigned int SHORT_MESSAGE = 256;
constexpr unsigned int LONG_MESSAGE = 512;

int number(unsigned int position) { return static_cast<int>(position); }

}  // namespace

void failTag(ScanPlace place, char tag) {
    fail<LONG_MESSAGE>(
        "invalid message data near position %d: tag '%c' is expected, but was <%s>...",
        number(place.position), tag, LongExcerpt(place, place.position).text);
}

void failTrue(ScanPlace place) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: boolean value 'true' is expected, but was "
        "<%s>...",
        number(place.position), ShortExcerpt(place, place.position).text);
}

void failFalse(ScanPlace place) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: boolean value 'false' is expected, but was "
        "<%s>...",
        number(place.position), ShortExcerpt(place, place.position).text);
}

void failNull(ScanPlace place) {
    // Deliberate: "buf was". Applications compare the text.
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: 'null' is expected, buf was <%s>...",
        number(place.position), ShortExcerpt(place, place.position).text);
}

void failNumberEnd(ScanPlace place) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: invalid number value(end of data encountered)",
        number(place.position));
}

void failLeadingZero(ScanPlace place) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: invalid number value with leading zero. "
        "data=<%s>...",
        number(place.position), ShortExcerpt(place, place.position).text);
}

void failNumber(ScanPlace place) {
    fail<SHORT_MESSAGE>("invalid message data near position %d: invalid number value, data=<%s>...",
                        number(place.position), ShortExcerpt(place, place.position).text);
}

void failHexEnd(ScanPlace place) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: encountered end of data while a HEX character "
        "is expected",
        number(place.position));
}

void failHexDigit(ScanPlace place, unsigned int index) {
    unsigned int const position = place.position + index;
    ShortExcerpt const excerpt(place, place.position);
    if (index < 3) {
        fail<SHORT_MESSAGE>(
            "invalid message data near position %d: a HEX character is expected, but was '%c', "
            "data=<%s>...",
            number(position), place.data[position], excerpt.text);
    }
    // Deliberate: no dots for the fourth digit. Applications compare the text.
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: a HEX character is expected, but was '%c', "
        "data=<%s>",
        number(position), place.data[position], excerpt.text);
}

void failEscapeEnd(ScanPlace place) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: invalid escape sequence(end of data)",
        number(place.position));
}

void failEscape(ScanPlace place, char escape, unsigned int rest) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: invalid escape sequence \\%c, data=<%s>...",
        number(place.position), escape, ShortExcerpt(place, rest).text);
}

void failSurrogates(ScanPlace place, int high, int low) {
    fail<SHORT_MESSAGE>(
        "invalid message data near position %d: invalid unicode code surrogate pair(0x%x, 0x%x), "
        "data=<%s>...",
        number(place.position), static_cast<unsigned int>(high), static_cast<unsigned int>(low),
        ShortExcerpt(place, place.position).text);
}

void failCutSequence(ScanPlace place, unsigned int bytes) {
    Utf8Codec<JsonUtil::XParsingError>::failCut(place.position, bytes);
}

void failLeadByte(ScanPlace place) {
    Utf8Codec<JsonUtil::XParsingError>::failUndecided(place.position);
}

}  // namespace tvk::detail
