#pragma once

#include "examples/inprocess_agent/InProcessKestrin.h"
#include "tvk/agent/AbstractAsyncRequestOperation.h"

namespace inprocess {

/// The handle of a request. It knows its agent as long as the agent knows it.
class InProcessKestrin::Operation : public tvk::AbstractAsyncRequestOperation {
public:
    Operation(InProcessKestrin & agent, long long id, MessagePtr const & request,
              tvk::AsyncReplyHandler * handler, void * userObject)
        : AbstractAsyncRequestOperation(request, handler, userObject), agent_(&agent), id_(id) {}

    void cancel() override {
        if (agent_ != nullptr) {
            agent_->canceled(this);
        }
    }

    long long id() const { return id_; }

    void close(bool asCanceled) {
        agent_ = nullptr;
        pending = false;
        canceled = asCanceled;
    }

private:
    InProcessKestrin * agent_;  // null behind the outcome
    long long const id_;
};

}  // namespace inprocess
