#pragma once

#include <functional>
#include <string>
#include <utility>

#include "tests/support/CallText.h"
#include "tests/support/Recorded.h"
#include "tvk/agent/KestrinListener.h"

namespace tvk::test {

/// A listener that writes what it hears into a log, with its name in front: `a.onConnected(0x1234)`.
class RecordingListener : public KestrinListener {
public:
    /// `log` must outlive the listener.
    RecordingListener(Log & log, std::string name) : log_(&log), name_(std::move(name)) {}

    std::function<void()> during;  ///< runs inside each callback; may throw

    void onStartupCompleted(Kestrin * agent, RecordData const & startupData) override {
        record(".onStartupCompleted", agent, &startupData);
    }
    void onLoginReply(Kestrin * agent, RefCountedPtr<KestrinMessage> const & reply, bool succeeded,
                      CString const & code, CString const & text) override {
        record(".onLoginReply", agent, reply, succeeded, code, text);
    }
    void onReloginRequired(Kestrin * agent, ErrorInfo const & reason) override {
        record(".onReloginRequired", agent, &reason);
    }
    void onKestrinError(Kestrin * agent, ErrorInfo const & error) override {
        record(".onKestrinError", agent, &error);
    }
    void onConnected(Kestrin * agent) override { record(".onConnected", agent); }
    void onDisconnected(Kestrin * agent, ErrorInfo const * error) override {
        record(".onDisconnected", agent, error);
    }
    void onStopped(Kestrin * agent, ErrorInfo const * error) override {
        record(".onStopped", agent, error);
    }
    void onRealTimeServiceStarted(Kestrin * agent, bool restarted) override {
        record(".onRealTimeServiceStarted", agent, restarted);
    }
    void onRealTimeServiceStopped(Kestrin * agent, ErrorInfo const * error) override {
        record(".onRealTimeServiceStopped", agent, error);
    }

private:
    template <class... Arguments>
    void record(char const * name, Arguments const &... arguments) {
        log_->push_back(callText(name_ + name, arguments...));
        if (during) {
            during();
        }
    }

    Log * log_;
    std::string name_;
};

}  // namespace tvk::test
