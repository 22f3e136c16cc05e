#pragma once

#include <deque>
#include <string>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinErrorManager.h"
#include "tvk/errors/KestrinErrorShower.h"
#include "tvk/values/RefCountedPtr.h"

namespace desk {

/// The alerts that wait for the user, in the order in which they came up. The error manager decides what
/// becomes one; as long as an alert waits, the same error does not come again.
class AlertModel : public tvk::KestrinErrorShower {
public:
    static constexpr int SHOWN = 1;

    int showErrorAlert(tvk::KestrinErrorManager * manager, tvk::ErrorInfo const & error, int kind,
                       CWnd * parent) override;

    bool isEmpty() const { return alerts_.empty(); }
    std::size_t count() const { return alerts_.size(); }
    // Of the one that came first. Requires: there is one. UTF-8.
    std::string title() const;
    std::string text() const;
    std::string detail() const;  ///< domain, code and the message as it came
    /// The user closed it. Nothing where there is none.
    void dismiss();

    /// Another number after each change.
    unsigned int revision() const { return revision_; }

private:
    struct Alert {
        tvk::RefCountedPtr<tvk::KestrinErrorManager> manager;
        tvk::ErrorInfo error;
        int kind;
    };

    std::deque<Alert> alerts_;
    unsigned int revision_ = 0;
};

}  // namespace desk
