#include "tests/examples/InProcessKestrinFixture.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::test {

namespace {

using InProcessNotices = InProcessKestrinTest;

CString const & ANY = KestrinConstants::WILDCARD;

}  // namespace

TEST_F(InProcessNotices, ReachTheWidestRegistrationFirst) {
    Ear exact(heard_, "exact: ");
    Ear anyType(heard_, "any type: ");
    Ear anySubject(heard_, "any subject: ");
    Ear all(heard_, "all: ");
    logInWithRealTime();
    agent_->addMessageHandler("quote", "A", &exact);
    agent_->addMessageHandler(ANY, "A", &anyType);
    agent_->addMessageHandler("quote", ANY, &anySubject);
    agent_->addMessageHandler(ANY, ANY, &all);
    agent_->addMessageHandler("quote", "C", &other_);
    agent_->addMessageHandler("quote", "A", &handler_);
    agent_->subscribe("quote", "A");
    EXPECT_THAT(heardAfter(10),
                ElementsAre("all: quote n=1", "any subject: quote n=1", "any type: quote n=1",
                            "exact: quote n=1", "quote n=1"));
}

TEST_F(InProcessNotices, ReachAHandlerAsOftenAsItIsRegistered) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", "A", &handler_);
    agent_->addMessageHandler("quote", "A", &handler_);
    agent_->addMessageHandler("quote", ANY, &handler_);
    agent_->subscribe("quote", "A");
    EXPECT_THAT(heardAfter(10), ElementsAre("quote n=1", "quote n=1", "quote n=1"));
}

TEST_F(InProcessNotices, DoNotReachAHandlerThatIsRemovedMeanwhile) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", ANY, &handler_);
    agent_->addMessageHandler("quote", "A", &other_);
    handler_.during = [&] { agent_->removeMessageHandler("quote", "A", &other_); };
    agent_->subscribe("quote", "A");
    EXPECT_THAT(heardAfter(10), ElementsAre("quote n=1"));
}

TEST_F(InProcessNotices, DoNotReachAHandlerThatIsAddedMeanwhile) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", ANY, &handler_);
    handler_.during = [&] {
        handler_.during = nullptr;
        agent_->addMessageHandler("quote", "A", &other_);
    };
    agent_->subscribe("quote", "A");
    EXPECT_THAT(heardAfter(10), ElementsAre("quote n=1"));
    EXPECT_THAT(heardAfter(10), ElementsAre("quote n=2", "other: quote n=2"));
}

TEST_F(InProcessNotices, MayDropTheLastReferenceToTheAgent) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", "A", &handler_);
    agent_->addMessageHandler("quote", "A", &other_);
    agent_->subscribe("quote", "A");
    handler_.during = [this] { agent_ = nullptr; };
    InProcessKestrin * const agent = agent_.get();
    agent->advance(10);
    EXPECT_THAT(heard(), ElementsAre("quote n=1", "other: quote n=1"));
    EXPECT_THAT(ends_, ElementsAre("end agent", "gone agent"));
}

TEST_F(InProcessNotices, AreSubscribedOnceHoweverManyWantThem) {
    logInWithRealTime();
    recordFrames();
    EXPECT_EQ(agent_->subscribe("quote", "A"), 1);
    EXPECT_EQ(agent_->subscribe("quote", "A"), 2);
    EXPECT_EQ(agent_->subscribe("quote", "B"), 1);
    EXPECT_EQ(agent_->unsubscribe("quote", "A"), 1);
    EXPECT_EQ(agent_->unsubscribe("quote", "A"), 0);
    EXPECT_EQ(agent_->unsubscribe("quote", "A"), 0);
    EXPECT_EQ(agent_->unsubscribe("quote", "C"), 0);
    EXPECT_EQ(agent_->subscribe("quote", "A"), 1);
    EXPECT_THAT(sent_, ElementsAre(topic("subscribe", "A"), topic("subscribe", "B"),
                                   topic("unsubscribe", "A"), topic("subscribe", "A")));
}

TEST_F(InProcessNotices, AreSubscribedWhenTheServiceStarts) {
    agent_->subscribe("quote", "A");
    agent_->subscribe("quote", "B");
    agent_->subscribe("quote", "C");
    agent_->unsubscribe("quote", "C");
    agent_->subscribe("quote", "A");
    logIn();
    recordFrames();
    agent_->addMessageHandler("quote", ANY, &handler_);
    EXPECT_THAT(heardAfter(100), IsEmpty());
    EXPECT_TRUE(agent_->startRealTimeService(nullptr));
    EXPECT_THAT(sent_, ElementsAre(topic("subscribe", "A"), topic("subscribe", "B")));
    EXPECT_THAT(heardAfter(10), ElementsAre("real time", "quote n=1", "quote n=3"));
}

TEST_F(InProcessNotices, EndWithTheirSubscription) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", ANY, &handler_);
    agent_->subscribe("quote", "A");
    agent_->advance(10);
    agent_->unsubscribe("quote", "A");
    EXPECT_THAT(heardAfter(100), ElementsAre("quote n=1"));
}

TEST_F(InProcessNotices, EndAndBeginWithTheService) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", ANY, &handler_);
    agent_->subscribe("quote", "A");
    recordFrames();
    agent_->stopRealTimeService();
    agent_->stopRealTimeService();
    EXPECT_THAT(heardAfter(100), ElementsAre("no real time"));
    EXPECT_TRUE(agent_->hasSubscription("quote", "A"));
    agent_->startRealTimeService(nullptr);
    EXPECT_THAT(sent_, ElementsAre(topic("unsubscribe", "A"), topic("subscribe", "A")));
    EXPECT_THAT(heardAfter(10), ElementsAre("real time again", "quote n=1"));
}

TEST_F(InProcessNotices, EndWithTheLogin) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", ANY, &handler_);
    agent_->subscribe("quote", "A");
    agent_->logout();
    EXPECT_THAT(heardAfter(100), ElementsAre("no real time"));
}

TEST_F(InProcessNotices, ThatCannotBeReadAreErrorsOfTheAgent) {
    logInWithRealTime();
    agent_->addMessageHandler("quote", ANY, &handler_);
    agent_->subscribe("quote", "broken");
    EXPECT_THAT(heardAfter(10), ElementsAre("error 7"));
}

}  // namespace tvk::test
