// Requests: defaults, cancellation, and the guards of delivery.

#include "tvk/agent/AbstractKestrin.h"
#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/agent/AsyncRequestOperation.h"

namespace tvk {

namespace {

/// Whether an outcome may reach the handler. `operation` is not looked at where nobody listens.
bool isOpen(AsyncRequestOperation const * operation, AsyncReplyHandler const * handler) {
    return handler != nullptr && !operation->isCanceled() && !operation->isFired();
}

}  // namespace

RefCountedPtr<KestrinMessage> AbstractKestrin::request(
    RefCountedPtr<KestrinMessage> const & message, ErrorInfo * error) {
    return request(message, timeout, error);
}

RefCountedPtr<AsyncRequestOperation> AbstractKestrin::asyncRequest(
    RefCountedPtr<KestrinMessage> const & message, AsyncReplyHandler * handler, void * userObject) {
    return asyncRequest(message, timeout, handler, userObject);
}

void AbstractKestrin::cancelAllAsyncRequests() { doCancelAllAsyncRequests(nullptr); }

void AbstractKestrin::cancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                                   CString const & messageTypeId) {
    doCancelAsyncRequestsByHandler(handler, messageTypeId);
}

void AbstractKestrin::cancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) {
    doCancelAsyncRequestsByHandler(handler);
}

// Deliberate: the mark is set behind the callback. One that throws leaves the request open for
// another outcome; one that fires the same operation again from inside is called again.

void AbstractKestrin::fireReplyHandlerOnReply(AsyncRequestOperation * operation,
                                              AsyncReplyHandler * handler,
                                              RefCountedPtr<KestrinMessage> const & request,
                                              RefCountedPtr<KestrinMessage> const & reply,
                                              void * userObject) {
    if (isOpen(operation, handler)) {
        handler->onReply(request, reply, userObject);
        operation->setFired(true);
    }
}

void AbstractKestrin::fireReplyHandlerOnTimeout(AsyncRequestOperation * operation,
                                                AsyncReplyHandler * handler,
                                                RefCountedPtr<KestrinMessage> const & request,
                                                void * userObject) {
    if (isOpen(operation, handler)) {
        handler->onTimeout(request, userObject);
        operation->setFired(true);
    }
}

void AbstractKestrin::fireReplyHandlerOnCanceled(AsyncRequestOperation * operation,
                                                 AsyncReplyHandler * handler,
                                                 RefCountedPtr<KestrinMessage> const & request,
                                                 void * userObject) {
    // Deliberate: whether it is cancelled is not asked. This is the one outcome that a cancelled
    // request may still have, and an agent may report it before it marks the operation.
    if (handler != nullptr && !operation->isFired()) {
        handler->onCanceled(request, userObject);
        operation->setFired(true);
    }
}

void AbstractKestrin::fireReplyHandlerOnError(AsyncRequestOperation * operation,
                                              AsyncReplyHandler * handler,
                                              RefCountedPtr<KestrinMessage> const & request,
                                              ErrorInfo const & error, void * userObject) {
    if (isOpen(operation, handler)) {
        handler->onError(request, error, userObject);
        operation->setFired(true);
    }
}

}  // namespace tvk
