#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <map>
#include <memory>
#include <unordered_map>
#include <vector>

#include "tvk/agent/InternalSubscriptionInfo.h"
#include "tvk/agent/Kestrin.h"
#include "tvk/errors/KestrinErrorManager.h"

namespace tvk {

class RecordData;

/// Base of concrete agents: properties, configuration, listeners, notice handlers, subscriptions,
/// request defaults and the guards of delivery. A concrete agent supplies what is pure, tells the
/// application what happens through the `fire` operations, and moves `status`.
///
/// Listeners: a fire operation takes a snapshot and calls, in order, those that are still registered
///            when their turn comes. So listeners may be added and removed from inside a callback; one
///            that is added is not called in this pass. A fire operation changes nothing in the
///            agent.
/// Ending:    tells nobody, and unsubscribes nothing.
/// Threads:   no lock. An agent with threads of its own keeps its calls apart from those of the
///            application.
class TVK_API AbstractKestrin : public Kestrin {
public:
    AbstractKestrin();
    AbstractKestrin(AbstractKestrin const &) = delete;
    AbstractKestrin & operator=(AbstractKestrin const &) = delete;

    using Kestrin::getProperty;
    using Kestrin::hasProperty;
    using Kestrin::setProperty;

    void setProperty(CString const & name, CString const & value) override;
    CString getProperty(CString const & name) const override;
    bool hasProperty(CString const & name) const override;
    void addProperties(PropertySet const & other) override;
    void mergeProperties(PropertySet const & other) override;
    void removeProperty(CString const & name) override;
    void removeAllProperties() override;
    std::vector<CString> getPropertyNames() const override;
    unsigned int getPropertyCount() const override;

    KestrinStatusEnum getStatus() const override;
    void initialize(RefCountedPtr<KestrinConfig> const & config, ErrorInfo * error) override;
    RefCountedPtr<KestrinConfig> getConfig() const override;

    void cancelAllAsyncRequests() override;
    void cancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                      CString const & messageTypeId) override;
    void cancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) override;
    void logout() override;

    void addKestrinListener(KestrinListener * listener) override;
    std::vector<KestrinListener *> getKestrinListeners() const override;
    bool hasKestrinListener(KestrinListener const * listener) const override;
    void removeKestrinListener(KestrinListener const * listener) override;
    void removeAllKestrinListeners() override;

    using Kestrin::asyncRequest;
    using Kestrin::request;
    RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const & message,
                                          ErrorInfo * error) override;
    RefCountedPtr<AsyncRequestOperation> asyncRequest(RefCountedPtr<KestrinMessage> const & message,
                                                      AsyncReplyHandler * handler,
                                                      void * userObject) override;

    void addMessageHandler(CString const & type, CString const & subject,
                           KestrinNoticeMessageHandler * handler) override;
    int removeMessageHandler(CString const & type, CString const & subject,
                             KestrinNoticeMessageHandler const * handler) override;
    bool hasMessageHandler(CString const & type, CString const & subject,
                           KestrinNoticeMessageHandler const * handler) override;
    int removeMessageHandlers(CString const & type, CString const & subject) override;
    int removeAllMessageHandlers() override;
    std::vector<KestrinNoticeMessageHandler *> getMessageHandlers(
        CString const & type, CString const & subject) const override;
    int subscribe(CString const & type, CString const & subject) override;
    int unsubscribe(CString const & type, CString const & subject) override;
    bool hasSubscription(CString const & type, CString const & subject) const override;
    CString createSubjectCode(CString const & type, CString const & subject) const override;

    KestrinErrorManager * getErrorManager() const override;

    /// Counted; null is allowed.
    void setErrorManager(KestrinErrorManager * manager);

    int getTimeout() const { return timeout; }

    /// Who gets a notice of this type and subject, in the order of delivery: the handlers of any type
    /// and subject, of the type with any subject, of any type with the subject, and the exact ones;
    /// within each the order of addition. A handler stands there as often as it is registered under
    /// these; a type or subject that is itself the wildcard makes them meet, and lists it for each.
    ///
    /// Deliberate: the widest first, since books that see every notice must see it before the screens
    /// that show it.
    std::vector<KestrinNoticeMessageHandler *> getAllPossibleMessageHandlers(
        CString const & type, CString const & subject) const;

protected:
    ~AbstractKestrin() override = 0;

    // The operations from here on stand behind those of Kestrin, in this order.

    virtual void doLogout() = 0;
    /// The first subscription was opened. May throw: the count has then changed all the same.
    virtual void doSubscribe(CString const & type, CString const & subject) = 0;
    /// The last subscription was closed. May throw likewise.
    virtual void doUnsubscribe(CString const & type, CString const & subject) = 0;
    virtual void doHeartbeat() = 0;  ///< the concrete agent's alone to call

public:  // for the concrete agent and the parts that it is made of
    // Deliver the outcome of a request, unless `handler` is null, an outcome was delivered before or,
    // but for onCanceled, the operation is cancelled. The operation is marked as fired behind the
    // callback, so one that throws leaves it open. `operation` may be null only where `handler` is;
    // the caller holds a reference to it meanwhile, and fires the outcomes of one operation on one
    // thread.
    virtual void fireReplyHandlerOnReply(AsyncRequestOperation * operation,
                                         AsyncReplyHandler * handler,
                                         RefCountedPtr<KestrinMessage> const & request,
                                         RefCountedPtr<KestrinMessage> const & reply,
                                         void * userObject);
    virtual void fireReplyHandlerOnTimeout(AsyncRequestOperation * operation,
                                           AsyncReplyHandler * handler,
                                           RefCountedPtr<KestrinMessage> const & request,
                                           void * userObject);
    virtual void fireReplyHandlerOnCanceled(AsyncRequestOperation * operation,
                                            AsyncReplyHandler * handler,
                                            RefCountedPtr<KestrinMessage> const & request,
                                            void * userObject);
    virtual void fireReplyHandlerOnError(AsyncRequestOperation * operation,
                                         AsyncReplyHandler * handler,
                                         RefCountedPtr<KestrinMessage> const & request,
                                         ErrorInfo const & error, void * userObject);

    // Tell the listeners; the arguments reach them unchanged.
    virtual void fireOnLoginReply(RefCountedPtr<KestrinMessage> const & reply, bool succeeded,
                                  CString const & code, CString const & text);
    virtual void fireOnReloginRequired(ErrorInfo const & reason);
    virtual void fireStartupCompleted(RecordData const & startupData);
    virtual void fireConnected();
    virtual void fireKestrinError(ErrorInfo const & error);
    virtual void fireOnStopped(ErrorInfo const * error);
    virtual void fireOnRealTimeServiceStarted(bool restarted);
    virtual void fireOnRealTimeServiceStopped(ErrorInfo const * error);

protected:
    /// `reserved` is always null.
    virtual void doCancelAllAsyncRequests(void * reserved) = 0;
    virtual void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                                CString const & messageTypeId) = 0;
    virtual void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) = 0;

    KestrinStatusEnum status = KESTRINSTATUS_CREATED;  ///< the concrete agent's to write
    int timeout = 0;  ///< milliseconds; to be set by the concrete agent before the first request

private:
    PropertySet & properties() const;

    template <class... Parameters, class... Arguments>
    void fire(void (KestrinListener::*operation)(Kestrin *, Parameters...),
              Arguments const &... arguments);

    RefCountedPtr<KestrinConfig> config_;
    mutable RefCountedPtr<PropertySet> properties_;  // null where the constructor got no memory
    struct CodeHash {
        std::size_t operator()(CString const & code) const;
    };

    std::vector<KestrinListener *> listeners_;
    // A guess of the place in listeners_ that is asked for next; atomic, so that asking stays reading.
    mutable std::atomic<std::size_t> nextAskedFor_ = 0;
    std::unordered_map<CString, std::list<KestrinNoticeMessageHandler *>, CodeHash>
        messageHandlers_;
    std::map<CString, std::unique_ptr<InternalSubscriptionInfo>> subscriptions_;
    RefCountedPtr<KestrinErrorManager> errorManager_;
};

}  // namespace tvk
