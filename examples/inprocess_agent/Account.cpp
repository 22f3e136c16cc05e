#include "examples/inprocess_agent/Account.h"

#include <iomanip>
#include <ostream>
#include <utility>

#include "examples/support/Printable.h"
#include "tvk/agent/Kestrin.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/errors/KestrinErrorManager.h"
#include "tvk/values/ListData.h"

namespace inprocess {

using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::Kestrin;
using tvk::KestrinContainer;
using tvk::KestrinErrorManager;
using tvk::KestrinMessage;
using tvk::RecordData;
using tvk::RefCountedPtr;

namespace {

constexpr std::size_t SHOWN_BYTES = 60;

std::string shown(CString const & text) { return printableAnsi(text, SHOWN_BYTES); }

std::string shown(FieldValue const * value) {
    if (value == nullptr) {
        return "null";
    }
    switch (value->getFieldType()) {
        case FLDTYPE_LIST:
            return "list of " + std::to_string(value->asList().getCount());
        case FLDTYPE_RECORD:
            return "record of " + std::to_string(value->asRecord().getFieldCount());
        default:
            return shown(value->toString());
    }
}

std::string shown(ErrorInfo const & error) { return shown(error.toString()); }

std::string typeOf(RefCountedPtr<KestrinMessage> const & message) {
    return shown(message->header().getMessageTypeId());
}

/// Why something ended; empty where it was asked to.
std::string because(ErrorInfo const * error) {
    return error == nullptr ? "" : ": " + shown(*error);
}

}  // namespace

std::string fieldsOf(RecordData const & record) {
    std::string line;
    for (RecordData::Field const & field : record.getAllFields()) {
        line += line.empty() ? "" : ", ";
        line += printable(bytesOf(*field.name), SHOWN_BYTES) + "=" + shown(field.value);
    }
    return line;
}

Account::Account(std::ostream & out, Clock clock) : out_(out), clock_(std::move(clock)) {}

void Account::say(std::string const & line) {
    out_ << std::setw(6) << clock_() << "  " << line << '\n';
}

void Account::report(ErrorInfo const & error) {
    KestrinErrorManager * const manager = KestrinContainer::instance()->getErrorManager();
    if (manager->showError(this, error, nullptr) == 0) {
        say("no second alert");
    }
}

void Account::dismissAlert() {
    if (alert_) {
        say("alert dismissed");
        KestrinContainer::instance()->getErrorManager()->notifyErrorAlertDismissed(*alert_);
        alert_.reset();
    }
}

int Account::showErrorAlert(KestrinErrorManager * /*manager*/, ErrorInfo const & error, int kind,
                            CWnd * /*parent*/) {
    say((kind == KIND_NETWORK_FAILURE ? "ALERT network: " : "ALERT ") + shown(error));
    alert_ = error;
    return 1;
}

void Account::onConnected(Kestrin * /*agent*/) { say("connected"); }

void Account::onLoginReply(Kestrin * /*agent*/, RefCountedPtr<KestrinMessage> const & /*reply*/,
                           bool succeeded, CString const & code, CString const & text) {
    say((succeeded ? "logged in: " : "login failed: ") + shown(code) + " " + shown(text));
}

void Account::onStartupCompleted(Kestrin * /*agent*/, RecordData const & startupData) {
    say("started: " + fieldsOf(startupData));
}

void Account::onReloginRequired(Kestrin * /*agent*/, ErrorInfo const & reason) {
    say("new login required" + because(&reason));
}

void Account::onKestrinError(Kestrin * /*agent*/, ErrorInfo const & error) {
    say("agent" + because(&error));
    report(error);
}

void Account::onRealTimeServiceStarted(Kestrin * /*agent*/, bool restarted) {
    say(restarted ? "real-time service started again" : "real-time service started");
}

void Account::onRealTimeServiceStopped(Kestrin * /*agent*/, ErrorInfo const * error) {
    say("real-time service stopped" + because(error));
}

void Account::onDisconnected(Kestrin * /*agent*/, ErrorInfo const * error) {
    say("disconnected" + because(error));
}

void Account::onStopped(Kestrin * /*agent*/, ErrorInfo const * error) {
    say("stopped" + because(error));
}

void Account::onReply(RefCountedPtr<KestrinMessage> const & request,
                      RefCountedPtr<KestrinMessage> const & reply, void * /*userObject*/) {
    say(typeOf(request) + " replied: " + fieldsOf(*reply));
}

void Account::onTimeout(RefCountedPtr<KestrinMessage> const & request, void * /*userObject*/) {
    say(typeOf(request) + " timed out");
}

void Account::onCanceled(RefCountedPtr<KestrinMessage> const & request, void * /*userObject*/) {
    say(typeOf(request) + " cancelled");
}

void Account::onError(RefCountedPtr<KestrinMessage> const & request, ErrorInfo const & error,
                      void * /*userObject*/) {
    say(typeOf(request) + " failed");
    report(error);
}

NoticeView::NoticeView(Account & account, std::string name)
    : account_(account), name_(std::move(name)) {}

void NoticeView::onNotice(Kestrin * /*agent*/, RefCountedPtr<KestrinMessage> const & notice) {
    account_.say(name_ + ": " + typeOf(notice) + " " + fieldsOf(*notice));
}

}  // namespace inprocess
