#include "modules/asio/detail/Errors.h"

#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/StringData.h"

namespace tvk {

ErrorInfo agentError(int code, CString const & text, ErrorInfo const * cause) {
    return {ASIO_COMPONENT_CODE, KestrinConstants::ErrorDomain_Kestrin, code, text, cause};
}

ErrorInfo networkFailure(int code, CString const & text, ErrorInfo const * cause) {
    ErrorInfo error = agentError(code, text, cause);
    error.setUserInfo(ErrorInfo::OrvKey_ErrorTypeHint,
                      new StringData(ErrorInfo::ErrorType_NetworkFailure));
    return error;
}

bool refuse(ErrorInfo * error, int code, CString const & text) {
    if (error != nullptr) {
        *error = agentError(code, text);
    }
    return false;
}

}  // namespace tvk
