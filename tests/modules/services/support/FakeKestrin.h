#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Recorded.h"
#include "tests/support/TextBytes.h"
#include "tvk/agent/AbstractAsyncRequestOperation.h"
#include "tvk/agent/AbstractKestrin.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/platform/CodePage.h"

namespace tvk::test {

/// A message with the body of a JSON text.
inline RefCountedPtr<KestrinMessage> messageOf(MessageKindEnum kind, char const * type,
                                               std::string_view json) {
    // Kept, since making one takes longer than all that a test does with a message. A text stays in
    // the code page in which it was met.
    static std::map<unsigned int, SimpleObjectCache> caches;
    SimpleObjectCache & cache =
        caches.try_emplace(platform::ansiCodePage(), SimpleObjectCache::defaultRawDataConverter())
            .first->second;
    JsonMessageParser parser(&cache);
    ErrorInfo error;
    RefCountedPtr<KestrinMessage> message =
        parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, &error);
    if (message.isNull()) {
        throw std::invalid_argument(error.getErrorMessage().GetString());
    }
    message->header().setMessageKind(kind);
    message->header().setMessageTypeId(type);
    return message;
}

/// An agent whose back end is the test: it writes down what it is asked, and answers when it is told.
/// Logged in from the start.
class FakeKestrin : public AbstractKestrin {
public:
    class Operation : public AbstractAsyncRequestOperation {
    public:
        Operation(FakeKestrin & agent, RefCountedPtr<KestrinMessage> const & request,
                  AsyncReplyHandler * handler, void * userObject)
            : AbstractAsyncRequestOperation(request, handler, userObject), agent_(&agent) {}

        void cancel() override {
            if (agent_ == nullptr) {
                return;
            }
            if (agent_->cancelsLate) {
                canceled = true;
            } else {
                agent_->cancelNow(this);
            }
        }
        void close(bool asCanceled) {
            agent_ = nullptr;
            pending = false;
            canceled = canceled || asCanceled;
        }

    private:
        FakeKestrin * agent_;
    };
    using OperationPtr = RefCountedPtr<Operation>;

    /// `log` gets what the agent is asked: `ask chartPeriods {}`, `subscribe chart 7203/1/5`, and
    /// `end agent` behind its last reference. It must outlive the agent.
    explicit FakeKestrin(Log & log) : log_(log) {
        status = KESTRINSTATUS_LOGGED_IN;
        timeout = 4321;
    }

    using AbstractKestrin::status;

    bool cancelsLate = false;      ///< cancelled operations hear of it by tellCanceled
    std::function<void()> during;  ///< runs inside each call that reaches the back end
    /// Tells the outcome of a request from inside asyncRequest, where set.
    std::function<void(OperationPtr const & operation)> atOnce;
    std::vector<OperationPtr> open;  ///< in the order of asking
    std::vector<int> timeouts;       ///< those asked with

    OperationPtr newest() const { return open.back(); }

    // Outcomes.
    void reply(OperationPtr const & operation, std::string_view json) {
        RefCountedPtr<Kestrin> const alive(this);
        if (close(operation, false)) {
            CString const type = operation->getRequest()->header().getMessageTypeId();
            fireReplyHandlerOnReply(operation.get(), operation->getReplyHandler(),
                                    operation->getRequest(), messageOf(MSGKIND_REPLY, type, json),
                                    operation->getUserObject());
        }
    }
    void timeOut(OperationPtr const & operation) {
        RefCountedPtr<Kestrin> const alive(this);
        if (close(operation, false)) {
            fireReplyHandlerOnTimeout(operation.get(), operation->getReplyHandler(),
                                      operation->getRequest(), operation->getUserObject());
        }
    }
    void fail(OperationPtr const & operation, ErrorInfo const & error) {
        RefCountedPtr<Kestrin> const alive(this);
        if (close(operation, false)) {
            fireReplyHandlerOnError(operation.get(), operation->getReplyHandler(),
                                    operation->getRequest(), error, operation->getUserObject());
        }
    }
    void cancelNow(OperationPtr const & operation) {
        RefCountedPtr<Kestrin> const alive(this);
        if (close(operation, true)) {
            fireReplyHandlerOnCanceled(operation.get(), operation->getReplyHandler(),
                                       operation->getRequest(), operation->getUserObject());
        }
    }

    void notify(char const * type, char const * subject, std::string_view json) {
        RefCountedPtr<Kestrin> const alive(this);
        auto const notice = messageOf(MSGKIND_NOTICE, type, json);
        for (auto * const handler : getAllPossibleMessageHandlers(type, subject)) {
            auto const still = getAllPossibleMessageHandlers(type, subject);
            if (std::find(still.begin(), still.end(), handler) != still.end()) {
                handler->onNotice(this, notice);
            }
        }
    }

    /// Ends as an agent does: what is open first, then onStopped.
    void end(ErrorInfo const * error) {
        RefCountedPtr<Kestrin> const alive(this);
        status = KESTRINSTATUS_STOPPED;
        for (OperationPtr const & operation : std::vector<OperationPtr>(open)) {
            if (error == nullptr) {
                cancelNow(operation);
            } else {
                fail(operation, *error);
            }
        }
        fireOnStopped(error);
    }

    bool start(ErrorInfo * /*error*/) override { return false; }
    void stop() override { end(nullptr); }
    bool login(CString const & /*loginId*/, CString const & /*password*/,
               ErrorInfo * /*error*/) override {
        return false;
    }
    bool relogin(ErrorInfo * /*error*/) override { return false; }
    bool startRealTimeService(ErrorInfo * /*error*/) override { return false; }
    void stopRealTimeService() override {}
    bool send(RefCountedPtr<KestrinMessage> const & /*message*/, ErrorInfo * /*error*/) override {
        return false;
    }
    using AbstractKestrin::asyncRequest;
    using AbstractKestrin::request;
    RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const & /*message*/,
                                          int /*timeoutMilliSec*/, ErrorInfo * /*error*/) override {
        return nullptr;
    }
    RefCountedPtr<AsyncRequestOperation> asyncRequest(RefCountedPtr<KestrinMessage> const & message,
                                                      int timeoutMilliSec,
                                                      AsyncReplyHandler * handler,
                                                      void * userObject) override {
        JsonMessageSerializer serializer;
        unsigned int const size = serializer.messageToJson(nullptr, 0, *message, 0);
        record("ask " + bytesOf(message->header().getMessageTypeId()) + ' ' +
               std::string(static_cast<char const *>(serializer.getResultsBuffer()), size));
        timeouts.push_back(timeoutMilliSec);
        OperationPtr const operation(new Operation(*this, message, handler, userObject));
        open.push_back(operation);
        if (during) {
            during();
        }
        if (atOnce) {
            atOnce(operation);
        }
        return operation;
    }
    long long getServerTimeMilliSec() const override { return 0; }

    void doLogout() override {}
    void doSubscribe(CString const & type, CString const & subject) override {
        tell("subscribe", type, subject);
    }
    void doUnsubscribe(CString const & type, CString const & subject) override {
        tell("unsubscribe", type, subject);
    }
    void doHeartbeat() override {}
    void doCancelAllAsyncRequests(void * /*reserved*/) override {
        for (OperationPtr const & operation : std::vector<OperationPtr>(open)) {
            cancelNow(operation);
        }
    }
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * /*handler*/,
                                        CString const & /*messageTypeId*/) override {}
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * /*handler*/) override {}

protected:
    ~FakeKestrin() override {
        for (OperationPtr const & operation : open) {
            operation->close(false);
        }
        record("end agent");
    }

private:
    bool close(OperationPtr const & operation, bool asCanceled) {
        auto const place = std::find(open.begin(), open.end(), operation);
        if (place == open.end()) {
            return false;
        }
        open.erase(place);
        operation->close(asCanceled);
        return true;
    }
    void tell(char const * what, CString const & type, CString const & subject) {
        record(std::string(what) + ' ' + bytesOf(type) + ' ' + bytesOf(subject));
        if (during) {
            during();
        }
    }
    void record(std::string const & line) { log_.push_back(line); }

    Log & log_;
};

/// An error of a back end.
inline ErrorInfo backEndError(int code = 7001) {
    return {5, KestrinConstants::ErrorDomain_Kestrin, code, "no such chart", nullptr};
}

/// How a log shows an error.
inline std::string shown(ErrorInfo const * error) {
    return error == nullptr
               ? "null"
               : std::to_string(error->getErrorCode()) + ' ' + bytesOf(error->getErrorMessage());
}

}  // namespace tvk::test
