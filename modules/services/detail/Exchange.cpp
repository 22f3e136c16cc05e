#include "modules/services/detail/Exchange.h"

#include <utility>

#include "tvk/agent/Kestrin.h"

namespace tvk::services {

Exchange::~Exchange() = default;

void Exchange::begin(Kestrin & agent, RefCountedPtr<KestrinMessage> const & message,
                     int timeoutMilliSec) {
    addRef();  // the agent's, see finish
    isAtAgent_ = true;
    isBeginning_ = true;
    RefCountedPtr<AsyncRequestOperation> const operation =
        agent.asyncRequest(message, timeoutMilliSec, this, nullptr);
    isBeginning_ = false;
    if (!isAtAgent_) {
        return;
    }
    atAgent_ = operation;
    if (!taker_) {
        giveUp();  // was asked for meanwhile, when there was nothing to cancel yet
    }
}

void Exchange::deliverEarlyOutcome() {
    if (early_) {
        Outcome const outcome = *std::exchange(early_, std::nullopt);
        deliver(outcome);
    }
}

void Exchange::giveUp() {
    RefCountedPtr<Exchange> const alive(this);
    taker_ = nullptr;
    early_.reset();
    RefCountedPtr<AsyncRequestOperation> const operation = std::exchange(atAgent_, nullptr);
    if (operation) {
        operation->cancel();
    }
}

void Exchange::onReply(RefCountedPtr<KestrinMessage> const & /*request*/,
                       RefCountedPtr<KestrinMessage> const & reply, void * /*userObject*/) {
    finish({Outcome::REPLIED, reply, {}});
}

void Exchange::onTimeout(RefCountedPtr<KestrinMessage> const & /*request*/, void * /*userObject*/) {
    finish({Outcome::TIMED_OUT, nullptr, {}});
}

void Exchange::onCanceled(RefCountedPtr<KestrinMessage> const & /*request*/,
                          void * /*userObject*/) {
    finish({Outcome::CANCELED, nullptr, {}});
}

void Exchange::onError(RefCountedPtr<KestrinMessage> const & /*request*/, ErrorInfo const & error,
                       void * /*userObject*/) {
    finish({Outcome::FAILED, nullptr, error});
}

void Exchange::finish(Outcome const & outcome) {
    RefCountedPtr<Exchange> const agents = RefCountedPtr<Exchange>::attached(this);
    isAtAgent_ = false;
    atAgent_ = nullptr;
    if (!isBeginning_) {
        deliver(outcome);
    } else if (taker_) {
        early_ = outcome;
    }
}

void Exchange::deliver(Outcome const & outcome) {
    if (Taker const taker = std::exchange(taker_, nullptr)) {
        taker(outcome);
    }
}

}  // namespace tvk::services
