#include "modules/services/RemoteChartService.h"

#include <type_traits>

#include "tests/modules/services/support/RemoteChartFixture.h"

namespace tvk {
namespace {

using test::ASK_PERIODS;
using test::barsAnswer;
using test::FakeKestrin;
using test::Log;
using test::PERIODS;
using test::updateNotice;
using RemoteChart = test::RemoteChart;

static_assert(std::is_base_of_v<ChartService, RemoteChartService>);
static_assert(!std::is_destructible_v<RemoteChartService>);
static_assert(!std::is_copy_constructible_v<RemoteChartService>);
static_assert(!std::is_copy_assignable_v<RemoteChartService>);

// Start and stop.

TEST_F(RemoteChart, StartAsksForThePeriodTypesAndRunsWithThem) {
    service_->addChartListener(&one_);
    service_->addChartListener(&two_);
    service_->addChartListener(&one_);
    EXPECT_TRUE(service_->start(&error_));
    EXPECT_FALSE(service_->isRunning());
    EXPECT_TRUE(service_->getPeriodTypes().empty());
    EXPECT_EQ(taken(), Log{ASK_PERIODS});
    EXPECT_EQ(agent_->timeouts, std::vector<int>{RemoteChartService::DEFAULT_TIMEOUT_MILLI_SEC});

    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_TRUE(service_->isRunning());
    EXPECT_TRUE(one_.wasRunning);
    EXPECT_EQ(one_.service, service_.get());
    EXPECT_EQ(taken(), (Log{"one started", "two started", "one started"}));
    EXPECT_EQ(service_->getPeriodTypes(), (std::vector<CString>{"1", "5", "60", "D"}));
    EXPECT_FALSE(error_.hasError());
}

TEST_F(RemoteChart, StartOfWhatRunsOrBeginsToDoesNothing) {
    service_->addChartListener(&one_);
    EXPECT_TRUE(service_->start(nullptr));
    EXPECT_TRUE(service_->start(nullptr));
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_TRUE(service_->start(nullptr));
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started"}));
}

TEST_F(RemoteChart, StartWantsAnAgentThatIsLoggedIn) {
    service_->addChartListener(&one_);
    for (KestrinStatusEnum const status : {KESTRINSTATUS_CREATED, KESTRINSTATUS_CONNECTING,
                                           KESTRINSTATUS_CONNECTED, KESTRINSTATUS_STOPPED}) {
        agent_->status = status;
        ErrorInfo error;
        EXPECT_FALSE(service_->start(&error));
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_EQ(error.getErrorMessage(), "not logged in");
        EXPECT_EQ(error.getComponentCode(), RemoteChartService::COMPONENT_CODE);
        EXPECT_FALSE(service_->start(nullptr));
    }
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
    EXPECT_EQ(taken(), Log{});
}

TEST_F(RemoteChart, StopTellsAndLeavesNoTraceAtTheAgent) {
    service_->addChartListener(&one_);
    subscribe();
    run();
    EXPECT_EQ(agent_->getKestrinListeners().size(), 1U);
    service_->stop();
    EXPECT_FALSE(service_->isRunning());
    EXPECT_FALSE(one_.wasRunning);
    EXPECT_EQ(taken(), (Log{"unsubscribe chart 7203/1/5", "one stopped null"}));
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
    EXPECT_TRUE(agent_->getMessageHandlers("chart", "7203/1/5").empty());
    service_->stop();
    EXPECT_EQ(taken(), Log{});
}

TEST_F(RemoteChart, StopWhileItBeginsTellsToo) {
    service_->addChartListener(&one_);
    service_->start(nullptr);
    service_->stop();
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one stopped null"}));
    EXPECT_TRUE(agent_->open.empty());
    EXPECT_TRUE(service_->start(nullptr));
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started"}));
}

TEST_F(RemoteChart, StopWhereNothingRunsDoesNothing) {
    service_->addChartListener(&one_);
    service_->stop();
    EXPECT_EQ(taken(), Log{});
}

struct BadStart {
    char const * name;
    std::function<void(FakeKestrin & agent)> answer;
    char const * told;
};

BadStart const BAD_STARTS[] = {
    {"time-out", [](FakeKestrin & agent) { agent.timeOut(agent.newest()); },
     "one stopped 9 chartPeriods: no answer came in time"},
    {"refused", [](FakeKestrin & agent) { agent.fail(agent.newest(), test::backEndError()); },
     "one stopped 7001 no such chart"},
    {"cancelled at the agent", [](FakeKestrin & agent) { agent.cancelAllAsyncRequests(); },
     "one stopped 8 chartPeriods: the request was cancelled"},
    {"no periods", [](FakeKestrin & agent) { agent.reply(agent.newest(), "{}"); },
     "one stopped 7 chartPeriods: the field \"periods\" is missing"},
    {"periods of another kind",
     [](FakeKestrin & agent) { agent.reply(agent.newest(), R"({"periods":"D"})"); },
     "one stopped 7 chartPeriods: the field \"periods\" is no list"},
    {"a period of another kind",
     [](FakeKestrin & agent) { agent.reply(agent.newest(), R"({"periods":["1",{}]})"); },
     "one stopped 7 chartPeriods: the field \"periods[1]\" is no text or number"},
    {"the agent stops", [](FakeKestrin & agent) { agent.end(nullptr); }, "one stopped null"},
    {"the agent fails",
     [](FakeKestrin & agent) {
         ErrorInfo const error = test::backEndError(12);
         agent.end(&error);
     },
     "one stopped 12 no such chart"},
};

TEST_F(RemoteChart, AStartThatFailsStops) {
    for (BadStart const & row : BAD_STARTS) {
        SCOPED_TRACE(row.name);
        agent_ = new FakeKestrin(log_);
        service_ = new RemoteChartService(agent_);
        service_->addChartListener(&one_);
        service_->start(nullptr);
        log_.clear();
        row.answer(*agent_);
        EXPECT_EQ(taken(), Log{row.told});
        EXPECT_FALSE(service_->isRunning());
        EXPECT_TRUE(agent_->getKestrinListeners().empty());
    }
}

TEST_F(RemoteChart, PeriodTypesStayThroughAStop) {
    run();
    service_->stop();
    EXPECT_EQ(service_->getPeriodTypes().size(), 4U);
    service_->start(nullptr);
    EXPECT_EQ(service_->getPeriodTypes().size(), 4U);
    agent_->reply(agent_->newest(), R"({"periods":[15]})");
    EXPECT_EQ(service_->getPeriodTypes(), std::vector<CString>{"15"});
}

TEST_F(RemoteChart, TheAgentsEndStopsTheService) {
    service_->addChartListener(&one_);
    run();
    ask(&two_);
    log_.clear();
    ErrorInfo const error = test::backEndError(12);
    agent_->end(&error);
    EXPECT_EQ(taken(), (Log{"two error 12 no such chart", "one stopped 12 no such chart"}));
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
}

TEST_F(RemoteChart, AnAgentThatIsAskedToStopStopsTheServiceLikeIt) {
    service_->addChartListener(&one_);
    run();
    ask(&two_);
    log_.clear();
    agent_->stop();
    EXPECT_EQ(taken(), (Log{"two canceled", "one stopped null"}));
}

TEST_F(RemoteChart, RequestsThatAnAgentForgetsEndWithIt) {
    service_->addChartListener(&one_);
    run();
    ask(&two_);
    log_.clear();
    ErrorInfo const error = test::backEndError(12);
    agent_->fireOnStopped(&error);
    EXPECT_EQ(taken(), (Log{"two error 12 no such chart", "one stopped 12 no such chart"}));
}

// Listeners of the service.

TEST_F(RemoteChart, ListenersStandInTheirOrder) {
    service_->addChartListener(&one_);
    service_->addChartListener(&two_);
    service_->addChartListener(&one_);
    EXPECT_EQ(service_->getChartListeners(), (std::vector<ChartListener *>{&one_, &two_, &one_}));
    EXPECT_TRUE(service_->hasChartListener(&one_));
    service_->removeChartListener(&one_);
    EXPECT_EQ(service_->getChartListeners(), (std::vector<ChartListener *>{&two_, &one_}));
    service_->removeChartListener(&one_);
    EXPECT_FALSE(service_->hasChartListener(&one_));
    service_->removeChartListener(&one_);
    service_->removeAllChartListeners();
    EXPECT_TRUE(service_->getChartListeners().empty());
}

TEST_F(RemoteChart, AListenerThatIsRemovedMeanwhileIsNotCalled) {
    service_->addChartListener(&one_);
    service_->addChartListener(&two_);
    service_->start(nullptr);
    one_.during = [&] { service_->removeChartListener(&two_); };
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started"}));
}

TEST_F(RemoteChart, AListenerThatIsAddedMeanwhileWaits) {
    service_->addChartListener(&one_);
    service_->start(nullptr);
    one_.during = [&] {
        service_->addChartListener(&two_);
        one_.during = nullptr;
    };
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started"}));
    service_->stop();
    EXPECT_EQ(taken(), (Log{"one stopped null", "two stopped null"}));
}

TEST_F(RemoteChart, AListenerThatIsRemovedAndAddedAgainWaits) {
    service_->addChartListener(&one_);
    service_->addChartListener(&two_);
    service_->start(nullptr);
    one_.during = [&] {
        service_->removeChartListener(&two_);
        service_->addChartListener(&two_);
    };
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started"}));
}

TEST_F(RemoteChart, AListenerThatWasAddedTwiceAndRemovesItselfIsCalledForTheOtherEntry) {
    service_->addChartListener(&one_);
    service_->addChartListener(&one_);
    service_->start(nullptr);
    one_.during = [&] { service_->removeChartListener(&one_); };
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started", "one started"}));
    EXPECT_FALSE(service_->hasChartListener(&one_));
}

TEST_F(RemoteChart, AStopFromInsideEndsThePassOfTheStart) {
    service_->addChartListener(&one_);
    service_->addChartListener(&two_);
    service_->start(nullptr);
    one_.during = [&] {
        one_.during = nullptr;
        service_->stop();
    };
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{ASK_PERIODS, "one started", "one stopped null", "two stopped null"}));
}

TEST_F(RemoteChart, AStartFromInsideTheStopBeginsAnew) {
    service_->addChartListener(&one_);
    service_->addChartListener(&two_);
    run();
    one_.during = [&] {
        one_.during = nullptr;
        service_->start(nullptr);
    };
    service_->stop();
    agent_->reply(agent_->newest(), PERIODS);
    EXPECT_EQ(taken(), (Log{"one stopped null", ASK_PERIODS, "two stopped null", "one started",
                            "two started"}));
}

// Ownership.

TEST_F(RemoteChart, HoldsItsAgent) {
    agent_->addRef();
    FakeKestrin * const agent = agent_.get();
    agent_ = nullptr;
    EXPECT_EQ(agent->getRefCount(), 2);
    service_ = nullptr;
    EXPECT_EQ(agent->getRefCount(), 1);
    agent->removeRef();
    EXPECT_EQ(taken(), Log{"end agent"});
}

TEST_F(RemoteChart, CountsOfAHandle) {
    run();
    auto const operation = ask(&one_);
    EXPECT_EQ(operation->getRefCount(), 2);
    EXPECT_EQ(service_->getRefCount(), 1);
    agent_->reply(agent_->newest(), barsAnswer({1}));
    one_.operation = nullptr;
    EXPECT_EQ(operation->getRefCount(), 1);
    EXPECT_EQ(one_.records[0]->getRefCount(), 2);
}

TEST_F(RemoteChart, TheLastReferenceCancelsAndTellsNobodyElse) {
    service_->addChartListener(&two_);
    run();
    subscribe();
    ask(&one_);
    ask(&one_);
    log_.clear();
    service_ = nullptr;
    EXPECT_EQ(taken(), (Log{"unsubscribe chart 7203/1/5", "one canceled", "one canceled"}));
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
    agent_ = nullptr;
    EXPECT_EQ(taken(), Log{"end agent"});
}

TEST_F(RemoteChart, ACancellationByTheLastReferenceMayKeepTheService) {
    run();
    ask(&one_);
    RefCountedPtr<ChartService> kept;
    one_.during = [&] { kept = one_.service; };
    service_ = nullptr;
    EXPECT_EQ(kept->getRefCount(), 1);
    EXPECT_FALSE(kept->isRunning());
    EXPECT_TRUE(kept->start(nullptr));
}

TEST_F(RemoteChart, TheLastReferenceMayGoInsideEachCallback) {
    struct Scene {
        char const * name;
        std::function<void()> make;
        std::function<void()> act;
    };
    RefCountedPtr<FakeKestrin> agent;
    ErrorInfo const lost = test::backEndError(10);
    Scene const scenes[] = {
        {"started", [&] { service_->start(nullptr); },
         [&] { agent->reply(agent->newest(), PERIODS); }},
        {"stopped", [&] { run(); }, [&] { service_->stop(); }},
        {"stopped by the agent", [&] { run(); }, [&] { agent->end(&lost); }},
        {"failed start", [&] { service_->start(nullptr); },
         [&] { agent->timeOut(agent->newest()); }},
        {"history", [&] { run(), ask(&one_); },
         [&] { agent->reply(agent->newest(), barsAnswer({1})); }},
        {"timeout", [&] { run(), ask(&one_); }, [&] { agent->timeOut(agent->newest()); }},
        {"error", [&] { run(), ask(&one_); }, [&] { agent->fail(agent->newest(), lost); }},
        {"bad answer", [&] { run(), ask(&one_); }, [&] { agent->reply(agent->newest(), "{}"); }},
        {"cancelled", [&] { run(), ask(&one_), ask(&one_); },
         [&] { service_->cancelAllRequests(); }},
        {"cancelled by handle", [&] { run(), ask(&one_); },
         [&] { RefCountedPtr(ask(&one_))->cancel(); }},
        {"cancelled by the agent", [&] { run(), ask(&one_), ask(&one_); },
         [&] { agent->cancelAllAsyncRequests(); }},
        {"update", [&] { run(), subscribe(); },
         [&] { agent->notify("chart", "7203/1/5", updateNotice(1)); }},
        {"reset", [&] { run(), subscribe(), subscribe("9984"); },
         [&] { agent->fireOnRealTimeServiceStarted(true); }},
    };
    for (Scene const & scene : scenes) {
        SCOPED_TRACE(scene.name);
        agent = agent_ = new FakeKestrin(log_);
        service_ = new RemoteChartService(agent_);
        service_->addChartListener(&one_);
        service_->addChartListener(&two_);
        service_->addNoticeMessageListener("*", &all_);
        service_->addNoticeMessageListener("*", &some_);
        one_.during = all_.during = nullptr;
        scene.make();
        log_.clear();
        one_.during = all_.during = [&] {
            service_ = nullptr;
            agent_ = nullptr;
        };
        scene.act();
        EXPECT_FALSE(log_.empty());
        EXPECT_TRUE(service_.isNull());
        EXPECT_EQ(agent->getRefCount(), 1);  // ours: the service is gone
        EXPECT_TRUE(agent->open.empty());
        EXPECT_TRUE(agent->getKestrinListeners().empty());
        EXPECT_FALSE(agent->hasSubscription("chart", "7203/1/5"));
    }
}

}  // namespace
}  // namespace tvk
