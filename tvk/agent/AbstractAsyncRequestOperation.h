#pragma once

#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk {

/// Base of the handles that a concrete agent makes: pending, not cancelled and not fired at first.
/// Holds one count on the request and none on the handler.
class TVK_API AbstractAsyncRequestOperation : public AsyncRequestOperation {
public:
    AbstractAsyncRequestOperation(RefCountedPtr<KestrinMessage> const & request,
                                  AsyncReplyHandler * replyHandler, void * userObject);
    AbstractAsyncRequestOperation(AbstractAsyncRequestOperation const &) = delete;
    AbstractAsyncRequestOperation & operator=(AbstractAsyncRequestOperation const &) = delete;
    ~AbstractAsyncRequestOperation() override;

    bool isCanceled() const override;
    bool isPending() const override;
    bool isFired() const override;
    void setFired(bool fired) override;  ///< false opens the handle for another outcome
    RefCountedPtr<KestrinMessage> getRequest() const override;
    AsyncReplyHandler * getReplyHandler() const override;
    void * getUserObject() const override;

protected:
    bool canceled = false;  ///< the concrete operation's to write
    bool pending = true;    ///< the concrete operation's to write

private:
    bool fired_ = false;
    RefCountedPtr<KestrinMessage> request_;
    AsyncReplyHandler * replyHandler_;
    void * userObject_;
};

}  // namespace tvk
