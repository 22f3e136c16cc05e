// The agent over TCP against the back end: what neither may lose nor repeat, over connections that are lost.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <asio/io_context.hpp>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "examples/support/Messages.h"
#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "tests/examples/BackendFixture.h"
#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/agent/AsyncRequestOperation.h"
#include "tvk/agent/KestrinConfig.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/NumberData.h"

namespace tvk::test {

using backend::Fault;

namespace {

/// Counts what the application hears of the session.
class Listening : public KestrinListener {
public:
    void onStartupCompleted(Kestrin *, RecordData const &) override { ++startups; }
    void onLoginReply(Kestrin *, RefCountedPtr<KestrinMessage> const &, bool succeeded,
                      CString const &, CString const & text) override {
        loginText = backend::utf8(text);
        ++(succeeded ? logins : refusedLogins);
    }
    void onReloginRequired(Kestrin *, ErrorInfo const & error) override {
        reloginCode = error.getErrorCode();
    }
    void onKestrinError(Kestrin *, ErrorInfo const & error) override {
        errors.push_back(error.getErrorCode());
    }
    void onConnected(Kestrin *) override { ++connections; }
    void onDisconnected(Kestrin *, ErrorInfo const *) override { ++losses; }
    void onStopped(Kestrin *, ErrorInfo const * error) override {
        ++stops;
        stopCode = error == nullptr ? 0 : error->getErrorCode();
    }
    void onRealTimeServiceStarted(Kestrin *, bool isRestarted) override {
        ++(isRestarted ? restarts : starts);
    }
    void onRealTimeServiceStopped(Kestrin *, ErrorInfo const *) override {}

    int startups = 0;
    int logins = 0;
    int refusedLogins = 0;
    int connections = 0;
    int losses = 0;
    int stops = 0;
    int starts = 0;
    int restarts = 0;
    int reloginCode = 0;
    int stopCode = -1;
    std::string loginText;
    std::vector<int> errors;
};

/// Wants the numbers of a burst, each once and in order.
class InOrder : public KestrinNoticeMessageHandler {
public:
    void onNotice(Kestrin *, RefCountedPtr<KestrinMessage> const & notice) override {
        long long const number = numberIn(*notice, "n");
        misplaced += number == last + 1 ? 0 : 1;
        last = number;
    }

    long long last = 0;
    long long misplaced = 0;
};

/// Keeps notices whole.
class Keeping : public KestrinNoticeMessageHandler {
public:
    void onNotice(Kestrin *, RefCountedPtr<KestrinMessage> const & notice) override {
        notices.push_back(notice);
    }

    std::vector<RefCountedPtr<KestrinMessage>> notices;
};

/// Counts the outcomes of each request; the user object is its place in the table.
class Outcomes : public AsyncReplyHandler {
public:
    using MessagePtr = RefCountedPtr<KestrinMessage>;

    void onReply(MessagePtr const & request, MessagePtr const & reply, void * place) override {
        ++replies;
        wrong += numberIn(*request, "n") == numberIn(*reply, "n") ? 0 : 1;
        end(place);
    }
    void onTimeout(MessagePtr const &, void * place) override {
        ++timeouts;
        end(place);
    }
    void onCanceled(MessagePtr const &, void * place) override {
        ++cancels;
        end(place);
    }
    void onError(MessagePtr const &, ErrorInfo const & error, void * place) override {
        ++errors[error.getErrorCode()];
        end(place);
    }

    /// For the next request.
    void * place() {
        outcomes.push_back(0);
        return reinterpret_cast<void *>(static_cast<std::uintptr_t>(outcomes.size()));
    }
    std::size_t open() const { return outcomes.size() - ended; }

    std::vector<unsigned char> outcomes;
    std::size_t ended = 0;
    std::size_t replies = 0;
    std::size_t wrong = 0;
    std::size_t timeouts = 0;
    std::size_t cancels = 0;
    std::map<int, std::size_t> errors;

private:
    void end(void * place) {
        ++outcomes[reinterpret_cast<std::uintptr_t>(place) - 1];
        ++ended;
    }
};

class BackendWithAgent : public BackendFixture {
protected:
    BackendWithAgent() {
        client_.host = "127.0.0.1";
        client_.plain = true;
        client_.backOffFirstMilliSec = 1;
        client_.backOffMaximumMilliSec = 4;
    }
    ~BackendWithAgent() override {
        if (agent_) {
            agent_->stop();
            until([this] { return listening_.stops > 0; });
            agent_->removeAllMessageHandlers();
            agent_->removeKestrinListener(&listening_);
        }
    }

    void connect() {
        start();
        client_.port = backEnd_->port();
        agent_ = new TcpKestrin(loop_, client_);
        RefCountedPtr<KestrinConfig> const config(new KestrinConfig);
        config->setVersionNum("1");
        agent_->initialize(config, nullptr);
        agent_->addKestrinListener(&listening_);
        ErrorInfo error;
        ASSERT_TRUE(agent_->start(&error)) << error.getErrorMessage().GetString();
        ASSERT_TRUE(until([this] { return listening_.connections == 1; }));
    }

    void logIn() {
        connect();
        ErrorInfo error;
        ASSERT_TRUE(agent_->login("taro", "secret", &error));
        ASSERT_TRUE(until([this] { return listening_.startups == 1; }));
        ASSERT_TRUE(agent_->startRealTimeService(&error));
        ASSERT_TRUE(until([this] { return listening_.starts == 1; }));
    }

    bool until(std::function<bool()> const & condition) {
        return waitFor([&] {
            for (std::size_t moved = 1; moved > 0 && !condition();) {
                moved = agent_->poll(1'000);
            }
            return condition();
        });
    }

    RefCountedPtr<KestrinMessage> echo(long long number) {
        auto const request = requestOfType("echo");
        request->setFieldValue("n", RefCountedPtr<FieldValue>(new NumberData(number)));
        return request;
    }

    void inject(Fault::Kind kind, long long amount = 0) {
        Fault fault;
        fault.kind = kind;
        fault.afterBytes = amount;
        fault.milliSec = amount;
        backEnd_->inject(fault);
    }

    void burst(long long count, long long first = 1) {
        Fault fault;
        fault.kind = Fault::BURST;
        fault.count = count;
        fault.first = first;
        fault.type = "test";
        fault.subject = "x";
        fault.paced = true;
        backEnd_->inject(fault);
    }

    asio::io_context context_;
    std::shared_ptr<EventLoop> loop_ = std::make_shared<EventLoop>(context_);
    TcpOptions client_;
    Listening listening_;
    RefCountedPtr<TcpKestrin> agent_;
};

}  // namespace

TEST_F(BackendWithAgent, RefusesTheWrongPasswordInJapanese) {
    connect();
    ErrorInfo error;
    ASSERT_TRUE(agent_->login("taro", "wrong", &error));
    ASSERT_TRUE(until([this] { return listening_.refusedLogins == 1; }));
    EXPECT_EQ(listening_.loginText, "ログインIDまたはパスワードが違います");
}

TEST_F(BackendWithAgent, WalksThroughASession) {
    options_.quoteMilliSec = 5;
    logIn();
    ErrorInfo error;
    auto const symbols = agent_->request(requestOfType("symbols"), &error);
    ASSERT_TRUE(symbols) << error.getErrorMessage().GetString();
    EXPECT_EQ(listIn(*symbols, "symbols")->getCount(), 12U);

    Keeping quotes;
    agent_->addMessageHandler("quote", "*", &quotes);
    agent_->subscribe("quote", "*");
    ASSERT_TRUE(until([&] { return quotes.notices.size() >= 30; }));
    EXPECT_EQ(textIn(*quotes.notices[0], "code"), "1201");

    Keeping orders;
    agent_->addMessageHandler("order", "taro", &orders);
    agent_->subscribe("order", "taro");
    auto const order = requestOfType("orderNew");
    order->setFieldValue("code", CString("7203"));
    order->setFieldValue("side", CString("buy"));
    order->setFieldValue("quantity", RefCountedPtr<FieldValue>(new NumberData(100)));
    auto const accepted = agent_->request(order, &error);
    ASSERT_TRUE(accepted) << error.getErrorMessage().GetString();
    ASSERT_TRUE(until([&] {
        return !orders.notices.empty() && textIn(*orders.notices.back(), "status") == "filled";
    }));

    order->setFieldValue("code", CString("0000"));
    EXPECT_FALSE(agent_->request(order, &error));
    EXPECT_EQ(error.getErrorCode(), 7001);
    EXPECT_EQ(backend::utf8(error.getErrorMessage()), "銘柄コードが見つかりません");
}

TEST_F(BackendWithAgent, GoesOnWhereAConnectionWasLost) {
    logIn();
    InOrder handler;
    agent_->addMessageHandler("test", "*", &handler);
    agent_->subscribe("test", "*");
    ASSERT_TRUE(agent_->request(echo(1), nullptr));
    burst(100);
    ASSERT_TRUE(until([&] { return handler.last == 100; }));
    inject(Fault::DISCONNECT);
    burst(100, 101);
    ASSERT_TRUE(until([&] { return handler.last == 200; }));
    EXPECT_EQ(handler.misplaced, 0);
    EXPECT_EQ(listening_.losses, 1);
    EXPECT_EQ(listening_.restarts, 0);
    EXPECT_EQ(backEnd_->counts().resumed, 1U);
}

TEST_F(BackendWithAgent, TellsThatASessionIsNew) {
    logIn();
    InOrder handler;
    agent_->addMessageHandler("test", "*", &handler);
    agent_->subscribe("test", "*");
    ASSERT_TRUE(agent_->request(echo(1), nullptr));
    inject(Fault::FORGET_SESSION);
    inject(Fault::DISCONNECT);
    ASSERT_TRUE(until([&] { return listening_.restarts == 1; }));
    ASSERT_TRUE(agent_->request(echo(1), nullptr));
    burst(10);
    EXPECT_TRUE(until([&] { return handler.last == 10; })) << "it is subscribed again";
    EXPECT_EQ(handler.misplaced, 0);
}

TEST_F(BackendWithAgent, ComesBackFromEveryFaultOfTheStream) {
    logIn();
    for (Fault::Kind const kind : {Fault::GARBAGE, Fault::DISCONNECT, Fault::BAD_LENGTH,
                                   Fault::BAD_KIND, Fault::HALF_FRAME, Fault::GOODBYE}) {
        SCOPED_TRACE(kind);
        int const losses = listening_.losses;
        int const connections = listening_.connections;
        inject(kind);
        Outcomes outcomes;
        void * const place = outcomes.place();
        agent_->asyncRequest(echo(1), 5'000, &outcomes, place);
        ASSERT_TRUE(until([&] {
            return listening_.losses > losses && listening_.connections > connections &&
                   outcomes.open() == 0;
        }));
        EXPECT_EQ(outcomes.outcomes[0], 1);
        EXPECT_EQ(outcomes.timeouts, 0U);
        ASSERT_TRUE(until([this] { return agent_->getStatus() == KESTRINSTATUS_LOGGED_IN; }));
        EXPECT_TRUE(agent_->request(echo(2), nullptr));
    }
}

TEST_F(BackendWithAgent, FailsTheRequestWhoseReplyIsSpoiledAlone) {
    logIn();
    inject(Fault::BAD_JSON);
    ErrorInfo error;
    EXPECT_FALSE(agent_->request(echo(1), &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageData);
    EXPECT_TRUE(agent_->request(echo(2), &error));
    EXPECT_EQ(listening_.losses, 0);
}

TEST_F(BackendWithAgent, TimesOutWhereNoReplyComes) {
    logIn();
    inject(Fault::DROP);
    ErrorInfo error;
    EXPECT_FALSE(agent_->request(echo(1), 20, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_RequestTimeOut);
    auto const late = std::chrono::steady_clock::now() + std::chrono::milliseconds(600);
    inject(Fault::DELAY, 500);
    EXPECT_FALSE(agent_->request(echo(2), 20, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_RequestTimeOut);
    ASSERT_TRUE(until([&] { return std::chrono::steady_clock::now() > late; }));
    EXPECT_TRUE(agent_->request(echo(3), &error)) << "the late reply was nobody's";
    EXPECT_EQ(listening_.losses, 0);
}

TEST_F(BackendWithAgent, MissesTheHeartbeatsOfASilentBackEnd) {
    options_.heartbeatMilliSec = 200;
    client_.heartbeatMilliSec = 200;
    logIn();
    inject(Fault::SILENCE, 0);
    ASSERT_TRUE(until([this] { return listening_.connections > 1; }));
    EXPECT_GE(listening_.losses, 1);
    ASSERT_TRUE(until([this] { return backEnd_->counts().resumed > 0; }));
}

TEST_F(BackendWithAgent, HearsThatItsLoginHasExpired) {
    logIn();
    inject(Fault::EXPIRE_LOGIN);
    ErrorInfo error;
    EXPECT_FALSE(agent_->request(requestOfType("symbols"), &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_AuthenticationExpired);
    EXPECT_TRUE(until(
        [this] { return listening_.reloginCode == KestrinConstants::ERR_AuthenticationExpired; }));
    ASSERT_TRUE(agent_->relogin(&error));
    ASSERT_TRUE(until([this] { return agent_->getStatus() == KESTRINSTATUS_LOGGED_IN; }));
    EXPECT_TRUE(agent_->request(requestOfType("symbols"), &error));
}

TEST_F(BackendWithAgent, LosesAndRepeatsNothingUnderLoadWithRandomDisconnects) {
    constexpr long long NOTICES = 200'000;
    constexpr std::size_t REQUESTS = 20'000;
    constexpr std::size_t OPEN = 50;
    // The ring must hold what lies in the network when a connection is lost.
    options_.ringSize = NOTICES;
    logIn();
    InOrder handler;
    agent_->addMessageHandler("test", "x", &handler);
    agent_->subscribe("test", "x");
    ASSERT_TRUE(agent_->request(echo(0), nullptr));
    burst(NOTICES);

    Outcomes outcomes;
    std::mt19937 random(9);
    std::size_t nextLoss = 500;
    ASSERT_TRUE(until([&] {
        bool const mayAsk = agent_->getStatus() == KESTRINSTATUS_LOGGED_IN;
        while (mayAsk && outcomes.open() < OPEN && outcomes.outcomes.size() < REQUESTS) {
            auto const number = static_cast<long long>(outcomes.outcomes.size());
            agent_->asyncRequest(echo(number), 60'000, &outcomes, outcomes.place());
        }
        if (outcomes.ended >= nextLoss) {
            nextLoss += 500 + random() % 1'000;
            inject(Fault::DISCONNECT, static_cast<long long>(random() % 5'000));
        }
        return handler.last == NOTICES && outcomes.ended == REQUESTS;
    })) << handler.last
        << " notices, " << outcomes.ended << " outcomes";
    EXPECT_EQ(handler.misplaced, 0);
    EXPECT_EQ(std::count(outcomes.outcomes.begin(), outcomes.outcomes.end(), 1),
              static_cast<std::ptrdiff_t>(REQUESTS));
    EXPECT_EQ(outcomes.wrong, 0U);
    EXPECT_EQ(outcomes.timeouts, 0U);
    EXPECT_EQ(outcomes.cancels, 0U);
    EXPECT_GE(listening_.losses, 10);
    EXPECT_EQ(listening_.restarts, 0) << "the session went on each time";
    EXPECT_GE(backEnd_->counts().resumed, 10U);
    EXPECT_THAT(listening_.errors,
                testing::Not(testing::Contains(KestrinConstants::ERR_ProtocolFailure)));
}

}  // namespace tvk::test
