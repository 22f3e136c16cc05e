// Notices: to whom, in which order, and how many at once; subscriptions and the real-time service.

#include <stdexcept>

#include "modules/asio/FrameMessages.h"
#include "modules/asio/TcpKestrin.h"
#include "tests/modules/asio/support/TcpKestrinFixture.h"
#include "tests/support/AllocationCounter.h"
#include "tvk/json/SimpleObjectCache.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;

class TcpKestrinNoticesTest : public TcpKestrinTest {
protected:
    void sendNotices(int count, std::string const & subject = "1") {
        for (int value = 1; value <= count; ++value) {
            server.notice("quote", subject, noticeBody(server.sequence() + 1));
        }
    }
    /// What the back end was told, "subscribe quote 1" and so on, since the last clear.
    Heard told() const {
        Heard lines;
        for (FrameServer::Incoming const & incoming : server.received()) {
            std::string line = incoming.type;
            if (line == "subscribe" || line == "unsubscribe") {
                line += " " + incoming.field("type") + " " + incoming.field("subject");
            }
            if (incoming.kind == tvk::FRAME_REQUEST && line != "login") {
                lines.push_back(line);
            }
        }
        return lines;
    }
    bool untilTold(Heard const & lines) {
        return until([&] { return told() == lines; });
    }
};

TEST_F(TcpKestrinNoticesTest, GoToTheWidestHandlersFirst) {
    HearingNotices any(heard, "any");
    HearingNotices type(heard, "type");
    HearingNotices subject(heard, "subject");
    startRealTime();
    agent->addMessageHandler("quote", "1", &notices);
    agent->addMessageHandler("*", "1", &subject);
    agent->addMessageHandler("quote", "*", &type);
    agent->addMessageHandler("*", "*", &any);
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 1"));
    EXPECT_EQ(heard, (Heard{"any 1", "type 1", "subject 1", "notice 1"}));
}

TEST_F(TcpKestrinNoticesTest, BringTypeSubjectAndText) {
    startRealTime();
    struct Handler : tvk::KestrinNoticeMessageHandler {
        tvk::RefCountedPtr<tvk::KestrinMessage> last;
        void onNotice(tvk::Kestrin *,
                      tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override {
            last = notice;
        }
    } handler;
    agent->addMessageHandler("quote", "\x8a\x94", &handler);  // in code page 932
    server.notice("quote", "\xe6\xa0\xaa", R"({"value":1.5})");
    ASSERT_TRUE(until([&] { return !handler.last.isNull(); }));
    EXPECT_EQ(handler.last->header().getMessageKind(), MSGKIND_NOTICE);
    EXPECT_STREQ(handler.last->header().getMessageTypeId(), "quote");
    EXPECT_STREQ(handler.last->header().getFieldValue("subject")->asString(), "\x8a\x94");
    EXPECT_EQ(valueIn(*handler.last), "1.5");
}

TEST_F(TcpKestrinNoticesTest, AreNotToldBeforeTheServiceStartedNorBehindItsEnd) {
    make();
    agent->addMessageHandler("*", "*", &notices);
    logIn();
    sendNotices(1);
    settle(5);
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(untilHeard("real time"));
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 2"));
    agent->stopRealTimeService();
    sendNotices(1);
    settle();
    EXPECT_EQ(timesHeard("notice 1"), 0);
    EXPECT_EQ(timesHeard("notice 3"), 0);
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(untilHeard("real time again"));
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 4"));
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(TcpKestrinNoticesTest, SkipHandlersThatWereRemovedMeanwhile) {
    HearingNotices second(heard, "second");
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    agent->addMessageHandler("quote", "1", &second);
    notices.during = [&](std::string const &) {
        agent->removeMessageHandler("quote", "1", &second);
    };
    sendNotices(2);
    ASSERT_TRUE(untilHeard("notice 2"));
    EXPECT_EQ(heard, (Heard{"notice 1", "notice 2"}));
}

TEST_F(TcpKestrinNoticesTest, CallHandlersThatWereAddedMeanwhileFromTheNextOn) {
    HearingNotices second(heard, "second");
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    notices.during = [&](std::string const &) {
        agent->addMessageHandler("quote", "1", &second);
        notices.during = nullptr;
    };
    sendNotices(2);
    ASSERT_TRUE(untilHeard("second 2"));
    EXPECT_EQ(heard, (Heard{"notice 1", "notice 2", "second 2"}));
}

TEST_F(TcpKestrinNoticesTest, CallAHandlerAsOftenAsItIsRegistered) {
    startRealTime();
    agent->addMessageHandler("quote", "1", &notices);
    agent->addMessageHandler("quote", "1", &notices);
    notices.during = [&](std::string const &) {
        agent->removeMessageHandler("quote", "1", &notices);
    };
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 1", 2));
    EXPECT_FALSE(agent->hasMessageHandler("quote", "1", &notices));
}

TEST_F(TcpKestrinNoticesTest, GoOnBehindAHandlerThatThrows) {
    HearingNotices second(heard, "second");
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    agent->addMessageHandler("quote", "1", &second);
    notices.during = [&](std::string const &) {
        notices.during = nullptr;
        throw std::runtime_error("thrown");
    };
    sendNotices(2);
    EXPECT_THROW(untilHeard("second 2"), std::runtime_error);
    ASSERT_TRUE(untilHeard("second 2"));
    EXPECT_EQ(heard, (Heard{"notice 1", "second 1", "notice 2", "second 2"}));
}

TEST_F(TcpKestrinNoticesTest, AreDeliveredAsManyAtOnceAsPollAllows) {
    HearingNotices second(heard, "second");
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    agent->addMessageHandler("quote", "1", &second);
    sendNotices(50);
    std::size_t total = 0;
    while (total < 100) {
        std::size_t const before = heard.size();
        std::size_t const maximum = 1 + total % 5;
        std::size_t const called = agent->poll(maximum);
        ASSERT_LE(called, maximum);
        ASSERT_EQ(heard.size() - before, called);
        total += called;
    }
    for (std::size_t at = 0; at < 100; at += 2) {
        EXPECT_EQ(heard[at], "notice " + std::to_string(at / 2 + 1));
        EXPECT_EQ(heard[at + 1], "second " + std::to_string(at / 2 + 1));
    }
    EXPECT_EQ(agent->poll(0), 0U);
}

TEST_F(TcpKestrinNoticesTest, GoOnFromInsideABlockingRequestWhereTheyStood) {
    HearingNotices second(heard, "second");
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    agent->addMessageHandler("quote", "1", &second);
    notices.during = [&](std::string const & line) {
        if (line == "notice 2") {
            heard.push_back("asks");
            agent->request(makeRequest("echo", "x"), 10'000, nullptr);
            heard.push_back("answered");
        }
    };
    sendNotices(4);
    ASSERT_TRUE(untilHeard("second 4"));
    EXPECT_EQ(heard, (Heard{"notice 1", "second 1", "notice 2", "asks", "second 2", "notice 3",
                            "second 3", "notice 4", "second 4", "answered"}));
}

TEST_F(TcpKestrinNoticesTest, ComeInSlicesWhereTheApplicationDrivesTheLoop) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    constexpr int COUNT = 2000;
    bool othersHaveTheirTurn = false;
    bool isWaiting = false;
    std::size_t atEntry = 0;
    std::size_t longest = 0;
    notices.during = [&](std::string const &) {
        if (!isWaiting) {
            isWaiting = true;
            atEntry = heard.size();
            server.loop()->post([&] {
                isWaiting = false;
                othersHaveTheirTurn = true;
                longest = std::max(longest, heard.size() - atEntry);
            });
        }
    };
    sendNotices(COUNT);
    auto const end = std::chrono::steady_clock::now() + PATIENCE;
    while (heard.size() < COUNT && std::chrono::steady_clock::now() < end) {
        server.runContext();
    }
    EXPECT_EQ(heard.size(), static_cast<std::size_t>(COUNT));
    EXPECT_TRUE(othersHaveTheirTurn);
    EXPECT_LE(longest, 200U);
    isWaiting = true;
}

TEST_F(TcpKestrinNoticesTest, DoNotKeepTimeoutsWaiting) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    ask("nothing", "x", 1);
    bool hasTimedOut = false;
    replies.during = [&](std::string const &) { hasTimedOut = true; };
    notices.during = [&](std::string const &) {
        if (!hasTimedOut) {
            sendNotices(1);  // so there is always one more
        }
    };
    sendNotices(500);
    ASSERT_TRUE(untilHeard("timeout x"));
}

TEST_F(TcpKestrinNoticesTest, ThatHaveBadJsonAreErrorsOfTheirOwn) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    sendNotices(1);
    server.notice("quote", "1", "{\"value\":");
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 3"));
    EXPECT_EQ(heard, (Heard{"notice 1", "error 7", "notice 3"}));
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(TcpKestrinNoticesTest, ThatComeTwiceAreToldOnce) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    sendNotices(2);
    server.setSequence(1);
    server.notice("quote", "1", noticeBody(22));
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 3"));
    EXPECT_EQ(heard, (Heard{"notice 1", "notice 2", "notice 3"}));
}

TEST_F(TcpKestrinNoticesTest, ThatAreMissingBreakTheConnectionAndComeWithTheNext) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 1"));
    server.frame(tvk::FRAME_NOTICE, 0, 3, "quote", "1", noticeBody(33));
    ASSERT_TRUE(untilHeard("login yes 0"));
    EXPECT_EQ(heard, (Heard{"notice 1", "disconnected 25", "connected", "login yes 0"}));
    sendNotices(2);
    ASSERT_TRUE(untilHeard("notice 3"));
    EXPECT_EQ(timesHeard("notice 2"), 1);
    EXPECT_EQ(timesHeard("notice 33"), 0);
}

TEST_F(TcpKestrinNoticesTest, ComeOnceEachOverLostConnections) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    constexpr int COUNT = 3000;
    constexpr int LOSSES = 20;
    for (int loss = 1; loss <= LOSSES; ++loss) {
        sendNotices(100);
        agent->poll(static_cast<std::size_t>(loss));
        server.disconnect();
        sendNotices(50);
        ASSERT_TRUE(until([&] { return timesHeard("login yes 0") == loss; }));
    }
    ASSERT_TRUE(untilHeard("notice 3000"));
    Heard expected;
    Heard only;
    for (int value = 1; value <= COUNT; ++value) {
        expected.push_back("notice " + std::to_string(value));
    }
    std::copy_if(heard.begin(), heard.end(), std::back_inserter(only),
                 [](std::string const & line) { return line.rfind("notice", 0) == 0; });
    EXPECT_EQ(only, expected);
    EXPECT_EQ(server.connections(), LOSSES + 1);
    EXPECT_EQ(timesHeard("real time again"), 0);
}

TEST_F(TcpKestrinNoticesTest, ANewSessionIsTold) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    agent->subscribe("quote", "1");
    sendNotices(3);
    ASSERT_TRUE(untilHeard("notice 3"));
    heard.clear();
    server.remembersSession = false;
    server.clear();
    server.disconnect();
    ASSERT_TRUE(untilHeard("real time again"));
    EXPECT_EQ(heard, (Heard{"disconnected 10", "connected", "login yes 0", "real time stopped 26",
                            "startup open", "real time again"}));
    ASSERT_TRUE(untilTold({"startRealTime", "subscribe quote 1"}));
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 1"));
}

TEST_F(TcpKestrinNoticesTest, SubscriptionsAreToldWhileTheServiceIsOn) {
    make();
    agent->subscribe("quote", "1");
    agent->subscribe("quote", "1");
    logIn();
    server.clear();
    agent->subscribe("order", "trader");
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(untilTold({"startRealTime", "subscribe order trader", "subscribe quote 1"}));
    server.clear();
    agent->unsubscribe("quote", "1");
    EXPECT_TRUE(told().empty());
    agent->unsubscribe("quote", "1");
    agent->subscribe("*", "*");
    ASSERT_TRUE(untilTold({"unsubscribe quote 1", "subscribe * *"}));
    server.clear();
    agent->stopRealTimeService();
    ASSERT_TRUE(untilTold({"unsubscribe * *", "unsubscribe order trader", "stopRealTime"}));
    server.clear();
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(untilTold({"startRealTime", "subscribe * *", "subscribe order trader"}));
}

TEST_F(TcpKestrinNoticesTest, SubscriptionsOfATimeWithoutConnectionAreToldBehindIt) {
    startRealTime();
    agent->subscribe("quote", "1");
    agent->subscribe("quote", "2");
    ASSERT_TRUE(until([&] { return server.count("subscribe") == 2; }));
    settle(5);
    server.clear();
    listener.during = [&](std::string const & line) {
        if (line == "disconnected 10") {
            agent->unsubscribe("quote", "1");
            agent->subscribe("quote", "3");
            agent->unsubscribe("quote", "2");
            agent->subscribe("quote", "2");
            agent->addMessageHandler("*", "*", &notices);
        }
    };
    server.disconnect();
    ASSERT_TRUE(untilTold({"unsubscribe quote 1", "subscribe quote 3"}));
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 1"));
}

TEST_F(TcpKestrinNoticesTest, SubscriptionsThatMayNotHaveArrivedAreToldAgain) {
    startRealTime();
    server.clear();
    bool isFirst = true;
    server.answer = [&](FrameServer::Incoming const & incoming) {
        bool const leaves = incoming.type == "subscribe" && std::exchange(isFirst, false);
        if (leaves) {
            server.disconnect();
        }
        return leaves;
    };
    agent->subscribe("quote", "1");
    ASSERT_TRUE(untilTold({"subscribe quote 1", "subscribe quote 1"}));
    server.clear();
    isFirst = true;
    settle(5);
    server.answer = [&](FrameServer::Incoming const & incoming) {
        bool const leaves = incoming.type == "unsubscribe" && std::exchange(isFirst, false);
        if (leaves) {
            server.disconnect();
        }
        return leaves;
    };
    agent->unsubscribe("quote", "1");
    ASSERT_TRUE(untilTold({"unsubscribe quote 1", "unsubscribe quote 1"}));
}

TEST_F(TcpKestrinNoticesTest, RefusedSubscriptionsAreErrors) {
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "subscribe") {
            server.fail(incoming, R"({"code":7002,"text":"unknown"})");
        }
        return incoming.type == "subscribe";
    };
    startRealTime();
    agent->subscribe("quote", "1");
    ASSERT_TRUE(untilHeard("error 7002"));
    EXPECT_EQ(listener.lastText, "unknown");
    EXPECT_TRUE(agent->hasSubscription("quote", "1"));
}

TEST_F(TcpKestrinNoticesTest, ARefusedServiceIsStopped) {
    server.answer = [&](FrameServer::Incoming const & incoming) {
        if (incoming.type == "startRealTime") {
            server.fail(incoming, R"({"code":7003,"text":"closed"})");
        }
        return incoming.type == "startRealTime";
    };
    logIn();
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(untilHeard("real time stopped 7003"));
    server.answer = nullptr;
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    ASSERT_TRUE(untilHeard("real time"));
}

TEST_F(TcpKestrinNoticesTest, AServiceThatIsStoppedBeforeItStartedIsNotTold) {
    logIn();
    heard.clear();
    ASSERT_TRUE(agent->startRealTimeService(nullptr));
    agent->stopRealTimeService();
    ASSERT_TRUE(untilTold({"startRealTime", "stopRealTime"}));
    settle();
    EXPECT_TRUE(heard.empty());
}

TEST_F(TcpKestrinNoticesTest, TheServiceNeedsALogin) {
    connect();
    ErrorInfo error;
    EXPECT_FALSE(agent->startRealTimeService(&error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
    EXPECT_FALSE(agent->startRealTimeService(nullptr));
    agent->stopRealTimeService();
    EXPECT_EQ(heard, Heard{"connected"});
}

TEST_F(TcpKestrinNoticesTest, ReadingStopsWhereNobodyTakesThem) {
    options.maximumReadAhead = 100'000;
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    std::string const large = "{\"value\":1,\"more\":\"" + std::string(10'000, 'x') + "\"}";
    constexpr int COUNT = 3000;  // 30 MB, more than the system keeps
    for (int sent = 0; sent < COUNT; ++sent) {
        server.notice("quote", "1", large);
    }
    // The loop goes round, but nothing is taken: the agent does not look.
    notices.during = [&](std::string const &) {
        if (heard.size() == 1) {
            std::size_t before = 0;
            do {
                before = server.unsentBytes();
                for (int round = 0; round < 1000; ++round) {
                    server.loop()->pollOne();
                }
            } while (server.unsentBytes() != before);
            EXPECT_GT(server.unsentBytes(), 0U);
        }
    };
    ASSERT_TRUE(untilHeard("notice 1", COUNT));
}

TEST_F(TcpKestrinNoticesTest, MayBeLargerThanWhatIsReadAhead) {
    options.maximumReadAhead = 1000;
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    server.notice("quote", "1", "{\"value\":1,\"more\":\"" + std::string(5'000'000, 'x') + "\"}");
    sendNotices(1);
    ASSERT_TRUE(untilHeard("notice 2"));
}

/// What it takes to make the message of such a notice, once its texts are known.
long long allocationsOfAMessage() {
    tvk::SimpleObjectCache cache(tvk::SimpleObjectCache::defaultRawDataConverter());
    tvk::FrameMessages messages(&cache);
    tvk::Frame frame;
    frame.kind = tvk::FRAME_NOTICE;
    frame.type = "quote";
    frame.subject = "1";
    frame.body = R"({"value":1})";
    messages.read(frame, nullptr);
    tvk::test::AllocationCounter const allocations;
    messages.read(frame, nullptr);
    return allocations.count();
}

TEST_F(TcpKestrinNoticesTest, AllocateNothingOnTheirWayButTheMessage) {
    if (!tvk::test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    startRealTime();
    struct Handler : tvk::KestrinNoticeMessageHandler {
        int count = 0;
        void onNotice(tvk::Kestrin *, tvk::RefCountedPtr<tvk::KestrinMessage> const &) override {
            ++count;
        }
    } handler;
    agent->addMessageHandler("*", "*", &handler);
    constexpr int COUNT = 500;
    int expected = 0;
    auto const send = [&] {
        std::string bytes;
        for (int sent = 0; sent < COUNT; ++sent) {
            server.setSequence(server.sequence() + 1);
            bytes +=
                frameBytes(tvk::FRAME_NOTICE, 0, server.sequence(), "quote", "1", R"({"value":1})");
        }
        expected += COUNT;
        server.raw(bytes);
    };
    auto const isThere = [&] { return handler.count == expected; };
    send();
    ASSERT_TRUE(until(isThere));
    send();
    tvk::test::AllocationCounter const allocations;
    ASSERT_TRUE(until(isThere));
    // Some are for the reading.
    EXPECT_LE(allocations.count(), allocationsOfAMessage() * COUNT + 100);
}

}  // namespace
