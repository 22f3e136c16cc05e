#pragma once

#include <functional>
#include <list>

#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/KestrinMessage.h"

namespace desk {

/// Makes requests of the agent in the container, and brings the outcome of each to the function that was
/// given with it.
///
/// Ownership: cancels what is open when it ends; the agent must still be there.
class Asker : public tvk::AsyncReplyHandler {
public:
    /// With the reply; or with null and what went wrong instead. Not called for a request that was
    /// cancelled.
    using Taker =
        std::function<void(tvk::KestrinMessage const * reply, tvk::ErrorInfo const & error)>;

    Asker() = default;
    ~Asker() override;
    Asker(Asker const &) = delete;
    Asker & operator=(Asker const &) = delete;

    void ask(tvk::RefCountedPtr<tvk::KestrinMessage> const & request, Taker taker);
    void cancelAll();

private:
    using MessagePtr = tvk::RefCountedPtr<tvk::KestrinMessage>;

    void onReply(MessagePtr const & request, MessagePtr const & reply, void * userObject) override;
    void onTimeout(MessagePtr const & request, void * userObject) override;
    void onCanceled(MessagePtr const & request, void * userObject) override;
    void onError(MessagePtr const & request, tvk::ErrorInfo const & error,
                 void * userObject) override;
    Taker takeOut(void * userObject);

    std::list<Taker> open_;
};

}  // namespace desk
