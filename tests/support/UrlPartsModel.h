#pragma once

#include <algorithm>
#include <climits>
#include <string>
#include <string_view>

#include "tests/support/NumberAtStart.h"
#include "tests/support/TextBytes.h"
#include "tvk/inet/InetUtil.h"

namespace tvk::test {

/// The parts of a URL. A part that it does not have stays as it is.
struct UrlParts {
    std::string scheme = "no scheme";
    std::string host = "no host";
    int port = -77;
    std::string path = "no path";

    bool operator==(UrlParts const &) const = default;
};

/// Cuts a URL into parts that are these before.
inline UrlParts urlPartsWithLibrary(std::string_view url, UrlParts parts = {}) {
    CString scheme = textOf(parts.scheme);
    CString host = textOf(parts.host);
    CString path = textOf(parts.path);
    InetUtil::parseUrl(textOf(url), &scheme, &host, &parts.port, &path);
    parts.scheme = bytesOf(scheme);
    parts.host = bytesOf(host);
    parts.path = bytesOf(path);
    return parts;
}

/// The slow model of InetUtil::parseUrl: gives byte after byte to the part that it belongs to.
inline UrlParts urlPartsWithModel(std::string_view url, UrlParts parts = {}) {
    std::string rest(url);
    for (std::string const scheme : {"http", "https", "ftp"}) {
        if (rest.rfind(scheme + "://", 0) == 0) {
            parts.scheme = scheme;
            rest.erase(0, scheme.size() + 3);
            break;
        }
    }
    bool hasPort = false;
    bool hasPath = false;
    std::string host;
    std::string port;
    std::string path;
    bool const colonComes = rest.find(':') != std::string::npos;
    for (char const byte : rest) {
        if (hasPath) {
            path += byte;
        } else if (byte == ':' && !hasPort) {
            hasPort = true;
        } else if (byte == '/' && (hasPort || !colonComes)) {
            hasPath = true;
        } else {
            (hasPort ? port : host) += byte;
        }
    }
    parts.host = host;
    if (hasPort) {
        parts.port = static_cast<int>(std::clamp<long long>(numberAtStart(port), INT_MIN, INT_MAX));
    }
    if (hasPath) {
        parts.path = path;
    }
    return parts;
}

}  // namespace tvk::test
