#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinErrorShower.h"

namespace inprocess {

/// The application's side of an agent: hears of the session and of the outcome of each request, and
/// shows errors. All it does is to print, each line behind the time, in UTF-8.
///
/// It owns nothing and nobody owns it: what it was registered with must forget it before it ends.
class Account : public tvk::KestrinListener,
                public tvk::AsyncReplyHandler,
                public tvk::KestrinErrorShower {
public:
    using Clock = std::function<long long()>;

    /// `out` must outlive the account.
    Account(std::ostream & out, Clock clock);

    void say(std::string const & line);
    /// Hands the error to the manager of the container, which decides whether it comes back to
    /// showErrorAlert.
    void report(tvk::ErrorInfo const & error);
    /// What the user does with the alert: the same error may be shown again.
    void dismissAlert();

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

    void onReply(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                 tvk::RefCountedPtr<tvk::KestrinMessage> const & reply, void * userObject) override;
    void onTimeout(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                   void * userObject) override;
    void onCanceled(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                    void * userObject) override;
    void onError(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                 tvk::ErrorInfo const & error, void * userObject) override;

    int showErrorAlert(tvk::KestrinErrorManager * manager, tvk::ErrorInfo const & error, int kind,
                       CWnd * parent) override;

private:
    std::ostream & out_;
    Clock const clock_;
    std::optional<tvk::ErrorInfo> alert_;  // on the screen
};

/// A part of the application that wants notices; prints them under its name.
class NoticeView : public tvk::KestrinNoticeMessageHandler {
public:
    /// `account` prints for it and must outlive it.
    NoticeView(Account & account, std::string name);

    void onNotice(tvk::Kestrin * agent,
                  tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override;

private:
    Account & account_;
    std::string const name_;
};

/// The fields of a record in one line, such as `last=327, sym=3622`, in UTF-8.
std::string fieldsOf(tvk::RecordData const & record);

}  // namespace inprocess
