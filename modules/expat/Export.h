#pragma once

#include "tvk/platform/Export.h"

/// TVK_EXPAT_API marks what this module exports.
#if defined(TVK_EXPAT_BUILDING)
#define TVK_EXPAT_API TVK_EXPORT
#else
#define TVK_EXPAT_API TVK_IMPORT
#endif
