#include "tvk/agent/AbstractAsyncRequestOperation.h"

namespace tvk {

AbstractAsyncRequestOperation::AbstractAsyncRequestOperation(
    RefCountedPtr<KestrinMessage> const & request, AsyncReplyHandler * replyHandler,
    void * userObject)
    : request_(request), replyHandler_(replyHandler), userObject_(userObject) {}

AbstractAsyncRequestOperation::~AbstractAsyncRequestOperation() = default;

bool AbstractAsyncRequestOperation::isCanceled() const { return canceled; }

bool AbstractAsyncRequestOperation::isPending() const { return pending; }

bool AbstractAsyncRequestOperation::isFired() const { return fired_; }

void AbstractAsyncRequestOperation::setFired(bool fired) { fired_ = fired; }

RefCountedPtr<KestrinMessage> AbstractAsyncRequestOperation::getRequest() const { return request_; }

AsyncReplyHandler * AbstractAsyncRequestOperation::getReplyHandler() const { return replyHandler_; }

void * AbstractAsyncRequestOperation::getUserObject() const { return userObject_; }

}  // namespace tvk
