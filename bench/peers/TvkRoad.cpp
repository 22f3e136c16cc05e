#include <asio/io_context.hpp>
#include <deque>
#include <stdexcept>

#include "bench/peers/Peers.h"
#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "tvk/tvk.h"

namespace tvk::bench {

namespace {

CString const NUMBER = "n";
CString const PRICE = "last";

class Handler : public KestrinNoticeMessageHandler {
public:
    Handler(NoticeSink & sink, std::uint64_t & calls) : sink_(sink), calls_(calls) {}

    void onNotice(Kestrin *, RefCountedPtr<KestrinMessage> const & notice) override {
        auto const number = notice->getFieldValue(NUMBER);
        auto const price = notice->getFieldValue(PRICE);
        sink_.told(static_cast<std::uint64_t>(number->longlongValue()), price->doubleValue());
        ++calls_;
    }

private:
    NoticeSink & sink_;
    std::uint64_t & calls_;
};

/// Keeps so many echoes under way.
class Asker : public AsyncReplyHandler {
public:
    Asker(TcpKestrin & agent, std::uint64_t requests) : agent_(agent), requests_(requests) {}

    void askOne() {
        RefCountedPtr<KestrinMessage> const message(new MappedMessage);
        message->header().setMessageTypeId("echo");
        message->setFieldValue(NUMBER, new NumberData(static_cast<long long>(++asked_)));
        agent_.asyncRequest(message, this, nullptr);
    }
    std::uint64_t answered() const { return answered_; }
    std::uint64_t sum() const { return sum_; }

    void onReply(RefCountedPtr<KestrinMessage> const &, RefCountedPtr<KestrinMessage> const & reply,
                 void *) override {
        sum_ += static_cast<std::uint64_t>(reply->getFieldValue(NUMBER)->longlongValue());
        ++answered_;
        if (asked_ < requests_) {
            askOne();
        }
    }
    void onTimeout(RefCountedPtr<KestrinMessage> const &, void *) override { fail(); }
    void onCanceled(RefCountedPtr<KestrinMessage> const &, void *) override { fail(); }
    void onError(RefCountedPtr<KestrinMessage> const &, ErrorInfo const &, void *) override {
        fail();
    }

private:
    [[noreturn]] static void fail() { throw std::runtime_error("a request failed"); }

    TcpKestrin & agent_;
    std::uint64_t requests_;
    std::uint64_t asked_ = 0;
    std::uint64_t answered_ = 0;
    std::uint64_t sum_ = 0;
};

/// Waits for the real-time service; any failure ends the row.
class Progress : public KestrinListener {
public:
    bool isReady() const { return isReady_; }

    void onStartupCompleted(Kestrin * agent, RecordData const &) override {
        agent->startRealTimeService(nullptr);
    }
    void onLoginReply(Kestrin *, RefCountedPtr<KestrinMessage> const &, bool succeeded,
                      CString const &, CString const & text) override {
        if (!succeeded) {
            throw std::runtime_error(text.GetString());
        }
    }
    void onReloginRequired(Kestrin *, ErrorInfo const & reason) override { fail(reason); }
    void onKestrinError(Kestrin *, ErrorInfo const & error) override { fail(error); }
    void onConnected(Kestrin * agent) override { agent->login("trader", "secret", nullptr); }
    void onDisconnected(Kestrin *, ErrorInfo const * error) override {
        if (error != nullptr) {
            fail(*error);
        }
    }
    void onStopped(Kestrin *, ErrorInfo const *) override {}
    void onRealTimeServiceStarted(Kestrin *, bool) override { isReady_ = true; }
    void onRealTimeServiceStopped(Kestrin *, ErrorInfo const *) override {}

private:
    [[noreturn]] static void fail(ErrorInfo const & error) {
        throw std::runtime_error(error.getErrorMessage().GetString());
    }

    bool isReady_ = false;
};

class TvkRoad : public Road {
public:
    ~TvkRoad() override {
        if (!agent_.isNull()) {
            agent_->removeKestrinListener(&progress_);
            agent_->stop();
        }
    }

    void connect(unsigned short port, std::vector<Topic> const & keys, NoticeSink & sink) override {
        TcpOptions options;
        options.host = "127.0.0.1";
        options.port = port;
        options.plain = true;
        agent_ = new TcpKestrin(loop_, options);
        agent_->initialize(new KestrinConfig, nullptr);
        agent_->addKestrinListener(&progress_);
        for (Topic const & key : keys) {
            agent_->addMessageHandler(key.tvkType, key.tvkSubject,
                                      &handlers_.emplace_back(sink, calls_));
        }
        agent_->start(nullptr);
        driveUntil([this] { return progress_.isReady(); });
    }

    void receive(std::uint64_t calls) override {
        std::uint64_t const wanted = calls_ + calls;
        driveUntil([this, wanted] { return calls_ >= wanted; });
    }

    std::uint64_t ask(std::uint64_t requests, std::uint64_t open) override {
        Asker asker(*agent_, requests);
        for (std::uint64_t i = 0; i < std::min(open, requests); ++i) {
            asker.askOne();
        }
        driveUntil([&] { return asker.answered() == requests; });
        return asker.sum();
    }

private:
    /// As an application that drives the context itself.
    template <class Condition>
    void driveUntil(Condition const & condition) {
        while (!condition()) {
            if (context_.run_one() == 0) {
                throw std::runtime_error("the connection is at its end");
            }
        }
    }

    asio::io_context context_{1};
    std::shared_ptr<EventLoop> loop_ = std::make_shared<EventLoop>(context_);
    std::uint64_t calls_ = 0;
    std::deque<Handler> handlers_;
    Progress progress_;
    RefCountedPtr<TcpKestrin> agent_;
};

}  // namespace

void addTvkRoad(Peers & peers) { addPeer<TvkRoad>(peers.roads, "tvk"); }

}  // namespace tvk::bench
