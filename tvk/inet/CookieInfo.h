#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"

namespace tvk {

/// One cookie of a Set-Cookie header, as InetUtil::parseSetCookie reads it. A plain value: all but
/// `secure` are texts, kept as they came, the date of `expires` and the number of `maxAge` too. All
/// texts are empty at first, and `secure` is false.
///
/// Deliberate: a copy is a cookie without an end of its own. The copy constructor leaves its
/// `expires` empty, assignment keeps that of the target, and callers rely on both. There is no move:
/// std::move copies, and so does a vector that grows. Whoever needs the date takes it along with
/// setExpires.
class TVK_API CookieInfo {
public:
    CookieInfo();
    CookieInfo(CookieInfo const & other);
    ~CookieInfo();

    CookieInfo & operator=(CookieInfo const & other);

    CString getName() const { return name_; }
    void setName(CString const & name) { name_ = name; }
    /// With its quotation marks, where it has any.
    CString getValue() const { return value_; }
    void setValue(CString const & value) { value_ = value; }
    CString getComment() const { return comment_; }
    void setComment(CString const & comment) { comment_ = comment; }
    CString getDomain() const { return domain_; }
    void setDomain(CString const & domain) { domain_ = domain; }
    CString getMaxAge() const { return maxAge_; }
    void setMaxAge(CString const & maxAge) { maxAge_ = maxAge; }
    CString getExpires() const { return expires_; }
    void setExpires(CString const & expires) { expires_ = expires; }
    CString getPath() const { return path_; }
    void setPath(CString const & path) { path_ = path; }
    bool isSecure() const { return secure_; }
    void setSecure(bool secure) { secure_ = secure; }
    CString getVersion() const { return version_; }
    void setVersion(CString const & version) { version_ = version; }

private:
    CString name_;
    CString value_;
    CString comment_;
    CString domain_;
    CString maxAge_;
    CString expires_;
    CString path_;
    bool secure_ = false;
    CString version_;
};

}  // namespace tvk
