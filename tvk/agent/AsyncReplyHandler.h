#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class ErrorInfo;
class KestrinMessage;

/// Receives the one outcome of an asynchronous request. Given to Kestrin::asyncRequest.
///
/// Calls:     exactly one of the four for a request, by the concrete agent through the
///            fireReplyHandler operations of AbstractKestrin, on its thread. `userObject` is the
///            caller's, unchanged.
/// Ownership: nobody owns a handler; it must live until the outcome, or be cancelled first.
/// From inside a callback every operation of the agent may be called. One that throws leaves its
/// request open for another outcome.
class TVK_API AsyncReplyHandler {
public:
    virtual ~AsyncReplyHandler();

    virtual void onReply(RefCountedPtr<KestrinMessage> const & request,
                         RefCountedPtr<KestrinMessage> const & reply, void * userObject) = 0;
    virtual void onTimeout(RefCountedPtr<KestrinMessage> const & request, void * userObject) = 0;
    virtual void onCanceled(RefCountedPtr<KestrinMessage> const & request, void * userObject) = 0;
    virtual void onError(RefCountedPtr<KestrinMessage> const & request, ErrorInfo const & error,
                         void * userObject) = 0;
};

}  // namespace tvk
