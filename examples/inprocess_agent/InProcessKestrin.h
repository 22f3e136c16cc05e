#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "examples/inprocess_agent/AnswerTable.h"
#include "examples/inprocess_agent/FrameCodec.h"
#include "examples/inprocess_agent/ReplyOrError.h"
#include "examples/inprocess_agent/TableBackEnd.h"
#include "examples/inprocess_agent/Timeline.h"
#include "tvk/agent/AbstractKestrin.h"
#include "tvk/errors/ErrorInfo.h"

namespace inprocess {

/// An agent whose back end is a table in the same process: a model for agents with a network. All
/// that is different there is TableBackEnd, for which a connection stands in, and Timeline, for
/// which timers do.
///
/// Time:      stands still until advance, and so does everything that a back end does. Callbacks
///            come from inside advance and request, from inside stop, logout, start and stop of the
///            real-time service and the cancel operations, and, on an agent that has stopped, from
///            inside asyncRequest.
/// Requests:  each has exactly one outcome, whatever its handler does from inside a callback, also
///            when the agent stops or ends. An outcome that throws was the outcome; the exception
///            leaves the operation that called.
/// Status:    created, start: connecting, then connected; login: logged in; logout: connected again;
///            stop, or a heartbeat that fails: stopped, for good.
/// Ownership: as any agent. Dropping the last reference from inside a callback is safe.
/// Properties: timeoutMilliSec, the default time-out of a request, 1000 where there is none.
class InProcessKestrin : public tvk::AbstractKestrin {
public:
    enum class Direction { OUT, IN };
    using Tap = std::function<void(Direction direction, std::string const & frame)>;

    explicit InProcessKestrin(AnswerTable table);

    /// Lets time pass, and all happen that falls due meanwhile. May be called from inside callbacks.
    void advance(int milliSeconds);
    /// Milliseconds since the agent was made.
    long long now() const { return timeline_.now(); }

    /// Shows each frame to `tap`, for logs. The frame of a login holds the password.
    void setTap(Tap tap) { tap_ = std::move(tap); }

    /// `*error`, when not null, where a property makes no sense; its default then stays.
    void initialize(tvk::RefCountedPtr<tvk::KestrinConfig> const & config,
                    tvk::ErrorInfo * error) override;

    bool start(tvk::ErrorInfo * error) override;
    void stop() override;
    bool login(CString const & loginId, CString const & password, tvk::ErrorInfo * error) override;
    bool relogin(tvk::ErrorInfo * error) override;
    bool startRealTimeService(tvk::ErrorInfo * error) override;
    void stopRealTimeService() override;

    bool send(tvk::RefCountedPtr<tvk::KestrinMessage> const & message,
              tvk::ErrorInfo * error) override;
    using AbstractKestrin::asyncRequest;
    using AbstractKestrin::request;
    /// Advances the clock until the outcome; whatever falls due before it happens too.
    tvk::RefCountedPtr<tvk::KestrinMessage> request(
        tvk::RefCountedPtr<tvk::KestrinMessage> const & message, int timeoutMilliSec,
        tvk::ErrorInfo * error) override;
    tvk::RefCountedPtr<tvk::AsyncRequestOperation> asyncRequest(
        tvk::RefCountedPtr<tvk::KestrinMessage> const & message, int timeoutMilliSec,
        tvk::AsyncReplyHandler * handler, void * userObject) override;

    /// Until a login told the back end's time, that of the agent's own clock.
    long long getServerTimeMilliSec() const override;

protected:
    ~InProcessKestrin() override;
    void destroyObject() const override;

    void doLogout() override;
    void doSubscribe(CString const & type, CString const & subject) override;
    void doUnsubscribe(CString const & type, CString const & subject) override;
    void doHeartbeat() override;
    void doCancelAllAsyncRequests(void * reserved) override;
    void doCancelAsyncRequestsByHandler(tvk::AsyncReplyHandler const * handler,
                                        CString const & messageTypeId) override;
    void doCancelAsyncRequestsByHandler(tvk::AsyncReplyHandler const * handler) override;

private:
    class Operation;
    using OperationPtr = tvk::RefCountedPtr<Operation>;
    using MessagePtr = tvk::RefCountedPtr<tvk::KestrinMessage>;

    bool isConnected() const;
    bool isLoggedIn() const { return status == KESTRINSTATUS_LOGGED_IN; }

    // From here to the back end.
    OperationPtr ask(MessagePtr const & message, int timeoutMilliSec,
                     tvk::AsyncReplyHandler * handler, void * userObject, bool maySend);
    bool transmit(tvk::KestrinMessage const & message, CString const & requestId,
                  tvk::ErrorInfo * error);
    void transmitTopic(char const * messageTypeId, CString const & type, CString const & subject);

    // From the back end.
    void receive(std::string const & frame);
    void takeReply(MessagePtr const & reply, tvk::ErrorInfo const & error);
    void takeNotice(MessagePtr const & notice, tvk::ErrorInfo const & error);
    void takeLoginReply(MessagePtr const & reply, tvk::ErrorInfo const & error);
    void takeHeartbeatReply(MessagePtr const & reply, tvk::ErrorInfo const & error);

    // The outcomes.
    bool close(Operation & operation, bool canceled);
    void replied(OperationPtr const & operation, MessagePtr const & reply);
    void timedOut(OperationPtr const & operation);
    void canceled(OperationPtr const & operation);
    void failed(OperationPtr const & operation, tvk::ErrorInfo const & error);
    template <class Condition>
    void cancelWhere(Condition const & condition);
    std::vector<OperationPtr> openOperations() const;
    bool isOwn(tvk::AsyncReplyHandler const * handler) const;

    // The stages of a session.
    void planHeartbeat();
    void expireLogin(tvk::ErrorInfo const & error);
    void endRealTimeService(tvk::ErrorInfo const * error);
    void end(tvk::ErrorInfo const * error);
    void fireDisconnected(tvk::ErrorInfo const * error);

    Timeline timeline_;
    TableBackEnd backEnd_;
    FrameCodec codec_;
    Tap tap_;

    std::map<long long, OperationPtr> open_;  // by request identifier, thus in order of sending
    long long lastRequestId_ = 0;

    ReplyOrError loginHandler_;
    ReplyOrError heartbeatHandler_;
    CString loginId_;
    CString password_;
    long long serverTimeAhead_ = 0;

    // The base class counts subscriptions but does not list them; they are sent again when the
    // real-time service starts.
    std::set<std::pair<CString, CString>> subscribed_;
    bool realTimeIsOn_ = false;
    bool realTimeWasOn_ = false;
};

}  // namespace inprocess
