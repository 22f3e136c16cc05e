#pragma once

#include <cstddef>
#include <optional>

#include "examples/session/Account.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinErrorManager.h"
#include "tvk/errors/KestrinErrorShower.h"

namespace session {

/// Shows errors as lines of the account. The alert that came last stays on the screen until it is
/// dismissed.
class Alerts : public tvk::KestrinErrorShower {
public:
    explicit Alerts(Account & account) : account_(account) {}

    /// Hands the error to the manager of the container, which decides whether it comes back to
    /// showErrorAlert. False where it was held back.
    bool report(tvk::ErrorInfo const & error);
    /// What a user does who has read it.
    void dismiss();
    std::size_t shownCount() const { return shownCount_; }

    int showErrorAlert(tvk::KestrinErrorManager * manager, tvk::ErrorInfo const & error, int kind,
                       CWnd * parent) override;

private:
    Account & account_;
    std::optional<tvk::ErrorInfo> onScreen_;
    std::size_t shownCount_ = 0;
};

}  // namespace session
