// History requests of RemoteChartService, and what it holds of a chart.

#include "tests/modules/services/support/RemoteChartFixture.h"

namespace tvk {
namespace {

using test::ASK_HISTORY;
using test::ASK_PERIODS;
using test::barsAnswer;
using test::Log;
using test::PERIODS;
using RemoteChart = test::RemoteChart;

// Requests.

TEST_F(RemoteChart, ARequestBringsBars) {
    run();
    int user = 0;
    auto const operation = ask(&one_, &user);
    ASSERT_TRUE(operation);
    EXPECT_TRUE(operation->isPending());
    EXPECT_FALSE(operation->isCanceled());
    EXPECT_EQ(taken(), Log{ASK_HISTORY});

    agent_->reply(agent_->newest(), barsAnswer({10, 11}));
    EXPECT_EQ(taken(), Log{"one history 2"});
    EXPECT_EQ(one_.service, service_.get());
    EXPECT_EQ(one_.operation, operation);
    EXPECT_EQ(one_.userObject, &user);
    EXPECT_FALSE(one_.wasPending);
    EXPECT_FALSE(operation->isPending());
    EXPECT_FALSE(operation->isCanceled());

    ChartHistoricalDataRec & bar = *one_.records[1];
    EXPECT_EQ(bar.getSymbolCode(), "7203");
    EXPECT_EQ(bar.getPriceKind(), PRICEKIND_LAST);
    EXPECT_EQ(bar.getPeriodType(), "5");
    EXPECT_EQ(bar.getDataDate(), "20240105");
    EXPECT_EQ(bar.getDataTime(), "093000");
    EXPECT_EQ(bar.getOpenPrice(), "1");
    EXPECT_EQ(bar.getHighPrice(), "2");
    EXPECT_EQ(bar.getLowPrice(), "0.5");
    EXPECT_EQ(bar.getClosePrice(), "11");
    EXPECT_EQ(bar.getVolume(), "100");
    EXPECT_EQ(bar.getAsk(), "");
    EXPECT_FALSE(bar.hasField("close"));

    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 2U);
    EXPECT_EQ(service_->getHistoryRecord("7203", PRICEKIND_LAST, "5", 1), one_.records[1]);
    EXPECT_TRUE(service_->getHistoryRecord("7203", PRICEKIND_LAST, "5", 2).isNull());
    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_BID, "5"), 0U);
    EXPECT_TRUE(service_->getHistoryRecord("7203", PRICEKIND_BID, "5", 0).isNull());
}

TEST_F(RemoteChart, WhatABarHasBesideGoesWhereThereIsAPlace) {
    run();
    ask(&one_);
    agent_->reply(agent_->newest(),
                  R"({"symbol":"7203","priceKind":1,"periodType":"5","bars":[{"date":20240105,)"
                  R"("time":"","open":"101.250","high":1e3,"low":-1,"close":true,"volume":0,)"
                  R"("ask":1,"askVolume":2,"bid":3,"bidVolume":4,"currVolume":5,"bidAskVolume":6,)"
                  R"("turnover":7.50,"note":"x","deep":{"a":1},"list":[1]}]})");
    ASSERT_EQ(taken(), (Log{ASK_HISTORY, "one history 1"}));
    ChartHistoricalDataRec & bar = *one_.records[0];
    EXPECT_EQ(bar.getDataDate(), "20240105");
    EXPECT_EQ(bar.getDataTime(), "");
    EXPECT_EQ(bar.getOpenPrice(), "101.250");
    EXPECT_EQ(bar.getHighPrice(), "1e3");
    EXPECT_EQ(bar.getLowPrice(), "-1");
    EXPECT_EQ(bar.getAsk(), "1");
    EXPECT_EQ(bar.getAskVolume(), "2");
    EXPECT_EQ(bar.getBid(), "3");
    EXPECT_EQ(bar.getBidVolume(), "4");
    EXPECT_EQ(bar.getCurrVolume(), "5");
    EXPECT_EQ(bar.getBidAskVolume(), "6");
    EXPECT_EQ(bar.getField("turnover"), "7.50");
    EXPECT_EQ(bar.getField("note"), "x");
    EXPECT_FALSE(bar.hasField("deep"));
    EXPECT_FALSE(bar.hasField("list"));
    EXPECT_FALSE(bar.hasField("ask"));
}

TEST_F(RemoteChart, RequestsSayWhatTheyWant) {
    run();
    service_->requestHistory("a", PRICEKIND_MID, "D", 0xffffffff, nullptr, nullptr);
    service_->requestHistory("a", PRICEKIND_MID, "D", 0, nullptr, nullptr);
    service_->requestHistoryBetween("a", PRICEKIND_ASK, "D", "20240101", "20240131", nullptr,
                                    nullptr);
    service_->requestHistoryBetween("a", PRICEKIND_ASK, "D", "", "", nullptr, nullptr);
    EXPECT_EQ(
        taken(),
        (Log{
            R"(ask chartHistory {"count":4294967295,"periodType":"D","priceKind":4,"symbol":"a"})",
            R"(ask chartHistory {"count":0,"periodType":"D","priceKind":4,"symbol":"a"})",
            R"(ask chartHistory {"from":"20240101","periodType":"D","priceKind":3,)"
            R"("symbol":"a","to":"20240131"})",
            R"(ask chartHistory {"from":"","periodType":"D","priceKind":3,"symbol":"a","to":""})"}));
}

TEST_F(RemoteChart, TheTimeOutIsTheServicesOwn) {
    service_ = new RemoteChartService(agent_, 77);
    run();
    ask(&one_);
    EXPECT_EQ(agent_->timeouts, (std::vector<int>{77, 77}));
}

TEST_F(RemoteChart, NoRequestWhereItDoesNotRun) {
    EXPECT_TRUE(ask(&one_).isNull());
    service_->start(nullptr);
    EXPECT_TRUE(ask(&one_).isNull());
    service_->stop();
    EXPECT_TRUE(ask(&one_).isNull());
    EXPECT_TRUE(
        service_->requestHistoryBetween("a", PRICEKIND_ASK, "D", "", "", &one_, nullptr).isNull());
    EXPECT_EQ(taken(), Log{ASK_PERIODS});
}

TEST_F(RemoteChart, EachRequestHasOneOutcome) {
    run();
    auto const history = ask(&one_);
    auto const atHistory = agent_->newest();
    auto const timeout = ask(&one_);
    auto const atTimeout = agent_->newest();
    auto const error = ask(&one_);
    auto const atError = agent_->newest();
    auto const canceled = ask(&one_);
    auto const atCanceled = agent_->newest();
    log_.clear();

    agent_->fail(atError, test::backEndError());
    EXPECT_EQ(one_.component, 5);
    agent_->reply(atHistory, barsAnswer({1}));
    agent_->timeOut(atTimeout);
    canceled->cancel();
    EXPECT_TRUE(canceled->isCanceled());
    EXPECT_EQ(taken(), (Log{"one error 7001 no such chart", "one history 1", "one timeout",
                            "one canceled"}));
    EXPECT_TRUE(atCanceled->isCanceled());
    for (auto const & operation : {history, timeout, error, canceled}) {
        EXPECT_FALSE(operation->isPending());
        operation->cancel();
    }
    EXPECT_FALSE(history->isCanceled());
    service_->cancelAllRequests();
    service_->stop();
    EXPECT_EQ(taken(), Log{});
}

TEST_F(RemoteChart, ARequestWithoutAListenerStillBringsItsBars) {
    run();
    for (int round = 0; round < 4; ++round) {
        ASSERT_TRUE(ask(nullptr));
    }
    agent_->reply(agent_->newest(), barsAnswer({1, 2, 3}));
    agent_->timeOut(agent_->newest());
    agent_->fail(agent_->newest(), test::backEndError());
    service_->cancelRequestsByListener(nullptr);
    EXPECT_TRUE(agent_->open.empty());
    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 3U);
}

TEST_F(RemoteChart, ARequestThatTheAgentCancelsIsCancelled) {
    run();
    auto const operation = ask(&one_);
    agent_->cancelAllAsyncRequests();
    EXPECT_TRUE(operation->isCanceled());
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one canceled"}));
}

TEST_F(RemoteChart, CancelByListenerLeavesTheOthers) {
    run();
    ask(&one_);
    ask(&two_);
    ask(&one_);
    log_.clear();
    service_->cancelRequestsByListener(&one_);
    EXPECT_EQ(taken(), (Log{"one canceled", "one canceled"}));
    service_->cancelAllRequests();
    EXPECT_EQ(taken(), Log{"two canceled"});
    EXPECT_TRUE(agent_->open.empty());
}

TEST_F(RemoteChart, RemovingAListenerLeavesItsRequests) {
    service_->addChartListener(&one_);
    run();
    ask(&one_);
    service_->removeChartListener(&one_);
    agent_->reply(agent_->newest(), barsAnswer({}));
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one history 0"}));
    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 0U);
}

TEST_F(RemoteChart, StopCancelsFirstAndThenTells) {
    service_->addChartListener(&one_);
    run();
    ask(&two_);
    ask(&one_);
    log_.clear();
    service_->stop();
    EXPECT_EQ(taken(), (Log{"two canceled", "one canceled", "one stopped null"}));
}

TEST_F(RemoteChart, WhatACancellationAsksForAnewStays) {
    run();
    ask(&one_);
    one_.during = [&] {
        one_.during = nullptr;
        ask(&one_);
    };
    log_.clear();
    service_->cancelAllRequests();
    EXPECT_EQ(taken(), (Log{"one canceled", ASK_HISTORY}));
    EXPECT_EQ(agent_->open.size(), 1U);
}

TEST_F(RemoteChart, DuringAStopNothingIsAskedForAnew) {
    run();
    ask(&one_);
    RefCountedPtr<AsyncChartRequestOperation> again;
    one_.during = [&] { again = ask(&one_); };
    log_.clear();
    service_->stop();
    EXPECT_TRUE(again.isNull());
    EXPECT_EQ(taken(), Log{"one canceled"});
}

TEST_F(RemoteChart, AHandleMayBeDropped) {
    run();
    ask(&one_);
    agent_->reply(agent_->newest(), barsAnswer({1}));
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one history 1"}));
}

TEST_F(RemoteChart, AHandleOutlivesTheService) {
    run();
    auto const operation = ask(&one_);
    service_ = nullptr;
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one canceled"}));
    EXPECT_FALSE(operation->isPending());
    EXPECT_TRUE(operation->isCanceled());
    operation->cancel();
    EXPECT_EQ(taken(), Log{});
}

TEST_F(RemoteChart, AnOutcomeFromInsideTheRequestWaitsForTheAgent) {
    run();
    agent_->atOnce = [&](auto const & operation) { agent_->fail(operation, test::backEndError()); };
    auto const operation = ask(&one_);
    EXPECT_EQ(taken(), Log{ASK_HISTORY});
    EXPECT_TRUE(operation->isPending());
    agent_->fireConnected();
    EXPECT_EQ(taken(), Log{"one error 7001 no such chart"});
    EXPECT_FALSE(operation->isPending());
}

TEST_F(RemoteChart, AnOutcomeThatWaitsGivesWayToACancellation) {
    run();
    agent_->atOnce = [&](auto const & operation) { agent_->timeOut(operation); };
    ask(&one_)->cancel();
    agent_->fireConnected();
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one canceled"}));
    ask(&one_);
    service_->stop();
    agent_->fireConnected();
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one canceled"}));
}

TEST_F(RemoteChart, AnAgentThatStopsMayRefuseFromInsideTheRequest) {
    service_->addChartListener(&two_);
    run();
    ask(&one_);
    one_.during = [&] {
        one_.during = nullptr;
        agent_->atOnce = [&](auto const & operation) {
            agent_->fail(operation, test::backEndError());
        };
        ask(&one_);
    };
    log_.clear();
    agent_->stop();
    EXPECT_EQ(taken(), (Log{"one canceled", ASK_HISTORY, "one error 7001 no such chart",
                            "two stopped null"}));
}

TEST_F(RemoteChart, AStartThatIsAnsweredFromInsideWaits) {
    service_->addChartListener(&one_);
    agent_->atOnce = [&](auto const & operation) { agent_->reply(operation, PERIODS); };
    EXPECT_TRUE(service_->start(nullptr));
    EXPECT_FALSE(service_->isRunning());
    agent_->fireConnected();
    EXPECT_TRUE(service_->isRunning());
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started"}));
}

TEST_F(RemoteChart, ARequestMayBeCancelledWhileItIsMade) {
    run();
    agent_->during = [&] { service_->cancelAllRequests(); };
    auto const operation = ask(&one_);
    EXPECT_FALSE(operation->isPending());
    EXPECT_TRUE(agent_->open.empty());
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one canceled"}));
}

TEST_F(RemoteChart, AStartMayBeStoppedWhileItIsMade) {
    service_->addChartListener(&one_);
    agent_->during = [&] { service_->stop(); };
    EXPECT_TRUE(service_->start(nullptr));
    EXPECT_FALSE(service_->isRunning());
    EXPECT_TRUE(agent_->open.empty());
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one stopped null"}));
}

TEST_F(RemoteChart, AnAgentMayCancelLate) {
    run();
    agent_->cancelsLate = true;
    auto const operation = ask(&one_);
    operation->cancel();
    auto const late = agent_->newest();
    EXPECT_EQ(taken(), (Log{ASK_HISTORY, "one canceled"}));
    service_ = nullptr;
    agent_->cancelNow(late);
    EXPECT_EQ(taken(), Log{});
}

// Answers that are none.

struct BadAnswer {
    char const * name;
    char const * json;
    char const * told;
};

constexpr BadAnswer BAD_ANSWERS[] = {
    {"nothing", "{}", "7 chartHistory: the field \"symbol\" is missing"},
    {"a number for a symbol", R"({"symbol":7203,"priceKind":1,"periodType":"5","bars":[]})",
     "7 chartHistory: the field \"symbol\" is no text"},
    {"no price kind", R"({"symbol":"7203","periodType":"5","bars":[]})",
     "7 chartHistory: the field \"priceKind\" is missing"},
    {"a text for a price kind", R"({"symbol":"7203","priceKind":"1","periodType":"5","bars":[]})",
     "7 chartHistory: the field \"priceKind\" is no number"},
    {"a broken price kind", R"({"symbol":"7203","priceKind":1.5,"periodType":"5","bars":[]})",
     "7 chartHistory: the field \"priceKind\" is no price kind"},
    {"a huge price kind", R"({"symbol":"7203","priceKind":4294967297,"periodType":"5","bars":[]})",
     "7 chartHistory: the field \"priceKind\" is no price kind"},
    {"an endless price kind", R"({"symbol":"7203","priceKind":1e999,"periodType":"5","bars":[]})",
     "7 chartHistory: the field \"priceKind\" is no price kind"},
    {"no period type", R"({"symbol":"7203","priceKind":1,"bars":[]})",
     "7 chartHistory: the field \"periodType\" is missing"},
    {"another symbol", R"({"symbol":"7204","priceKind":1,"periodType":"5","bars":[]})",
     "13 chartHistory: the field \"symbol\" is not that of the request"},
    {"another price kind", R"({"symbol":"7203","priceKind":2,"periodType":"5","bars":[]})",
     "13 chartHistory: the field \"priceKind\" is not that of the request"},
    {"another period type", R"({"symbol":"7203","priceKind":1,"periodType":"D","bars":[]})",
     "13 chartHistory: the field \"periodType\" is not that of the request"},
    {"no bars", R"({"symbol":"7203","priceKind":1,"periodType":"5"})",
     "7 chartHistory: the field \"bars\" is missing"},
    {"null for bars", R"({"symbol":"7203","priceKind":1,"periodType":"5","bars":null})",
     "7 chartHistory: the field \"bars\" is missing"},
    {"a record for bars", R"({"symbol":"7203","priceKind":1,"periodType":"5","bars":{}})",
     "7 chartHistory: the field \"bars\" is no list"},
    {"a text for a bar", R"({"symbol":"7203","priceKind":1,"periodType":"5","bars":["x"]})",
     "7 chartHistory: the field \"bars[0]\" is no record"},
    {"no high",
     R"({"symbol":"7203","priceKind":1,"periodType":"5","bars":[{"date":"20240105",)"
     R"("time":"","open":1,"low":1,"close":1,"volume":1}]})",
     "7 chartHistory: the field \"bars[0]/high\" is missing"},
    {"a list for a volume",
     R"({"symbol":"7203","priceKind":1,"periodType":"5","bars":[{"date":"20240105",)"
     R"("time":"","open":1,"high":1,"low":1,"close":1,"volume":0},{"date":"20240105",)"
     R"("time":"","open":1,"high":1,"low":1,"close":1,"volume":[1]}]})",
     "7 chartHistory: the field \"bars[1]/volume\" is no text or number"},
};

TEST_F(RemoteChart, AnAnswerThatCannotBeReadIsAnError) {
    run();
    ask(nullptr);
    agent_->reply(agent_->newest(), barsAnswer({5}));
    for (BadAnswer const & row : BAD_ANSWERS) {
        SCOPED_TRACE(row.name);
        ask(&one_);
        log_.clear();
        agent_->reply(agent_->newest(), row.json);
        EXPECT_EQ(taken(), Log{std::string("one error ") + row.told});
        EXPECT_EQ(one_.component, RemoteChartService::COMPONENT_CODE);
        EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 1U);
    }
    EXPECT_TRUE(service_->isRunning());
}

// What is held of a chart.

TEST_F(RemoteChart, TheLastAnswerIsTheHistory) {
    run();
    ask(nullptr);
    auto const older = agent_->newest();
    ask(nullptr);
    agent_->reply(agent_->newest(), barsAnswer({1, 2, 3}));
    agent_->reply(older, barsAnswer({4}));
    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 1U);
    service_->stop();
    EXPECT_EQ(service_->getHistoryRecord("7203", PRICEKIND_LAST, "5", 0)->getClosePrice(), "4");
}

TEST_F(RemoteChart, BarsAreThereInsideTheirCallbackAndOutliveTheHistory) {
    run();
    ask(&one_);
    one_.during = [&] {
        EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 2U);
        service_->clearHistory("7203", PRICEKIND_LAST, "5");
        EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 0U);
    };
    agent_->reply(agent_->newest(), barsAnswer({1, 2}));
    EXPECT_EQ(one_.records[1]->getClosePrice(), "2");
}

TEST_F(RemoteChart, ClearHistoryForgetsBarsAndUpdateAlone) {
    run();
    subscribe();
    service_->addNoticeMessageListener("*", &all_);
    ask(&one_);
    agent_->reply(agent_->newest(), barsAnswer({1}));
    update(1);
    ask(&one_);
    log_.clear();
    service_->clearHistory("7203", PRICEKIND_LAST, "5");
    service_->clearHistory("none", PRICEKIND_LAST, "5");
    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 0U);
    EXPECT_TRUE(service_->getLastRecord("7203", PRICEKIND_LAST, "5").isNull());
    EXPECT_TRUE(service_->hasSubscription("7203", PRICEKIND_LAST, "5"));
    update(2);
    agent_->reply(agent_->newest(), barsAnswer({3, 4}));
    EXPECT_EQ(taken(), (Log{"all update 7203 2", "one history 2"}));
    EXPECT_EQ(service_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 2U);
}

TEST_F(RemoteChart, WhatIsHeldStaysBehindTheSubscription) {
    run();
    subscribe();
    update(7);
    unsubscribe();
    service_->stop();
    ASSERT_FALSE(service_->getLastRecord("7203", PRICEKIND_LAST, "5").isNull());
    EXPECT_EQ(service_->getLastRecord("7203", PRICEKIND_LAST, "5")->getClosePrice(), "7");
}

}  // namespace
}  // namespace tvk
