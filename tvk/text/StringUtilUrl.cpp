#include <cstdint>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"
#include "tvk/text/detail/BoundedText.h"
#include "tvk/text/detail/PercentCoders.h"

namespace tvk {

namespace {

[[gnu::cold, gnu::noinline]] void report(ErrorInfo & error, char const * text,
                                         std::size_t position) {
    error.setErrorCode(KestrinConstants::ERR_InvalidDataOfEncoding);
    error.setErrorMessage(
        StringUtil::format("%s, near position %u", text, static_cast<unsigned int>(position)));
}

void reportCutSequence(ErrorInfo & error, std::size_t position) {
    report(error, "invalid text for URL encoding(too few bytes)", position);
}

void reportBadDigit(ErrorInfo & error, std::size_t position) {
    error.setDomain(KestrinConstants::ErrorDomain_Kestrin);
    report(error, "invalid text for URL encoding", position);
}

}  // namespace

CString StringUtil::urlEncode(char const * data, unsigned int size) {
    return detail::boundedText(std::uint64_t{3} * size, [=](char * out) {
        return detail::bestPercentCoders().encode(data, size, out);
    });
}

CString StringUtil::urlDecode(char const * data, unsigned int size, ErrorInfo * error) {
    return detail::boundedText(size, [=](char * out) {
        auto const [read, end] = detail::bestPercentCoders().decode(data, size, out);
        if (read < size && error != nullptr) {
            if (size - read < 3) {
                reportCutSequence(*error, read);
            } else {
                reportBadDigit(*error, read);
            }
        }
        return end;
    });
}

}  // namespace tvk
