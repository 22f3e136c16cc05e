#pragma once

#include "tvk/platform/Export.h"

/// TVK_SERVICES_API marks what this module exports.
#if defined(TVK_SERVICES_BUILDING)
#define TVK_SERVICES_API TVK_EXPORT
#else
#define TVK_SERVICES_API TVK_IMPORT
#endif
