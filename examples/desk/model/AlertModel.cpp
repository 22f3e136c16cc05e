#include "examples/desk/model/AlertModel.h"

#include "examples/desk/Text.h"
#include "examples/desk/model/ErrorText.h"

namespace desk {

int AlertModel::showErrorAlert(tvk::KestrinErrorManager * manager, tvk::ErrorInfo const & error,
                               int kind, CWnd *) {
    alerts_.push_back({manager, error, kind});
    ++revision_;
    return SHOWN;
}

std::string AlertModel::title() const {
    return alerts_.front().kind == KIND_NETWORK_FAILURE ? "通信エラー" : "エラー";
}

std::string AlertModel::text() const { return errorText(alerts_.front().error); }

std::string AlertModel::detail() const {
    tvk::ErrorInfo const & error = alerts_.front().error;
    return utf8(error.getDomain()) + " " + std::to_string(error.getErrorCode()) + "  " +
           utf8(error.getErrorMessage());
}

void AlertModel::dismiss() {
    if (alerts_.empty()) {
        return;
    }
    Alert const alert = alerts_.front();
    alerts_.pop_front();
    ++revision_;
    alert.manager->notifyErrorAlertDismissed(alert.error);
}

}  // namespace desk
