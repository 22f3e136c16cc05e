#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/Scan.h"

namespace tvk {

namespace detail {

Scan bestScan() {
    static Scan const best = scanWithSse41() != nullptr ? scanWithSse41() : scanPlain;
    return best;
}

}  // namespace detail

unsigned int JsonUtil::parseOneJsonObject(char const * data, unsigned int length,
                                          SimpleJsonHandler * handler, void * userData,
                                          int options) {
    return detail::bestScan()(detail::ScanEntry::OBJECT, data, length, *handler, userData, options);
}

unsigned int JsonUtil::parseOneJsonArray(char const * data, unsigned int length,
                                         SimpleJsonHandler * handler, void * userData,
                                         int options) {
    return detail::bestScan()(detail::ScanEntry::ARRAY, data, length, *handler, userData, options);
}

unsigned int JsonUtil::parseOneJsonValue(char const * data, unsigned int length,
                                         SimpleJsonHandler * handler, void * userData,
                                         int options) {
    return detail::bestScan()(detail::ScanEntry::VALUE, data, length, *handler, userData, options);
}

unsigned int JsonUtil::parseObjectFields(char const * data, unsigned int length,
                                         SimpleJsonHandler * handler, void * userData,
                                         int options) {
    return detail::bestScan()(detail::ScanEntry::FIELDS, data, length, *handler, userData, options);
}

}  // namespace tvk
