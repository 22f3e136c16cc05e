#include "tvk/text/StringUtil.h"
#include "tvk/text/detail/OwnedText.h"

namespace tvk {

StringUtil::XParsingError::XParsingError() : message_(nullptr) {}

StringUtil::XParsingError::XParsingError(char const * message)
    : message_(detail::copyOfText(message)) {}

StringUtil::XParsingError::XParsingError(XParsingError const & other)
    : XParsingError(other.message_) {}

StringUtil::XParsingError::~XParsingError() { delete[] message_; }

StringUtil::XParsingError & StringUtil::XParsingError::operator=(XParsingError const & other) =
    default;

void StringUtil::XParsingError::setErrorMessage(char const * message) {
    detail::replaceText(message_, message);
}

}  // namespace tvk
