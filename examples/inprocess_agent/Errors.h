#pragma once

#include "tvk/errors/ErrorInfo.h"

namespace inprocess {

/// What the agent's errors carry as their component; error managers flag errors by it.
constexpr int COMPONENT_CODE = 5;

/// An error of the agent with one of the ERR_ codes of tvk::KestrinConstants.
tvk::ErrorInfo agentError(int code, CString const & text, tvk::ErrorInfo const * cause = nullptr);
/// The same as a network failure, which error managers treat apart.
tvk::ErrorInfo networkFailure(int code, CString const & text,
                              tvk::ErrorInfo const * cause = nullptr);

/// Reports through `error`, which may be null, why an operation cannot even begin. Always false.
bool refuse(tvk::ErrorInfo * error, int code, CString const & text);

}  // namespace inprocess
