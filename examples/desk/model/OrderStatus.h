#pragma once

#include <string>

namespace desk {

/// For the screen; an unknown status as it is.
std::string orderStatusText(std::string const & status);

/// Whether an order of that status may still be cancelled.
bool isOpenStatus(std::string const & status);

}  // namespace desk
