#include "tvk/text/StringUtil.h"

#include <cstring>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/detail/Utf8Codec.h"

namespace tvk {

namespace {

using Codec = detail::Utf8Codec<StringUtil::XParsingError>;

// The symbols of the inline members come to be here.
[[gnu::used]] detail::Utf8Encoder const ENCODER = StringUtil::utf8Encode;
[[gnu::used]] detail::Utf8Decoder const DECODERS[] = {StringUtil::nextUtf8Char,
                                                      StringUtil::nextUtf8Char4};
[[gnu::used]] int (*const REPORTING_DECODER)(char const *, unsigned int, unsigned int *,
                                             ErrorInfo *) = StringUtil::nextUtf8Char;

bool isTrail(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

unsigned int bitsOf(char byte, unsigned int mask) {
    return static_cast<unsigned char>(byte) & mask;
}

void store(unsigned int * codePoint, unsigned int value) {
    if (codePoint != nullptr) {
        *codePoint = value;
    }
}

[[gnu::cold, gnu::noinline]] int refuse(ErrorInfo * error, char const * message) {
    error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
    error->setErrorCode(KestrinConstants::ERR_InvalidDataOfEncoding);
    error->setErrorMessage(message);
    return -1;
}

}  // namespace

int StringUtil::surrogatesPairToCodePoint(int high, int low) {
    return Codec::surrogatesPairToCodePoint(high, low);
}

void StringUtil::codePointToSurrogatesPair(int codePoint, int * high, int * low) {
    Codec::codePointToSurrogatesPair(codePoint, high, low);
}

bool StringUtil::isHighSurrogate(int value) { return Codec::isHighSurrogate(value); }

bool StringUtil::isLowSurrogate(int value) { return Codec::isLowSurrogate(value); }

int StringUtil::fastNextUtf8Char(char const * data, unsigned int length, unsigned int position,
                                 unsigned int * byteCount, char * bytes) {
    return Codec::next(data, length, position, byteCount, bytes);
}

int StringUtil::fastNextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                  unsigned int * byteCount, char * bytes) {
    return Codec::next4(data, length, position, byteCount, bytes);
}

unsigned int StringUtil::countUtf8Char(char const * data, unsigned int length,
                                       unsigned int * consumed) {
    return Codec::count(data, length, consumed);
}

int StringUtil::reportingNextUtf8Char(char const * data, unsigned int length,
                                      unsigned int * codePoint, ErrorInfo * error) {
    if (length == 0) {
        return 0;
    }
    unsigned int const lead = bitsOf(data[0], 0xFF);
    if (lead < 0x80) {
        store(codePoint, lead);
        return 1;
    }
    if (length < 2) {
        return refuse(error,
                      "invalid utf-8 character sequence: number of bytes is too small( < 2)");
    }
    if (!isTrail(data[1])) {
        return refuse(error, "invalid utf-8 character sequence: byte 1 is invalid");
    }
    // Deliberate: takes 0x80 to 0xBF too. Back ends have sent text that starts inside a character,
    // and readers of this function go on behind the two bytes.
    if ((lead & 0xE0) < 0xE0) {
        store(codePoint, (lead & 0x1F) << 6 | bitsOf(data[1], 0x3F));
        return 2;
    }
    if (length < 3) {
        return refuse(error, "invalid utf-8 character sequence: number of bytes is too small(<3)");
    }
    if (!isTrail(data[2])) {
        return refuse(error, "invalid utf-8 character sequence: byte 2 is invalid");
    }
    if ((lead & 0xF0) < 0xF0) {
        store(codePoint, (lead & 0x0F) << 12 | bitsOf(data[1], 0x3F) << 6 | bitsOf(data[2], 0x3F));
        return 3;
    }
    if (length < 4) {
        return refuse(error, "invalid utf-8 character sequence: number of bytes is too small(<4)");
    }
    if ((lead & 0xF8) != 0xF0 || !isTrail(data[3])) {
        return refuse(error, "invalid utf-8 character sequence: byte 0 or 3 is invalid");
    }
    store(codePoint, (lead & 0x07) << 18 | bitsOf(data[1], 0x3F) << 12 |
                         bitsOf(data[2], 0x3F) << 6 | bitsOf(data[3], 0x3F));
    return 4;
}

int StringUtil::nextUtf8Char(char const * text, unsigned int * codePoint, ErrorInfo * error) {
    return nextUtf8Char(text, static_cast<unsigned int>(std::strlen(text)), codePoint, error);
}

}  // namespace tvk
