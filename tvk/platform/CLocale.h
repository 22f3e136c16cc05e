#pragma once

#include <locale.h>
#if defined(__APPLE__)
#include <xlocale.h>
#endif

namespace tvk::platform {

#if defined(_WIN32)
using LocaleHandle = _locale_t;
#else
using LocaleHandle = locale_t;
#endif

/// The "C" locale as a handle, made on first use and kept until the process ends.
LocaleHandle cLocale();

}  // namespace tvk::platform
