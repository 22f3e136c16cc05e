// URLs: InetUtil::parseUrl.

#include <cstring>

#include "tvk/inet/InetUtil.h"
#include "tvk/text/StringUtil.h"

namespace tvk {

namespace {

struct Scheme {
    char const * name;
    char const * prefix;
};

constexpr Scheme SCHEMES[] = {{"http", "http://"}, {"https", "https://"}, {"ftp", "ftp://"}};

Scheme const * schemeOf(CString const & url) {
    for (Scheme const & scheme : SCHEMES) {
        if (StringUtil::startsWith(url, scheme.prefix)) {
            return &scheme;
        }
    }
    return nullptr;
}

void store(CString const & part, CString * output) {
    if (output != nullptr) {
        *output = part;
    }
}

}  // namespace

void InetUtil::parseUrl(CString const & url, CString * scheme, CString * host, int * port,
                        CString * path) {
    Scheme const * const known = schemeOf(url);
    int const start = known == nullptr ? 0 : static_cast<int>(std::strlen(known->prefix));
    int const colon = url.Find(':', start);
    int const slash = url.Find('/', colon < 0 ? start : colon + 1);
    int const end = slash < 0 ? url.GetLength() : slash;

    // All is cut before anything is stored: a part may go into the very object that `url` is.
    CString const hostText = url.Mid(start, (colon < 0 ? end : colon) - start);
    CString const portText = url.Mid(colon + 1, end - colon - 1);
    CString const pathText = url.Mid(end + 1);

    if (known != nullptr) {
        store(known->name, scheme);
    }
    store(hostText, host);
    if (colon >= 0 && port != nullptr) {
        *port = StringUtil::parseInt(portText);
    }
    if (slash >= 0) {
        store(pathText, path);
    }
}

}  // namespace tvk
