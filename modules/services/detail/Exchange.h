#pragma once

#include <functional>
#include <optional>

#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
class Kestrin;
}

namespace tvk::services {

/// How a request at the agent ended.
struct Outcome {
    enum Kind { REPLIED, TIMED_OUT, CANCELED, FAILED };

    Kind kind;
    RefCountedPtr<KestrinMessage> reply;  ///< null but for REPLIED
    ErrorInfo error;                      ///< of FAILED
};

/// One request at the agent.
///
/// An agent wants a reply handler to live until its outcome, which may come after a service has given
/// the request up, and after the service itself. This object stands between the two: it has a count
/// for the agent until the outcome came, whoever else holds it.
class Exchange : public RefCounted, private AsyncReplyHandler {
public:
    using Taker = std::function<void(Outcome const &)>;

    /// `taker` gets the outcome, once at most.
    explicit Exchange(Taker taker) : taker_(std::move(taker)) {}
    Exchange(Exchange const &) = delete;
    Exchange & operator=(Exchange const &) = delete;

    /// Sends `message`. Requires: the caller holds a count; called once.
    void begin(Kestrin & agent, RefCountedPtr<KestrinMessage> const & message, int timeoutMilliSec);

    /// An agent that has stopped may tell the outcome from inside begin. It is then kept until
    /// somebody asks for it, so that whoever began the request knows of it first.
    bool hasEarlyOutcome() const { return early_.has_value(); }
    void deliverEarlyOutcome();

    /// Cancels at the agent what is under way there. The taker is not called any more.
    void giveUp();

private:
    ~Exchange() override;

    void onReply(RefCountedPtr<KestrinMessage> const & request,
                 RefCountedPtr<KestrinMessage> const & reply, void * userObject) override;
    void onTimeout(RefCountedPtr<KestrinMessage> const & request, void * userObject) override;
    void onCanceled(RefCountedPtr<KestrinMessage> const & request, void * userObject) override;
    void onError(RefCountedPtr<KestrinMessage> const & request, ErrorInfo const & error,
                 void * userObject) override;

    void finish(Outcome const & outcome);
    void deliver(Outcome const & outcome);

    Taker taker_;  // empty once it was called, or the request given up
    RefCountedPtr<AsyncRequestOperation> atAgent_;
    bool isAtAgent_ = false;
    bool isBeginning_ = false;
    std::optional<Outcome> early_;
};

}  // namespace tvk::services
