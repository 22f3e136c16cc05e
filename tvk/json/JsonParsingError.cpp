#include "tvk/json/JsonUtil.h"
#include "tvk/text/detail/OwnedText.h"

namespace tvk {

JsonUtil::XParsingError::XParsingError() : message_(nullptr) {}

JsonUtil::XParsingError::XParsingError(char const * message)
    : message_(detail::copyOfText(message)) {}

JsonUtil::XParsingError::XParsingError(CString const & message)
    : XParsingError(message.GetString()) {}

JsonUtil::XParsingError::XParsingError(XParsingError const & other)
    : XParsingError(other.message_) {}

JsonUtil::XParsingError::~XParsingError() { delete[] message_; }

JsonUtil::XParsingError & JsonUtil::XParsingError::operator=(XParsingError const & other) = default;

void JsonUtil::XParsingError::setErrorMessage(char const * message) {
    detail::replaceText(message_, message);
}

void JsonUtil::XParsingError::setErrorMessage(CString const & message) {
    setErrorMessage(message.GetString());
}

}  // namespace tvk
