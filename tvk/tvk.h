#pragma once

/// Every public header of the library.

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/platform/Format.h"
#include "tvk/platform/Numbers.h"
