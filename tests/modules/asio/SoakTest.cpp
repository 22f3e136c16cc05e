// A long day through one agent: notices by the million and requests by the hundred thousand, while the
// connection breaks again and again.

#include <gtest/gtest.h>

#include <asio/io_context.hpp>
#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "examples/backend/Backend.h"
#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "tests/support/HeapUse.h"
#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/NumberData.h"

namespace {

using tvk::ErrorInfo;
using tvk::RefCountedPtr;
using MessagePtr = RefCountedPtr<tvk::KestrinMessage>;

long long numberIn(tvk::KestrinMessage const & message) {
    auto const value = message.getFieldValue("n");
    return value ? value->longlongValue() : -1;
}

/// Each notice must bring the next number.
class InOrder : public tvk::KestrinNoticeMessageHandler {
public:
    void onNotice(tvk::Kestrin *, MessagePtr const & notice) override {
        wrong += numberIn(*notice) == count + 1 ? 0 : 1;
        ++count;
    }

    long long count = 0;
    long long wrong = 0;
};

/// Each request must have one outcome, and a reply must be its own.
class OnceEach : public tvk::AsyncReplyHandler {
public:
    explicit OnceEach(long long requests) : outcomes(static_cast<std::size_t>(requests)) {}

    void onReply(MessagePtr const & request, MessagePtr const & reply, void *) override {
        wrong += numberIn(*request) == numberIn(*reply) ? 0 : 1;
        ++replies;
        note(request);
    }
    void onTimeout(MessagePtr const & request, void *) override { note(request); }
    void onCanceled(MessagePtr const & request, void *) override { note(request); }
    void onError(MessagePtr const & request, ErrorInfo const &, void *) override { note(request); }

    std::vector<unsigned char> outcomes;
    long long open = 0;
    long long done = 0;
    long long replies = 0;
    long long wrong = 0;

private:
    void note(MessagePtr const & request) {
        wrong += ++outcomes[static_cast<std::size_t>(numberIn(*request))] == 1 ? 0 : 1;
        --open;
        ++done;
    }
};

/// Counts what must not happen, and breaks of the connection.
class Watcher : public tvk::KestrinListener {
public:
    void onStartupCompleted(tvk::Kestrin * agent, tvk::RecordData const &) override {
        agent->startRealTimeService(nullptr);
    }
    void onLoginReply(tvk::Kestrin *, MessagePtr const &, bool succeeded, CString const &,
                      CString const &) override {
        unwanted += succeeded ? 0 : 1;
    }
    void onReloginRequired(tvk::Kestrin *, ErrorInfo const &) override { ++unwanted; }
    void onKestrinError(tvk::Kestrin *, ErrorInfo const &) override { ++failedAttempts; }
    void onConnected(tvk::Kestrin * agent) override {
        if (!isLoggedIn) {
            isLoggedIn = agent->login("soak", "secret", nullptr);
        }
    }
    void onDisconnected(tvk::Kestrin *, ErrorInfo const *) override { ++losses; }
    void onStopped(tvk::Kestrin *, ErrorInfo const * error) override {
        unwanted += error == nullptr ? 0 : 1;
    }
    void onRealTimeServiceStarted(tvk::Kestrin *, bool restarted) override {
        isOn = true;
        unwanted += restarted ? 1 : 0;
    }
    void onRealTimeServiceStopped(tvk::Kestrin *, ErrorInfo const * error) override {
        unwanted += error == nullptr ? 0 : 1;
    }

    bool isLoggedIn = false;
    bool isOn = false;
    int losses = 0;
    int failedAttempts = 0;
    int unwanted = 0;
};

TEST(SoakTest, NothingIsLostOrToldTwiceOverManyConnections) {
    bool const isFullSize = tvk::test::HeapUse::available();  // not under a sanitizer
    long long const noticeCount = isFullSize ? 1'000'000 : 50'000;
    long long const requestCount = isFullSize ? 100'000 : 5'000;
    constexpr int LOSSES = 50;
    constexpr long long OPEN_AT_ONCE = 200;

    backend::Backend::Options backEndOptions;
    backEndOptions.quoteMilliSec = 0;
    backEndOptions.headlineMilliSec = 0;
    backend::Backend backEnd(backEndOptions);
    std::string problem;
    ASSERT_TRUE(backEnd.start(&problem)) << problem;

    asio::io_context context;
    tvk::TcpOptions options;
    options.host = "127.0.0.1";
    options.port = backEnd.port();
    options.plain = true;
    options.backOffFirstMilliSec = 1;
    options.backOffMaximumMilliSec = 20;
    options.jitterSeed = 1;
    RefCountedPtr<tvk::TcpKestrin> const agent(
        new tvk::TcpKestrin(std::make_shared<tvk::EventLoop>(context), options));
    agent->initialize(new tvk::KestrinConfig, nullptr);
    Watcher watcher;
    InOrder notices;
    OnceEach replies(requestCount);
    agent->addKestrinListener(&watcher);
    agent->addMessageHandler("burst", "*", &notices);
    agent->subscribe("burst", "soak");
    ASSERT_TRUE(agent->start(nullptr));

    auto const begin = std::chrono::steady_clock::now();
    auto const limit = begin + std::chrono::minutes(4);
    auto const isLate = [&] { return std::chrono::steady_clock::now() > limit; };
    while (!watcher.isOn && !isLate()) {
        agent->poll(100);
    }
    // Answered behind the subscription.
    MessagePtr const first(new tvk::MappedMessage);
    first->header().setMessageTypeId("echo");
    ASSERT_TRUE(agent->request(first, nullptr));

    backend::Fault burst;
    burst.kind = backend::Fault::BURST;
    burst.type = "burst";
    burst.subject = "soak";
    burst.count = noticeCount;
    burst.paced = true;
    backEnd.inject(burst);
    backend::Fault loss;
    loss.kind = backend::Fault::DISCONNECT;

    std::mt19937 random(3);
    long long asked = 0;
    int broken = 0;
    long long nextLoss = noticeCount / LOSSES;
    long long bytesEarly = 0;
    tvk::test::HeapUse const use;
    while ((notices.count < noticeCount || replies.done < requestCount) && !isLate()) {
        while (asked < requestCount && replies.open < OPEN_AT_ONCE &&
               asked <= notices.count * requestCount / noticeCount + OPEN_AT_ONCE &&
               agent->getStatus() == KESTRINSTATUS_LOGGED_IN) {
            MessagePtr const message(new tvk::MappedMessage);
            message->header().setMessageTypeId("echo");
            message->setFieldValue("n", new tvk::NumberData(asked++));
            ++replies.open;
            agent->asyncRequest(message, 30'000, &replies, nullptr);
        }
        agent->poll(1 + random() % 2000);
        if (notices.count >= nextLoss) {
            nextLoss += 1 + static_cast<long long>(random()) % (2 * noticeCount / LOSSES);
            ++broken;
            loss.afterBytes = random() % 3 == 0 ? 0 : static_cast<long long>(random() % 100'000);
            backEnd.inject(loss);
        }
        if (bytesEarly == 0 && notices.count >= noticeCount / 4) {
            bytesEarly = use.bytes();
        }
    }
    auto const seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    long long const bytesLate = use.bytes();
    agent->stop();
    agent->run();

    EXPECT_EQ(notices.count, noticeCount);
    EXPECT_EQ(notices.wrong, 0);
    EXPECT_EQ(replies.done, requestCount);
    EXPECT_EQ(replies.wrong, 0);
    EXPECT_EQ(watcher.unwanted, 0);
    // Several cuts may meet one connection, whose end is heard behind what came over it.
    EXPECT_GE(watcher.losses, 3);
    EXPECT_GT(replies.replies, requestCount / 2);
    if (isFullSize) {
        // The buffers of a connection are among them, whose size goes up and down.
        EXPECT_LT(bytesLate - bytesEarly, 8LL << 20);
    }
    std::printf(
        "%lld notices, %lld requests (%lld replies), %d losses in %.1f s; heap %+lld bytes\n",
        notices.count, replies.done, replies.replies, watcher.losses, seconds,
        bytesLate - bytesEarly);
}

}  // namespace
