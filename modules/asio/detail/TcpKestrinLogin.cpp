// Login, by the application and again by the agent itself, and what ends it.

#include "modules/asio/detail/Errors.h"
#include "modules/asio/detail/Fields.h"
#include "modules/asio/detail/Requests.h"
#include "modules/asio/detail/TcpKestrinImpl.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"

namespace tvk {

namespace {

constexpr char SUCCESS[] = "0";

CString codeOf(ErrorInfo const & error) {
    CString code;
    code.Format("%d", error.getErrorCode());
    return code;
}

}  // namespace

bool TcpKestrin::Impl::login(CString const & loginId, CString const & password, ErrorInfo * error) {
    if (status() != KESTRINSTATUS_CONNECTED || !loginRequest_.isNull()) {
        return refuse(error, KestrinConstants::ERR_SessionError,
                      "not connected, or logged in already");
    }
    if (loginId != loginId_) {
        forgetSession();
    }
    loginId_ = loginId;
    password_ = password;
    sendLogin(false);
    return true;
}

bool TcpKestrin::Impl::relogin(ErrorInfo * error) {
    if (loginId_.IsEmpty()) {
        return refuse(error, KestrinConstants::ERR_SessionError, "there was no login before");
    }
    return login(CString(loginId_), CString(password_), error);
}

void TcpKestrin::Impl::sendLogin(bool automatic) {
    MessagePtr const message = detail::requestOfType("login");
    message->setFieldValue("loginId", loginId_);
    message->setFieldValue("password", password_);
    message->setFieldValue("session", session_);
    message->setFieldValue("lastSequence", new NumberData(static_cast<long long>(lastSequence_)));
    isLoginAutomatic_ = automatic;
    loginRequest_ = message;
    ask(message, agent_.getTimeout(), &loginHandler_, nullptr, true);
}

void TcpKestrin::Impl::takeLoginReply(MessagePtr const & request, MessagePtr const & reply,
                                      ErrorInfo const & error) {
    if (request != loginRequest_) {
        return;  // given up
    }
    if (reply.isNull()) {
        if (isLoginAutomatic_ && error.getErrorCode() == KestrinConstants::ERR_RequestTimeOut) {
            lost(error);
        } else {
            loginRefused(nullptr, codeOf(error), error);
        }
        return;
    }
    CString const code = detail::textField(*reply, "code");
    if (code == SUCCESS) {
        loginSucceeded(reply);
    } else {
        loginRefused(reply, code,
                     agentError(KestrinConstants::ERR_AuthenticationFailed,
                                detail::textField(*reply, "text")));
    }
}

void TcpKestrin::Impl::loginRefused(MessagePtr const & reply, CString const & code,
                                    ErrorInfo const & error) {
    if (isLoginAutomatic_) {
        loginRequest_ = nullptr;
        requireLogin(error);
        return;
    }
    loginFailed(reply, code, error);
    endRealTime(&error);
    forgetSession();
}

void TcpKestrin::Impl::loginFailed(MessagePtr const & reply, CString const & code,
                                   ErrorInfo const & error) {
    loginRequest_ = nullptr;
    passes_.emplace_back([this, reply, code, text = error.getErrorMessage()] {
        agent_.fireOnLoginReply(reply, false, code, text);
        return true;
    });
}

void TcpKestrin::Impl::loginSucceeded(MessagePtr const & reply) {
    loginRequest_ = nullptr;
    bool const isResumed = !session_.IsEmpty() && detail::numberField(*reply, "resumed") != 0;
    if (!isResumed) {
        forgetSession();
    }
    session_ = detail::textField(*reply, "session");
    setServerTime(*reply);
    isLoginKept_ = true;
    status() = KESTRINSTATUS_LOGGED_IN;
    passes_.emplace_back([this, reply] {
        agent_.fireOnLoginReply(reply, true, SUCCESS, detail::textField(*reply, "text"));
        return true;
    });
    if (!isResumed) {
        passes_.emplace_back(
            [this, loss = agentError(KestrinConstants::ERR_SessionError,
                                     "a new session has begun, notices may be lost",
                                     lastLoss_.hasError() ? &lastLoss_ : nullptr)] {
                return tellRealTimeStopped(&loss);
            });
        passes_.emplace_back([this, reply] {
            if (!isLoggedIn()) {
                return false;
            }
            RefCountedPtr<MappedRecordData> const nothing(new MappedRecordData);
            RecordData const * const startup = detail::recordField(*reply, "startup");
            agent_.fireStartupCompleted(startup != nullptr ? *startup : *nothing);
            return true;
        });
    }
    agree();
}

/// A login that is under way will not be answered.
void TcpKestrin::Impl::giveUpLogin(ErrorInfo const & error) {
    if (loginRequest_.isNull()) {
        return;
    }
    if (isLoginAutomatic_) {
        loginRequest_ = nullptr;
    } else {
        loginFailed(nullptr, codeOf(error), error);
    }
}

void TcpKestrin::Impl::logout() {
    if (!isLoggedIn() && !isLoginKept_ && loginRequest_.isNull()) {
        return;
    }
    RefCountedPtr<Kestrin> const alive(&agent_);
    if (isConnected()) {
        transmit(0, *detail::requestOfType("logout"), true, nullptr);
        status() = KESTRINSTATUS_CONNECTED;
    }
    giveUpLogin(agentError(KestrinConstants::ERR_RequestCanceled, "cancelled by a logout"));
    endRealTime(nullptr);
    forgetSession();
    for (OperationPtr const & operation : open_.inOrder()) {
        if (!operation->isOwn()) {
            decide(operation, Verdict::CANCELED, nullptr);
        }
    }
    drain();
}

void TcpKestrin::Impl::expireLogin(ErrorInfo const & error) {
    if (isLoggedIn()) {
        status() = KESTRINSTATUS_CONNECTED;
        requireLogin(error);
    }
}

void TcpKestrin::Impl::requireLogin(ErrorInfo const & error) {
    endRealTime(&error);
    forgetSession();
    passes_.emplace_back([this, error] {
        agent_.fireOnReloginRequired(error);
        return true;
    });
}

/// The next login begins a session of its own, in which the back end knows of nothing.
void TcpKestrin::Impl::forgetSession() {
    isLoginKept_ = false;
    session_.Empty();
    lastSequence_ = 0;
    realTime_.reset();
    for (auto topic = topics_.begin(); topic != topics_.end();) {
        topic->second.agreement.reset();
        topic = topic->second.isWanted ? std::next(topic) : topics_.erase(topic);
    }
}

}  // namespace tvk
