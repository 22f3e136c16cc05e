#include "tvk/platform/CLocale.h"

namespace tvk::platform {

LocaleHandle cLocale() {
#if defined(_WIN32)
    static LocaleHandle const handle = _create_locale(LC_ALL, "C");
#else
    static LocaleHandle const handle = newlocale(LC_ALL_MASK, "C", nullptr);
#endif
    return handle;
}

}  // namespace tvk::platform
