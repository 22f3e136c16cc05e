// Requests: exactly one outcome each, whatever happens.

#include <random>
#include <stdexcept>

#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "tests/modules/asio/support/TcpKestrinFixture.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;
using tvk::RefCountedPtr;

class TcpKestrinRequestsTest : public TcpKestrinTest {};

bool isNetworkFailure(ErrorInfo const & error) {
    return error.hasUserInfo(ErrorInfo::OrvKey_ErrorTypeHint);
}

TEST_F(TcpKestrinRequestsTest, GetTheirReplies) {
    logIn();
    heard.clear();
    auto const first = ask("echo", "a");
    auto const second = ask("echo", "b");
    EXPECT_TRUE(first->isPending());
    ASSERT_TRUE(untilHeard("reply b b"));
    EXPECT_EQ(heard, (Heard{"reply a a", "reply b b"}));
    EXPECT_FALSE(first->isPending());
    EXPECT_TRUE(first->isFired());
    EXPECT_FALSE(second->isCanceled());
}

TEST_F(TcpKestrinRequestsTest, GetRepliesInTheOrderOfTheBackEnd) {
    std::vector<FrameServer::Incoming> waiting;
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "echo") {
            waiting.push_back(incoming);
        }
        return incoming.type == "echo";
    };
    logIn();
    heard.clear();
    ask("echo", "a");
    ask("echo", "b");
    ASSERT_TRUE(until([&] { return waiting.size() == 2; }));
    server.reply(waiting[1], R"({"value":"second"})");
    server.reply(waiting[0], R"({"value":"first"})");
    server.reply(waiting[0], R"({"value":"again"})");
    ASSERT_TRUE(untilHeard("reply a first"));
    settle();
    EXPECT_EQ(heard, (Heard{"reply b second", "reply a first"}));
}

TEST_F(TcpKestrinRequestsTest, CarryNumbersThatCountUp) {
    logIn();
    server.clear();
    agent->send(makeRequest("echo", "x"), nullptr);
    ask("echo", "a");
    ask("echo", "b");
    ASSERT_TRUE(untilHeard("reply b b"));
    ASSERT_EQ(server.received().size(), 3U);
    EXPECT_EQ(server.received()[0].number, 0U);
    EXPECT_EQ(server.received()[2].number, server.received()[1].number + 1);
}

TEST_F(TcpKestrinRequestsTest, TimeOut) {
    logIn();
    heard.clear();
    ask("nothing", "slow", 40);
    ask("nothing", "fast", 5);
    ask("nothing", "at once", 0);
    ask("nothing", "before", -5);
    ASSERT_TRUE(untilHeard("timeout slow"));
    ASSERT_EQ(heard.size(), 4U);
    EXPECT_EQ(heard[2], "timeout fast");
    EXPECT_EQ(heard[3], "timeout slow");
}

TEST_F(TcpKestrinRequestsTest, DropRepliesThatComeTooLate) {
    FrameServer::Incoming late;
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "late") {
            late = incoming;
        }
        return incoming.type == "late";
    };
    logIn();
    heard.clear();
    ask("late", "x", 5);
    ASSERT_TRUE(untilHeard("timeout x"));
    ASSERT_TRUE(until([&] { return late.number != 0; }));
    server.reply(late, R"({"value":"late"})");
    ask("echo", "y");
    ASSERT_TRUE(untilHeard("reply y y"));
    EXPECT_EQ(heard.size(), 2U);
}

TEST_F(TcpKestrinRequestsTest, AreCanceledFromInsideTheCall) {
    logIn();
    heard.clear();
    auto const operation = ask("nothing", "a");
    operation->cancel();
    EXPECT_EQ(heard, Heard{"canceled a"});
    EXPECT_TRUE(operation->isCanceled());
    operation->cancel();
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(TcpKestrinRequestsTest, AreCanceledByHandlerAndType) {
    HearingReplies other(heard);
    logIn();
    heard.clear();
    ask("first", "a");
    ask("second", "b");
    agent->asyncRequest(makeRequest("first", "c"), 10'000, &other, nullptr);
    agent->cancelAsyncRequestsByHandler(&replies, "first");
    EXPECT_EQ(heard, Heard{"canceled a"});
    agent->cancelAsyncRequestsByHandler(&other);
    EXPECT_EQ(heard.back(), "canceled c");
    ask("third", "d");
    agent->cancelAllAsyncRequests();
    EXPECT_EQ(heard, (Heard{"canceled a", "canceled c", "canceled b", "canceled d"}));
}

TEST_F(TcpKestrinRequestsTest, AreCanceledThoughTheirFailureIsDecided) {
    make();
    ask("echo", "a");
    agent->cancelAsyncRequestsByHandler(&replies);
    EXPECT_EQ(heard, Heard{"canceled a"});
    agent->poll(1000);
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(TcpKestrinRequestsTest, AreAllCanceledThoughAHandlerThrows) {
    logIn();
    heard.clear();
    replies.during = [](std::string const &) { throw std::runtime_error("thrown"); };
    ask("nothing", "a");
    ask("nothing", "b");
    EXPECT_THROW(agent->cancelAllAsyncRequests(), std::runtime_error);
    EXPECT_EQ(heard, (Heard{"canceled a", "canceled b"}));
}

TEST_F(TcpKestrinRequestsTest, FailWhereNobodyIsLoggedInButNotFromInsideTheCall) {
    make();
    ask("echo", "a");
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(agent->run(), 1U);
    EXPECT_EQ(heard, Heard{"failed a 26"});
    connect();
    ask("echo", "b");
    ASSERT_TRUE(untilHeard("failed b 26"));
    agent->stop();
    ask("echo", "c");
    EXPECT_EQ(timesHeard("failed c 26"), 0);
    EXPECT_EQ(agent->run(), 1U);
    EXPECT_EQ(timesHeard("failed c 26"), 1);
    ErrorInfo error;
    EXPECT_FALSE(agent->send(makeRequest("echo", "d"), &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
    EXPECT_FALSE(agent->send(makeRequest("echo", "d"), nullptr));
}

TEST_F(TcpKestrinRequestsTest, TellWhatTheBackEndSays) {
    std::string said;
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "refuse") {
            server.fail(incoming, said);
        }
        return incoming.type == "refuse";
    };
    logIn();
    struct Row {
        char const * said;
        int code;
        char const * text;
        bool isNetwork;
    };
    Row const rows[] = {
        {R"({"code":7001,"text":"no"})", 7001, "no", false},
        {R"({"code":7001,"text":"no","network":true})", 7001, "no", true},
        {R"({"text":"no code"})", KestrinConstants::ERR_UnexpectedError, "no code", false},
        {"{}", KestrinConstants::ERR_UnexpectedError, "", false},
        {R"({"code":{},"text":[]})", KestrinConstants::ERR_UnexpectedError, "", false},
    };
    for (Row const & row : rows) {
        heard.clear();
        said = row.said;
        ask("refuse", "x");
        ASSERT_TRUE(untilHeard("failed x " + std::to_string(row.code))) << row.said;
        EXPECT_STREQ(replies.lastError.getErrorMessage(), row.text);
        EXPECT_EQ(isNetworkFailure(replies.lastError), row.isNetwork);
        EXPECT_TRUE(replies.lastError.hasUserInfo(ErrorInfo::OrvKey_ErrorReply));
    }
}

TEST_F(TcpKestrinRequestsTest, FailWithBadJsonAlone) {
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "bad") {
            server.reply(incoming, "{\"value\":");
        }
        return incoming.type == "bad";
    };
    logIn();
    ask("bad", "x");
    ASSERT_TRUE(untilHeard("failed x 7"));
    ask("echo", "y");
    ASSERT_TRUE(untilHeard("reply y y"));
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(TcpKestrinRequestsTest, FailWhereTheyCannotBeWritten) {
    options.maximumFrameSize = 1000;
    logIn();
    auto const raw = makeRequest("echo", "raw");
    raw->setFieldValue("raw", new tvk::RawDataImpl("x", 1));
    agent->asyncRequest(raw, 1000, &replies, nullptr);
    ASSERT_TRUE(untilHeard("failed raw 7"));
    std::string const longText(1000, 'x');
    ask("echo", longText);
    ASSERT_TRUE(untilHeard("failed " + longText + " 2"));
    ErrorInfo error;
    EXPECT_FALSE(agent->send(makeRequest("echo", longText), &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageSize);
}

TEST_F(TcpKestrinRequestsTest, FailWhenTheConnectionIsLostAndAreNotSentAgain) {
    logIn();
    heard.clear();
    ask("order", "a");
    ask("order", "b");
    ASSERT_TRUE(until([&] { return server.count("order") == 2; }));
    server.disconnect();
    ASSERT_TRUE(untilHeard("login yes 0"));
    EXPECT_EQ(heard,
              (Heard{"disconnected 10", "failed a 10", "failed b 10", "connected", "login yes 0"}));
    EXPECT_TRUE(isNetworkFailure(replies.lastError));
    settle();
    EXPECT_EQ(server.count("order"), 2U);
}

TEST_F(TcpKestrinRequestsTest, AreBounded) {
    options.maximumOpenRequests = 3;
    logIn();
    heard.clear();
    for (char const * value : {"a", "b", "c", "d"}) {
        ask("nothing", value);
    }
    ASSERT_TRUE(untilHeard("failed d 1000"));
    EXPECT_STREQ(replies.lastError.getErrorMessage(), "too many requests are open");
    EXPECT_EQ(heard.size(), 1U);
    agent->cancelAllAsyncRequests();
    ask("echo", "e");
    ASSERT_TRUE(untilHeard("reply e e"));
}

TEST_F(TcpKestrinRequestsTest, FailWhereTheQueueForSendingIsFull) {
    options.maximumQueuedBytes = 1U << 20U;
    logIn();
    server.readNoMore();
    settle(5);
    heard.clear();
    std::string const large(100'000, 'x');
    bool isFull = false;
    ErrorInfo error;
    for (int count = 0; count < 1000 && !isFull; ++count) {
        isFull = !agent->send(makeRequest("large", large), &error);
        agent->poll(1000);
    }
    ASSERT_TRUE(isFull);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_NetworkIOError);
    EXPECT_STREQ(error.getErrorMessage(), "the send queue is full");
    EXPECT_TRUE(isNetworkFailure(error));
    ask("large", large);
    ASSERT_TRUE(untilHeard("failed " + large + " 1000"));
    EXPECT_EQ(heard.size(), 1U);
}

TEST_F(TcpKestrinRequestsTest, MayHaveNoHandler) {
    logIn();
    heard.clear();
    auto const operation = agent->asyncRequest(makeRequest("echo", "x"), 1000, nullptr, nullptr);
    ASSERT_TRUE(until([&] { return !operation->isPending(); }));
    EXPECT_TRUE(heard.empty());
}

TEST_F(TcpKestrinRequestsTest, BlockUntilTheReply) {
    logIn();
    ErrorInfo error;
    auto const reply = agent->request(makeRequest("echo", "x"), 10'000, &error);
    ASSERT_TRUE(reply);
    EXPECT_EQ(valueIn(*reply), "x");
    EXPECT_FALSE(error.hasError());
    EXPECT_FALSE(agent->request(makeRequest("nothing", "x"), 5, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_RequestTimeOut);
    EXPECT_FALSE(agent->request(makeRequest("nothing", "x"), 5, nullptr));
}

TEST_F(TcpKestrinRequestsTest, BlockNobodyWhereNobodyIsLoggedIn) {
    make();
    ErrorInfo error;
    EXPECT_FALSE(agent->request(makeRequest("echo", "x"), 10'000, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
}

TEST_F(TcpKestrinRequestsTest, BlockNoLongerThanTheConnectionStands) {
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "leave") {
            server.disconnect();
        }
        return incoming.type == "leave";
    };
    logIn();
    ErrorInfo error;
    EXPECT_FALSE(agent->request(makeRequest("leave", "x"), 10'000, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_ConnectionClosedByRemotePeer);
}

TEST_F(TcpKestrinRequestsTest, BlockInsideOneAnother) {
    logIn();
    heard.clear();
    replies.during = [&](std::string const & line) {
        if (line == "reply outer outer") {
            auto const reply = agent->request(makeRequest("echo", "inner"), 10'000, nullptr);
            heard.push_back("inner " + valueIn(*reply));
        }
    };
    ask("echo", "outer");
    auto const reply = agent->request(makeRequest("echo", "around"), 10'000, nullptr);
    EXPECT_EQ(valueIn(*reply), "around");
    EXPECT_EQ(heard, (Heard{"reply outer outer", "inner inner"}));
}

TEST_F(TcpKestrinRequestsTest, BlockingEndsWithWhatACallbackThrowsMeanwhile) {
    logIn();
    heard.clear();
    replies.during = [](std::string const &) { throw std::runtime_error("thrown"); };
    ask("echo", "other");
    EXPECT_THROW(agent->request(makeRequest("echo", "x"), 10'000, nullptr), std::runtime_error);
    replies.during = nullptr;
    ask("echo", "behind");
    ASSERT_TRUE(untilHeard("reply behind behind"));
}

TEST_F(TcpKestrinRequestsTest, BlockingEndsWithAStopFromACallback) {
    logIn();
    replies.during = [&](std::string const &) { agent->stop(); };
    ask("echo", "other");
    ErrorInfo error;
    EXPECT_FALSE(agent->request(makeRequest("nothing", "x"), 10'000, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_RequestCanceled);
}

TEST_F(TcpKestrinRequestsTest, HearOfTheEndOfTheAgent) {
    logIn();
    heard.clear();
    ask("nothing", "a");
    ask("nothing", "b");
    agent = nullptr;
    EXPECT_EQ(heard, (Heard{"canceled a", "canceled b"}));
}

TEST_F(TcpKestrinRequestsTest, MayAskAgainAsTheAgentEnds) {
    logIn();
    heard.clear();
    int left = 3;
    replies.during = [&](std::string const &) {
        if (left-- > 0) {
            agent->asyncRequest(makeRequest("echo", "again"), 1000, &replies, nullptr);
        }
    };
    ask("nothing", "a");
    tvk::TcpKestrin * const plain = agent.get();
    plain->addRef();
    agent->stop();
    plain->removeRef();
    agent = nullptr;
    EXPECT_EQ(heard.front(), "canceled a");
    EXPECT_EQ(timesHeard("canceled again") + timesHeard("failed again 26"), 3);
}

TEST_F(TcpKestrinRequestsTest, WhatHandlersThrowAsTheAgentEndsIsLost) {
    logIn();
    heard.clear();
    replies.during = [](std::string const &) { throw std::runtime_error("thrown"); };
    ask("nothing", "a");
    ask("nothing", "b");
    agent = nullptr;
    EXPECT_EQ(heard, (Heard{"canceled a", "canceled b"}));
}

TEST_F(TcpKestrinRequestsTest, StopTellsAllThoughAHandlerThrows) {
    logIn();
    heard.clear();
    replies.during = [](std::string const &) { throw std::runtime_error("thrown"); };
    ask("nothing", "a");
    ask("nothing", "b");
    EXPECT_THROW(agent->stop(), std::runtime_error);
    EXPECT_EQ(heard, (Heard{"canceled a", "canceled b", "disconnected null", "stopped null"}));
}

TEST_F(TcpKestrinRequestsTest, FailTogetherByTheThousandWithinTheBoundOfPoll) {
    constexpr int COUNT = 20'000;
    logIn();
    heard.clear();
    auto const message = makeRequest("nothing", "x");
    for (int asked = 0; asked < COUNT; ++asked) {
        agent->asyncRequest(message, 60'000, &replies, nullptr);
    }
    ASSERT_TRUE(until([&] { return server.count("nothing") == std::size_t{COUNT}; }));
    server.disconnect();
    while (heard.size() < std::size_t{COUNT}) {
        std::size_t const before = heard.size();
        ASSERT_LE(agent->poll(100), 100U);
        ASSERT_LE(heard.size() - before, 100U);
    }
    ASSERT_TRUE(untilHeard("failed x 10", COUNT));
    ASSERT_TRUE(untilHeard("login yes 0"));
    EXPECT_EQ(heard.size(), std::size_t{COUNT + 3}) << "the loss, the welcome and the login";
}

/// Each request hears exactly one thing, though the connection breaks, requests are cancelled, and
/// handlers throw, at random.
class RandomRequestsTest : public TcpKestrinTest,
                           public testing::WithParamInterface<unsigned int> {};

INSTANTIATE_TEST_SUITE_P(Seeds, RandomRequestsTest, testing::Range(1U, 9U));

TEST_P(RandomRequestsTest, HaveOneOutcomeEach) {
    std::mt19937 random(GetParam());
    auto const chance = [&](unsigned int of) { return random() % of == 0; };
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type != "echo") {
            return false;
        }
        if (chance(60)) {
            server.disconnect();
        } else if (chance(80)) {
            server.raw("\xff\xff\xff\xff");
        } else if (chance(80)) {
            server.frame(tvk::FRAME_REPLY, 0, incoming.number, "echo", "", "{");
        } else if (chance(50)) {
            server.fail(incoming, R"({"code":7005,"text":"no"})");
        } else {
            return chance(20);  // some get no answer at all
        }
        return true;
    };
    logIn();
    heard.clear();
    replies.during = [&](std::string const &) {
        if (chance(40)) {
            throw std::runtime_error("thrown");
        }
        if (chance(60)) {
            agent->cancelAsyncRequestsByHandler(&replies);
        }
    };
    std::vector<RefCountedPtr<tvk::AsyncRequestOperation>> operations;
    auto const safely = [](auto const & call) {
        try {
            call();
        } catch (std::runtime_error const &) {
        }
    };
    int const count = 2000;
    for (int asked = 0; asked < count; ++asked) {
        operations.push_back(ask("echo", std::to_string(asked), chance(10) ? 1 : 3000));
        if (chance(25)) {
            safely([&] { operations[random() % operations.size()]->cancel(); });
        }
        if (chance(3)) {
            safely([&] { agent->poll(1 + random() % 7); });
        }
    }
    auto const isOver = [&] {
        return std::none_of(operations.begin(), operations.end(),
                            [](auto const & operation) { return operation->isPending(); });
    };
    auto const end = std::chrono::steady_clock::now() + PATIENCE;
    while (!isOver() && std::chrono::steady_clock::now() < end) {
        safely([&] { agent->poll(1000); });
    }
    ASSERT_TRUE(isOver());
    replies.during = nullptr;
    std::map<std::string, int> outcomes;
    for (std::string const & line : heard) {
        for (char const * what : {"reply ", "timeout ", "canceled ", "failed "}) {
            if (line.rfind(what, 0) == 0) {
                std::string const rest = line.substr(std::string(what).size());
                ++outcomes[rest.substr(0, rest.find(' '))];
            }
        }
    }
    EXPECT_EQ(outcomes.size(), static_cast<std::size_t>(count));
    for (auto const & [value, times] : outcomes) {
        EXPECT_EQ(times, 1) << value;
    }
}

}  // namespace
