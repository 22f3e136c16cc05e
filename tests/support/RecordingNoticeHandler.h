#pragma once

#include <functional>
#include <string>
#include <utility>

#include "tests/support/CallText.h"
#include "tests/support/Recorded.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk::test {

/// A handler of notices that writes what it gets into a log, with its name in front:
/// `a.onNotice(0x1234, 0x5678)`.
class RecordingNoticeHandler : public KestrinNoticeMessageHandler {
public:
    /// `log` must outlive the handler.
    RecordingNoticeHandler(Log & log, std::string name) : log_(&log), name_(std::move(name)) {}

    std::function<void()> during;  ///< runs inside each callback; may throw

    std::string const & name() const { return name_; }

    void onNotice(Kestrin * agent, RefCountedPtr<KestrinMessage> const & notice) override {
        log_->push_back(callText(name_ + ".onNotice", agent, notice));
        if (during) {
            during();
        }
    }

private:
    Log * log_;
    std::string name_;
};

}  // namespace tvk::test
