// The stages of a session, and what each operation does in them.

#include "modules/asio/TcpKestrin.h"

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

}  // namespace
