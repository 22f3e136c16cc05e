#include "tvk/json/JsonUtil.h"
#include "tvk/text/detail/Utf8Codec.h"

namespace tvk {

namespace {

using Codec = detail::Utf8Codec<JsonUtil::XParsingError>;

// The symbols of the inline members come to be here.
[[gnu::used]] detail::Utf8Encoder const ENCODER = JsonUtil::utf8Encode;
[[gnu::used]] detail::Utf8Decoder const DECODERS[] = {JsonUtil::nextUtf8Char,
                                                      JsonUtil::nextUtf8Char4};

}  // namespace

int JsonUtil::surrogatesPairToCodePoint(int high, int low) {
    return Codec::surrogatesPairToCodePoint(high, low);
}

void JsonUtil::codePointToSurrogatesPair(int codePoint, int * high, int * low) {
    Codec::codePointToSurrogatesPair(codePoint, high, low);
}

bool JsonUtil::isHighSurrogate(int value) { return Codec::isHighSurrogate(value); }

bool JsonUtil::isLowSurrogate(int value) { return Codec::isLowSurrogate(value); }

int JsonUtil::fastNextUtf8Char(char const * data, unsigned int length, unsigned int position,
                               unsigned int * byteCount, char * bytes) {
    return Codec::next(data, length, position, byteCount, bytes);
}

int JsonUtil::fastNextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                unsigned int * byteCount, char * bytes) {
    return Codec::next4(data, length, position, byteCount, bytes);
}

}  // namespace tvk
