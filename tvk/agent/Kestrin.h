#pragma once

#include <vector>

#include "tvk/agent/KestrinConfig.h"
#include "tvk/agent/KestrinStatusEnum.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/PropertySet.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class AsyncReplyHandler;
class AsyncRequestOperation;
class ErrorInfo;
class KestrinErrorManager;
class KestrinListener;
class KestrinNoticeMessageHandler;

/// The agent: the application's one door to the trading back end. A concrete agent derives from
/// AbstractKestrin and brings the network.
///
/// Order:     construct; set the error manager; initialize; add listeners, message handlers and
///            subscriptions at any time; start, login, startRealTimeService; requests; logout; stop;
///            drop the last reference.
/// Ownership: listeners and handlers are not owned. The properties are the agent's own.
/// Threads:   no lock; one thread at a time.
/// Failure:   operations that may fail take an `ErrorInfo *`; what the network does later is told to the
///            listeners.
class TVK_API Kestrin : public PropertySet {
public:
    Kestrin() = default;
    Kestrin(Kestrin const & other) : PropertySet(other) {}
    Kestrin & operator=(Kestrin const &) = default;  ///< takes over the count, as RefCounted does

    virtual KestrinStatusEnum getStatus() const = 0;
    /// Stores the configuration and takes over those of its properties that the agent does not have
    /// yet. `*error` is left alone by AbstractKestrin. Requires: `config` is not null.
    virtual void initialize(RefCountedPtr<KestrinConfig> const & config, ErrorInfo * error) = 0;
    virtual RefCountedPtr<KestrinConfig> getConfig() const = 0;  ///< null before initialize

    /// Begins to connect. False and `*error`, when not null, where that cannot even begin.
    virtual bool start(ErrorInfo * error) = 0;
    virtual void stop() = 0;  ///< ends with onStopped
    /// Sends a login; onLoginReply brings the answer.
    virtual bool login(CString const & loginId, CString const & password, ErrorInfo * error) = 0;
    virtual bool relogin(ErrorInfo * error) = 0;  ///< the last login once more
    virtual bool startRealTimeService(ErrorInfo * error) = 0;
    virtual void stopRealTimeService() = 0;

    // Cancels requests that are under way; each handler hears onCanceled.
    virtual void cancelAllAsyncRequests() = 0;
    /// Those of `handler` whose request has the message type identifier `messageTypeId`.
    virtual void cancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                              CString const & messageTypeId) = 0;
    virtual void cancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) = 0;
    virtual void logout() = 0;

    // Listeners, in order of addition. One that is added twice is called twice.
    virtual void addKestrinListener(KestrinListener * listener) = 0;
    virtual std::vector<KestrinListener *> getKestrinListeners() const = 0;
    virtual bool hasKestrinListener(KestrinListener const * listener) const = 0;
    /// Removes the first entry of `listener`; nothing where there is none.
    virtual void removeKestrinListener(KestrinListener const * listener) = 0;
    virtual void removeAllKestrinListeners() = 0;

    /// Sends without asking for a reply. False and `*error`, when not null, where it cannot be sent.
    virtual bool send(RefCountedPtr<KestrinMessage> const & message, ErrorInfo * error) = 0;
    /// Sends and waits for the reply, at most `timeout` milliseconds. Null and `*error` on a failure.
    virtual RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const & message,
                                                  int timeout, ErrorInfo * error) = 0;
    /// With the agent's own time-out.
    virtual RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const & message,
                                                  ErrorInfo * error) = 0;
    /// Sends and returns; the outcome goes to `handler` within `timeout` milliseconds. A null handler
    /// hears nothing.
    virtual RefCountedPtr<AsyncRequestOperation> asyncRequest(
        RefCountedPtr<KestrinMessage> const & message, int timeout, AsyncReplyHandler * handler,
        void * userObject) = 0;
    /// With the agent's own time-out.
    virtual RefCountedPtr<AsyncRequestOperation> asyncRequest(
        RefCountedPtr<KestrinMessage> const & message, AsyncReplyHandler * handler,
        void * userObject) = 0;

    // Handlers of notices, by the exact type and subject. KestrinConstants::WILDCARD is a text like
    // any other here; it gets its meaning where a notice is delivered.
    virtual void addMessageHandler(CString const & type, CString const & subject,
                                   KestrinNoticeMessageHandler * handler) = 0;
    /// Removes the first entry of `handler`. The number of entries removed: 1 or 0.
    virtual int removeMessageHandler(CString const & type, CString const & subject,
                                     KestrinNoticeMessageHandler const * handler) = 0;
    /// Deliberate: not const, unlike the other questions. Concrete agents override it as it stands.
    virtual bool hasMessageHandler(CString const & type, CString const & subject,
                                   KestrinNoticeMessageHandler const * handler) = 0;
    virtual int removeMessageHandlers(CString const & type,
                                      CString const & subject) = 0;  ///< the number removed
    virtual int removeAllMessageHandlers() = 0;                      ///< the number removed
    virtual std::vector<KestrinNoticeMessageHandler *> getMessageHandlers(
        CString const & type, CString const & subject) const = 0;

    /// Opens one more subscription. The number open now; the first one is sent to the back end.
    virtual int subscribe(CString const & type, CString const & subject) = 0;
    /// Closes one. The number still open, 0 also where none was; the last one is told to the back end.
    virtual int unsubscribe(CString const & type, CString const & subject) = 0;
    virtual bool hasSubscription(CString const & type, CString const & subject) const = 0;
    /// The one key of handlers and subscriptions: `type`, "-", `subject`, with nothing escaped.
    virtual CString createSubjectCode(CString const & type, CString const & subject) const = 0;

    virtual long long getServerTimeMilliSec()
        const = 0;  ///< since the epoch, by the back end's clock
    virtual KestrinErrorManager * getErrorManager() const = 0;  ///< not counted, or null

protected:
    ~Kestrin() override = 0;
};

}  // namespace tvk
