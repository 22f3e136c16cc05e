#include "examples/desk/feed/Asker.h"

#include <algorithm>
#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/feed/Container.h"
#include "examples/desk/feed/Report.h"
#include "tvk/agent/AsyncRequestOperation.h"

namespace desk {

Asker::~Asker() { cancelAll(); }

void Asker::ask(MessagePtr const & request, Taker taker) {
    open_.push_back(std::move(taker));
    agent().asyncRequest(request, this, &open_.back());
}

void Asker::cancelAll() {
    if (!open_.empty()) {
        agent().cancelAsyncRequestsByHandler(this);
    }
}

void Asker::onReply(MessagePtr const & /*request*/, MessagePtr const & reply, void * userObject) {
    takeOut(userObject)(reply.get(), tvk::ErrorInfo());
}

void Asker::onTimeout(MessagePtr const & /*request*/, void * userObject) {
    takeOut(userObject)(nullptr, timeoutError());
}

void Asker::onCanceled(MessagePtr const & /*request*/, void * userObject) { takeOut(userObject); }

void Asker::onError(MessagePtr const & /*request*/, tvk::ErrorInfo const & error,
                    void * userObject) {
    takeOut(userObject)(nullptr, error);
}

/// It leaves before it is called: from inside, anything may be asked and cancelled.
Asker::Taker Asker::takeOut(void * userObject) {
    auto const found = std::find_if(open_.begin(), open_.end(),
                                    [&](Taker const & taker) { return &taker == userObject; });
    Taker taker = std::move(*found);
    open_.erase(found);
    return taker;
}

}  // namespace desk
