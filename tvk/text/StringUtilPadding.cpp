// Fields of fixed length in binary records.

#include <algorithm>
#include <utility>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/Numbers.h"
#include "tvk/text/StringUtil.h"

namespace tvk {

namespace {

/// A field and the text that goes into it.
struct Field {
    unsigned char * buffer;
    unsigned int bufferSize;
    int offset;
    int length;
    CString text;

    bool fits() const {
        // Deliberate: an unsigned sum of 32 bits. A negative offset makes it wrap, and so may reach
        // back from the middle of a record, as callers do.
        return static_cast<unsigned int>(offset) + static_cast<unsigned int>(length) <= bufferSize;
    }

    /// Pad bytes, negative by what the text loses.
    int margin() const {
        return platform::low32(static_cast<long long>(length) - text.GetLength());
    }

    // Requires of the three: length > 0.
    unsigned char * begin() const { return buffer + offset; }

    unsigned char * pad(unsigned char * place, unsigned char padChar) const {
        return std::fill_n(place, std::max(margin(), 0), padChar);
    }

    unsigned char * copyText(unsigned char * place) const {
        return std::copy_n(text.GetString(), std::min(text.GetLength(), length), place);
    }
};

int refuse(ErrorInfo * error, char const * message) {
    if (error != nullptr) {
        error->setErrorCode(KestrinConstants::ERR_InvalidMessageSize);
        error->setErrorMessage(message);
    }
    return 0;
}

}  // namespace

int StringUtil::leftPadString(unsigned char * buffer, unsigned int bufferSize, int offset,
                              CString text, unsigned char padChar, int length, ErrorInfo * error) {
    Field const field = {buffer, bufferSize, offset, length, std::move(text)};
    if (!field.fits()) {
        return refuse(error, "leftPadString: offset + len > buf.length");
    }
    if (length > 0) {
        field.copyText(field.pad(field.begin(), padChar));
    }
    return field.margin();
}

int StringUtil::rightPadString(unsigned char * buffer, unsigned int bufferSize, int offset,
                               CString text, unsigned char padChar, int length, ErrorInfo * error) {
    Field const field = {buffer, bufferSize, offset, length, std::move(text)};
    if (!field.fits()) {
        return refuse(error, "rightPadString: offset + len > buf.length");
    }
    if (length > 0) {
        field.pad(field.copyText(field.begin()), padChar);
    }
    return field.margin();
}

}  // namespace tvk
