#pragma once

#include "examples/session/Account.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/platform/CString.h"

namespace session {

/// What the application has heard of its agent; prints it too.
class Listener : public tvk::KestrinListener {
public:
    explicit Listener(Account & account) : account_(account) {}

    // How often.
    int connected = 0;
    int disconnected = 0;
    int logins = 0;  ///< answers, refusals included
    int startups = 0;
    int realTimeStarts = 0;
    int realTimeStops = 0;
    int stops = 0;
    int errors = 0;

    bool lastLoginSucceeded = false;

    void onStartupCompleted(tvk::Kestrin * agent, tvk::RecordData const & startupData) override;
    void onLoginReply(tvk::Kestrin * agent, tvk::RefCountedPtr<tvk::KestrinMessage> const & reply,
                      bool succeeded, CString const & code, CString const & text) override;
    void onReloginRequired(tvk::Kestrin * agent, tvk::ErrorInfo const & reason) override;
    void onKestrinError(tvk::Kestrin * agent, tvk::ErrorInfo const & error) override;
    void onConnected(tvk::Kestrin * agent) override;
    void onDisconnected(tvk::Kestrin * agent, tvk::ErrorInfo const * error) override;
    void onStopped(tvk::Kestrin * agent, tvk::ErrorInfo const * error) override;
    void onRealTimeServiceStarted(tvk::Kestrin * agent, bool restarted) override;
    void onRealTimeServiceStopped(tvk::Kestrin * agent, tvk::ErrorInfo const * error) override;

private:
    void say(std::string const & line) { account_.say("agent", line); }

    Account & account_;
};

}  // namespace session
