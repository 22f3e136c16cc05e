#pragma once

#include <functional>
#include <utility>

#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/KestrinMessage.h"

namespace inprocess {

/// Brings the four outcomes of a request to one call: with the reply, or with null and what went
/// wrong instead. For requests that the agent makes itself.
class ReplyOrError : public tvk::AsyncReplyHandler {
public:
    using Taker = std::function<void(tvk::RefCountedPtr<tvk::KestrinMessage> const & reply,
                                     tvk::ErrorInfo const & error)>;

    explicit ReplyOrError(Taker taker) : taker_(std::move(taker)) {}

    void onReply(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                 tvk::RefCountedPtr<tvk::KestrinMessage> const & reply, void * userObject) override;
    void onTimeout(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                   void * userObject) override;
    void onCanceled(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                    void * userObject) override;
    void onError(tvk::RefCountedPtr<tvk::KestrinMessage> const & request,
                 tvk::ErrorInfo const & error, void * userObject) override;

private:
    Taker const taker_;
};

}  // namespace inprocess
