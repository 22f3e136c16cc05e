#pragma once

#include "examples/desk/model/AlertModel.h"
#include "tvk/errors/ErrorInfo.h"

namespace desk {

/// What the errors of the desk itself carry as their component.
constexpr int COMPONENT_CODE = 7;

tvk::ErrorInfo timeoutError();

/// Hands the error to the error manager in the container, which decides whether it becomes an alert.
void report(AlertModel & alerts, tvk::ErrorInfo const & error);

}  // namespace desk
