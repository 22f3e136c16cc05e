// Fields of fixed length in binary records.

#include <algorithm>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/Numbers.h"
#include "tvk/text/StringUtil.h"

namespace tvk {

namespace {

/// A field of a record, told by the caller.
struct Field {
    unsigned char * buffer;
    unsigned int bufferSize;
    int offset;
    int length;

    bool fits() const {
        // Deliberate: an unsigned sum of 32 bits. A negative offset makes it wrap, and so may reach
        // back from the middle of a record, as callers do.
        return static_cast<unsigned int>(offset) + static_cast<unsigned int>(length) <= bufferSize;
    }

    unsigned char * begin() const { return buffer + offset; }
};

int refuse(ErrorInfo * error, char const * message) {
    if (error != nullptr) {
        error->setErrorCode(KestrinConstants::ERR_InvalidMessageSize);
        error->setErrorMessage(message);
    }
    return 0;
}

/// How the bytes of a field are shared out between the text and the padding.
struct Shares {
    int text;
    int padding;

    Shares(int textLength, int fieldLength)
        : text(std::min(textLength, fieldLength)), padding(fieldLength - text) {}
};

/// What both operations return: the padding, negative by what was cut off.
int missing(int textLength, int fieldLength) {
    return platform::low32(static_cast<long long>(fieldLength) - textLength);
}

}  // namespace

int StringUtil::leftPadString(unsigned char * buffer, unsigned int bufferSize, int offset,
                              CString text, unsigned char padChar, int length, ErrorInfo * error) {
    Field const field = {buffer, bufferSize, offset, length};
    if (!field.fits()) {
        return refuse(error, "leftPadString: offset + len > buf.length");
    }
    if (length > 0) {
        Shares const shares(text.GetLength(), length);
        unsigned char * const textBegin = std::fill_n(field.begin(), shares.padding, padChar);
        std::copy_n(text.GetString(), shares.text, textBegin);
    }
    return missing(text.GetLength(), length);
}

int StringUtil::rightPadString(unsigned char * buffer, unsigned int bufferSize, int offset,
                               CString text, unsigned char padChar, int length, ErrorInfo * error) {
    Field const field = {buffer, bufferSize, offset, length};
    if (!field.fits()) {
        return refuse(error, "rightPadString: offset + len > buf.length");
    }
    if (length > 0) {
        Shares const shares(text.GetLength(), length);
        unsigned char * const textEnd = std::copy_n(text.GetString(), shares.text, field.begin());
        std::fill_n(textEnd, shares.padding, padChar);
    }
    return missing(text.GetLength(), length);
}

}  // namespace tvk
