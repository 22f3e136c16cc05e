#pragma once

#include <functional>

#include "tests/support/CallText.h"
#include "tests/support/Recorded.h"
#include "tvk/agent/AbstractKestrin.h"
#include "tvk/agent/AsyncRequestOperation.h"

namespace tvk::test {

/// The least that a concrete agent can be: each operation that the base class leaves open writes its
/// call into the log, runs `during`, and answers with what stands ready. Nothing else happens.
class RecordingAgent : public AbstractKestrin {
public:
    /// `log` must outlive the agent.
    explicit RecordingAgent(Log & log) : log_(log) {}

    std::function<void()> during;  ///< runs inside each recorded call; may throw

    // The answers.
    bool succeeds = true;
    RefCountedPtr<KestrinMessage> reply;
    RefCountedPtr<AsyncRequestOperation> operation;
    long long serverTime = 0;

    // What a concrete agent writes.
    using AbstractKestrin::status;
    using AbstractKestrin::timeout;

    bool start(ErrorInfo * error) override {
        record("start", error);
        return succeeds;
    }
    void stop() override { record("stop"); }
    bool login(CString const & loginId, CString const & password, ErrorInfo * error) override {
        record("login", loginId, password, error);
        return succeeds;
    }
    bool relogin(ErrorInfo * error) override {
        record("relogin", error);
        return succeeds;
    }
    bool startRealTimeService(ErrorInfo * error) override {
        record("startRealTimeService", error);
        return succeeds;
    }
    void stopRealTimeService() override { record("stopRealTimeService"); }
    bool send(RefCountedPtr<KestrinMessage> const & message, ErrorInfo * error) override {
        record("send", message, error);
        return succeeds;
    }

    using AbstractKestrin::asyncRequest;
    using AbstractKestrin::request;
    RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const & message,
                                          int milliSeconds, ErrorInfo * error) override {
        record("request", message, milliSeconds, error);
        return reply;
    }
    RefCountedPtr<AsyncRequestOperation> asyncRequest(RefCountedPtr<KestrinMessage> const & message,
                                                      int milliSeconds, AsyncReplyHandler * handler,
                                                      void * userObject) override {
        record("asyncRequest", message, milliSeconds, handler, userObject);
        return operation;
    }
    long long getServerTimeMilliSec() const override {
        record("getServerTimeMilliSec");
        return serverTime;
    }

    void doLogout() override { record("doLogout"); }
    void doSubscribe(CString const & type, CString const & subject) override {
        record("doSubscribe", type, subject);
    }
    void doUnsubscribe(CString const & type, CString const & subject) override {
        record("doUnsubscribe", type, subject);
    }
    void doHeartbeat() override { record("doHeartbeat"); }
    void doCancelAllAsyncRequests(void * reserved) override {
        record("doCancelAllAsyncRequests", reserved);
    }
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                        CString const & messageTypeId) override {
        record("doCancelAsyncRequestsByHandler", handler, messageTypeId);
    }
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) override {
        record("doCancelAsyncRequestsByHandler", handler);
    }

protected:
    ~RecordingAgent() override = default;

    /// For what a derived agent overrides: its calls stand in the same log.
    template <class... Arguments>
    void record(char const * name, Arguments const &... arguments) const {
        log_.push_back(callText(name, arguments...));
        if (during) {
            during();
        }
    }

private:
    Log & log_;
};

}  // namespace tvk::test
