#pragma once

#include "tvk/platform/Export.h"

/// TVK_ASIO_API marks what this module exports.
#if defined(TVK_ASIO_BUILDING)
#define TVK_ASIO_API TVK_EXPORT
#else
#define TVK_ASIO_API TVK_IMPORT
#endif
