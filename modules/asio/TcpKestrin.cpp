#include "modules/asio/TcpKestrin.h"

#include <utility>

#include "modules/asio/detail/TcpKestrinImpl.h"

namespace tvk {

TcpKestrin::TcpKestrin(std::shared_ptr<EventLoop> loop, TcpOptions const & options)
    : impl_(std::make_unique<Impl>(*this, std::move(loop), options)) {
    timeout = options.requestMilliSec;
}

TcpKestrin::~TcpKestrin() = default;

void TcpKestrin::destroyObject() const {
    if (impl_->hasOpenRequests()) {
        // The handlers of open requests are told while the agent is still whole, and hold references to
        // it as they like. When the last of these goes, nothing is open any more.
        RefCountedPtr<Kestrin> const alive(const_cast<TcpKestrin *>(this));
        impl_->endOfAgent();
        return;
    }
    AbstractKestrin::destroyObject();
}

std::size_t TcpKestrin::run() { return impl_->run(); }

std::size_t TcpKestrin::poll(std::size_t maximum) { return impl_->poll(maximum); }

bool TcpKestrin::start(ErrorInfo * error) { return impl_->start(error); }

void TcpKestrin::stop() { impl_->stop(); }

bool TcpKestrin::login(CString const & loginId, CString const & password, ErrorInfo * error) {
    return impl_->login(loginId, password, error);
}

bool TcpKestrin::relogin(ErrorInfo * error) { return impl_->relogin(error); }

bool TcpKestrin::startRealTimeService(ErrorInfo * error) {
    return impl_->startRealTimeService(error);
}

void TcpKestrin::stopRealTimeService() { impl_->stopRealTimeService(); }

bool TcpKestrin::send(RefCountedPtr<KestrinMessage> const & message, ErrorInfo * error) {
    return impl_->send(message, error);
}

RefCountedPtr<KestrinMessage> TcpKestrin::request(RefCountedPtr<KestrinMessage> const & message,
                                                  int timeoutMilliSec, ErrorInfo * error) {
    return impl_->request(message, timeoutMilliSec, error);
}

RefCountedPtr<AsyncRequestOperation> TcpKestrin::asyncRequest(
    RefCountedPtr<KestrinMessage> const & message, int timeoutMilliSec, AsyncReplyHandler * handler,
    void * userObject) {
    return impl_->asyncRequest(message, timeoutMilliSec, handler, userObject);
}

void TcpKestrin::addMessageHandler(CString const & type, CString const & subject,
                                   KestrinNoticeMessageHandler * handler) {
    AbstractKestrin::addMessageHandler(type, subject, handler);
    impl_->handlersChanged();
}

int TcpKestrin::removeMessageHandler(CString const & type, CString const & subject,
                                     KestrinNoticeMessageHandler const * handler) {
    impl_->handlersChanged();
    return AbstractKestrin::removeMessageHandler(type, subject, handler);
}

int TcpKestrin::removeMessageHandlers(CString const & type, CString const & subject) {
    impl_->handlersChanged();
    return AbstractKestrin::removeMessageHandlers(type, subject);
}

int TcpKestrin::removeAllMessageHandlers() {
    impl_->handlersChanged();
    return AbstractKestrin::removeAllMessageHandlers();
}

long long TcpKestrin::getServerTimeMilliSec() const { return impl_->serverTimeMilliSec(); }

void TcpKestrin::doLogout() { impl_->logout(); }

void TcpKestrin::doSubscribe(CString const & type, CString const & subject) {
    impl_->wantTopic(type, subject, true);
}

void TcpKestrin::doUnsubscribe(CString const & type, CString const & subject) {
    impl_->wantTopic(type, subject, false);
}

void TcpKestrin::doHeartbeat() { impl_->heartbeat(); }

void TcpKestrin::doCancelAllAsyncRequests(void * /*reserved*/) {
    impl_->cancelWhere([](detail::Operation const & operation) { return !operation.isOwn(); });
}

void TcpKestrin::doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler,
                                                CString const & messageTypeId) {
    impl_->cancelWhere([&](detail::Operation const & operation) {
        return operation.getReplyHandler() == handler &&
               operation.getRequest()->header().getMessageTypeId() == messageTypeId;
    });
}

void TcpKestrin::doCancelAsyncRequestsByHandler(AsyncReplyHandler const * handler) {
    impl_->cancelWhere([&](detail::Operation const & operation) {
        return operation.getReplyHandler() == handler;
    });
}

}  // namespace tvk
