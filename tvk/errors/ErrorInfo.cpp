#include "tvk/errors/ErrorInfo.h"

#include <map>
#include <new>
#include <utility>

namespace tvk {

namespace {

constexpr int MAXIMUM_TEXT = 1024;

}  // namespace

struct ErrorInfo::UserInfo {
    std::map<CString, RefCountedPtr<RefCounted>> entries;
};

ErrorInfo::ErrorInfo(ErrorInfo const * cause) : domain_(ErrorDomain_System) { setCause(cause); }

ErrorInfo::ErrorInfo(int componentCode)
    : componentCode_(componentCode), domain_(ErrorDomain_System) {}

ErrorInfo::ErrorInfo(int componentCode, CString const & domain, int errorCode,
                     CString const & errorMessage, ErrorInfo const * cause)
    : componentCode_(componentCode),
      domain_(domain),
      errorCode_(errorCode),
      errorMessage_(errorMessage) {
    setCause(cause);
}

ErrorInfo::ErrorInfo(ErrorInfo const & other)
    : ErrorInfo(other.componentCode_, other.domain_, other.errorCode_, other.errorMessage_,
                other.cause_) {
    setUserInfo(other.userInfo_);
}

ErrorInfo::~ErrorInfo() {
    delete cause_;
    delete userInfo_;
}

ErrorInfo & ErrorInfo::operator=(ErrorInfo const & other) {
    if (&other != this) {
        componentCode_ = other.componentCode_;
        domain_ = other.domain_;
        errorCode_ = other.errorCode_;
        errorMessage_ = other.errorMessage_;
        setCause(other.cause_);
        setUserInfo(other.userInfo_);
    }
    return *this;
}

void ErrorInfo::setErrorMessage(char const * message, unsigned int length) {
    errorMessage_ = CString(message, static_cast<int>(length));
}

void ErrorInfo::setCause(ErrorInfo const * cause) {
    // Deliberate: the held record goes first, whatever comes in; handing getCause() back is the
    // caller's fault. Cleared too, so that a copy that throws leaves no dangling pointer behind.
    delete std::exchange(cause_, nullptr);
    if (cause != nullptr) {
        cause_ = new (std::nothrow) ErrorInfo(*cause);
    }
}

void ErrorInfo::setUserInfo(CString const & key, RefCounted * value) {
    if (userInfo_ == nullptr) {
        userInfo_ = new UserInfo;
    }
    userInfo_->entries[key] = value;
}

bool ErrorInfo::hasUserInfo(CString const & key) const {
    return userInfo_ != nullptr && userInfo_->entries.count(key) != 0;
}

RefCountedPtr<RefCounted> ErrorInfo::getUserInfo(CString const & key) const {
    if (userInfo_ == nullptr) {
        return nullptr;
    }
    auto const found = userInfo_->entries.find(key);
    return found == userInfo_->entries.end() ? nullptr : found->second;
}

void ErrorInfo::removeUserInfo(CString const & key) {
    if (userInfo_ != nullptr) {
        userInfo_->entries.erase(key);
    }
}

void ErrorInfo::clearAllUserInfo() {
    if (userInfo_ != nullptr) {
        userInfo_->entries.clear();
    }
}

std::vector<CString> ErrorInfo::getAllUserInfoKeys() const {
    std::vector<CString> keys;
    if (userInfo_ != nullptr) {
        for (auto const & entry : userInfo_->entries) {
            keys.push_back(entry.first);
        }
    }
    return keys;
}

CString ErrorInfo::toString() const {
    CString text;
    text.Format("%d@%s(%s)", errorCode_, domain_.GetString(), errorMessage_.GetString());
    return text.Left(MAXIMUM_TEXT);
}

/// Takes over a whole map. Its old hints go before the new ones come, in a record that had some.
void ErrorInfo::setUserInfo(UserInfo const * userInfo) {
    if (userInfo == nullptr) {
        delete std::exchange(userInfo_, nullptr);
    } else if (userInfo_ == nullptr) {
        userInfo_ = new UserInfo(*userInfo);
    } else if (userInfo_ != userInfo) {
        userInfo_->entries.clear();
        userInfo_->entries = userInfo->entries;
    }
}

}  // namespace tvk
