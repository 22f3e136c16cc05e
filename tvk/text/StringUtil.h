#pragma once

#include <cstdarg>
#include <vector>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/text/detail/ShortUtf8.h"

namespace tvk {

/// The text vocabulary of the library: making, reading, searching, splitting and padding text, text
/// encoders for URLs and logs, and a UTF-8 codec of sequences of up to 6 bytes.
///
/// Threads: no state; any thread may call any of these.
/// Failure: reading functions report none: what cannot be read gives 0. std::bad_alloc where memory
///          is out or a text would pass 0x7fffffff bytes.
class TVK_API StringUtil {
public:
    /// "Not found", and "all that follows".
    static constexpr unsigned int npos = 0xffffffff;

    /// What decoding throws. Owns a copy of its text.
    class TVK_API XParsingError {
    public:
        XParsingError();  ///< A null text.
        XParsingError(char const * message);
        XParsingError(XParsingError const & other);
        ~XParsingError();

        /// Deliberate: shallow. Both objects then share one text, which only one may end with.
        XParsingError & operator=(XParsingError const & other);

        char const * getErrorMessage() const { return message_; }
        void setErrorMessage(char const * message);

    private:
        char * message_;
    };

    StringUtil() = delete;

    // Making text. The printf forms do not follow the process's locale.
    static CString stringByRepeating(char character, unsigned int count);
    static CString format(char const * format, ...) TVK_PRINTF_LIKE(1, 2);
    static CString vformat(char const * format, va_list arguments) TVK_PRINTF_LIKE(1, 0);
    static CString toString(int number);
    /// Deliberate: the low 32 bits, also where a long has more: the same text on every platform.
    static CString toString(long number);
    static CString toString(unsigned int number);
    /// The low 32 bits too.
    static CString toString(unsigned long number);
    static CString toString(long long number);
    static CString toString(unsigned long long number);
    /// "true" or "false": the same two objects at every call.
    static CString const & toString(bool value);

    // Reading text: leading white space, a sign, digits; what follows is ignored.
    static int parseInt(CString const & text);    ///< saturates at 32 bits
    static long parseLong(CString const & text);  ///< saturates at 32 bits, like parseInt
    /// strtoll: clears errno first and leaves it for the caller (ERANGE where it saturates).
    static long long parseLongLong(CString const & text, int base);
    static double parseDouble(CString const & text);  ///< strtod; the decimal mark is `.`
    /// True for exactly "1", and for "true", "t", "yes" and "y" in any case. Requires: not null.
    static bool parseBooleanValue(char const * text);

    static bool isEmpty(CString const & text);
    static CString & trim(CString & text);  ///< ASCII white space off both ends, in place
    /// Deliberate: whether `other` occurs anywhere in `text`, as callers that pass a CString rely
    /// on. The two overloads with `char const *` test the start.
    static bool startsWith(CString const & text, CString const & other);
    static bool startsWith(CString const & text, char const * prefix);
    /// Compares at most `length` bytes, and no further than a NUL in both. So does endsWith.
    /// Requires of all four: prefix and suffix are not null.
    static bool startsWith(CString const & text, char const * prefix, unsigned int length);
    static bool endsWith(CString const & text, char const * suffix);
    static bool endsWith(CString const & text, char const * suffix, unsigned int length);
    /// Index of the first match, or npos.
    static unsigned int find(CString const & text, CString const & what);
    static unsigned int find(CString const & text, unsigned int start, CString const & what);
    /// CString::Mid; a count of npos takes all from `start` on.
    ///
    /// Deliberate: numbers beyond 0x7fffffff reach Mid as the negative numbers of the same bits, so
    /// that a start which a caller computed as less than 0 still takes from the front: such a start
    /// is 0, and such a count, but for npos, is 0.
    static CString subString(CString const & text, unsigned int start, unsigned int count);
    /// The pieces between delimiters, at least one. An empty delimiter splits nothing. A delimiter at
    /// the end has an empty piece behind it.
    ///
    /// Deliberate: one at the very start has none before it, so that "/a" is the path "a".
    static std::vector<CString> split(CString const & text, CString const & delimiter);

    /// Writes `text` into the field of `length` bytes at `buffer + offset`, to the right, with
    /// `padChar` before it; a longer text loses its tail. No NUL is written. Returns `length` minus the
    /// text's length: the number of pad bytes, negative by the number of bytes lost.
    ///
    /// When `offset + length`, an unsigned sum of 32 bits, exceeds `bufferSize`, the result is 0,
    /// nothing is written, and `*error`, when not null, gets ERR_InvalidMessageSize and a text; its
    /// domain stays. A negative length writes nothing either.
    ///
    /// Deliberate: by that sum a negative offset is fine where the field ends inside the buffer, so
    /// that a caller in the middle of a record reaches back in it.
    /// Requires: all bytes of the field are the caller's.
    static int leftPadString(unsigned char * buffer, unsigned int bufferSize, int offset,
                             CString text, unsigned char padChar, int length, ErrorInfo * error);
    /// The same to the left, with `padChar` behind the text.
    static int rightPadString(unsigned char * buffer, unsigned int bufferSize, int offset,
                              CString text, unsigned char padChar, int length, ErrorInfo * error);

    // The members of the same names in JsonUtil, with an error class of their own.
    TVK_API_INLINE static int utf8Encode(char * buffer, unsigned int bufferSize, int codePoint);
    static int surrogatesPairToCodePoint(int high, int low);
    static void codePointToSurrogatesPair(int codePoint, int * high, int * low);
    static bool isHighSurrogate(int value);
    static bool isLowSurrogate(int value);
    TVK_API_INLINE static int nextUtf8Char(char const * data, unsigned int length,
                                           unsigned int position, unsigned int * byteCount);
    TVK_API_INLINE static int nextUtf8Char4(char const * data, unsigned int length,
                                            unsigned int position, unsigned int * byteCount);

    /// Characters in `data`, by their lead bytes alone. `*consumed`, when not null, receives where
    /// counting stopped. Throws XParsingError on a bad lead or a cut sequence.
    static unsigned int countUtf8Char(char const * data, unsigned int length,
                                      unsigned int * consumed);

    /// Decodes the sequence of up to 4 bytes at `data`: returns its length and stores the code
    /// point when `codePoint` is not null. 0 for no data. -1 for invalid data: `*error` then holds
    /// ERR_InvalidDataOfEncoding and a text, and must not be null.
    ///
    /// Deliberate: a stray trail byte passes as the lead of 2 bytes, as back ends have sent such.
    TVK_API_INLINE static int nextUtf8Char(char const * data, unsigned int length,
                                           unsigned int * codePoint, ErrorInfo * error);
    /// The same at the start of a terminated text.
    static int nextUtf8Char(char const * text, unsigned int * codePoint, ErrorInfo * error);

    // Encoders. `data` may be null when `size` is 0. Room for the longest possible result is taken at
    // once, and that is what may not pass 0x7fffffff bytes.

    /// application/x-www-form-urlencoded, except at two edges.
    ///
    /// Deliberate: 'Z' is written "%5A", and the first digit of a byte of 0x80 and above is one of
    /// "()*+,-./", as back ends of this system read it. urlDecode refuses such bytes.
    static CString urlEncode(char const * data, unsigned int size);
    /// The way back. On a failure the result is what was decoded before it, and `*error`, when not
    /// null, gets ERR_InvalidDataOfEncoding and a text with the position of the '%'.
    ///
    /// Deliberate: any letter passes as a digit, those behind 'f' counting on (modulo 256), as senders
    /// rely on; and a sequence cut off leaves the error's domain as it was, so that a caller with a
    /// domain of its own for incomplete data keeps it.
    static CString urlDecode(char const * data, unsigned int size, ErrorInfo * error);
    /// Base64 (RFC 4648, section 4), padded. With `lineBreaks`, a text longer than 76 characters gets
    /// CR LF at every index that is a multiple of 76, counted with the breaks already there.
    ///
    /// Deliberate: so the lines behind the first have 74 characters, as readers of this system expect;
    /// no break stands at the end.
    static CString base64Encode(void const * data, unsigned int size, bool lineBreaks);
    /// Base64 for URLs (RFC 4648, section 5), padded.
    static CString base64UrlEncode(void const * data, unsigned int size);
    /// Two upper-case hexadecimal digits a byte.
    static CString toHexString(void const * data, unsigned int size);

private:
    static CString const TRUE_TEXT;
    static CString const FALSE_TEXT;

    static int fastNextUtf8Char(char const * data, unsigned int length, unsigned int position,
                                unsigned int * byteCount, char * bytes);
    static int fastNextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                 unsigned int * byteCount, char * bytes);
    static int reportingNextUtf8Char(char const * data, unsigned int length,
                                     unsigned int * codePoint, ErrorInfo * error);
};

inline int StringUtil::utf8Encode(char * buffer, unsigned int bufferSize, int codePoint) {
    return detail::encodeUtf8(buffer, bufferSize, codePoint);
}

inline int StringUtil::nextUtf8Char(char const * data, unsigned int length, unsigned int position,
                                    unsigned int * byteCount) {
    return detail::nextUtf8(detail::shortUtf8(data, length, position), byteCount, fastNextUtf8Char,
                            data, length, position);
}

inline int StringUtil::nextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                     unsigned int * byteCount) {
    return detail::nextUtf8(detail::trustedShortUtf8(data, position), byteCount, fastNextUtf8Char4,
                            data, length, position);
}

inline int StringUtil::nextUtf8Char(char const * data, unsigned int length,
                                    unsigned int * codePoint, ErrorInfo * error) {
    detail::Utf8Sequence const character = detail::shortUtf8(data, length, 0);
    if (character.size == 0) {
        return reportingNextUtf8Char(data, length, codePoint, error);
    }
    if (codePoint != nullptr) {
        *codePoint = static_cast<unsigned int>(character.codePoint);
    }
    return static_cast<int>(character.size);
}

}  // namespace tvk
