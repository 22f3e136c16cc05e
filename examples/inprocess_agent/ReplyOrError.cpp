#include "examples/inprocess_agent/ReplyOrError.h"

#include "examples/inprocess_agent/Errors.h"
#include "tvk/errors/KestrinConstants.h"

namespace inprocess {

using tvk::ErrorInfo;
using tvk::KestrinConstants;
using tvk::KestrinMessage;
using tvk::RefCountedPtr;

void ReplyOrError::onReply(RefCountedPtr<KestrinMessage> const & /*request*/,
                           RefCountedPtr<KestrinMessage> const & reply, void * /*userObject*/) {
    taker_(reply, ErrorInfo());
}

void ReplyOrError::onTimeout(RefCountedPtr<KestrinMessage> const & /*request*/,
                             void * /*userObject*/) {
    taker_(nullptr, agentError(KestrinConstants::ERR_RequestTimeOut, "no reply in time"));
}

void ReplyOrError::onCanceled(RefCountedPtr<KestrinMessage> const & /*request*/,
                              void * /*userObject*/) {
    taker_(nullptr, agentError(KestrinConstants::ERR_RequestCanceled, "cancelled"));
}

void ReplyOrError::onError(RefCountedPtr<KestrinMessage> const & /*request*/,
                           ErrorInfo const & error, void * /*userObject*/) {
    taker_(nullptr, error);
}

}  // namespace inprocess
