#pragma once

#include <vector>

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

/// The error record: which component failed, in which domain, with which code and message, with
/// hints for the error manager and a chain of causes.
///
/// Ownership: a cause is always copied, with its own causes and hints; the record owns the copy. Hint
///            values are shared between copies, one count an entry.
/// Threads:   one record belongs to one thread at a time, and so do copies that share hint values.
/// Failure:   none is reported; a cause that cannot be allocated is silently left out.
class TVK_API ErrorInfo {
public:
    static constexpr int ERR_OK = 0;
    static constexpr int ERR_UNKNOWN = -1;
    /// Deliberate: spelt so in the interface, and another code than
    /// KestrinConstants::ERR_UnsupportedFunction; modules tell the two apart.
    static constexpr int ERR_UNSOPPORTED_FUNCTION = -2;

    static constexpr int ComponentCode_Unknown = 0;
    /// Addresses all components. Codes are used as bit numbers: 0 to 31.
    static constexpr int ComponentCode_Global = 31;
    static CString const ComponentName_Unkown;
    static CString const ComponentName_Global;

    static CString const ErrorType_NetworkFailure;
    static CString const ErrorType_SystemError;

    static CString const ErrorDomain_System;
    static CString const ErrorDomain_POSIX;
    static CString const ErrorDomain_UrlLoading;
    static CString const ErrorDomain_CURL;
    static CString const ErrorDomain_SSL;
    static constexpr int ErrorDomainCode_System = 1;
    static constexpr int ErrorDomainCode_POSIX = 2;
    static constexpr int ErrorDomainCode_UrlLoading = 3;
    static constexpr int ErrorDomainCode_CURL = 4;
    static constexpr int ErrorDomainCode_SSL = 5;

    // Keys of hints. What stands under the first two must be a FieldValue and not null.
    static CString const OrvKey_ErrorTypeHint;    ///< asString is one of the ErrorType_ texts
    static CString const OrvKey_GlobalErrorHint;  ///< "1", "true", "YES", "yes": all components
    static CString const OrvKey_CanRetryHint;
    static CString const OrvKey_ErrorReply;

    ErrorInfo(ErrorInfo const * cause = nullptr);
    ErrorInfo(int componentCode);
    ErrorInfo(int componentCode, CString const & domain, int errorCode,
              CString const & errorMessage, ErrorInfo const * cause);
    ErrorInfo(ErrorInfo const & other);
    ~ErrorInfo();

    ErrorInfo & operator=(ErrorInfo const & other);

    int getComponentCode() const { return componentCode_; }
    void setComponentCode(int code) { componentCode_ = code; }
    CString getDomain() const { return domain_; }
    void setDomain(CString const & domain) { domain_ = domain; }
    int getErrorCode() const { return errorCode_; }
    void setErrorCode(int code) { errorCode_ = code; }
    CString getErrorMessage() const { return errorMessage_; }
    void setErrorMessage(CString const & message) { errorMessage_ = message; }
    void setErrorMessage(char const * message) { errorMessage_ = message; }
    void setErrorMessage(char const * message, unsigned int length);

    /// The code alone decides.
    bool hasError() const { return errorCode_ != ERR_OK; }

    /// The held copy, or null. It lives until the next setCause, assignment or the record's end.
    ErrorInfo const * getCause() const { return cause_; }
    /// Requires: `cause` is not part of this record's own chain.
    void setCause(ErrorInfo const * cause);

    /// Takes one count on the value, which may be null: the key is there all the same.
    void setUserInfo(CString const & key, RefCounted * value);
    bool hasUserInfo(CString const & key) const;
    /// Null for an absent key as for a null value.
    RefCountedPtr<RefCounted> getUserInfo(CString const & key) const;
    void removeUserInfo(CString const & key);
    void clearAllUserInfo();
    /// In ascending order of their bytes.
    std::vector<CString> getAllUserInfoKeys() const;

    /// "code@domain(message)", at most the first 1024 bytes of it.
    CString toString() const;

private:
    struct UserInfo;

    void setUserInfo(UserInfo const * userInfo);

    int componentCode_ = ComponentCode_Unknown;
    CString domain_;
    int errorCode_ = ERR_OK;
    CString errorMessage_;
    UserInfo * userInfo_ = nullptr;  // made by the first setUserInfo
    ErrorInfo * cause_ = nullptr;
};

}  // namespace tvk
