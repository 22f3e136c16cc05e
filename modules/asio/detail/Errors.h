#pragma once

#include "tvk/errors/ErrorInfo.h"

namespace tvk {

/// What the module's errors carry as their component; error managers flag errors by it.
constexpr int ASIO_COMPONENT_CODE = 6;

/// An error of the module with one of the ERR_ codes of KestrinConstants.
ErrorInfo agentError(int code, CString const & text, ErrorInfo const * cause = nullptr);
/// The same as a network failure, which error managers treat apart.
ErrorInfo networkFailure(int code, CString const & text, ErrorInfo const * cause = nullptr);

/// Reports through `error`, which may be null, why an operation cannot even begin. Always false.
bool refuse(ErrorInfo * error, int code, CString const & text);

}  // namespace tvk
