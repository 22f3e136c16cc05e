#include "examples/desk/feed/DeskSession.h"

#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/feed/Clock.h"
#include "examples/desk/feed/Container.h"
#include "examples/desk/feed/Report.h"
#include "examples/desk/model/ErrorText.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/RecordData.h"

namespace desk {

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;

constexpr char FIRST_PERIOD[] = "1";

}  // namespace

DeskSession::DeskSession(Models & models)
    : models_(models), market_(models), orders_(models), chart_(models), news_(models) {}

DeskSession::~DeskSession() {
    stopFeeds();
    if (std::exchange(isRegistered_, false)) {
        agent().removeMessageHandler(KestrinConstants::WILDCARD, KestrinConstants::WILDCARD, this);
        agent().removeKestrinListener(this);
    }
}

void DeskSession::start() {
    isRegistered_ = true;
    agent().addKestrinListener(this);
    agent().addMessageHandler(KestrinConstants::WILDCARD, KestrinConstants::WILDCARD, this);
    ErrorInfo error;
    if (!agent().start(&error)) {
        report(models_.alerts, error);
    }
    setConnection();
}

void DeskSession::stop() {
    if (std::exchange(isStopping_, true)) {
        return;
    }
    stopFeeds();
    if (agent().getStatus() == KESTRINSTATUS_LOGGED_IN) {
        agent().logout();
    }
    agent().stop();
}

void DeskSession::logIn(std::string const & loginId, std::string const & password) {
    loginId_ = loginId;
    password_ = password;
    models_.login.begin();
    wantsLogin_ = true;
    if (agent().getStatus() == KESTRINSTATUS_CONNECTED) {
        sendLogin();
    }
}

void DeskSession::showChart(std::string const & code, std::string const & period) {
    chart_.show(code, period);
}

void DeskSession::refreshStatus() {
    auto const status = agent().getStatus();
    bool const hasTime = status == KESTRINSTATUS_CONNECTED || status == KESTRINSTATUS_LOGGED_IN;
    models_.status.setServerTime(hasTime ? agent().getServerTimeMilliSec() : 0);
}

void DeskSession::sendLogin() {
    wantsLogin_ = false;
    ErrorInfo error;
    if (!agent().login(ansi(loginId_), ansi(password_), &error)) {
        models_.login.want(errorText(error));
    }
}

void DeskSession::startFeeds() {
    if (std::exchange(hasFeeds_, true)) {
        return;
    }
    ErrorInfo error;
    if (!agent().startRealTimeService(&error)) {
        report(models_.alerts, error);
    }
    orders_.start(loginId_);
    chart_.start();
    news_.start();
    market_.start([this] {
        auto const & symbols = models_.board.symbols();
        if (!symbols.empty()) {
            showChart(symbols.front().code, FIRST_PERIOD);
        }
    });
}

void DeskSession::stopFeeds() {
    if (std::exchange(hasFeeds_, false)) {
        market_.stop();
        orders_.stop();
        chart_.stop();
        news_.stop();
    }
}

void DeskSession::setConnection() {
    models_.status.setConnection(agent().getStatus(), isRealTime_);
}

void DeskSession::onStartupCompleted(tvk::Kestrin * /*agent*/,
                                     tvk::RecordData const & /*startupData*/) {}

void DeskSession::onLoginReply(tvk::Kestrin * /*agent*/,
                               tvk::RefCountedPtr<tvk::KestrinMessage> const & /*reply*/,
                               bool succeeded, CString const & /*code*/, CString const & text) {
    setConnection();
    if (!succeeded) {
        std::string const reason = utf8(text);
        return models_.login.want(reason.empty() ? "ログインできませんでした。" : reason);
    }
    models_.status.setLoginId(loginId_);
    models_.login.succeed();
    startFeeds();
}

void DeskSession::onReloginRequired(tvk::Kestrin * /*agent*/, ErrorInfo const & reason) {
    setConnection();
    models_.login.want(errorText(reason));
}

void DeskSession::onKestrinError(tvk::Kestrin * /*agent*/, ErrorInfo const & error) {
    report(models_.alerts, error);
}

void DeskSession::onConnected(tvk::Kestrin * /*agent*/) {
    // The network is back: its next failure is news again.
    errorManager().clearErrorForAllComponents(tvk::ERRORTYPE_NETWORK_FAILURE);
    setConnection();
    if (wantsLogin_) {
        sendLogin();
    }
}

void DeskSession::onDisconnected(tvk::Kestrin * /*agent*/, ErrorInfo const * error) {
    isRealTime_ = false;
    if (isStopping_) {
        return setConnection();
    }
    models_.status.setReconnecting();
    if (error != nullptr) {
        report(models_.alerts, *error);
    }
}

void DeskSession::onStopped(tvk::Kestrin * /*agent*/, ErrorInfo const * error) {
    isStopped_ = true;
    isRealTime_ = false;
    setConnection();
    if (error != nullptr) {
        report(models_.alerts, *error);
    }
}

void DeskSession::onRealTimeServiceStarted(tvk::Kestrin * /*agent*/, bool /*restarted*/) {
    isRealTime_ = true;
    setConnection();
}

void DeskSession::onRealTimeServiceStopped(tvk::Kestrin * /*agent*/, ErrorInfo const * /*error*/) {
    isRealTime_ = false;
    setConnection();
}

/// Registered for every notice: for the count in the status line alone.
void DeskSession::onNotice(tvk::Kestrin * /*agent*/,
                           tvk::RefCountedPtr<tvk::KestrinMessage> const & /*notice*/) {
    models_.status.countNotice(nowMilliSec());
}

}  // namespace desk
