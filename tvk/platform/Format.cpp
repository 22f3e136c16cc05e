#include "tvk/platform/Format.h"

#include <cerrno>
#include <cstdio>
#include <new>

#include "tvk/platform/CLocale.h"

namespace tvk::platform {

namespace {

/// A second walk over the same arguments, ended also when an exception passes.
struct ArgumentsCopy {
    explicit ArgumentsCopy(va_list source) { va_copy(arguments, source); }
    ArgumentsCopy(ArgumentsCopy const &) = delete;
    ArgumentsCopy & operator=(ArgumentsCopy const &) = delete;
    ~ArgumentsCopy() { va_end(arguments); }

    va_list arguments;
};

CString failedFormat() {
    if (errno == EOVERFLOW) {
        throw std::bad_alloc();  // longer than any text can be
    }
    return CString();
}

}  // namespace

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
    ArgumentsCopy again(arguments);
    int const length = formatInto(shortText, sizeof shortText, format, arguments);
    if (length < 0) {
        return failedFormat();
    }
    if (length < static_cast<int>(sizeof shortText)) {
        return CString(shortText, length);
    }
    CString result;
    char * const text = result.GetBuffer(length);
    formatInto(text, static_cast<std::size_t>(length) + 1, format, again.arguments);
    result.ReleaseBuffer(length);
    return result;
}

}  // namespace tvk::platform
