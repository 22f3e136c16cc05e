#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"

namespace tvk {

/// What an HTTP client needs to know about its proxy, its name and its certificate. A plain value of
/// five texts, all empty at first, which nothing checks and nothing here uses.
class TVK_API InetClientInfo {
public:
    InetClientInfo();
    InetClientInfo(InetClientInfo const & other);
    ~InetClientInfo();

    InetClientInfo & operator=(InetClientInfo const & other);

    CString getProxy() const { return proxy_; }
    void setProxy(CString const & address) { proxy_ = address; }
    CString getProxyUser() const { return proxyUser_; }
    void setProxyUser(CString const & name) { proxyUser_ = name; }
    CString getProxyPassword() const { return proxyPassword_; }
    void setProxyPassword(CString const & password) { proxyPassword_ = password; }
    /// The text by which the client names itself.
    CString getUserAgent() const { return userAgent_; }
    void setUserAgent(CString const & name) { userAgent_ = name; }
    /// The path of a certificate file.
    CString getCertFile() const { return certFile_; }
    void setCertFile(CString const & path) { certFile_ = path; }

private:
    CString proxy_;
    CString proxyUser_;
    CString proxyPassword_;
    CString userAgent_;
    CString certFile_;
};

}  // namespace tvk
