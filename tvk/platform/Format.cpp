#include "tvk/platform/Format.h"

#include <cstdio>

#include "tvk/platform/CLocale.h"

namespace tvk::platform {

#if defined(_WIN32)

int formatInto(char * output, std::size_t room, char const * format, va_list arguments) {
    return _vsnprintf_l(output, room, format, cLocale(), arguments);
}

#else

int formatInto(char * output, std::size_t room, char const * format, va_list arguments) {
    locale_t const before = uselocale(cLocale());  // this thread's alone
    int const length = std::vsnprintf(output, room, format, arguments);
    uselocale(before);
    return length;
}

#endif

CString formatted(char const * format, va_list arguments) {
    char shortText[256];
    va_list again;
    va_copy(again, arguments);
    int const length = formatInto(shortText, sizeof shortText, format, arguments);
    CString result;
    if (length > 0 && length < static_cast<int>(sizeof shortText)) {
        result = CString(shortText, length);
    } else if (length > 0) {
        char * const text = result.GetBuffer(length);
        formatInto(text, static_cast<std::size_t>(length) + 1, format, again);
        result.ReleaseBuffer(length);
    }
    va_end(again);
    return result;
}

}  // namespace tvk::platform
