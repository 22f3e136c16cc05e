#include "tvk/inet/CookieInfo.h"

namespace tvk {

CookieInfo::CookieInfo() = default;

CookieInfo::CookieInfo(CookieInfo const & other) { *this = other; }

CookieInfo::~CookieInfo() = default;

CookieInfo & CookieInfo::operator=(CookieInfo const & other) {
    name_ = other.name_;
    value_ = other.value_;
    comment_ = other.comment_;
    domain_ = other.domain_;
    maxAge_ = other.maxAge_;
    path_ = other.path_;
    secure_ = other.secure_;
    version_ = other.version_;
    return *this;
}

}  // namespace tvk
