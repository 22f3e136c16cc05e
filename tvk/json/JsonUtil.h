#pragma once

#include "tvk/json/JsonOptions.h"
#include "tvk/json/SimpleJsonHandler.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/text/detail/ShortUtf8.h"

namespace tvk {

/// The JSON scanner (RFC 8259 but for what is told below), the writer of JSON string text, and a
/// UTF-8 codec of sequences of up to 6 bytes.
///
/// Scanning: bytes in, callbacks out, no tree. Each entry makes one allocation, a scratch buffer,
/// and
///           returns the position at which it stopped; what follows there is not looked at. Nesting
///           has no limit and takes no stack.
/// Hashes:   of strings (their decoded bytes) and numbers (their source text): from
///           SimpleObjectCache::HASH_CODE_INITIAL_VALUE on, hash * 33 + byte modulo 2^32.
///           Deliberate: the byte is signed here and unsigned in SimpleObjectCache::hashCode;
///           stored hashes of the wire rely on it.
/// Threads:  no shared state; any thread may call any of these.
/// Failure:  XParsingError, with a text that quotes the input. Callbacks made before stay made.
class TVK_API JsonUtil {
public:
    /// What scanning and decoding throw. Owns a copy of its text.
    class TVK_API XParsingError {
    public:
        XParsingError();  ///< A null text.
        XParsingError(char const * message);
        XParsingError(CString const & message);
        XParsingError(XParsingError const & other);
        ~XParsingError();

        /// Deliberate: shallow. Both objects then share one text, which only one may end with.
        XParsingError & operator=(XParsingError const & other);

        char const * getErrorMessage() const { return message_; }
        void setErrorMessage(char const * message);
        void setErrorMessage(CString const & message);

    private:
        char * message_;
    };

    JsonUtil() = delete;

    /// Skips space and comments, requires `{`, reads one object. `options` are JSON_ALLOW_ bits.
    /// The data needs no NUL behind it. Returns the bytes consumed.
    static unsigned int parseOneJsonObject(char const * data, unsigned int length,
                                           SimpleJsonHandler * handler, void * userData,
                                           int options);
    /// The same with `[`.
    static unsigned int parseOneJsonArray(char const * data, unsigned int length,
                                          SimpleJsonHandler * handler, void * userData,
                                          int options);
    /// One value of any kind. Nothing but space gives no callback and returns `length`.
    ///
    /// Deliberate: a word (`true`, `false`, `null`) must have one more byte behind it, and a
    /// fraction or exponent of one digit that ends the data is left; a stream may go on there.
    static unsigned int parseOneJsonValue(char const * data, unsigned int length,
                                          SimpleJsonHandler * handler, void * userData,
                                          int options);
    /// The inside of an object, without braces, from the first byte on. Stops before an unmatched
    /// `}` or at the end of the data.
    static unsigned int parseObjectFields(char const * data, unsigned int length,
                                          SimpleJsonHandler * handler, void * userData,
                                          int options);

    /// Writes UTF-8 text as the inside of a JSON string: no quotes, no NUL. Returns the bytes of
    /// `text` consumed and stores the bytes written in `*written` when that is not null. A NUL ends
    /// the text. `options`: JSON_ESCAPE_SLASH.
    ///
    /// Room:    with an `outputSize` above twice `length` everything is written. With less, the text
    ///          may be cut; line feeds and unescaped slashes that come next at the end of the room
    ///          are still written, beyond it too. So `output` must hold `outputSize` or twice
    ///          `length` bytes, whichever is more; within the room, bytes behind those written may
    ///          change.
    /// Failure: XParsingError on invalid UTF-8. Bad trail bytes are noticed only within the last
    ///          bytes of the room.
    static unsigned int writeUnquotedJsonStringValue(char const * text, unsigned int length,
                                                     char * output, unsigned int outputSize,
                                                     unsigned int * written, int options);

    /// Writes one code point, without a NUL, and returns the bytes written; 0, and nothing written,
    /// when they do not fit. Up to 0x7F, negative values too: one byte, the low one.
    ///
    /// Deliberate: U+20000 and above take 5 bytes (6 from 0x4000000 on). The scanner's escapes give
    /// the same bytes, and the decoders here read them back.
    TVK_API_INLINE static int utf8Encode(char * buffer, unsigned int bufferSize, int codePoint);
    /// ((high - 0xD7F7) << 10) + low, unchecked.
    static int surrogatesPairToCodePoint(int high, int low);
    /// Unchecked: below U+10000 the results are no surrogates.
    static void codePointToSurrogatesPair(int codePoint, int * high, int * low);
    static bool isHighSurrogate(int value);
    static bool isLowSurrogate(int value);
    /// Decodes the sequence of up to 6 bytes at `position` and stores its length in `*byteCount`;
    /// no overlong form and no surrogate is refused. At the end of the data it returns 0 and leaves
    /// `*byteCount` alone. Throws XParsingError on a bad lead, a cut sequence or a bad trail byte.
    TVK_API_INLINE static int nextUtf8Char(char const * data, unsigned int length,
                                           unsigned int position, unsigned int * byteCount);
    /// The same without most tests, for text known to be complete and valid.
    /// Requires: `position` inside the data; sequences of 2 to 4 bytes complete.
    TVK_API_INLINE static int nextUtf8Char4(char const * data, unsigned int length,
                                            unsigned int position, unsigned int * byteCount);

private:
    static int fastNextUtf8Char(char const * data, unsigned int length, unsigned int position,
                                unsigned int * byteCount, char * bytes);
    static int fastNextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                 unsigned int * byteCount, char * bytes);
};

inline int JsonUtil::utf8Encode(char * buffer, unsigned int bufferSize, int codePoint) {
    return detail::encodeUtf8(buffer, bufferSize, codePoint);
}

inline int JsonUtil::nextUtf8Char(char const * data, unsigned int length, unsigned int position,
                                  unsigned int * byteCount) {
    return detail::nextUtf8(detail::shortUtf8(data, length, position), byteCount, fastNextUtf8Char,
                            data, length, position);
}

inline int JsonUtil::nextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                   unsigned int * byteCount) {
    return detail::nextUtf8(detail::trustedShortUtf8(data, position), byteCount, fastNextUtf8Char4,
                            data, length, position);
}

}  // namespace tvk
