#pragma once

#include "tvk/platform/CWnd.h"
#include "tvk/platform/Export.h"

namespace tvk {

class ErrorInfo;
class KestrinErrorManager;

/// Shows an error to the user; supplied by the application.
///
/// Calls:     by KestrinErrorManager::showError, on its thread, for each error that is not held back.
///            When the user closes the alert, whoever showed it calls
///            KestrinErrorManager::notifyErrorAlertDismissed; until then the same error is held back.
///            That may happen inside showErrorAlert, where the alert waits for the user.
/// Ownership: the manager does not own a shower, and keeps it no longer than a call.
class TVK_API KestrinErrorShower {
public:
    static constexpr int KIND_NETWORK_FAILURE = 0;
    static constexpr int KIND_OTHER = 1;

    virtual ~KestrinErrorShower();

    /// `kind` is one of the two above. `parent` is the window given to showError, or null. The result
    /// becomes that of showError, where 0 stands for an error held back.
    virtual int showErrorAlert(KestrinErrorManager * manager, ErrorInfo const & error, int kind,
                               CWnd * parent) = 0;
};

}  // namespace tvk
