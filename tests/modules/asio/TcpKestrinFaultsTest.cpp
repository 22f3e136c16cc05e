// What the network and the back end can do to an agent, and what the application hears of it.

#include <random>

#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "tests/modules/asio/support/TcpKestrinFixture.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;

class TcpKestrinFaultsTest : public TcpKestrinTest {
protected:
    /// The answer to one type, the rest as ever.
    void answerTo(std::string const & type,
                  std::function<void(FrameServer::Incoming const &)> const & act) {
        server.answer = [type, act](FrameServer::Incoming const & incoming) {
            if (incoming.type == type) {
                act(incoming);
            }
            return incoming.type == type;
        };
    }
};

// Frames that break the stream: the connection is lost with the code, and comes back.

struct Broken {
    char const * name;
    std::string bytes;
    int code;
};

class BrokenStreamTest : public TcpKestrinFaultsTest, public testing::WithParamInterface<Broken> {};

std::string spoiled(std::size_t at, char byte) {
    std::string bytes = frameBytes(tvk::FRAME_REPLY, 0, 1, "echo", "", "{}");
    bytes[at] = byte;
    return bytes;
}

Broken const BROKEN[] = {
    {"LengthTooSmall", std::string("\0\0\0\x13", 4) + std::string(20, '\0'), 2},
    {"LengthTooLarge", std::string("\x7f\xff\xff\xff", 4), 2},
    {"UnknownKind", spoiled(4, 9), 25},
    {"UnknownFlag", spoiled(5, 0x40), 25},
    {"ReservedBytes", spoiled(11, 1), 25},
    {"SizesThatDoNotFit", spoiled(7, 100), 25},
    {"BadUtf8", spoiled(24, '\xff'), 25},
    {"Request", frameBytes(tvk::FRAME_REQUEST, 0, 1, "x", "", "{}"), 25},
    {"Hello", frameBytes(tvk::FRAME_HELLO, 0, 0, "", "", "{}"), 25},
    {"SecondWelcome", frameBytes(tvk::FRAME_WELCOME, 0, 0, "", "", "{\"protocol\":1}"), 25},
};

std::string nameOf(testing::TestParamInfo<Broken> const & broken) { return broken.param.name; }

INSTANTIATE_TEST_SUITE_P(Each, BrokenStreamTest, testing::ValuesIn(BROKEN), nameOf);

TEST_P(BrokenStreamTest, IsLostAndComesBack) {
    startRealTime();
    ask("nothing", "x");
    server.raw(GetParam().bytes);
    ASSERT_TRUE(untilHeard("login yes 0"));
    std::string const code = std::to_string(GetParam().code);
    EXPECT_EQ(heard,
              (Heard{"disconnected " + code, "failed x " + code, "connected", "login yes 0"}));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_LOGGED_IN);
}

TEST_F(TcpKestrinFaultsTest, RandomBytesNeverEndAnythingButTheConnection) {
    std::mt19937 random(7);
    startRealTime();
    for (int round = 0; round < 30; ++round) {
        heard.clear();
        std::string bytes(1 + random() % 200, '\0');
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        server.raw(bytes);
        server.disconnect();
        ASSERT_TRUE(untilHeard("login yes 0"));
        ask("echo", "x");
        ASSERT_TRUE(untilHeard("reply x x"));
    }
}

TEST_F(TcpKestrinFaultsTest, HalfAFrameIsNone) {
    answerTo("half", [&](FrameServer::Incoming const & incoming) {
        std::string const bytes =
            frameBytes(tvk::FRAME_REPLY, 0, incoming.number, "half", "", R"({"value":"y"})");
        server.raw(bytes.substr(0, bytes.size() - 1));
        server.disconnect();
    });
    logIn();
    heard.clear();
    ask("half", "x");
    ASSERT_TRUE(untilHeard("login yes 0"));
    EXPECT_EQ(heard[1], "failed x 10");
}

TEST_F(TcpKestrinFaultsTest, FramesMayComeByteByByte) {
    logIn();
    heard.clear();
    answerTo("slow", [&](FrameServer::Incoming const & incoming) {
        std::string const bytes =
            frameBytes(tvk::FRAME_REPLY, 0, incoming.number, "slow", "", R"({"value":"y"})");
        for (char const byte : bytes) {
            server.raw(std::string(1, byte));
            settle(0);
        }
    });
    ask("slow", "x");
    ASSERT_TRUE(untilHeard("reply x y"));
}

TEST_F(TcpKestrinFaultsTest, WhatCameBeforeTheLossIsToldBeforeIt) {
    answerTo("last", [&](FrameServer::Incoming const & incoming) {
        server.notice("quote", "1", noticeBody(1));
        server.reply(incoming, R"({"value":"y"})");
        server.notice("quote", "1", noticeBody(2));
        server.disconnect();
    });
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    ask("last", "x");
    ASSERT_TRUE(until([&] { return timesHeard("disconnected 10") == 1; }, 1));
    EXPECT_EQ(heard, (Heard{"notice 1", "reply x y", "notice 2", "disconnected 10"}));
}

TEST_F(TcpKestrinFaultsTest, SilenceIsTheEndOfAConnection) {
    options.heartbeatMilliSec = 20;
    server.answer = [](FrameServer::Incoming const & incoming) {
        return incoming.kind == tvk::FRAME_HEARTBEAT;
    };
    logIn();
    heard.clear();
    auto const before = std::chrono::steady_clock::now();
    ASSERT_TRUE(untilHeard("disconnected 12"));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(40));
    EXPECT_GE(server.countOfKind(tvk::FRAME_HEARTBEAT), 2U);
    server.answer = nullptr;
    ASSERT_TRUE(untilHeard("login yes 0"));
}

TEST_F(TcpKestrinFaultsTest, HeartbeatsKeepAQuietConnection) {
    options.heartbeatMilliSec = 5;
    logIn();
    settle(150);
    EXPECT_EQ(server.connections(), 1);
    EXPECT_GE(server.countOfKind(tvk::FRAME_HEARTBEAT), 5U);
    unsigned long long last = 0;
    for (FrameServer::Incoming const & incoming : server.received()) {
        if (incoming.kind == tvk::FRAME_HEARTBEAT) {
            EXPECT_EQ(incoming.number, ++last);
        }
    }
}

TEST_F(TcpKestrinFaultsTest, TheShorterIntervalOfHeartbeatsCounts) {
    server.heartbeatMilliSec = 5;
    logIn();
    ASSERT_TRUE(until([&] { return server.countOfKind(tvk::FRAME_HEARTBEAT) >= 3; }));
}

TEST_F(TcpKestrinFaultsTest, HeartbeatsAreAnswered) {
    connect();
    server.frame(tvk::FRAME_HEARTBEAT, 0, 77, "", "", "");
    ASSERT_TRUE(until([&] { return server.countOfKind(tvk::FRAME_HEARTBEAT_ANSWER) == 1; }));
    EXPECT_EQ(server.received().back().number, 77U);
}

TEST_F(TcpKestrinFaultsTest, AnApplicationThatSleepsKeepsItsConnection) {
    options.heartbeatMilliSec = 10;
    logIn();
    heard.clear();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    settle(50);
    EXPECT_TRUE(heard.empty());
    EXPECT_EQ(server.connections(), 1);
}

TEST_F(TcpKestrinFaultsTest, ABackEndWithoutWelcomeIsLeft) {
    options.connectMilliSec = 30;
    server.answer = [](auto const &) { return true; };
    make();
    agent->start(nullptr);
    ASSERT_TRUE(untilHeard("error 1"));
    EXPECT_EQ(listener.lastText, "no welcome within 30 ms");
    server.answer = nullptr;
    ASSERT_TRUE(untilHeard("connected"));
}

TEST_F(TcpKestrinFaultsTest, ABackEndThatSpeaksOutOfTurnIsLeft) {
    char const * const bodies[] = {"{}", "{\"protocol\":2}", "{", ""};
    for (char const * const body : bodies) {
        server.answer = [&](auto const &) {
            server.frame(tvk::FRAME_WELCOME, 0, 0, "", "", body);
            return true;
        };
        heard.clear();
        agent = nullptr;
        make();
        agent->start(nullptr);
        ASSERT_TRUE(untilHeard("error 25")) << body;
    }
    server.answer = [&](auto const &) {
        server.notice("quote", "1", "{}");
        return true;
    };
    heard.clear();
    ASSERT_TRUE(untilHeard("error 25"));
}

TEST_F(TcpKestrinFaultsTest, AttemptsGoOnUntilOneSucceeds) {
    server.accept(false);
    make();
    agent->start(nullptr);
    ASSERT_TRUE(until([&] { return timesHeard("error 10") + timesHeard("error 1000") >= 3; }));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTING);
    server.accept(true);
    ASSERT_TRUE(untilHeard("connected"));
}

TEST_F(TcpKestrinFaultsTest, AttemptsMayBeLimited) {
    server.accept(false);
    options.maximumAttempts = 3;
    make();
    agent->start(nullptr);
    ASSERT_TRUE(untilHeard("stopped 21"));
    EXPECT_EQ(heard.size(), 5U);  // three attempts, the limit, the end
    EXPECT_EQ(heard[3], "error 21");
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_STOPPED);
}

TEST_F(TcpKestrinFaultsTest, TheCountOfAttemptsBeginsAnewWithAWelcome) {
    options.maximumAttempts = 2;
    connect();
    for (int round = 1; round <= 3; ++round) {
        bool isFirst = true;
        server.answer = [&](auto const &) {
            bool const leaves = std::exchange(isFirst, false);
            if (leaves) {
                server.disconnect();
            }
            return leaves;
        };
        server.disconnect();
        ASSERT_TRUE(untilHeard("connected", round + 1));
    }
    EXPECT_EQ(timesHeard("error 10"), 3);
}

TEST_F(TcpKestrinFaultsTest, ReconnectionMayBeSwitchedOff) {
    options.reconnect = false;
    startRealTime();
    ask("nothing", "x");
    // What the server has not read when it closes would make the system say more than goodbye.
    ASSERT_TRUE(until([&] { return server.count("nothing") == 1; }));
    server.disconnect();
    ASSERT_TRUE(untilHeard("stopped 10"));
    EXPECT_EQ(heard,
              (Heard{"disconnected 10", "real time stopped 10", "failed x 10", "stopped 10"}));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_STOPPED);
}

TEST_F(TcpKestrinFaultsTest, AFirstAttemptThatFailsIsToldWithoutReconnection) {
    options.reconnect = false;
    server.accept(false);
    make();
    agent->start(nullptr);
    ASSERT_TRUE(until([&] { return agent->getStatus() == KESTRINSTATUS_STOPPED; }));
    settle(1);
    ASSERT_EQ(heard.size(), 2U);
    EXPECT_EQ(heard[0].substr(0, 5), "error");
    EXPECT_EQ(heard[1].substr(0, 7), "stopped");
}

TEST_F(TcpKestrinFaultsTest, AGoodbyeMayAllowToComeBack) {
    startRealTime();
    server.goodbye(R"({"code":18,"text":"maintenance","retry":true})");
    ASSERT_TRUE(untilHeard("login yes 0"));
    EXPECT_EQ(heard, (Heard{"disconnected 18", "connected", "login yes 0"}));
}

TEST_F(TcpKestrinFaultsTest, AGoodbyeMayBeFinal) {
    startRealTime();
    ask("nothing", "x");
    ASSERT_TRUE(until([&] { return server.count("nothing") == 1; }));
    server.goodbye(R"({"code":11,"text":"elsewhere","retry":false})");
    ASSERT_TRUE(untilHeard("stopped 11"));
    EXPECT_EQ(heard, (Heard{"error 11", "disconnected 11", "real time stopped 11", "failed x 11",
                            "stopped 11"}));
    EXPECT_EQ(listener.lastText, "elsewhere");
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_STOPPED);
}

TEST_F(TcpKestrinFaultsTest, AGoodbyeMayComeInPlaceOfTheWelcome) {
    server.answer = [&](auto const &) {
        server.goodbye(R"({"code":17,"text":"update","retry":false})");
        return true;
    };
    make();
    agent->start(nullptr);
    ASSERT_TRUE(untilHeard("stopped 17"));
    EXPECT_EQ(heard, (Heard{"error 17", "stopped 17"}));
}

TEST_F(TcpKestrinFaultsTest, AGoodbyeThatCannotBeReadIsALoss) {
    connect();
    heard.clear();
    server.goodbye("{");
    ASSERT_TRUE(untilHeard("connected"));
    EXPECT_EQ(heard, (Heard{"disconnected 10", "connected"}));
}

// Login, again and again.

TEST_F(TcpKestrinFaultsTest, ALoginComesBackWithTheSessionAndTheLastNotice) {
    startRealTime();
    agent->addMessageHandler("*", "*", &notices);
    server.notice("quote", "1", noticeBody(1));
    server.notice("quote", "1", noticeBody(2));
    ASSERT_TRUE(untilHeard("notice 2"));
    server.clear();
    server.disconnect();
    ASSERT_TRUE(untilHeard("login yes 0"));
    ASSERT_EQ(server.count("login"), 1U);
    FrameServer::Incoming const & login = server.received().back();
    EXPECT_EQ(login.field("loginId"), "trader");
    EXPECT_EQ(login.field("password"), "secret");
    EXPECT_EQ(login.field("session"), "S1");
    EXPECT_EQ(login.field("lastSequence"), "2");
    EXPECT_EQ(timesHeard("startup open"), 0) << "the session goes on";
}

TEST_F(TcpKestrinFaultsTest, TheApplicationMayLogInItself) {
    listener.during = [&](std::string const & line) {
        if (line == "connected") {
            EXPECT_TRUE(agent->login("trader", "secret", nullptr));
        }
    };
    make();
    agent->start(nullptr);
    ASSERT_TRUE(untilHeard("startup open"));
    server.disconnect();
    ASSERT_TRUE(untilHeard("login yes 0", 2));
    settle(5);
    EXPECT_EQ(server.count("login"), 2U);
    EXPECT_EQ(server.received().back().field("session"), "S1");
}

TEST_F(TcpKestrinFaultsTest, AnotherUserGetsASessionOfTheirOwn) {
    startRealTime();
    listener.during = [&](std::string const & line) {
        if (line == "connected") {
            EXPECT_TRUE(agent->login("other", "secret", nullptr));
        }
    };
    server.disconnect();
    ASSERT_TRUE(untilHeard("real time again"));
    EXPECT_EQ(timesHeard("real time stopped 26"), 1);
}

TEST_F(TcpKestrinFaultsTest, WithoutLoginNothingLogsInAgain) {
    connect();
    server.disconnect();
    ASSERT_TRUE(untilHeard("connected", 2));
    settle(5);
    EXPECT_EQ(server.count("login"), 0U);
}

TEST_F(TcpKestrinFaultsTest, AfterALogoutNothingLogsInAgain) {
    startRealTime();
    ask("nothing", "x");
    agent->logout();
    EXPECT_EQ(heard, (Heard{"real time stopped null", "canceled x"}));
    ASSERT_TRUE(until([&] { return server.count("logout") == 1; }));
    agent->logout();
    server.clear();
    server.disconnect();
    ASSERT_TRUE(untilHeard("connected"));
    settle(5);
    EXPECT_EQ(server.count("login"), 0U);
}

TEST_F(TcpKestrinFaultsTest, ALogoutWhileTheConnectionIsLostHolds) {
    startRealTime();
    listener.during = [&](std::string const & line) {
        if (line == "disconnected 10") {
            agent->logout();
        }
    };
    server.clear();
    server.disconnect();
    ASSERT_TRUE(untilHeard("connected"));
    settle(5);
    EXPECT_EQ(server.count("login"), 0U);
    EXPECT_EQ(heard, (Heard{"disconnected 10", "real time stopped null", "connected"}));
}

TEST_F(TcpKestrinFaultsTest, ARefusedReturnWantsANewLogin) {
    startRealTime();
    bool const failures[] = {false, true};
    for (bool const isFailure : failures) {
        heard.clear();
        answerTo("login", [&](FrameServer::Incoming const & incoming) {
            if (isFailure) {
                server.fail(incoming, R"({"code":20,"text":"expired"})");
            } else {
                server.reply(incoming, R"({"code":"1","text":"no"})");
            }
        });
        server.disconnect();
        std::string const code = isFailure ? "20" : "5";
        ASSERT_TRUE(untilHeard("relogin " + code));
        EXPECT_EQ(heard, (Heard{"disconnected 10", "connected", "real time stopped " + code,
                                "relogin " + code}));
        EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTED);
        server.answer = nullptr;
        heard.clear();
        ASSERT_TRUE(agent->relogin(nullptr));
        ASSERT_TRUE(untilHeard("startup open"));
        ASSERT_TRUE(agent->startRealTimeService(nullptr));
        ASSERT_TRUE(untilHeard("real time again"));
    }
}

TEST_F(TcpKestrinFaultsTest, AReturnWithoutAnswerIsTriedAgain) {
    startRealTime();
    options.requestMilliSec = 20;
    agent = nullptr;
    make();
    startRealTime();
    int left = 1;
    server.answer = [&](FrameServer::Incoming const & incoming) {
        return incoming.type == "login" && left-- > 0;
    };
    server.disconnect();
    ASSERT_TRUE(untilHeard("login yes 0"));
    EXPECT_EQ(heard, (Heard{"disconnected 10", "connected", "disconnected 9", "connected",
                            "login yes 0"}));
}

TEST_F(TcpKestrinFaultsTest, ALossDuringALoginIsItsAnswer) {
    connect();
    answerTo("login", [&](auto const &) { server.disconnect(); });
    heard.clear();
    agent->login("trader", "secret", nullptr);
    ASSERT_TRUE(untilHeard("connected"));
    EXPECT_EQ(heard, (Heard{"disconnected 10", "login no 10 null", "connected"}));
    EXPECT_EQ(server.count("login"), 1U) << "it never succeeded";
}

TEST_F(TcpKestrinFaultsTest, ARefusedLoginIsTold) {
    connect();
    answerTo("login", [&](FrameServer::Incoming const & incoming) {
        server.reply(incoming, R"({"code":"1","text":"wrong"})");
    });
    agent->login("trader", "wrong", nullptr);
    ASSERT_TRUE(untilHeard("login no 1"));
    EXPECT_EQ(listener.lastText, "wrong");
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTED);
    server.answer = nullptr;
    ASSERT_TRUE(agent->login("trader", "secret", nullptr));
    ASSERT_TRUE(untilHeard("startup open"));
}

TEST_F(TcpKestrinFaultsTest, ALogoutDuringALoginIsItsAnswer) {
    connect();
    answerTo("login", [](auto const &) {});
    ASSERT_TRUE(agent->login("trader", "secret", nullptr));
    agent->logout();
    EXPECT_EQ(heard.back(), "login no 8 null");
    server.answer = nullptr;
    ASSERT_TRUE(agent->login("trader", "secret", nullptr));
    ASSERT_TRUE(untilHeard("startup open"));
}

TEST_F(TcpKestrinFaultsTest, AnExpiredLoginWantsANewOne) {
    startRealTime();
    answerTo("expire", [&](FrameServer::Incoming const & incoming) {
        server.fail(incoming, R"({"code":20,"text":"expired"})");
    });
    ask("expire", "x");
    ask("expire", "y");
    ASSERT_TRUE(untilHeard("failed y 20"));
    EXPECT_EQ(heard, (Heard{"failed x 20", "real time stopped 20", "relogin 20", "failed y 20"}));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTED);
    ask("echo", "z");
    ASSERT_TRUE(untilHeard("failed z 26"));
    ASSERT_TRUE(agent->relogin(nullptr));
    ASSERT_TRUE(untilHeard("startup open"));
    EXPECT_EQ(server.received().back().field("session"), "");
}

TEST_F(TcpKestrinFaultsTest, RandomLossesAtAnyPointOfASession) {
    std::mt19937 random(11);
    make();
    agent->addMessageHandler("*", "*", &notices);
    agent->subscribe("quote", "1");
    server.answer = [&](auto const &) {
        bool const leaves = random() % 5 == 0;
        if (leaves) {
            server.disconnect();
        }
        return leaves;
    };
    listener.during = [&](std::string const & line) {
        if (line == "connected" || line.rfind("login no", 0) == 0) {
            agent->login("trader", "secret", nullptr);
        } else if (line == "startup open") {
            agent->startRealTimeService(nullptr);
        }
    };
    agent->start(nullptr);
    int asked = 0;
    ASSERT_TRUE(until([&] {
        if (asked < 500) {
            ask("echo", std::to_string(asked++), 3000);
            if (agent->getStatus() == KESTRINSTATUS_LOGGED_IN) {
                server.notice("quote", "1", noticeBody(server.sequence() + 1));
            }
            if (asked % 3 == 0) {
                agent->unsubscribe("quote", "1");
                agent->subscribe("quote", "1");
            }
        }
        long outcomes = 0;
        for (std::string const & line : heard) {
            outcomes += line.rfind("reply ", 0) == 0 || line.rfind("failed ", 0) == 0 ||
                                line.rfind("timeout ", 0) == 0
                            ? 1
                            : 0;
        }
        return asked == 500 && outcomes == 500;
    }));
    server.answer = nullptr;
    ASSERT_TRUE(until([&] { return agent->getStatus() == KESTRINSTATUS_LOGGED_IN; }));
    heard.clear();
    ask("echo", "end");
    ASSERT_TRUE(untilHeard("reply end end"));
}

}  // namespace
