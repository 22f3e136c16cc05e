#pragma once

#include <cstddef>
#include <memory>

#include "modules/asio/Export.h"
#include "modules/asio/TcpOptions.h"
#include "tvk/agent/AbstractKestrin.h"

namespace tvk {

class EventLoop;

/// The agent over a TCP connection, with TLS unless the options say plain. docs/tcp-agent.md tells its
/// behaviour state by state.
///
/// Status:    created; start: connecting, then connected; login: logged in; logout: connected again. A
///            connection that is lost: connecting again, and logged in again by itself where a login had
///            succeeded and no logout followed. stop, or a failure that ends it: stopped, for good.
/// Callbacks: come from inside run, poll and the blocking request, and where the application drives the
///            loop itself from functions that the agent enters there; from inside stop,
///            logout, stopRealTimeService and the cancel operations, those that these bring about.
///            Every operation may be called from inside every callback, and none but the blocking
///            request waits for the network. An exception leaves the call that made the callback; what
///            the callback told stays told, and the rest follows later.
/// Requests:  each asynchronous one has exactly one outcome, never from inside asyncRequest. One that is
///            under way when the connection is lost fails and is not sent again. Times are milliseconds;
///            one below 0 counts as 0.
/// Notices:   each once and in order as long as the session stands, also over connections that are lost;
///            onRealTimeServiceStopped and onRealTimeServiceStarted tell where a new session begins.
/// Ownership: as any agent; shares the loop. Dropping the last reference is safe anywhere: the requests
///            that are open hear onCanceled, nobody else hears anything, and what is thrown then is lost.
/// Threads:   that of the loop.
class TVK_ASIO_API TcpKestrin : public AbstractKestrin {
public:
    /// The error of start tells where the options make no sense.
    TcpKestrin(std::shared_ptr<EventLoop> loop, TcpOptions const & options);

    /// Drives the loop until the agent has stopped and nothing is left to tell, or until somebody stops
    /// the loop. Returns at once where the agent was not started. The number of callbacks; see poll.
    std::size_t run();
    /// Does what can be done without waiting, with at most `maximum` callbacks: calls of one notice
    /// handler or one reply handler, and passes over the listeners, which are never split. Other
    /// functions of the loop run meanwhile, and are not counted; nor are callbacks from inside
    /// callbacks. The number of callbacks; as many as `maximum` mean that more may wait.
    std::size_t poll(std::size_t maximum);

    /// False and `*error` where the agent was not initialized or was started before, or where the
    /// options make no sense.
    bool start(ErrorInfo * error) override;
    void stop() override;
    bool login(CString const & loginId, CString const & password, ErrorInfo * error) override;
    bool relogin(ErrorInfo * error) override;
    /// onRealTimeServiceStarted follows when the back end has agreed, else onRealTimeServiceStopped.
    bool startRealTimeService(ErrorInfo * error) override;
    void stopRealTimeService() override;

    bool send(RefCountedPtr<KestrinMessage> const & message, ErrorInfo * error) override;
    using AbstractKestrin::asyncRequest;
    using AbstractKestrin::request;
    /// Drives the loop until the outcome; whatever happens before it happens from inside the call.
    RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const & message,
                                          int timeoutMilliSec, ErrorInfo * error) override;
    RefCountedPtr<AsyncRequestOperation> asyncRequest(RefCountedPtr<KestrinMessage> const & message,
                                                      int timeoutMilliSec,
                                                      AsyncReplyHandler * handler,
                                                      void * userObject) override;

    void addMessageHandler(CString const & type, CString const & subject,
                           KestrinNoticeMessageHandler * handler) override;
    int removeMessageHandler(CString const & type, CString const & subject,
                             KestrinNoticeMessageHandler const * handler) override;
    int removeMessageHandlers(CString const & type, CString const & subject) override;
    int removeAllMessageHandlers() override;

    /// Until the back end has told its time, that of the machine.
    long long getServerTimeMilliSec() const override;

protected:
    ~TcpKestrin() override;
    void destroyObject() const override;

    void doLogout() override;
    void doSubscribe(CString const & type, CString const & subject) override;
    void doUnsubscribe(CString const & type, CString const & subject) override;
    void doHeartbeat() override;
    void doCancelAllAsyncRequests(void * reserved) override;
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                        CString const & messageTypeId) override;
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) override;

private:
    class Impl;

    std::unique_ptr<Impl> impl_;
};

}  // namespace tvk
