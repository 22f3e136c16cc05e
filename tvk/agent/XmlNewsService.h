#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class AsyncNewsRequestOperation;
class ErrorInfo;
class XmlNewsListener;

/// Delivers news as XML: documents on request, and headlines as they come. A module implements it, the
/// application registers it with KestrinContainer::setXmlNewsService, and other modules find it there.
/// The library itself calls none of its operations.
///
/// Documents: are reached from the top: the master index names lists, a list holds headlines, and a
///            headline names its article. How the elements are called is the back end's to define.
/// Order:     start; requests and headlines; stop; and again, if wanted. Listeners may be added and
///            removed at any time, and outlive a stop.
/// Ownership: the service is counted, listeners are not owned. What it returns is counted.
/// Callbacks: see XmlNewsListener. Every operation may be called from inside one.
/// Threads:   one at a time. A service with threads of its own keeps its callbacks apart from the calls
///            of the application.
/// Failure:   start reports; a request reports through its listener.
class TVK_API XmlNewsService : public RefCounted {
public:
    // The kinds of document, for requestDocument.
    static constexpr int TYPE_MASTER_INDEX = 1;  ///< what lists there are; has no identifier
    static constexpr int TYPE_HEADER_LINE = 2;   ///< the headlines of a list of the master index
    static constexpr int TYPE_DETAIL = 3;        ///< the article of a headline

    /// Begins to run. False where that cannot even begin, with `*error` filled when not null. True, and
    /// nothing else, when it runs already.
    virtual bool start(ErrorInfo * error) = 0;
    /// Cancels the pending requests; no headline comes behind it. Nothing when it does not run. A
    /// service that fails stops by itself: its pending requests end with onDocumentError.
    virtual void stop() = 0;
    virtual bool isRunning() const = 0;  ///< from a start that gave true until it stops

    // Listeners of headlines, in the order of addition. One that is added twice is called twice.
    virtual void addNewsListener(XmlNewsListener * listener) = 0;  ///< not null
    virtual bool hasNewsListener(XmlNewsListener const * listener) const = 0;
    /// Removes the first entry of `listener`; nothing where there is none. Its requests go on.
    virtual void removeNewsListener(XmlNewsListener const * listener) = 0;
    virtual void removeAllNewsListeners() = 0;

    /// Asks for the document of one of the kinds above with that identifier, which is empty for the
    /// master index. The outcome goes to `listener`, which may be null and then hears nothing;
    /// `userObject` goes with it and is never looked at. Null, with no outcome, where the service does
    /// not run or the kind is none of the three.
    virtual RefCountedPtr<AsyncNewsRequestOperation> requestDocument(int documentType,
                                                                     CString const & documentId,
                                                                     XmlNewsListener * listener,
                                                                     void * userObject) = 0;
    // Cancel what is pending. Each listener hears onDocumentCanceled from inside the call, so it may end
    // behind it.
    virtual void cancelAllRequests() = 0;
    virtual void cancelRequestsByListener(XmlNewsListener const * listener) = 0;

protected:
    ~XmlNewsService() override;
};

}  // namespace tvk
