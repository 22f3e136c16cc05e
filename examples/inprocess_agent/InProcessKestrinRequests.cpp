// Requests, and the one outcome that each of them has.

#include "examples/inprocess_agent/Errors.h"
#include "examples/inprocess_agent/InProcessKestrin.h"
#include "examples/inprocess_agent/Operation.h"
#include "examples/support/Fields.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/MappedMessageHeader.h"

namespace inprocess {

using tvk::AsyncReplyHandler;
using tvk::AsyncRequestOperation;
using tvk::ErrorInfo;
using tvk::Kestrin;
using tvk::KestrinConstants;
using tvk::KestrinMessage;
using tvk::MappedMessageHeader;
using tvk::RefCountedPtr;
using tvk::StringUtil;

namespace {

/// What a failure in the reply says. The reply itself goes along as a hint.
ErrorInfo failureIn(RefCountedPtr<KestrinMessage> const & reply) {
    auto const given = static_cast<int>(numberIn(*reply, "code"));
    int const code = given == ErrorInfo::ERR_OK ? KestrinConstants::ERR_UnexpectedError : given;
    CString const text = textIn(*reply, "text");
    bool const isNetwork = numberIn(*reply, "network") != 0;
    ErrorInfo error = isNetwork ? networkFailure(code, text) : agentError(code, text);
    error.setUserInfo(ErrorInfo::OrvKey_ErrorReply, reply.get());
    return error;
}

bool isFailure(KestrinMessage const & reply) { return numberIn(reply.header(), "failed") != 0; }

}  // namespace

bool InProcessKestrin::send(MessagePtr const & message, ErrorInfo * error) {
    if (!isLoggedIn()) {
        return refuse(error, KestrinConstants::ERR_SessionError, "not logged in");
    }
    ErrorInfo failure;
    if (!transmit(*message, "", &failure)) {
        return refuse(error, failure.getErrorCode(), failure.getErrorMessage());
    }
    return true;
}

RefCountedPtr<AsyncRequestOperation> InProcessKestrin::asyncRequest(MessagePtr const & message,
                                                                    int timeoutMilliSec,
                                                                    AsyncReplyHandler * handler,
                                                                    void * userObject) {
    return ask(message, timeoutMilliSec, handler, userObject, isLoggedIn());
}

RefCountedPtr<KestrinMessage> InProcessKestrin::request(MessagePtr const & message,
                                                        int timeoutMilliSec, ErrorInfo * error) {
    RefCountedPtr<Kestrin> const alive(this);
    MessagePtr reply;
    bool isDone = false;
    ReplyOrError handler([&](MessagePtr const & theReply, ErrorInfo const & failure) {
        reply = theReply;
        isDone = true;
        if (theReply.isNull() && error != nullptr) {
            *error = failure;
        }
    });
    OperationPtr const operation = ask(message, timeoutMilliSec, &handler, nullptr, isLoggedIn());
    try {
        timeline_.advanceUntil([&] { return isDone; });
    } catch (...) {
        // Thrown by the callback of somebody else, which happened meanwhile: the handler goes now.
        operation->cancel();
        throw;
    }
    return reply;
}

InProcessKestrin::OperationPtr InProcessKestrin::ask(MessagePtr const & message,
                                                     int timeoutMilliSec,
                                                     AsyncReplyHandler * handler, void * userObject,
                                                     bool maySend) {
    OperationPtr const operation(
        new Operation(*this, ++lastRequestId_, message, handler, userObject));
    open_.emplace(operation->id(), operation);
    CString requestId;
    requestId.Format("%lld", operation->id());
    ErrorInfo error = agentError(KestrinConstants::ERR_SessionError, "not logged in");
    if (maySend && transmit(*message, requestId, &error)) {
        timeline_.after(timeoutMilliSec, [this, operation] { timedOut(operation); });
    } else if (status != KESTRINSTATUS_STOPPED) {
        // The caller gets the handle first, then the outcome.
        timeline_.after(0, [this, operation, error] { failed(operation, error); });
    } else {
        // Nothing comes later from an agent that has stopped.
        failed(operation, error);
    }
    return operation;
}

bool InProcessKestrin::transmit(KestrinMessage const & message, CString const & requestId,
                                ErrorInfo * error) {
    // A header of its own: the application may send one message twice, and reads its own header.
    RefCountedPtr<MappedMessageHeader> const header(new MappedMessageHeader(message.header()));
    header->setMessageKind(MSGKIND_REQUEST);
    header->setRequestId(requestId);
    error->setComponentCode(COMPONENT_CODE);
    std::string const frame = codec_.write(*header, message, error);
    if (frame.empty()) {
        return false;
    }
    if (tap_) {
        tap_(Direction::OUT, frame);
    }
    backEnd_.take(frame);
    return true;
}

void InProcessKestrin::receive(std::string const & frame) {
    if (tap_) {
        tap_(Direction::IN, frame);
    }
    ErrorInfo error(COMPONENT_CODE);
    MessagePtr const message = codec_.read(frame, &error);
    if (message.isNull()) {
        fireKestrinError(error);
    } else if (message->header().getMessageKind() == MSGKIND_REPLY) {
        takeReply(message, error);
    } else if (message->header().getMessageKind() == MSGKIND_NOTICE) {
        takeNotice(message, error);
    } else {
        fireKestrinError(
            agentError(KestrinConstants::ERR_ProtocolFailure, "a request came from the back end"));
    }
}

void InProcessKestrin::takeReply(MessagePtr const & reply, ErrorInfo const & error) {
    auto const entry = open_.find(StringUtil::parseLongLong(reply->header().getRequestId(), 10));
    if (entry == open_.end()) {
        return;  // it came too late: timed out or cancelled meanwhile
    }
    OperationPtr const operation = entry->second;
    if (error.hasError()) {
        failed(operation, error);
    } else if (isFailure(*reply)) {
        ErrorInfo const failure = failureIn(reply);
        failed(operation, failure);
        if (failure.getErrorCode() == KestrinConstants::ERR_AuthenticationExpired) {
            expireLogin(failure);
        }
    } else {
        replied(operation, reply);
    }
}

// The outcomes. An operation is closed before its handler is called: whatever the handler then
// cancels, stops or drops finds nothing to tell it a second time. The references keep the agent
// and the operation for the rest of the call.

bool InProcessKestrin::close(Operation & operation, bool asCanceled) {
    if (open_.erase(operation.id()) == 0) {
        return false;
    }
    operation.close(asCanceled);
    return true;
}

void InProcessKestrin::replied(OperationPtr const & operation, MessagePtr const & reply) {
    RefCountedPtr<Kestrin> const alive(this);
    if (close(*operation, false)) {
        fireReplyHandlerOnReply(operation.get(), operation->getReplyHandler(),
                                operation->getRequest(), reply, operation->getUserObject());
    }
}

void InProcessKestrin::timedOut(OperationPtr const & operation) {
    RefCountedPtr<Kestrin> const alive(this);
    if (close(*operation, false)) {
        fireReplyHandlerOnTimeout(operation.get(), operation->getReplyHandler(),
                                  operation->getRequest(), operation->getUserObject());
    }
}

void InProcessKestrin::canceled(OperationPtr const & operation) {
    RefCountedPtr<Kestrin> const alive(this);
    if (close(*operation, true)) {
        fireReplyHandlerOnCanceled(operation.get(), operation->getReplyHandler(),
                                   operation->getRequest(), operation->getUserObject());
    }
}

void InProcessKestrin::failed(OperationPtr const & operation, ErrorInfo const & error) {
    RefCountedPtr<Kestrin> const alive(this);
    if (close(*operation, false)) {
        fireReplyHandlerOnError(operation.get(), operation->getReplyHandler(),
                                operation->getRequest(), error, operation->getUserObject());
    }
}

std::vector<InProcessKestrin::OperationPtr> InProcessKestrin::openOperations() const {
    std::vector<OperationPtr> operations;
    for (auto const & entry : open_) {
        operations.push_back(entry.second);
    }
    return operations;
}

template <class Condition>
void InProcessKestrin::cancelWhere(Condition const & condition) {
    RefCountedPtr<Kestrin> const alive(this);
    // Over a copy: what the callbacks ask for anew stays open.
    for (OperationPtr const & operation : openOperations()) {
        if (condition(*operation)) {
            canceled(operation);
        }
    }
}

bool InProcessKestrin::isOwn(AsyncReplyHandler const * handler) const {
    return handler == &loginHandler_ || handler == &heartbeatHandler_;
}

void InProcessKestrin::doCancelAllAsyncRequests(void * /*reserved*/) {
    cancelWhere(
        [this](Operation const & operation) { return !isOwn(operation.getReplyHandler()); });
}

void InProcessKestrin::doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                                      CString const & messageTypeId) {
    cancelWhere([&](Operation const & operation) {
        return operation.getReplyHandler() == handler &&
               operation.getRequest()->header().getMessageTypeId() == messageTypeId;
    });
}

void InProcessKestrin::doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) {
    cancelWhere(
        [&](Operation const & operation) { return operation.getReplyHandler() == handler; });
}

void InProcessKestrin::destroyObject() const {
    if (open_.empty()) {
        AbstractKestrin::destroyObject();
        return;
    }
    // The handlers of open requests are told while the agent is still whole, and hold references to
    // it as they like. When the last of these goes, nothing is open any more. Nobody else is told.
    RefCountedPtr<InProcessKestrin> const alive(const_cast<InProcessKestrin *>(this));
    alive->status = KESTRINSTATUS_STOPPED;
    alive->timeline_.clear();
    alive->cancelWhere([](Operation const &) { return true; });
}

}  // namespace inprocess
