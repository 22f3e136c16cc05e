#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/Scan.h"

namespace tvk {

namespace detail {

ScanVariant const & bestScanVariant() {
    static ScanVariant const best = [] {
        for (ScanVariant const * const variant :
             {scanVariantAvx512(), scanVariantAvx2(), scanVariantSse41()}) {
            if (variant != nullptr) {
                return *variant;
            }
        }
        return *scanVariantPlain();
    }();
    return best;
}

}  // namespace detail

namespace {

unsigned int scan(detail::ScanEntry entry, char const * data, unsigned int length,
                  SimpleJsonHandler const & table, void * userData, int options) {
    detail::TableHandler handler(table, userData);
    return detail::bestScanVariant().table(entry, data, length, handler, options);
}

}  // namespace

unsigned int JsonUtil::parseOneJsonObject(char const * data, unsigned int length,
                                          SimpleJsonHandler * handler, void * userData,
                                          int options) {
    return scan(detail::ScanEntry::OBJECT, data, length, *handler, userData, options);
}

unsigned int JsonUtil::parseOneJsonArray(char const * data, unsigned int length,
                                         SimpleJsonHandler * handler, void * userData,
                                         int options) {
    return scan(detail::ScanEntry::ARRAY, data, length, *handler, userData, options);
}

unsigned int JsonUtil::parseOneJsonValue(char const * data, unsigned int length,
                                         SimpleJsonHandler * handler, void * userData,
                                         int options) {
    return scan(detail::ScanEntry::VALUE, data, length, *handler, userData, options);
}

unsigned int JsonUtil::parseObjectFields(char const * data, unsigned int length,
                                         SimpleJsonHandler * handler, void * userData,
                                         int options) {
    return scan(detail::ScanEntry::FIELDS, data, length, *handler, userData, options);
}

}  // namespace tvk
