#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class AsyncNewsRequestOperation;
class ErrorInfo;
class XmlDocument;
class XmlElement;
class XmlNewsService;

/// What an application hears of a news service: new headlines, when it is registered with
/// XmlNewsService::addNewsListener, and the outcome of the document requests that it is given to. The
/// two are independent: a listener of a request need not be registered.
///
/// Calls:     by the news service alone. onHeadline goes to all that are registered, in the order of
///            addition. Of the four onDocument callbacks exactly one comes for each request, to its
///            listener alone, and never from inside the call that makes the request. `service` is never
///            null.
/// Ownership: nobody owns a listener. Before it ends, take it out with removeNewsListener and end its
///            requests with cancelRequestsByListener.
/// From inside a callback every operation of the service and of its handles may be called. A listener
/// that is removed meanwhile is not called any more; one that is added meanwhile is not called in this
/// pass. Callbacks throw nothing.
/// Threads:   callbacks come on the thread on which the service delivers, one at a time.
class TVK_API XmlNewsListener {
public:
    virtual ~XmlNewsListener();

    // Outcomes of a request. `operation` is its handle, never null; it tells the kind of document, and
    // who keeps it takes a count. `userObject` is what the request was given, unchanged.

    /// `document` and its root are never null. The tree is shared with the service: read it, and do
    /// not change it.
    virtual void onDocument(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                            RefCountedPtr<XmlDocument> const & document, void * userObject) = 0;
    /// No answer came within the time-out, which is the service's own.
    virtual void onDocumentTimeout(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                                   void * userObject) = 0;
    /// Somebody cancelled the request, or the service was asked to stop.
    virtual void onDocumentCanceled(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                                    void * userObject) = 0;
    /// The back end has no such document, or the service lost the request, or could not read the answer
    /// (KestrinConstants::ERR_XmlParsingError).
    virtual void onDocumentError(XmlNewsService * service, AsyncNewsRequestOperation * operation,
                                 ErrorInfo const & error, void * userObject) = 0;

    /// A headline that is new: an element like those of a XmlNewsService::TYPE_HEADER_LINE document.
    /// Never null, and shared like a document.
    virtual void onHeadline(XmlNewsService * service,
                            RefCountedPtr<XmlElement> const & headline) = 0;
};

}  // namespace tvk
