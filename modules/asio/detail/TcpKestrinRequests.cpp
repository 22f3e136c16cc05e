// Requests, and the one outcome that each of them has.

#include <algorithm>

#include "modules/asio/detail/Errors.h"
#include "modules/asio/detail/Fields.h"
#include "modules/asio/detail/FirstException.h"
#include "modules/asio/detail/TcpKestrinImpl.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

/// What a failure in the reply says. The reply itself goes along as a hint.
ErrorInfo failureIn(RefCountedPtr<KestrinMessage> const & reply) {
    auto const given = static_cast<int>(detail::numberField(*reply, "code"));
    int const code = given == ErrorInfo::ERR_OK ? KestrinConstants::ERR_UnexpectedError : given;
    CString const text = detail::textField(*reply, "text");
    bool const isNetwork = detail::numberField(*reply, "network") != 0;
    ErrorInfo error = isNetwork ? networkFailure(code, text) : agentError(code, text);
    error.setUserInfo(ErrorInfo::OrvKey_ErrorReply, reply.get());
    return error;
}

}  // namespace

bool TcpKestrin::Impl::send(MessagePtr const & message, ErrorInfo * error) {
    if (!isLoggedIn()) {
        return refuse(error, KestrinConstants::ERR_SessionError, "not logged in");
    }
    return transmit(0, *message, false, error);
}

TcpKestrin::Impl::OperationPtr TcpKestrin::Impl::asyncRequest(MessagePtr const & message,
                                                              int timeoutMilliSec,
                                                              AsyncReplyHandler * handler,
                                                              void * userObject) {
    return ask(message, timeoutMilliSec, handler, userObject, false);
}

TcpKestrin::Impl::OperationPtr TcpKestrin::Impl::ask(MessagePtr const & message,
                                                     int timeoutMilliSec,
                                                     AsyncReplyHandler * handler, void * userObject,
                                                     bool isOwn) {
    bool const isFull = !isOwn && open_.size() >= options_.maximumOpenRequests;
    OperationPtr operation(
        new detail::Operation(*this, ++lastNumber_, isOwn, message, handler, userObject));
    open_.add(operation);
    ErrorInfo error = agentError(KestrinConstants::ERR_SessionError, "not logged in");
    if (isFull) {
        error = networkFailure(KestrinConstants::ERR_NetworkIOError, "too many requests are open");
    }
    if (!isFull && (isOwn || isLoggedIn()) &&
        transmit(operation->number(), *message, isOwn, &error)) {
        open_.setDeadline(*operation, Clock::now() + std::chrono::milliseconds(timeoutMilliSec));
        armTimeouts();
    } else {
        // The caller gets the handle first, then the outcome.
        decide(operation, Verdict::FAILED, std::make_shared<ErrorInfo const>(error));
    }
    return operation;
}

/// What the agent says itself goes out in any case: it is little, and a session depends on it.
bool TcpKestrin::Impl::transmit(unsigned long long number, KestrinMessage const & message,
                                bool isOwn, ErrorInfo * error) {
    ErrorInfo failure(ASIO_COMPONENT_CODE);
    std::string_view const frame = writer_.write(FRAME_REQUEST, 0, number, CString(), message,
                                                 &failure, options_.maximumFrameSize);
    if (!frame.empty() && !isOwn &&
        connection_->queuedBytes() + frame.size() > options_.maximumQueuedBytes) {
        failure = networkFailure(KestrinConstants::ERR_NetworkIOError, "the send queue is full");
    }
    if (failure.hasError()) {
        if (error != nullptr) {
            *error = failure;
        }
        return false;
    }
    connection_->send(frame);
    return true;
}

TcpKestrin::Impl::Step TcpKestrin::Impl::takeReply(Frame const & frame) {
    OperationPtr const operation = open_.find(frame.number);
    if (operation.isNull() || operation->verdict() != Verdict::NONE) {
        return Step::WORK;  // it comes too late: timed out or cancelled meanwhile
    }
    bool const isFailure = (static_cast<unsigned int>(frame.flags) & FRAME_FAILURE) != 0;
    ErrorInfo error(ASIO_COMPONENT_CODE);
    MessagePtr const reply = messages_.read(frame, &error);
    if (!reply.isNull() && !isFailure) {
        return conclude(operation, Verdict::NONE, reply, nullptr);
    }
    if (!reply.isNull()) {
        error = failureIn(reply);
        if (error.getErrorCode() == KestrinConstants::ERR_AuthenticationExpired) {
            expireLogin(error);
        }
    }
    return conclude(operation, Verdict::FAILED, nullptr, &error);
}

// The outcomes. An operation is closed before its handler is called: whatever the handler then
// cancels, stops or drops finds nothing to tell it a second time.

bool TcpKestrin::Impl::close(detail::Operation & operation, bool asCanceled) {
    if (!open_.remove(operation)) {
        return false;
    }
    operation.close(asCanceled);
    return true;
}

void TcpKestrin::Impl::decide(OperationPtr const & operation, Verdict verdict,
                              SharedError const & error) {
    if (operation->verdict() == Verdict::NONE) {
        operation->decide(verdict, error);
        outcomes_.push_back(operation);
        announce();
    }
}

void TcpKestrin::Impl::decideAll(Verdict verdict, SharedError const & error) {
    for (OperationPtr const & operation : open_.inOrder()) {
        decide(operation, verdict, error);
    }
}

TcpKestrin::Impl::Step TcpKestrin::Impl::deliverOutcome() {
    OperationPtr const operation = outcomes_.front();
    outcomes_.pop_front();
    return conclude(operation, operation->verdict(), nullptr, operation->error().get());
}

/// Without a verdict it is the reply that is told.
TcpKestrin::Impl::Step TcpKestrin::Impl::conclude(OperationPtr const & operation, Verdict verdict,
                                                  MessagePtr const & reply,
                                                  ErrorInfo const * error) {
    if (!close(*operation, verdict == Verdict::CANCELED)) {
        return Step::WORK;
    }
    AsyncReplyHandler * const handler = operation->getReplyHandler();
    MessagePtr const request = operation->getRequest();
    void * const userObject = operation->getUserObject();
    switch (verdict) {
        case Verdict::NONE:
            agent_.fireReplyHandlerOnReply(operation.get(), handler, request, reply, userObject);
            break;
        case Verdict::TIMED_OUT:
            agent_.fireReplyHandlerOnTimeout(operation.get(), handler, request, userObject);
            break;
        case Verdict::CANCELED:
            agent_.fireReplyHandlerOnCanceled(operation.get(), handler, request, userObject);
            break;
        case Verdict::FAILED:
            agent_.fireReplyHandlerOnError(operation.get(), handler, request, *error, userObject);
            break;
    }
    return handler != nullptr && !operation->isOwn() ? Step::CALLBACK : Step::WORK;
}

void TcpKestrin::Impl::cancel(detail::Operation & operation) {
    RefCountedPtr<Kestrin> const alive(&agent_);
    conclude(OperationPtr(&operation), Verdict::CANCELED, nullptr, nullptr);
}

void TcpKestrin::Impl::cancelWhere(
    std::function<bool(detail::Operation const &)> const & condition) {
    RefCountedPtr<Kestrin> const alive(&agent_);
    detail::FirstException first;
    // Over a copy: what the callbacks ask for anew stays open.
    for (OperationPtr const & operation : open_.inOrder()) {
        if (condition(*operation)) {
            first.of([&] { conclude(operation, Verdict::CANCELED, nullptr, nullptr); });
        }
    }
    first.rethrow();
}

void TcpKestrin::Impl::armTimeouts() {
    std::optional<Clock::time_point> const earliest = open_.earliestDeadline();
    if (!earliest || (timeouts_.isRunning() && timeoutsArmedFor_ <= *earliest)) {
        return;
    }
    timeoutsArmedFor_ = *earliest;
    auto const wait = std::chrono::ceil<std::chrono::milliseconds>(*earliest - Clock::now());
    timeouts_.startAfter(wait.count(), [this] { takeTimeouts(); });
}

void TcpKestrin::Impl::takeTimeouts() {
    Clock::time_point const now = Clock::now();
    for (OperationPtr operation = open_.takeOverdue(now); !operation.isNull();
         operation = open_.takeOverdue(now)) {
        decide(operation, Verdict::TIMED_OUT, nullptr);
    }
    armTimeouts();
}

}  // namespace tvk
