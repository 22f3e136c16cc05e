// The stages of a session.

#include "examples/inprocess_agent/InProcessKestrin.h"

#include "examples/inprocess_agent/Errors.h"
#include "examples/inprocess_agent/Operation.h"
#include "examples/support/Fields.h"
#include "examples/support/Messages.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/MappedRecordData.h"

namespace inprocess {

using tvk::ErrorInfo;
using tvk::Kestrin;
using tvk::KestrinConstants;
using tvk::KestrinListener;
using tvk::RecordData;
using tvk::RefCountedPtr;
using tvk::StringUtil;

namespace {

constexpr int DEFAULT_TIMEOUT_MILLI_SEC = 1000;
constexpr int CONNECT_MILLI_SEC = 10;
constexpr int HEARTBEAT_MILLI_SEC = 30'000;

}  // namespace

InProcessKestrin::InProcessKestrin(AnswerTable table)
    : backEnd_(std::move(table), timeline_, [this](std::string const & frame) { receive(frame); }),
      loginHandler_([this](MessagePtr const & reply, ErrorInfo const & error) {
          takeLoginReply(reply, error);
      }),
      heartbeatHandler_([this](MessagePtr const & reply, ErrorInfo const & error) {
          takeHeartbeatReply(reply, error);
      }) {
    timeout = DEFAULT_TIMEOUT_MILLI_SEC;
}

InProcessKestrin::~InProcessKestrin() = default;

void InProcessKestrin::advance(int milliSeconds) {
    RefCountedPtr<Kestrin> const alive(this);
    timeline_.advance(milliSeconds);
}

void InProcessKestrin::initialize(RefCountedPtr<tvk::KestrinConfig> const & config,
                                  ErrorInfo * error) {
    AbstractKestrin::initialize(config, error);
    if (!hasProperty("timeoutMilliSec")) {
        return;
    }
    int const milliSeconds = StringUtil::parseInt(getProperty("timeoutMilliSec"));
    if (milliSeconds > 0) {
        timeout = milliSeconds;
    } else {
        refuse(error, KestrinConstants::ERR_UnexpectedError,
               "timeoutMilliSec is not a number above 0");
    }
}

bool InProcessKestrin::isConnected() const {
    return status == KESTRINSTATUS_CONNECTED || status == KESTRINSTATUS_LOGGED_IN;
}

bool InProcessKestrin::start(ErrorInfo * error) {
    if (getConfig().isNull() || status != KESTRINSTATUS_CREATED) {
        return refuse(error, KestrinConstants::ERR_FailedToCreateConnection,
                      "the agent is not initialized or was started before");
    }
    status = KESTRINSTATUS_CONNECTING;
    timeline_.after(CONNECT_MILLI_SEC, [this] {
        status = KESTRINSTATUS_CONNECTED;
        planHeartbeat();
        fireConnected();
    });
    return true;
}

bool InProcessKestrin::login(CString const & loginId, CString const & password, ErrorInfo * error) {
    if (status != KESTRINSTATUS_CONNECTED) {
        return refuse(error, KestrinConstants::ERR_SessionError,
                      "not connected, or logged in already");
    }
    loginId_ = loginId;
    password_ = password;
    MessagePtr const message = requestOfType("login");
    message->setFieldValue("loginId", loginId_);
    message->setFieldValue("password", password_);
    ask(message, timeout, &loginHandler_, nullptr, true);
    return true;
}

bool InProcessKestrin::relogin(ErrorInfo * error) {
    if (loginId_.IsEmpty()) {
        return refuse(error, KestrinConstants::ERR_SessionError, "there was no login before");
    }
    return login(loginId_, password_, error);
}

void InProcessKestrin::takeLoginReply(MessagePtr const & reply, ErrorInfo const & error) {
    if (reply.isNull()) {
        CString code;
        code.Format("%d", error.getErrorCode());
        fireOnLoginReply(reply, false, code, error.getErrorMessage());
        return;
    }
    CString const code = textIn(*reply, "code");
    bool const succeeded = code == "0";
    if (succeeded) {
        status = KESTRINSTATUS_LOGGED_IN;
        if (scalarIn(*reply, "time")) {
            serverTimeAhead_ = numberIn(*reply, "time") - timeline_.now();
        }
    }
    fireOnLoginReply(reply, succeeded, code, textIn(*reply, "text"));
    if (succeeded && isLoggedIn()) {
        RefCountedPtr<tvk::MappedRecordData> const nothing(new tvk::MappedRecordData);
        RecordData const * const startup = recordIn(*reply, "startup");
        fireStartupCompleted(startup != nullptr ? *startup : *nothing);
    }
}

void InProcessKestrin::expireLogin(ErrorInfo const & error) {
    if (isLoggedIn()) {
        status = KESTRINSTATUS_CONNECTED;
        endRealTimeService(&error);
        fireOnReloginRequired(error);
    }
}

void InProcessKestrin::doLogout() {
    if (!isLoggedIn()) {
        return;
    }
    RefCountedPtr<Kestrin> const alive(this);
    send(requestOfType("logout"), nullptr);
    status = KESTRINSTATUS_CONNECTED;
    endRealTimeService(nullptr);
    cancelAllAsyncRequests();
}

void InProcessKestrin::planHeartbeat() {
    timeline_.after(HEARTBEAT_MILLI_SEC, [this] { doHeartbeat(); });
}

void InProcessKestrin::doHeartbeat() {
    ask(requestOfType("heartbeat"), timeout, &heartbeatHandler_, nullptr, isConnected());
}

void InProcessKestrin::takeHeartbeatReply(MessagePtr const & reply, ErrorInfo const & error) {
    if (status == KESTRINSTATUS_STOPPED) {
        return;  // cancelled by the end of the agent
    }
    if (reply.isNull()) {
        ErrorInfo const failure =
            networkFailure(KestrinConstants::ERR_HeartbeatFailed, "heartbeat failed", &error);
        fireKestrinError(failure);
        end(&failure);
        return;
    }
    planHeartbeat();
}

void InProcessKestrin::stop() { end(nullptr); }

void InProcessKestrin::end(ErrorInfo const * error) {
    if (status == KESTRINSTATUS_STOPPED) {
        return;
    }
    RefCountedPtr<Kestrin> const alive(this);
    bool const wasConnected = isConnected();
    // First of all: what a callback asks for from here on fails at once.
    status = KESTRINSTATUS_STOPPED;
    timeline_.clear();
    endRealTimeService(error);
    for (OperationPtr const & operation : openOperations()) {
        if (error == nullptr) {
            canceled(operation);
        } else {
            failed(operation, *error);
        }
    }
    if (wasConnected) {
        fireDisconnected(error);
    }
    fireOnStopped(error);
}

void InProcessKestrin::fireDisconnected(ErrorInfo const * error) {
    // The base class has no such operation; the rule is that of its others.
    for (KestrinListener * const listener : getKestrinListeners()) {
        if (hasKestrinListener(listener)) {
            listener->onDisconnected(this, error);
        }
    }
}

long long InProcessKestrin::getServerTimeMilliSec() const {
    return timeline_.now() + serverTimeAhead_;
}

}  // namespace inprocess
