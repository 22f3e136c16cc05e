#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

class XmlNewsListener;

/// Handle of one request for a news document, as XmlNewsService::requestDocument returns it.
///
/// A request is pending until one of four things happens to it: the document arrives, the service's
/// time-out passes, it fails, or it is cancelled. It is then no longer pending, the listener hears of
/// exactly that one, and nothing further changes.
///
/// Ownership: counted. The service holds it until its listener has heard the outcome; a caller that
///            drops it lets the request go on.
/// Threads:   as its service.
class TVK_API AsyncNewsRequestOperation : public RefCounted {
public:
    /// Cancels the request: the listener hears onDocumentCanceled from inside this call, and the
    /// document, should it still arrive, goes nowhere. Nothing when the request is not pending.
    virtual void cancel() = 0;
    virtual bool isCanceled() const = 0;  ///< true from cancel on, where that came in time
    /// False already inside the callback that brings the outcome.
    virtual bool isPending() const = 0;
    /// What requestDocument was given, as are the two below: one of the XmlNewsService::TYPE
    /// constants.
    virtual int getDocumentType() const = 0;
    virtual XmlNewsListener * getListener() const = 0;  ///< not owned, may be null
    virtual void * getUserObject() const = 0;           ///< never looked at

protected:
    ~AsyncNewsRequestOperation() override;
};

}  // namespace tvk
