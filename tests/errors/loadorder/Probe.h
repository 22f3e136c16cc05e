#pragma once

#include <string>
#include <vector>

#include "tvk/platform/Export.h"

namespace tvk::test {

/// What a static initialiser that runs as early as any of the library's own found wrong with the
/// constants.
TVK_API std::vector<std::string> const & faultsAtLoad();

/// How many constants it looked at.
TVK_API int constantsSeenAtLoad();

}  // namespace tvk::test
