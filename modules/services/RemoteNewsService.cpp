#include "modules/services/RemoteNewsService.h"

#include "modules/services/detail/AgentLink.h"
#include "modules/services/detail/ListenerTable.h"
#include "modules/services/detail/NewsXml.h"
#include "modules/services/detail/Requests.h"
#include "tvk/agent/AsyncNewsRequestOperation.h"
#include "tvk/agent/XmlNewsListener.h"

namespace tvk {

using services::AgentLink;
using services::ListenerTable;
using services::Operation;
using services::Requests;

namespace {

class NewsOperation;

struct NewsKind {
    using Service = XmlNewsService;
    using Listener = XmlNewsListener;
    using Handle = AsyncNewsRequestOperation;
    using Operation = NewsOperation;
    static constexpr auto ON_TIMEOUT = &XmlNewsListener::onDocumentTimeout;
    static constexpr auto ON_CANCELED = &XmlNewsListener::onDocumentCanceled;
    static constexpr auto ON_ERROR = &XmlNewsListener::onDocumentError;
};

class NewsOperation : public Operation<NewsKind> {
public:
    NewsOperation(int documentType, XmlNewsListener * listener, void * userObject)
        : Operation(listener, userObject), documentType_(documentType) {}

    int getDocumentType() const override { return documentType_; }
    XmlNewsListener * getListener() const override { return listener(); }
    void * getUserObject() const override { return userObject(); }

private:
    int const documentType_;
};

bool isDocumentType(int type) {
    return type == XmlNewsService::TYPE_MASTER_INDEX || type == XmlNewsService::TYPE_HEADER_LINE ||
           type == XmlNewsService::TYPE_DETAIL;
}

/// All headlines are of one kind, so their listeners stand under one text.
CString const & allHeadlines() {
    static CString const text(services::HEADLINE_SUBJECT);
    return text;
}

}  // namespace

class RemoteNewsService::Impl final : private AgentLink::Client {
public:
    Impl(RemoteNewsService & service, RefCountedPtr<Kestrin> const & agent, int timeoutMilliSec)
        : service_(service),
          link_(agent, timeoutMilliSec, COMPONENT_CODE, *this),
          requests_(service, link_,
                    [this](NewsOperation & operation, KestrinMessage const & reply) {
                        takeDocument(operation, reply);
                    }) {}

    bool start(ErrorInfo * error) {
        if (isRunning_) {
            return true;
        }
        if (!link_.join(error)) {
            return false;
        }
        isRunning_ = true;
        ++run_;
        link_.open({services::HEADLINE_NOTICE, services::HEADLINE_SUBJECT});
        return true;
    }

    /// `error` is null where the service was asked to.
    void end(ErrorInfo const * error) {
        if (isRunning_) {
            RefCountedPtr<XmlNewsService> const alive(&service_);
            // First of all: what a callback asks for from here on is refused.
            isRunning_ = false;
            link_.leave();
            requests_.endAll(error);
        }
    }

    bool isRunning() const { return isRunning_; }

    RefCountedPtr<NewsOperation> request(int documentType, CString const & documentId,
                                         XmlNewsListener * listener, void * userObject) {
        if (!isRunning_ || !isDocumentType(documentType)) {
            return nullptr;
        }
        RefCountedPtr<XmlNewsService> const alive(&service_);
        RefCountedPtr<NewsOperation> operation(
            new NewsOperation(documentType, listener, userObject));
        requests_.ask(operation, services::documentRequest(documentType, documentId));
        return operation;
    }

    ListenerTable<XmlNewsListener> & listeners() { return listeners_; }
    Requests<NewsKind> & requests() { return requests_; }
    unsigned long long droppedNotices() const { return droppedNotices_; }

private:
    RefCounted const & counted() const override { return service_; }
    void agentStopped(ErrorInfo const * error) override { end(error); }
    void realTimeRestarted() override {}

    void noticeArrived(KestrinMessage const & notice) override {
        ErrorInfo error;
        RefCountedPtr<XmlDocument> const document =
            services::readXml(notice, COMPONENT_CODE, &error);
        if (document.isNull()) {
            ++droppedNotices_;
            return;
        }
        RefCountedPtr<XmlElement> const headline = document->getRootElement();
        listeners_.pass(
            {allHeadlines()}, [this, run = run_] { return isRunning_ && run_ == run; },
            [&](XmlNewsListener & listener) { listener.onHeadline(&service_, headline); });
    }

    void takeDocument(NewsOperation & operation, KestrinMessage const & reply) {
        ErrorInfo error;
        RefCountedPtr<XmlDocument> const document =
            services::readXml(reply, COMPONENT_CODE, &error);
        if (document.isNull()) {
            requests_.fail(&operation, error);
        } else {
            requests_.conclude(&operation, &XmlNewsListener::onDocument, document);
        }
    }

    RemoteNewsService & service_;
    AgentLink link_;
    Requests<NewsKind> requests_;
    ListenerTable<XmlNewsListener> listeners_;
    bool isRunning_ = false;
    unsigned int run_ = 0;  // tells a start from those before it
    unsigned long long droppedNotices_ = 0;
};

RemoteNewsService::RemoteNewsService(RefCountedPtr<Kestrin> const & agent, int timeoutMilliSec)
    : impl_(std::make_unique<Impl>(*this, agent, timeoutMilliSec)) {}

RemoteNewsService::~RemoteNewsService() = default;

void RemoteNewsService::destroyObject() const {
    if (!impl_->isRunning()) {
        XmlNewsService::destroyObject();
        return;
    }
    // The listeners of pending requests are told while the service is still whole, and hold references
    // to it as they like. The last of these comes here again.
    RefCountedPtr<RemoteNewsService const> const alive(this);
    impl_->end(nullptr);
}

bool RemoteNewsService::start(ErrorInfo * error) { return impl_->start(error); }

void RemoteNewsService::stop() { impl_->end(nullptr); }

bool RemoteNewsService::isRunning() const { return impl_->isRunning(); }

void RemoteNewsService::addNewsListener(XmlNewsListener * listener) {
    impl_->listeners().add(allHeadlines(), listener);
}

bool RemoteNewsService::hasNewsListener(XmlNewsListener const * listener) const {
    return impl_->listeners().has(allHeadlines(), listener);
}

void RemoteNewsService::removeNewsListener(XmlNewsListener const * listener) {
    impl_->listeners().remove(allHeadlines(), listener);
}

void RemoteNewsService::removeAllNewsListeners() { impl_->listeners().clear(); }

RefCountedPtr<AsyncNewsRequestOperation> RemoteNewsService::requestDocument(
    int documentType, CString const & documentId, XmlNewsListener * listener, void * userObject) {
    return impl_->request(documentType, documentId, listener, userObject);
}

void RemoteNewsService::cancelAllRequests() { impl_->requests().cancelAll(); }

void RemoteNewsService::cancelRequestsByListener(XmlNewsListener const * listener) {
    impl_->requests().cancelByListener(listener);
}

unsigned long long RemoteNewsService::getDroppedNoticeCount() const {
    return impl_->droppedNotices();
}

}  // namespace tvk
