#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "modules/asio/EventLoop.h"
#include "modules/asio/FrameMessages.h"
#include "modules/asio/FrameWriter.h"
#include "modules/asio/TcpKestrin.h"
#include "modules/asio/detail/Agreement.h"
#include "modules/asio/detail/BackOff.h"
#include "modules/asio/detail/Connection.h"
#include "modules/asio/detail/NoticeRoutes.h"
#include "modules/asio/detail/OpenRequests.h"
#include "modules/asio/detail/ReplyOrError.h"
#include "modules/asio/detail/Timer.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/SimpleObjectCache.h"

namespace tvk {

/// What stands behind the agent.
///
/// All that happens is brought to the application by step, one callback at a time, from the places named
/// below and in their order; the events of connection and timers only fill these places. So a callback
/// may do anything, a bound on callbacks can be kept, and a call that drives the agent from inside a
/// callback goes on where the one around it stood:
///     the handlers of the notice at hand; passes over the listeners; outcomes that were decided, in turn
///     with frames of the connection; at the very end the last passes.
class TcpKestrin::Impl final : private detail::Operation::Owner {
public:
    using MessagePtr = RefCountedPtr<KestrinMessage>;
    using OperationPtr = detail::OpenRequests::OperationPtr;

    Impl(TcpKestrin & agent, std::shared_ptr<EventLoop> loop, TcpOptions const & options);
    ~Impl();

    // The stages of a connection.
    bool start(ErrorInfo * error);
    void stop();
    void endOfAgent();
    void heartbeat();
    long long serverTimeMilliSec() const;

    // Login.
    bool login(CString const & loginId, CString const & password, ErrorInfo * error);
    bool relogin(ErrorInfo * error);
    void logout();

    // Notices.
    bool startRealTimeService(ErrorInfo * error);
    void stopRealTimeService();
    void wantTopic(CString const & type, CString const & subject, bool wanted);
    void handlersChanged();

    // Requests.
    bool send(MessagePtr const & message, ErrorInfo * error);
    MessagePtr request(MessagePtr const & message, int timeoutMilliSec, ErrorInfo * error);
    OperationPtr asyncRequest(MessagePtr const & message, int timeoutMilliSec,
                              AsyncReplyHandler * handler, void * userObject);
    void cancelWhere(std::function<bool(detail::Operation const &)> const & condition);
    bool hasOpenRequests() const { return !open_.isEmpty(); }

    // Delivery.
    std::size_t run();
    std::size_t poll(std::size_t maximum);

private:
    using Clock = std::chrono::steady_clock;
    using Verdict = detail::Operation::Verdict;
    using SharedError = std::shared_ptr<ErrorInfo const>;
    /// Tells the listeners something, unless things have changed; whether it did.
    using Pass = std::function<bool()>;
    enum class Step { NOTHING, WORK, CALLBACK };
    using Topic = std::pair<CString, CString>;  // type and subject
    struct Subscription {
        bool isWanted = false;
        detail::Agreement agreement;
    };
    /// A notice on its way through its handlers.
    struct Delivery {
        MessagePtr message;
        detail::NoticeRoutes::Route route;
        std::size_t next = 0;
        unsigned long long generation = 0;
    };
    class Looking;
    class Unfinished;
    class Driving;

    KestrinStatusEnum & status() const { return agent_.status; }
    bool isConnected() const;
    bool isLoggedIn() const { return status() == KESTRINSTATUS_LOGGED_IN; }

    // The stages of a connection.
    void connect();
    void sendHello();
    Step takeWelcome(Frame const & frame);
    Step takeGoodbye(Frame const & frame);
    void lost(ErrorInfo const & error, bool mayReturn = true);
    Step protocolFailed(char const * text);
    void giveUp(ErrorInfo const & error);
    void end(ErrorInfo const * error);
    void fireDisconnected(ErrorInfo const * error);
    void tellError(ErrorInfo const & error);
    void setServerTime(RecordData const & fields);

    // Login.
    void sendLogin(bool automatic);
    void takeLoginReply(MessagePtr const & request, MessagePtr const & reply,
                        ErrorInfo const & error);
    void loginRefused(MessagePtr const & reply, CString const & code, ErrorInfo const & error);
    void loginFailed(MessagePtr const & reply, CString const & code, ErrorInfo const & error);
    void loginSucceeded(MessagePtr const & reply);
    void giveUpLogin(ErrorInfo const & error);
    void expireLogin(ErrorInfo const & error);
    void requireLogin(ErrorInfo const & error);
    void forgetSession();

    // Notices.
    Step takeNotice(Frame const & frame);
    Step callNextHandler();
    bool hasHandlersToCall() const {
        return notice_.route != nullptr && notice_.next < notice_.route->handlers.size();
    }
    void agree();
    void agreeOn(Topic const & topic, Subscription & subscription);
    void agreeOnRealTime();
    void takeRealTimeReply(MessagePtr const & request, MessagePtr const & reply,
                           ErrorInfo const & error);
    void takeTopicReply(MessagePtr const & request, MessagePtr const & reply,
                        ErrorInfo const & error);
    void endRealTime(ErrorInfo const * error);
    bool tellRealTimeStopped(ErrorInfo const * error);

    // Requests.
    OperationPtr ask(MessagePtr const & message, int timeoutMilliSec, AsyncReplyHandler * handler,
                     void * userObject, bool isOwn);
    bool transmit(unsigned long long number, KestrinMessage const & message, bool isOwn,
                  ErrorInfo * error);
    Step takeReply(Frame const & frame);
    void cancel(detail::Operation & operation) override;
    bool close(detail::Operation & operation, bool asCanceled);
    void decide(OperationPtr const & operation, Verdict verdict, SharedError const & error);
    void decideAll(Verdict verdict, SharedError const & error);
    Step deliverOutcome();
    Step conclude(OperationPtr const & operation, Verdict verdict, MessagePtr const & reply,
                  ErrorInfo const * error);
    void armTimeouts();
    void takeTimeouts();

    // Delivery.
    Step step();
    Step takeFrame();
    Step runPass(std::deque<Pass> & passes);
    void drain();
    bool deliver(std::size_t maximum, std::size_t * called);
    bool pollLoop();
    bool runLoop();
    void announce();
    void enterSlice();
    void slice();

    TcpKestrin & agent_;
    std::shared_ptr<EventLoop> const loop_;
    TcpOptions const options_;
    /// Known to the functions that the agent has entered into the loop; null when it has ended.
    std::shared_ptr<Impl *> const me_;

    SimpleObjectCache cache_;
    FrameMessages messages_;
    FrameWriter writer_;

    std::unique_ptr<detail::Connection> connection_;
    detail::BackOff backOff_;
    Timer reconnection_;
    int attempts_ = 0;  // that failed, since the last welcome
    long long serverTime_ = 0;
    std::optional<Clock::time_point> serverTimeSet_;

    detail::ReplyOrError loginHandler_;
    detail::ReplyOrError realTimeHandler_;
    detail::ReplyOrError topicHandler_;
    CString loginId_;
    CString password_;
    CString session_;                      // the back end's name for it, empty where there is none
    unsigned long long lastSequence_ = 0;  // of the notices of the session
    bool isLoginKept_ = false;             // it succeeded, and comes back with the connection
    bool isLoginAutomatic_ = false;
    MessagePtr loginRequest_;  // under way, else null
    ErrorInfo lastLoss_;

    std::map<Topic, Subscription> topics_;
    detail::Agreement realTime_;
    bool isRealTimeWanted_ = false;
    bool isRealTimeTold_ =
        false;  // the listeners have heard that it started, and not that it stopped
    bool wasRealTimeOn_ = false;

    Delivery notice_;
    detail::NoticeRoutes routes_;
    unsigned long long generation_ = 0;  // counts changes of the handlers

    detail::OpenRequests open_;
    unsigned long long lastNumber_ = 0;
    std::deque<OperationPtr> outcomes_;  // decided; those that were cancelled since are passed over
    Timer timeouts_;
    Clock::time_point timeoutsArmedFor_;

    std::deque<Pass> passes_;
    std::deque<Pass> lastPasses_;
    bool isTurnOfFrames_ = false;
    bool mayHaveWork_ = false;
    bool isSliceEntered_ = false;
    bool isLooking_ = false;  // into the loop, so that what it brings is delivered behind that
};

}  // namespace tvk
