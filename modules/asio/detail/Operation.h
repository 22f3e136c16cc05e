#pragma once

#include <memory>
#include <utility>

#include "tvk/agent/AbstractAsyncRequestOperation.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk::detail {

/// The handle of a request. It knows its agent as long as the agent knows it.
class Operation : public AbstractAsyncRequestOperation {
public:
    class Owner {
    public:
        virtual void cancel(Operation & operation) = 0;

    protected:
        ~Owner() = default;
    };

    /// How the request will end unless it is cancelled before its handler hears of it.
    enum class Verdict { NONE, TIMED_OUT, CANCELED, FAILED };

    Operation(Owner & owner, unsigned long long number, bool isOwn,
              RefCountedPtr<KestrinMessage> const & request, AsyncReplyHandler * handler,
              void * userObject)
        : AbstractAsyncRequestOperation(request, handler, userObject),
          owner_(&owner),
          number_(number),
          isOwn_(isOwn) {}

    void cancel() override {
        if (owner_ != nullptr) {
            owner_->cancel(*this);
        }
    }

    unsigned long long number() const { return number_; }
    bool isOwn() const { return isOwn_; }  ///< made by the agent itself

    Verdict verdict() const { return verdict_; }
    /// Of a request that fails; many that fail together share one.
    std::shared_ptr<ErrorInfo const> const & error() const { return error_; }
    void decide(Verdict verdict, std::shared_ptr<ErrorInfo const> error = nullptr) {
        verdict_ = verdict;
        error_ = std::move(error);
    }

    void close(bool asCanceled) {
        owner_ = nullptr;
        pending = false;
        canceled = asCanceled;
    }

private:
    Owner * owner_;  // null behind the outcome
    unsigned long long const number_;
    bool const isOwn_;
    Verdict verdict_ = Verdict::NONE;
    std::shared_ptr<ErrorInfo const> error_;
};

}  // namespace tvk::detail
