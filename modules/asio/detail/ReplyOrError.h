#pragma once

#include <functional>
#include <utility>

#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk::detail {

/// Brings the four outcomes of a request to one call: with the reply, or with null and what went wrong
/// instead. For requests that the agent makes itself.
class ReplyOrError : public AsyncReplyHandler {
public:
    using MessagePtr = RefCountedPtr<KestrinMessage>;
    using Taker = std::function<void(MessagePtr const & request, MessagePtr const & reply,
                                     ErrorInfo const & error)>;

    explicit ReplyOrError(Taker taker) : taker_(std::move(taker)) {}

    void onReply(MessagePtr const & request, MessagePtr const & reply, void * userObject) override;
    void onTimeout(MessagePtr const & request, void * userObject) override;
    void onCanceled(MessagePtr const & request, void * userObject) override;
    void onError(MessagePtr const & request, ErrorInfo const & error, void * userObject) override;

private:
    Taker const taker_;
};

}  // namespace tvk::detail
