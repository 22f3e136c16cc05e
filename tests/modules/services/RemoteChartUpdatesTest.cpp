// Subscriptions of RemoteChartService, updates and resets.

#include "tests/modules/services/support/RemoteChartFixture.h"
#include "tvk/agent/KestrinListener.h"

namespace tvk {
namespace {

using test::ASK_PERIODS;
using test::Log;
using test::PERIODS;
using test::updateNotice;
using RemoteChart = test::RemoteChart;

// Subscriptions and updates.

TEST_F(RemoteChart, SubscriptionsAreCounted) {
    run();
    EXPECT_FALSE(service_->hasSubscription("7203", PRICEKIND_LAST, "5"));
    EXPECT_EQ(unsubscribe(), 0);
    EXPECT_EQ(subscribe(), 1);
    EXPECT_EQ(subscribe(), 2);
    EXPECT_TRUE(service_->hasSubscription("7203", PRICEKIND_LAST, "5"));
    EXPECT_FALSE(service_->hasSubscription("7203", PRICEKIND_LAST, "D"));
    EXPECT_FALSE(service_->hasSubscription("7203", PRICEKIND_BID, "5"));
    EXPECT_EQ(unsubscribe(), 1);
    EXPECT_EQ(taken(), Log{"subscribe chart 7203/1/5"});
    EXPECT_EQ(unsubscribe(), 0);
    EXPECT_EQ(unsubscribe(), 0);
    EXPECT_EQ(taken(), Log{"unsubscribe chart 7203/1/5"});
}

TEST_F(RemoteChart, AStartOpensWhatIsSubscribed) {
    EXPECT_EQ(subscribe(), 1);
    EXPECT_EQ(subscribe(), 2);
    EXPECT_EQ(subscribe("9984"), 1);
    EXPECT_EQ(subscribe("4502"), 1);
    EXPECT_EQ(unsubscribe("4502"), 0);
    service_->addChartListener(&one_);
    service_->start(nullptr);
    EXPECT_EQ(taken(), Log{ASK_PERIODS});
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(),
              (Log{"subscribe chart 7203/1/5", "subscribe chart 9984/1/5", "one started"}));
}

TEST_F(RemoteChart, SubscriptionsOutliveAStop) {
    run();
    subscribe();
    service_->stop();
    EXPECT_TRUE(service_->hasSubscription("7203", PRICEKIND_LAST, "5"));
    EXPECT_EQ(subscribe(), 2);
    log_.clear();
    service_->start(nullptr);
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "subscribe chart 7203/1/5"}));
}

TEST_F(RemoteChart, TwoServicesShareOneAgent) {
    run();
    RefCountedPtr<RemoteChartService> const other(new RemoteChartService(agent_));
    other->start(nullptr);
    agent_->reply(agent_->newest(), PERIODS);
    log_.clear();
    subscribe();
    other->subscribe("7203", PRICEKIND_LAST, "5");
    service_->addNoticeMessageListener("7203", &some_);
    other->addNoticeMessageListener("7203", &more_);
    update(3);
    other->stop();
    update(4);
    unsubscribe();
    EXPECT_EQ(taken(), (Log{"subscribe chart 7203/1/5", "some update 7203 3", "more update 7203 3",
                            "some update 7203 4", "unsubscribe chart 7203/1/5"}));
}

TEST_F(RemoteChart, AnUpdateReachesTheListenersOfAllFirst) {
    run();
    subscribe();
    log_.clear();
    service_->addNoticeMessageListener("7203", &some_);
    service_->addNoticeMessageListener("7204", &more_);
    service_->addNoticeMessageListener(KestrinConstants::WILDCARD, &all_);
    service_->addNoticeMessageListener("7203", &some_);
    EXPECT_TRUE(service_->getLastRecord("7203", PRICEKIND_LAST, "5").isNull());
    some_.during = [&] {
        EXPECT_EQ(service_->getLastRecord("7203", PRICEKIND_LAST, "5"), some_.record);
    };
    update(42);
    EXPECT_EQ(taken(), (Log{"all update 7203 42", "some update 7203 42", "some update 7203 42"}));
    EXPECT_EQ(some_.service, service_.get());
    EXPECT_EQ(all_.record, some_.record);

    ChartRealDataRec const & record = *some_.record;
    EXPECT_EQ(record.getMessageType(), "chart");
    EXPECT_EQ(record.getSymbolCode(), "7203");
    EXPECT_EQ(record.getPriceKind(), PRICEKIND_LAST);
    EXPECT_EQ(record.getPeriodType(), "5");
    EXPECT_EQ(record.getDataDate(), "20240105");
    EXPECT_EQ(record.getDataTime(), "093500");
    EXPECT_EQ(record.getOpenPrice(), "1");
    EXPECT_EQ(record.getHighPrice(), "2");
    EXPECT_EQ(record.getLowPrice(), "0.5");
    EXPECT_EQ(record.getClosePrice(), "42");
    EXPECT_EQ(record.getVolume(), "100");
    EXPECT_FALSE(record.hasField("symbol"));
    EXPECT_EQ(service_->getDroppedNoticeCount(), 0U);
}

TEST_F(RemoteChart, WhatAnUpdateHasBesideGoesWhereThereIsAPlace) {
    run();
    subscribe();
    service_->addNoticeMessageListener("7203", &some_);
    agent_->notify("chart", "7203/1/5",
                   R"({"symbol":"7203","priceKind":1,"periodType":"5","date":"","time":"",)"
                   R"("open":1,"high":1,"low":1,"close":1,"volume":1,"reset":false,"bid":8,)"
                   R"("sequenceNum":12,"tradeDate":"20240106","bidAskVolume":3})");
    ASSERT_FALSE(some_.record.isNull());
    EXPECT_EQ(some_.record->getBid(), "8");
    EXPECT_EQ(some_.record->getSequenceNum(), "12");
    EXPECT_EQ(some_.record->getTradeDate(), "20240106");
    EXPECT_EQ(some_.record->getField("bidAskVolume"), "3");
    EXPECT_FALSE(some_.record->hasField("reset"));
}

TEST_F(RemoteChart, NoticeListenersAreRemovedUnderTheirText) {
    service_->addNoticeMessageListener("7203", &some_);
    service_->addNoticeMessageListener("7203", &some_);
    service_->addNoticeMessageListener("*", &some_);
    EXPECT_EQ(service_->removeNoticeMessageListener("7204", &some_), 0);
    EXPECT_EQ(service_->removeNoticeMessageListener("7203", &more_), 0);
    EXPECT_EQ(service_->removeNoticeMessageListener("7203", &some_), 1);
    run();
    subscribe();
    log_.clear();
    update(1);
    EXPECT_EQ(taken(), (Log{"some update 7203 1", "some update 7203 1"}));
    EXPECT_EQ(service_->removeNoticeMessageListener("*", &some_), 1);
    EXPECT_EQ(service_->removeNoticeMessageListener("*", &some_), 0);
    update(2);
    EXPECT_EQ(taken(), Log{"some update 7203 2"});
    service_->removeAllNoticeMessageListeners();
    update(3);
    EXPECT_EQ(taken(), Log{});
    EXPECT_EQ(service_->removeNoticeMessageListener("7203", &some_), 0);
}

TEST_F(RemoteChart, ASymbolThatIsTheWildcardTellsEachListenerOnce) {
    run();
    service_->addNoticeMessageListener("*", &all_);
    subscribe("*");
    log_.clear();
    agent_->notify("chart", "*/1/5", updateNotice(1, "*"));
    EXPECT_EQ(taken(), Log{"all update * 1"});
}

TEST_F(RemoteChart, NoticeListenersComeAndGoDuringAPass) {
    run();
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    service_->addNoticeMessageListener("7203", &some_);
    all_.during = [&] {
        service_->removeNoticeMessageListener("7203", &some_);
        service_->addNoticeMessageListener("7203", &more_);
        service_->addNoticeMessageListener("*", &more_);
        all_.during = nullptr;
    };
    log_.clear();
    update(1);
    EXPECT_EQ(taken(), Log{"all update 7203 1"});
    update(2);
    EXPECT_EQ(taken(), (Log{"all update 7203 2", "more update 7203 2", "more update 7203 2"}));
    all_.during = [&] { service_->removeAllNoticeMessageListeners(); };
    update(3);
    EXPECT_EQ(taken(), Log{"all update 7203 3"});
}

TEST_F(RemoteChart, ThePassEndsWithTheSubscription) {
    run();
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    service_->addNoticeMessageListener("*", &more_);
    all_.during = [&] { unsubscribe(); };
    log_.clear();
    update(1);
    EXPECT_EQ(taken(), (Log{"all update 7203 1", "unsubscribe chart 7203/1/5"}));
}

TEST_F(RemoteChart, ThePassEndsWithTheService) {
    run();
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    service_->addNoticeMessageListener("*", &more_);
    all_.during = [&] {
        all_.during = nullptr;
        service_->stop();
        service_->start(nullptr);
        agent_->reply(agent_->newest(), PERIODS);
    };
    log_.clear();
    update(1);
    EXPECT_EQ(taken(), (Log{"all update 7203 1", "unsubscribe chart 7203/1/5", ASK_PERIODS,
                            "subscribe chart 7203/1/5", "all reset 7203", "more reset 7203"}));
}

TEST_F(RemoteChart, UpdatesInsideAnUpdateRunToTheirEnd) {
    run();
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    service_->addNoticeMessageListener("*", &more_);
    all_.during = [&] {
        all_.during = nullptr;
        update(2);
    };
    log_.clear();
    update(1);
    EXPECT_EQ(taken(), (Log{"all update 7203 1", "all update 7203 2", "more update 7203 2",
                            "more update 7203 1"}));
}

TEST_F(RemoteChart, SubjectsThatMeetDoNotMixTheirCharts) {
    run();
    service_->subscribe("a/1/b", PRICEKIND_BID, "c");
    service_->subscribe("a", PRICEKIND_LAST, "b/2/c");
    service_->addNoticeMessageListener("*", &all_);
    EXPECT_EQ(taken(), Log{"subscribe chart a/1/b/2/c"});
    agent_->notify("chart", "a/1/b/2/c", updateNotice(1, "a", 1, "b/2/c"));
    EXPECT_EQ(taken(), Log{"all update a 1"});
    service_->unsubscribe("a", PRICEKIND_LAST, "b/2/c");
    EXPECT_EQ(taken(), Log{});
    agent_->notify("chart", "a/1/b/2/c", updateNotice(1, "a", 1, "b/2/c"));
    EXPECT_EQ(service_->getDroppedNoticeCount(), 1U);
    agent_->notify("chart", "a/1/b/2/c", updateNotice(2, "a/1/b", 2, "c"));
    EXPECT_EQ(taken(), Log{"all update a/1/b 2"});
    service_->unsubscribe("a/1/b", PRICEKIND_BID, "c");
    EXPECT_EQ(taken(), Log{"unsubscribe chart a/1/b/2/c"});
}

constexpr char const * BAD_NOTICES[] = {
    "{}",
    R"({"symbol":"7203"})",
    R"({"symbol":"7203","priceKind":1,"periodType":"5"})",
    R"({"symbol":"7203","priceKind":1,"periodType":"5","date":"","time":"","open":{},"high":1,)"
    R"("low":1,"close":1,"volume":1})",
    R"({"symbol":"7203","reset":"yes"})",
    R"({"symbol":7203,"reset":true})",
    R"({"reset":true})",
    R"({"symbol":"9984","reset":true})",
    R"({"symbol":"7203","priceKind":2,"periodType":"5","date":"","time":"","open":1,"high":1,)"
    R"("low":1,"close":1,"volume":1})",
};

TEST_F(RemoteChart, ANoticeThatCannotBeReadIsDroppedAndCounted) {
    run();
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    log_.clear();
    unsigned long long count = 0;
    for (char const * const json : BAD_NOTICES) {
        SCOPED_TRACE(json);
        agent_->notify("chart", "7203/1/5", json);
        EXPECT_EQ(taken(), Log{});
        EXPECT_EQ(service_->getDroppedNoticeCount(), ++count);
    }
    EXPECT_TRUE(service_->getLastRecord("7203", PRICEKIND_LAST, "5").isNull());
}

// Resets.

TEST_F(RemoteChart, AResetOfTheBackEndIsTold) {
    run();
    subscribe();
    service_->addNoticeMessageListener("7203", &some_);
    service_->addNoticeMessageListener("*", &all_);
    service_->addNoticeMessageListener("9984", &more_);
    log_.clear();
    agent_->notify("chart", "7203/1/5", R"({"symbol":"7203","reset":true})");
    EXPECT_EQ(taken(), (Log{"all reset 7203", "some reset 7203"}));
    EXPECT_EQ(some_.service, service_.get());
}

TEST_F(RemoteChart, ARealTimeServiceThatStartsAgainResetsEachSymbolOnce) {
    run();
    subscribe("7203");
    subscribe("9984");
    service_->subscribe("7203", PRICEKIND_BID, "D");
    subscribe("4502");
    unsubscribe("4502");
    service_->addNoticeMessageListener("9984", &some_);
    service_->addNoticeMessageListener("*", &all_);
    update(5);
    log_.clear();
    agent_->fireOnRealTimeServiceStarted(false);
    EXPECT_EQ(taken(), Log{});
    ErrorInfo const lost = test::backEndError(10);
    agent_->fireOnRealTimeServiceStopped(&lost);
    EXPECT_EQ(taken(), Log{});
    agent_->fireOnRealTimeServiceStarted(true);
    EXPECT_EQ(taken(), (Log{"all reset 7203", "all reset 9984", "some reset 9984"}));
    EXPECT_FALSE(service_->getLastRecord("7203", PRICEKIND_LAST, "5").isNull());
}

TEST_F(RemoteChart, ALostConnectionAloneChangesNothing) {
    service_->addChartListener(&one_);
    run();
    subscribe();
    ask(&two_);
    log_.clear();
    ErrorInfo const lost = test::backEndError(10);
    agent_->fail(agent_->newest(), lost);
    agent_->fireConnected();
    agent_->fireOnReloginRequired(lost);
    agent_->fireKestrinError(lost);
    agent_->fireOnLoginReply(nullptr, true, "0", "");
    agent_->fireStartupCompleted(*test::messageOf(MSGKIND_REPLY, "x", "{}"));
    for (KestrinListener * const listener : agent_->getKestrinListeners()) {
        listener->onDisconnected(agent_.get(), &lost);
    }
    EXPECT_EQ(taken(), Log{"two error 10 no such chart"});
    EXPECT_TRUE(service_->isRunning());
}

TEST_F(RemoteChart, BeforeItRunsNothingIsReset) {
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    service_->start(nullptr);
    agent_->fireOnRealTimeServiceStarted(true);
    EXPECT_EQ(taken(), Log{ASK_PERIODS});
}

TEST_F(RemoteChart, AStartBehindAStopResetsWhatWasOpenBefore) {
    run();
    service_->addChartListener(&one_);
    service_->addNoticeMessageListener("*", &all_);
    subscribe("7203");
    subscribe("9984");
    service_->stop();
    unsubscribe("9984");
    subscribe("9984");
    subscribe("4502");
    log_.clear();
    service_->start(nullptr);
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "subscribe chart 4502/1/5", "subscribe chart 7203/1/5",
                            "subscribe chart 9984/1/5", "one started", "all reset 7203"}));
}

TEST_F(RemoteChart, AStopEndsTheResets) {
    run();
    subscribe("7203");
    subscribe("9984");
    service_->addNoticeMessageListener("*", &all_);
    service_->addNoticeMessageListener("*", &more_);
    all_.during = [&] { service_->stop(); };
    log_.clear();
    agent_->fireOnRealTimeServiceStarted(true);
    EXPECT_EQ(taken(),
              (Log{"all reset 7203", "unsubscribe chart 7203/1/5", "unsubscribe chart 9984/1/5"}));
}

TEST_F(RemoteChart, AResetOfWhatIsClosedMeanwhileIsNotTold) {
    run();
    subscribe("7203");
    subscribe("9984");
    service_->addNoticeMessageListener("*", &all_);
    all_.during = [&] { unsubscribe("9984"); };
    log_.clear();
    agent_->fireOnRealTimeServiceStarted(true);
    EXPECT_EQ(taken(), (Log{"all reset 7203", "unsubscribe chart 9984/1/5"}));
}

}  // namespace
}  // namespace tvk
