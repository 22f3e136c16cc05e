#pragma once

/// `SYSTEMTIME`, a broken-down time with milliseconds, at global scope: the system's own where it has
/// one.

#if defined(_WIN32)

#include <winsock2.h>  // must stand before windows.h

#include <windows.h>

#else

#include <cstdint>

struct _SYSTEMTIME {
    std::uint16_t wYear;       ///< the full year
    std::uint16_t wMonth;      ///< from 1
    std::uint16_t wDayOfWeek;  ///< Sunday is 0
    std::uint16_t wDay;        ///< from 1
    std::uint16_t wHour;
    std::uint16_t wMinute;
    std::uint16_t wSecond;
    std::uint16_t wMilliseconds;
};
using SYSTEMTIME = _SYSTEMTIME;

#endif
