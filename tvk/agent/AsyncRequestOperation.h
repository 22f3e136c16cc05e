#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class AsyncReplyHandler;
class KestrinMessage;

/// Handle of one asynchronous request, as Kestrin::asyncRequest returns it.
///
/// Threads: as its agent; the flags are plain.
class TVK_API AsyncRequestOperation : public RefCounted {
public:
    /// Asks the agent to give up the request; onCanceled follows, now or later. Nothing when an
    /// outcome was already delivered.
    virtual void cancel() = 0;
    virtual bool isCanceled() const = 0;
    virtual bool isPending() const = 0;  ///< under way
    virtual bool isFired() const = 0;    ///< an outcome was delivered to the handler
    virtual void setFired(bool fired) = 0;
    virtual RefCountedPtr<KestrinMessage> getRequest() const = 0;
    virtual AsyncReplyHandler * getReplyHandler() const = 0;  ///< not owned, may be null
    virtual void * getUserObject() const = 0;

protected:
    ~AsyncRequestOperation() override = 0;
};

}  // namespace tvk
