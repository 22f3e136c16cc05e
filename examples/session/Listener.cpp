#include "examples/session/Listener.h"

#include <string>

#include "examples/session/Texts.h"

namespace session {

namespace {

/// Why something ended; empty where it was asked to.
std::string because(tvk::ErrorInfo const * error) {
    return error == nullptr ? "" : ": " + shown(error->getErrorMessage());
}

}  // namespace

void Listener::onStartupCompleted(tvk::Kestrin * /*agent*/, tvk::RecordData const & startupData) {
    ++startups;
    say("start-up completed, " + std::to_string(startupData.getFieldCount()) +
        " fields of start-up data");
}

void Listener::onLoginReply(tvk::Kestrin * /*agent*/,
                            tvk::RefCountedPtr<tvk::KestrinMessage> const & /*reply*/,
                            bool succeeded, CString const & code, CString const & text) {
    ++logins;
    lastLoginSucceeded = succeeded;
    say((succeeded ? "logged in" : "login refused, code " + shown(code)) +
        (text.IsEmpty() ? "" : ": " + shown(text)));
}

void Listener::onReloginRequired(tvk::Kestrin * /*agent*/, tvk::ErrorInfo const & reason) {
    say("a new login is required" + because(&reason));
}

void Listener::onKestrinError(tvk::Kestrin * /*agent*/, tvk::ErrorInfo const & error) {
    ++errors;
    say("error" + because(&error));
}

void Listener::onConnected(tvk::Kestrin * /*agent*/) {
    ++connected;
    say("connected");
}

void Listener::onDisconnected(tvk::Kestrin * /*agent*/, tvk::ErrorInfo const * error) {
    ++disconnected;
    say("disconnected" + because(error));
}

void Listener::onStopped(tvk::Kestrin * /*agent*/, tvk::ErrorInfo const * error) {
    ++stops;
    say("stopped" + because(error));
}

void Listener::onRealTimeServiceStarted(tvk::Kestrin * /*agent*/, bool restarted) {
    ++realTimeStarts;
    say(restarted ? "real-time service started again" : "real-time service started");
}

void Listener::onRealTimeServiceStopped(tvk::Kestrin * /*agent*/, tvk::ErrorInfo const * error) {
    ++realTimeStops;
    say("real-time service stopped" + because(error));
}

}  // namespace session
