#pragma once

#include <cstdarg>
#include <cstddef>

#include "tvk/platform/CString.h"

namespace tvk::platform {

/// vsnprintf that does not follow the process's locale: `.` is the decimal mark. Same result and
/// same use of `output` and `room` as vsnprintf; a negative result means that the format failed.
TVK_API int formatInto(char * output, std::size_t room, char const * format, va_list arguments)
    TVK_PRINTF_LIKE(3, 0);

/// The whole formatted text, of any length; empty when the format fails. A text that would pass
/// 0x7fffffff bytes throws std::bad_alloc.
TVK_API CString formatted(char const * format, va_list arguments) TVK_PRINTF_LIKE(1, 0);

}  // namespace tvk::platform
