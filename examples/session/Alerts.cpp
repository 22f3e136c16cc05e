#include "examples/session/Alerts.h"

#include "examples/session/Texts.h"
#include "tvk/agent/KestrinContainer.h"

namespace session {

bool Alerts::report(tvk::ErrorInfo const & error) {
    auto * const manager = tvk::KestrinContainer::instance()->getErrorManager();
    bool const isShown = manager->showError(this, error, nullptr) != 0;
    if (!isShown) {
        account_.say("alert", "held back, it is on the screen already");
    }
    return isShown;
}

void Alerts::dismiss() {
    if (onScreen_) {
        account_.say("alert", "dismissed");
        tvk::KestrinContainer::instance()->getErrorManager()->notifyErrorAlertDismissed(*onScreen_);
        onScreen_.reset();
    }
}

int Alerts::showErrorAlert(tvk::KestrinErrorManager * /*manager*/, tvk::ErrorInfo const & error,
                           int kind, CWnd * /*parent*/) {
    account_.say("alert", (kind == KIND_NETWORK_FAILURE ? "network: " : "") +
                              shown(error.getErrorMessage()) + " (" +
                              std::to_string(error.getErrorCode()) + ")");
    onScreen_ = error;
    ++shownCount_;
    return 1;
}

}  // namespace session
