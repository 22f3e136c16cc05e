// The stages of a session, and what each operation does in them.

#include "modules/asio/TcpKestrin.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "modules/asio/DesktopLoop.h"
#include "tests/modules/asio/support/TcpKestrinFixture.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;

TEST_F(TcpKestrinTest, WalksThroughASession) {
    make();
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CREATED);
    EXPECT_EQ(agent->getTimeout(), options.requestMilliSec);
    ErrorInfo error;
    ASSERT_TRUE(agent->start(&error));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTING);
    ASSERT_TRUE(untilHeard("connected"));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTED);
    ASSERT_TRUE(agent->login("trader", "secret", &error));
    ASSERT_TRUE(untilHeard("startup open"));
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_LOGGED_IN);
    agent->addMessageHandler("quote", "7203", &notices);
    EXPECT_EQ(agent->subscribe("quote", "7203"), 1);
    ASSERT_TRUE(agent->startRealTimeService(&error));
    ASSERT_TRUE(untilHeard("real time"));
    ASSERT_TRUE(until([&] { return server.count("subscribe") == 1; }));
    server.notice("quote", "7203", noticeBody(1));
    ASSERT_TRUE(untilHeard("notice 1"));
    auto const reply = agent->request(makeRequest("echo", "x"), &error);
    ASSERT_TRUE(reply);
    EXPECT_EQ(valueIn(*reply), "x");
    agent->logout();
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTED);
    agent->stop();
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_STOPPED);
    Heard const expected{"connected",         "login yes 0", "startup open",
                         "real time",         "notice 1",    "real time stopped null",
                         "disconnected null", "stopped null"};
    EXPECT_EQ(heard, expected);
    EXPECT_FALSE(error.hasError());
}

TEST_F(TcpKestrinTest, SaysWhoItIs) {
    options.inet.setUserAgent("desk");
    options.heartbeatMilliSec = 4321;
    connect();
    FrameServer::Incoming const & hello = server.received().front();
    EXPECT_EQ(hello.kind, tvk::FRAME_HELLO);
    EXPECT_EQ(hello.field("protocol"), "1");
    EXPECT_EQ(hello.field("client"), "desk");
    EXPECT_EQ(hello.field("version"), "1.2");
    EXPECT_EQ(hello.field("heartbeatMilliSec"), "4321");
}

TEST_F(TcpKestrinTest, LogsInWithWhatItWasGiven) {
    logIn();
    FrameServer::Incoming const & login = server.received().back();
    EXPECT_EQ(login.type, "login");
    EXPECT_EQ(login.field("loginId"), "trader");
    EXPECT_EQ(login.field("password"), "secret");
    EXPECT_EQ(login.field("session"), "");
    EXPECT_EQ(login.field("lastSequence"), "0");
    EXPECT_EQ(listener.lastText, "welcome");
}

TEST_F(TcpKestrinTest, RefusesWhatIsOutOfPlace) {
    ErrorInfo error;
    agent = new tvk::TcpKestrin(server.loop(), options);
    EXPECT_FALSE(agent->start(&error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_FailedToCreateConnection);
    EXPECT_FALSE(agent->start(nullptr));
    make();
    auto const refused = [&](bool succeeded) {
        bool const isRight =
            !succeeded && error.getErrorCode() == KestrinConstants::ERR_SessionError;
        error = ErrorInfo();
        return isRight;
    };
    error = ErrorInfo();
    EXPECT_TRUE(refused(agent->login("trader", "secret", &error)));
    EXPECT_TRUE(refused(agent->relogin(&error)));
    EXPECT_TRUE(refused(agent->startRealTimeService(&error)));
    EXPECT_TRUE(refused(agent->send(makeRequest("echo", "x"), &error)));
    logIn();
    EXPECT_TRUE(refused(agent->login("trader", "secret", &error)));
    EXPECT_FALSE(agent->login("trader", "secret", nullptr));
    EXPECT_FALSE(agent->start(&error));
    agent->stop();
    EXPECT_FALSE(agent->start(&error));
    EXPECT_FALSE(agent->login("trader", "secret", nullptr));
}

TEST_F(TcpKestrinTest, OneLoginAtATime) {
    connect();
    EXPECT_TRUE(agent->login("trader", "secret", nullptr));
    EXPECT_FALSE(agent->login("trader", "secret", nullptr));
    ASSERT_TRUE(untilHeard("startup open"));
    EXPECT_EQ(server.count("login"), 1U);
}

TEST_F(TcpKestrinTest, SaysWhatIsWrongWithItsOptions) {
    options.port = 0;
    make();
    ErrorInfo error;
    EXPECT_FALSE(agent->start(&error));
    EXPECT_STREQ(error.getErrorMessage(), "host and port are needed");
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CREATED);
}

TEST_F(TcpKestrinTest, LogsInAgainWithTheSameName) {
    logIn();
    agent->logout();
    ASSERT_TRUE(agent->relogin(nullptr));
    ASSERT_TRUE(untilHeard("startup open", 2));
    FrameServer::Incoming const & login = server.received().back();
    EXPECT_EQ(login.field("loginId"), "trader");
    EXPECT_EQ(login.field("password"), "secret");
    EXPECT_EQ(login.field("session"), "") << "a logout ends the session";
}

TEST_F(TcpKestrinTest, StopsFromEveryStage) {
    make();
    agent->stop();
    agent->stop();
    EXPECT_EQ(heard, Heard{"stopped null"});
    heard.clear();
    agent = nullptr;
    make();
    agent->start(nullptr);
    agent->stop();
    EXPECT_EQ(heard, Heard{"stopped null"});
    heard.clear();
    agent = nullptr;
    make();
    connect();
    agent->stop();
    EXPECT_EQ(heard, (Heard{"connected", "disconnected null", "stopped null"}));
}

TEST_F(TcpKestrinTest, ClosesTheConnectionWhenItStops) {
    logIn();
    EXPECT_TRUE(server.isConnected());
    agent->stop();
    ASSERT_TRUE(until([&] { return !server.isConnected(); }));
}

TEST_F(TcpKestrinTest, ALogoutReachesTheBackEndThoughAStopFollows) {
    logIn();
    agent->logout();
    agent->stop();
    ASSERT_TRUE(until([&] { return server.count("logout") == 1; }));
}

TEST_F(TcpKestrinTest, RunsUntilItHasStopped) {
    make();
    EXPECT_EQ(agent->run(), 0U) << "it was not started";
    listener.during = [&](std::string const & line) {
        if (line == "connected") {
            agent->login("trader", "secret", nullptr);
        } else if (line == "startup open") {
            agent->stop();
        }
    };
    agent->start(nullptr);
    agent->run();
    EXPECT_EQ(heard.back(), "stopped null");
    EXPECT_EQ(agent->run(), 0U);
}

TEST_F(TcpKestrinTest, TellsTheTimeOfTheBackEnd) {
    make();
    long long const own = agent->getServerTimeMilliSec();
    EXPECT_GT(own, 1'700'000'000'000);
    connect();
    EXPECT_GE(agent->getServerTimeMilliSec(), 1'700'000'000'000);
    EXPECT_LT(agent->getServerTimeMilliSec(), 1'700'000'000'000 + 60'000);
    ASSERT_TRUE(agent->login("trader", "secret", nullptr));
    ASSERT_TRUE(untilHeard("startup open"));
    EXPECT_GE(agent->getServerTimeMilliSec(), 1'700'000'001'000);
}

TEST_F(TcpKestrinTest, SendsAHeartbeatWhenAsked) {
    struct Agent : tvk::TcpKestrin {
        using TcpKestrin::doHeartbeat;
        using TcpKestrin::TcpKestrin;
    };
    tvk::RefCountedPtr<Agent> const own(new Agent(server.loop(), options));
    agent = own;
    own->doHeartbeat();
    tvk::RefCountedPtr<tvk::KestrinConfig> const config(new tvk::KestrinConfig);
    agent->initialize(config, nullptr);
    agent->addKestrinListener(&listener);
    connect();
    own->doHeartbeat();
    ASSERT_TRUE(until([&] { return server.countOfKind(tvk::FRAME_HEARTBEAT) == 1; }));
}

TEST_F(TcpKestrinTest, TwoAgentsShareALoop) {
    logIn();
    Heard others;
    HearingListener otherListener(others);
    FrameServer otherServer;
    options.port = otherServer.port();
    tvk::RefCountedPtr<tvk::TcpKestrin> const other(new tvk::TcpKestrin(server.loop(), options));
    tvk::RefCountedPtr<tvk::KestrinConfig> const config(new tvk::KestrinConfig);
    other->initialize(config, nullptr);
    other->addKestrinListener(&otherListener);
    other->start(nullptr);
    ASSERT_TRUE(until([&] {
        otherServer.runContext();
        return !others.empty();
    }));
    EXPECT_EQ(others, Heard{"connected"});
}

TEST_F(TcpKestrinTest, EndsInTheMiddleOfEverything) {
    make();
    agent->start(nullptr);
    agent = nullptr;
    settle(5);
    heard.clear();
    logIn();
    agent->startRealTimeService(nullptr);
    agent->subscribe("quote", "1");
    server.disconnect();
    settle(0);
    agent = nullptr;
    settle(5);
}

/// The messages that an application's own loop waits for.
class Desktop {
public:
    void wake() {
        std::lock_guard const lock(mutex_);
        ++wakes_;
        changed_.notify_one();
    }
    /// False where nothing came for a long time.
    bool waitForWake() {
        std::unique_lock lock(mutex_);
        bool const came = changed_.wait_for(lock, PATIENCE, [this] { return wakes_ > 0; });
        wakes_ -= came ? 1 : 0;
        return came;
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int wakes_ = 0;
};

TEST_F(TcpKestrinTest, IsWokenOnADesktop) {
    std::thread backEnd;
    std::atomic<bool> isOver = false;
    {
        Desktop desktop;
        auto const loop = std::make_shared<tvk::DesktopLoop>([&] { desktop.wake(); });
        agent = new tvk::TcpKestrin(loop, options);
        agent->initialize(new tvk::KestrinConfig, nullptr);
        agent->addKestrinListener(&listener);
        auto const desk = std::this_thread::get_id();
        listener.during = [&](std::string const & line) {
            EXPECT_EQ(std::this_thread::get_id(), desk);
            if (line == "connected") {
                agent->login("trader", "secret", nullptr);
            }
        };
        backEnd = std::thread([&] {
            while (!isOver) {
                if (server.runContext() == 0) {
                    std::this_thread::sleep_for(std::chrono::microseconds(100));
                }
            }
        });
        agent->start(nullptr);
        // One callback a call: as many as the bound mean that there may be more.
        while (timesHeard("startup open") == 0 && desktop.waitForWake()) {
            while (agent->poll(1) == 1) {
            }
        }
        EXPECT_EQ(heard, (Heard{"connected", "login yes 0", "startup open"}));
        ErrorInfo error;
        EXPECT_TRUE(agent->request(makeRequest("echo", "x"), 10'000, &error));
        agent = nullptr;
    }
    isOver = true;
    backEnd.join();
}

}  // namespace
