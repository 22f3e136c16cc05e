#include <deque>

#include "bench/peers/Peers.h"
#include "tvk/tvk.h"

namespace tvk::bench {

namespace {

/// The least that an agent must have: no network, and nothing is ever sent.
class BenchAgent : public AbstractKestrin {
public:
    void deliver(CString const & type, CString const & subject,
                 RefCountedPtr<KestrinMessage> const & notice) {
        for (KestrinNoticeMessageHandler * const handler :
             getAllPossibleMessageHandlers(type, subject)) {
            handler->onNotice(this, notice);
        }
    }

    bool start(ErrorInfo *) override { return false; }
    void stop() override {}
    bool login(CString const &, CString const &, ErrorInfo *) override { return false; }
    bool relogin(ErrorInfo *) override { return false; }
    bool startRealTimeService(ErrorInfo *) override { return false; }
    void stopRealTimeService() override {}
    bool send(RefCountedPtr<KestrinMessage> const &, ErrorInfo *) override { return false; }
    using AbstractKestrin::request;
    RefCountedPtr<KestrinMessage> request(RefCountedPtr<KestrinMessage> const &, int,
                                          ErrorInfo *) override {
        return nullptr;
    }
    using AbstractKestrin::asyncRequest;
    RefCountedPtr<AsyncRequestOperation> asyncRequest(RefCountedPtr<KestrinMessage> const &, int,
                                                      AsyncReplyHandler *, void *) override {
        return nullptr;
    }
    long long getServerTimeMilliSec() const override { return 0; }

protected:
    void doLogout() override {}
    void doSubscribe(CString const &, CString const &) override {}
    void doUnsubscribe(CString const &, CString const &) override {}
    void doHeartbeat() override {}
    void doCancelAllAsyncRequests(void *) override {}
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const *, CString const &) override {}
    void doCancelAsyncRequestsByHandler(AsyncReplyHandler const *) override {}
};

class Handler : public KestrinNoticeMessageHandler {
public:
    Handler(CallSum & sum, std::uint32_t number) : sum_(sum), number_(number) {}

    void onNotice(Kestrin *, RefCountedPtr<KestrinMessage> const &) override { sum_.add(number_); }

private:
    CallSum & sum_;
    std::uint32_t number_;
};

class TvkNoticeRouter : public NoticeRouter {
public:
    void addHandler(Topic const & topic, std::uint32_t handler) override {
        agent_->addMessageHandler(topic.tvkType, topic.tvkSubject,
                                  &handlers_.emplace_back(sum_, handler));
    }
    CallSum deliverAll(std::span<Topic const> topics) override {
        sum_ = {};
        for (Topic const & topic : topics) {
            agent_->deliver(topic.tvkType, topic.tvkSubject, notice_);
        }
        return sum_;
    }

private:
    RefCountedPtr<KestrinMessage> notice_ = new MappedMessage;
    CallSum sum_;
    std::deque<Handler> handlers_;
    RefCountedPtr<BenchAgent> agent_ = new BenchAgent;
};

class Listener : public KestrinListener {
public:
    Listener(CallSum & sum, std::uint32_t number) : sum_(sum), number_(number) {}

    void onStartupCompleted(Kestrin *, RecordData const &) override {}
    void onLoginReply(Kestrin *, RefCountedPtr<KestrinMessage> const &, bool, CString const &,
                      CString const &) override {}
    void onReloginRequired(Kestrin *, ErrorInfo const &) override {}
    void onKestrinError(Kestrin *, ErrorInfo const &) override {}
    void onConnected(Kestrin *) override { sum_.add(number_); }
    void onDisconnected(Kestrin *, ErrorInfo const *) override {}
    void onStopped(Kestrin *, ErrorInfo const *) override {}
    void onRealTimeServiceStarted(Kestrin *, bool) override {}
    void onRealTimeServiceStopped(Kestrin *, ErrorInfo const *) override {}

private:
    CallSum & sum_;
    std::uint32_t number_;
};

class TvkEventSource : public EventSource {
public:
    void addListener(std::uint32_t listener) override {
        agent_->addKestrinListener(&listeners_.emplace_back(sum_, listener));
    }
    CallSum fire(std::size_t events) override {
        sum_ = {};
        for (; events > 0; --events) {
            agent_->fireConnected();
        }
        return sum_;
    }

private:
    CallSum sum_;
    std::deque<Listener> listeners_;
    RefCountedPtr<BenchAgent> agent_ = new BenchAgent;
};

}  // namespace

void addTvkAgent(Peers & peers) {
    addPeer<TvkNoticeRouter>(peers.noticeRouters, "tvk");
    addPeer<TvkEventSource>(peers.eventSources, "tvk");
}

}  // namespace tvk::bench
