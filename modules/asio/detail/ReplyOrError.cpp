#include "modules/asio/detail/ReplyOrError.h"

#include "modules/asio/detail/Errors.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::detail {

void ReplyOrError::onReply(MessagePtr const & request, MessagePtr const & reply,
                           void * /*userObject*/) {
    taker_(request, reply, ErrorInfo());
}

void ReplyOrError::onTimeout(MessagePtr const & request, void * /*userObject*/) {
    taker_(request, nullptr,
           networkFailure(KestrinConstants::ERR_RequestTimeOut, "no reply in time"));
}

void ReplyOrError::onCanceled(MessagePtr const & request, void * /*userObject*/) {
    taker_(request, nullptr, agentError(KestrinConstants::ERR_RequestCanceled, "cancelled"));
}

void ReplyOrError::onError(MessagePtr const & request, ErrorInfo const & error,
                           void * /*userObject*/) {
    taker_(request, nullptr, error);
}

}  // namespace tvk::detail
