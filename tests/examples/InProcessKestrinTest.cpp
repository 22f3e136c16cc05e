#include "examples/inprocess_agent/Errors.h"
#include "tests/examples/InProcessKestrinFixture.h"
#include "tests/support/PrintCString.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

TEST_F(InProcessKestrinTest, StartsConnectsAndLogsIn) {
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CREATED);
    agent_->initialize(configuration(), nullptr);
    EXPECT_TRUE(agent_->start(nullptr));
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CONNECTING);
    EXPECT_THAT(heardAfter(9), IsEmpty());
    EXPECT_THAT(heardAfter(1), ElementsAre("connected"));
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CONNECTED);

    EXPECT_TRUE(agent_->login("me", "secret", nullptr));
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_THAT(heardAfter(1), ElementsAre("login 0 hello", "startup a=1"));
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_LOGGED_IN);

    EXPECT_TRUE(agent_->startRealTimeService(nullptr));
    EXPECT_TRUE(agent_->startRealTimeService(nullptr));
    EXPECT_THAT(heard(), ElementsAre("real time"));

    agent_->stop();
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_STOPPED);
    EXPECT_THAT(heard(), ElementsAre("no real time", "disconnected", "stopped"));
    agent_->stop();
    EXPECT_THAT(heardAfter(100'000), IsEmpty());
}

TEST_F(InProcessKestrinTest, RefusesWhatIsOutOfOrder) {
    ErrorInfo error;
    auto const expectRefusal = [&error](bool begun, int code) {
        EXPECT_FALSE(begun);
        EXPECT_EQ(error.getErrorCode(), code);
        EXPECT_EQ(error.getComponentCode(), inprocess::COMPONENT_CODE);
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        error = ErrorInfo();
    };
    expectRefusal(agent_->start(&error), KestrinConstants::ERR_FailedToCreateConnection);
    agent_->initialize(configuration(), nullptr);
    expectRefusal(agent_->login("me", "secret", &error), KestrinConstants::ERR_SessionError);
    expectRefusal(agent_->relogin(&error), KestrinConstants::ERR_SessionError);
    connect();
    expectRefusal(agent_->start(&error), KestrinConstants::ERR_FailedToCreateConnection);
    expectRefusal(agent_->startRealTimeService(&error), KestrinConstants::ERR_SessionError);
    expectRefusal(agent_->send(requestOfType("quick"), &error), KestrinConstants::ERR_SessionError);
    EXPECT_TRUE(agent_->login("me", "secret", nullptr));
    agent_->advance(1);
    expectRefusal(agent_->login("me", "secret", &error), KestrinConstants::ERR_SessionError);
    agent_->stop();
    expectRefusal(agent_->start(&error), KestrinConstants::ERR_FailedToCreateConnection);
    EXPECT_FALSE(agent_->relogin(nullptr));
}

TEST_F(InProcessKestrinTest, TakesItsTimeoutFromTheConfiguration) {
    EXPECT_EQ(agent_->getTimeout(), 1000);
    ErrorInfo error;
    agent_->initialize(new KestrinConfig, &error);
    EXPECT_EQ(agent_->getTimeout(), 1000);
    agent_->initialize(configuration("250"), &error);
    EXPECT_EQ(agent_->getTimeout(), 250);
    EXPECT_FALSE(error.hasError());
}

TEST_F(InProcessKestrinTest, ReportsATimeoutThatMakesNoSense) {
    for (char const * const value : {"", "0", "-5", "soon"}) {
        SCOPED_TRACE(value);
        Agent const agent(new InProcessKestrin(AnswerTable{}));
        ErrorInfo error;
        agent->initialize(configuration(value), &error);
        EXPECT_TRUE(error.hasError());
        EXPECT_EQ(agent->getTimeout(), 1000);
        agent->initialize(configuration(value), nullptr);
    }
}

TEST_F(InProcessKestrinTest, TellsALoginThatFails) {
    struct Row {
        Answer answer;
        char const * heard;
    };
    Row const rows[] = {
        {{1, R"({"code":"12","text":"wrong password"})"}, "no login 12 wrong password"},
        {{1, R"({"text":"?"})"}, "no login  ?"},
        {{1, R"({"code":18,"text":"closed"})", Answer::FAILURE},
         "no login 18 closed without reply"},
        {{1, "no JSON"},
         "no login 7 invalid message data near position 0: tag '{' is expected, "
         "but was <no JSON>... without reply"},
        {{0, "", Answer::SILENCE}, "no login 9 no reply in time without reply"},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.heard);
        AnswerTable table;
        table.answers["login"] = row.answer;
        agent_ = new InProcessKestrin(table);
        agent_->addKestrinListener(&listener_);
        connect();
        heard_.clear();
        EXPECT_TRUE(agent_->login("me", "secret", nullptr));
        EXPECT_THAT(heardAfter(100), ElementsAre(row.heard));
        EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CONNECTED);
        EXPECT_TRUE(agent_->relogin(nullptr));
    }
}

TEST_F(InProcessKestrinTest, StartsWithoutStartupDataToo) {
    AnswerTable table;
    table.answers["login"] = {1, R"({"code":"0","startup":"none"})"};
    agent_ = new InProcessKestrin(table);
    agent_->addKestrinListener(&listener_);
    connect();
    agent_->login("me", "secret", nullptr);
    EXPECT_THAT(heardAfter(1), ElementsAre("connected", "login 0 ", "startup "));
    EXPECT_EQ(agent_->getServerTimeMilliSec(), 11);
}

TEST_F(InProcessKestrinTest, SaysNoMoreWhenAListenerStopsItAtTheLogin) {
    connect();
    listener_.during = [this] {
        listener_.during = nullptr;
        agent_->stop();
    };
    agent_->login("me", "secret", nullptr);
    EXPECT_THAT(heardAfter(1),
                ElementsAre("connected", "login 0 hello", "disconnected", "stopped"));
}

TEST_F(InProcessKestrinTest, FollowsTheTimeOfTheBackEnd) {
    connect();
    EXPECT_EQ(agent_->getServerTimeMilliSec(), agent_->now());
    agent_->login("me", "secret", nullptr);
    agent_->advance(1);
    EXPECT_EQ(agent_->getServerTimeMilliSec(), 1'000'000);
    agent_->advance(23);
    EXPECT_EQ(agent_->getServerTimeMilliSec(), 1'000'023);
}

TEST_F(InProcessKestrinTest, LogsOut) {
    logInWithRealTime();
    recordFrames();
    ask("slow");
    agent_->logout();
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CONNECTED);
    EXPECT_THAT(heard(), ElementsAre("no real time", "slow cancelled"));
    EXPECT_EQ(sent_.back(), "{\"kind\":1,\"type\":\"logout\"}\n{}");
    agent_->logout();
    EXPECT_EQ(sent_.size(), 2U);
    EXPECT_TRUE(agent_->relogin(nullptr));
    EXPECT_THAT(heardAfter(1), ElementsAre("login 0 hello", "startup a=1"));
}

TEST_F(InProcessKestrinTest, AsksForANewLoginWhenTheOldOneExpires) {
    logInWithRealTime();
    ask("expired");
    EXPECT_THAT(heardAfter(5), ElementsAre("expired failed 20", "no real time 20", "relogin 20"));
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CONNECTED);
    EXPECT_TRUE(agent_->relogin(nullptr));
    EXPECT_THAT(heardAfter(1), ElementsAre("login 0 hello", "startup a=1"));
    EXPECT_TRUE(agent_->startRealTimeService(nullptr));
    EXPECT_THAT(heard(), ElementsAre("real time again"));
}

TEST_F(InProcessKestrinTest, SendsAHeartbeatInRegularIntervals) {
    connect();
    recordFrames();
    agent_->advance(29'999);
    EXPECT_THAT(sent_, IsEmpty());
    agent_->advance(1);
    EXPECT_THAT(sent_, ElementsAre("{\"id\":\"1\",\"kind\":1,\"type\":\"heartbeat\"}\n{}"));
    agent_->advance(60'010);
    EXPECT_EQ(sent_.size(), 3U);
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_CONNECTED);
}

TEST_F(InProcessKestrinTest, EndsWhenTheHeartbeatFails) {
    AnswerTable table = answersForTests();
    table.answers["heartbeat"] = {0, "", Answer::SILENCE};
    agent_ = new InProcessKestrin(table);
    agent_->addKestrinListener(&listener_);
    logInWithRealTime();
    agent_->advance(29'950);
    agent_->asyncRequest(requestOfType("never"), 1000, &handler_, nullptr);
    EXPECT_THAT(heardAfter(200), ElementsAre("error 12", "no real time 12", "never failed 12",
                                             "disconnected 12", "stopped 12"));
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_STOPPED);
    EXPECT_EQ(listener_.lastError.getUserInfo(ErrorInfo::OrvKey_ErrorTypeHint).get() == nullptr,
              false);
    ASSERT_NE(listener_.lastError.getCause(), nullptr);
    EXPECT_EQ(listener_.lastError.getCause()->getErrorCode(), KestrinConstants::ERR_RequestTimeOut);
    EXPECT_THAT(heardAfter(100'000), IsEmpty());
}

TEST_F(InProcessKestrinTest, KeepsItsHeartbeatFromTheApplicationsCancellations) {
    connect();
    agent_->advance(30'000);
    agent_->login("me", "secret", nullptr);
    heard_.clear();
    agent_->cancelAllAsyncRequests();
    EXPECT_THAT(heardAfter(1), ElementsAre("login 0 hello", "startup a=1"));
    recordFrames();
    agent_->advance(30'000);
    EXPECT_EQ(sent_.size(), 1U);
}

TEST_F(InProcessKestrinTest, EndsALoginThatIsUnderWayWhenItStops) {
    connect();
    agent_->login("me", "secret", nullptr);
    heard_.clear();
    agent_->stop();
    EXPECT_THAT(heard(),
                ElementsAre("no login 8 cancelled without reply", "disconnected", "stopped"));
}

TEST_F(InProcessKestrinTest, StopsBeforeItIsConnected) {
    agent_->stop();
    EXPECT_THAT(heard(), ElementsAre("stopped"));
    EXPECT_EQ(agent_->getStatus(), KESTRINSTATUS_STOPPED);

    agent_ = new InProcessKestrin(answersForTests());
    agent_->addKestrinListener(&listener_);
    agent_->initialize(configuration(), nullptr);
    agent_->start(nullptr);
    agent_->stop();
    EXPECT_THAT(heardAfter(100), ElementsAre("stopped"));
}

TEST_F(InProcessKestrinTest, TellsNoListenerThatIsRemovedMeanwhile) {
    Ear second(heard_, "second: ");
    connect();
    agent_->addKestrinListener(&second);
    heard_.clear();
    listener_.during = [&] { agent_->removeKestrinListener(&second); };
    agent_->stop();
    EXPECT_THAT(heard(), ElementsAre("disconnected", "stopped"));
}

TEST_F(InProcessKestrinTest, OutlivesItsLastReferenceInACallback) {
    connect();
    listener_.during = [this] { agent_ = nullptr; };
    InProcessKestrin * const agent = agent_.get();
    agent->stop();
    EXPECT_THAT(heard(), ElementsAre("connected", "disconnected", "stopped"));
    EXPECT_THAT(ends_, ElementsAre("end agent", "gone agent"));
}

TEST_F(InProcessKestrinTest, TellsNobodyWhenItEndsWithoutAStop) {
    logInWithRealTime();
    agent_->subscribe("quote", "A");
    agent_ = nullptr;
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_THAT(ends_, ElementsAre("end agent", "gone agent"));
}

}  // namespace tvk::test
