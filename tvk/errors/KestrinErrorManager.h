#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/CWnd.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

class ErrorInfo;
class KestrinErrorShower;

/// Kinds of error that are flagged a component; a manager has room for 0 to ERRORTYPE_LAST.
enum KestrinErrorTypeEnum : int {
    ERRORTYPE_NETWORK_FAILURE = 0,  ///< the one that showError itself uses
    ERRORTYPE_SYSTEM_ERROR = 1,
    ERRORTYPE_LAST = 7,
};

/// Decides whether an error is shown: whoever meets a failure hands the record to showError.
///
/// Flags:   one for each type and component. A component is a bit number, taken modulo 32;
///          ErrorInfo::ComponentCode_Global flags all components.
/// Threads: one thread at a time.
/// Failure: none is reported. The hints that are read (ErrorInfo::OrvKey_ErrorTypeHint and
///          OrvKey_GlobalErrorHint) must be field values and not null.
class TVK_API KestrinErrorManager : public RefCounted {
public:
    ~KestrinErrorManager() override = 0;

    /// By the hint OrvKey_ErrorTypeHint alone.
    virtual bool isNetworkFailure(ErrorInfo const & error) const = 0;
    /// "component:domain:code" in numbers: two errors with the same one are the same error.
    virtual CString getInternalErrorCode(ErrorInfo const & error) const = 0;
    /// Whether the flag of the component or the global one is set.
    virtual bool hasErrorOfType(KestrinErrorTypeEnum type, int component) const = 0;
    /// Clears the flag of the component, and the global one with it.
    virtual void clearErrorOfType(KestrinErrorTypeEnum type, int component) = 0;
    virtual void clearErrorForAllComponents(KestrinErrorTypeEnum type) = 0;
    /// Requires: 0 <= type <= ERRORTYPE_LAST.
    virtual void setErrorOfType(KestrinErrorTypeEnum type, int component) = 0;
    /// The number of one of the domains, 1 (that of the system) for all others.
    virtual int getErrorDomainCode(CString domain) const = 0;
    /// Shows the error, unless it is being shown already or is a network failure of a component that is
    /// flagged with one. The shower's result, 0 for an error that was held back. A null `shower` shows
    /// nothing, and the error counts as being shown.
    virtual int showError(KestrinErrorShower * shower, ErrorInfo const & error, CWnd * parent) = 0;
    /// The user closed the alert: the error may be shown again. Flags stay.
    virtual void notifyErrorAlertDismissed(ErrorInfo const & error) = 0;
};

}  // namespace tvk
