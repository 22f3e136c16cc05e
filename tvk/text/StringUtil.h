#pragma once

#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"

namespace tvk {

/// Text functions: a UTF-8 codec of sequences of up to 6 bytes.
///
/// Threads: no state; any thread may call any of these.
class TVK_API StringUtil {
public:
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

    // The members of the same names in JsonUtil, with an error class of their own.
    static int utf8Encode(char * buffer, unsigned int bufferSize, int codePoint);
    static int surrogatesPairToCodePoint(int high, int low);
    static void codePointToSurrogatesPair(int codePoint, int * high, int * low);
    static bool isHighSurrogate(int value);
    static bool isLowSurrogate(int value);
    static int nextUtf8Char(char const * data, unsigned int length, unsigned int position,
                            unsigned int * byteCount);
    static int nextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                             unsigned int * byteCount);

    /// Characters in `data`, by their lead bytes alone. `*consumed`, when not null, receives where
    /// counting stopped. Throws XParsingError on a bad lead or a cut sequence.
    static unsigned int countUtf8Char(char const * data, unsigned int length,
                                      unsigned int * consumed);

    /// Decodes the sequence of up to 4 bytes at `data`: returns its length and stores the code
    /// point when `codePoint` is not null. 0 for no data. -1 for invalid data: `*error` then holds
    /// ERR_InvalidDataOfEncoding and a text, and must not be null.
    ///
    /// Deliberate: a stray trail byte passes as the lead of 2 bytes, as back ends have sent such.
    static int nextUtf8Char(char const * data, unsigned int length, unsigned int * codePoint,
                            ErrorInfo * error);
    /// The same at the start of a terminated text.
    static int nextUtf8Char(char const * text, unsigned int * codePoint, ErrorInfo * error);

private:
    static int fastNextUtf8Char(char const * data, unsigned int length, unsigned int position,
                                unsigned int * byteCount, char * bytes);
    static int fastNextUtf8Char4(char const * data, unsigned int length, unsigned int position,
                                 unsigned int * byteCount, char * bytes);
};

}  // namespace tvk
