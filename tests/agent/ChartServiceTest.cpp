#include "tvk/agent/ChartService.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/ChartDoubles.h"
#include "tests/support/CountedContract.h"
#include "tests/support/PrintCString.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/chart/ChartHistoricalDataRecImpl.h"
#include "tvk/chart/ChartRealDataRecImpl.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_base_of_v<RefCounted, ChartService>);
static_assert(std::is_abstract_v<ChartService>);
static_assert(!std::is_destructible_v<ChartService>);
static_assert(sizeof(ChartService) == sizeof(RefCounted));

class OneMore : public ChartService {
public:
    virtual void oneMore() {}
};

TEST(ChartService, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(
        3, {{"start", slotOf(&ChartService::start)},
            {"stop", slotOf(&ChartService::stop)},
            {"isRunning", slotOf(&ChartService::isRunning)},
            {"addChartListener", slotOf(&ChartService::addChartListener)},
            {"hasChartListener", slotOf(&ChartService::hasChartListener)},
            {"removeChartListener", slotOf(&ChartService::removeChartListener)},
            {"removeAllChartListeners", slotOf(&ChartService::removeAllChartListeners)},
            {"getChartListeners", slotOf(&ChartService::getChartListeners)},
            {"addNoticeMessageListener", slotOf(&ChartService::addNoticeMessageListener)},
            {"removeNoticeMessageListener", slotOf(&ChartService::removeNoticeMessageListener)},
            {"removeAllNoticeMessageListeners",
             slotOf(&ChartService::removeAllNoticeMessageListeners)},
            {"requestHistory", slotOf(&ChartService::requestHistory)},
            {"requestHistoryBetween", slotOf(&ChartService::requestHistoryBetween)},
            {"cancelAllRequests", slotOf(&ChartService::cancelAllRequests)},
            {"cancelRequestsByListener", slotOf(&ChartService::cancelRequestsByListener)},
            {"subscribe", slotOf(&ChartService::subscribe)},
            {"unsubscribe", slotOf(&ChartService::unsubscribe)},
            {"hasSubscription", slotOf(&ChartService::hasSubscription)},
            {"getHistoryCount", slotOf(&ChartService::getHistoryCount)},
            {"getHistoryRecord", slotOf(&ChartService::getHistoryRecord)},
            {"getLastRecord", slotOf(&ChartService::getLastRecord)},
            {"clearHistory", slotOf(&ChartService::clearHistory)},
            {"getPeriodTypes", slotOf(&ChartService::getPeriodTypes)},
            {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(ChartService, CopiesAndAssignsLikeRefCounted) {
    test::expectCopiesLikeRefCounted<ChartService, test::RecordingChartService>();
}

class ChartServiceCalls : public testing::Test {
protected:
    test::Log log_;
    RefCountedPtr<test::RecordingChartService> const made_ = new test::RecordingChartService(log_);
    ChartService & service_ = *made_;
    test::RecordingChartListener listener_{log_};
    test::RecordingChartNoticeListener noticeListener_{log_};
};

TEST_F(ChartServiceCalls, StartAndStop) {
    ErrorInfo error;
    EXPECT_TRUE(service_.start(&error));
    EXPECT_TRUE(service_.isRunning());
    service_.stop();
    made_->yes = false;
    EXPECT_FALSE(service_.isRunning());
    EXPECT_EQ(log_, (test::Log{callText("start", &error), callText("isRunning"), callText("stop"),
                               callText("isRunning")}));
}

TEST_F(ChartServiceCalls, Listeners) {
    made_->number = 1;
    made_->listeners = {&listener_, &listener_};
    service_.addChartListener(&listener_);
    EXPECT_TRUE(service_.hasChartListener(&listener_));
    EXPECT_EQ(service_.getChartListeners(), (std::vector<ChartListener *>{&listener_, &listener_}));
    service_.removeChartListener(&listener_);
    service_.removeAllChartListeners();
    service_.addNoticeMessageListener("7203", &noticeListener_);
    EXPECT_EQ(service_.removeNoticeMessageListener("7203", &noticeListener_), 1);
    service_.removeAllNoticeMessageListeners();
    EXPECT_EQ(
        log_,
        (test::Log{callText("addChartListener", &listener_),
                   callText("hasChartListener", &listener_), callText("getChartListeners"),
                   callText("removeChartListener", &listener_), callText("removeAllChartListeners"),
                   callText("addNoticeMessageListener", "7203", &noticeListener_),
                   callText("removeNoticeMessageListener", "7203", &noticeListener_),
                   callText("removeAllNoticeMessageListeners")}));
}

TEST_F(ChartServiceCalls, Requests) {
    made_->operation = new test::RecordingChartOperation(log_);
    int user = 0;
    EXPECT_EQ(service_.requestHistory("7203", PRICEKIND_BID, "1min", 100, &listener_, &user),
              made_->operation);
    EXPECT_EQ(service_.requestHistoryBetween("7203", PRICEKIND_ASK, "day", "20240104", "20240131",
                                             nullptr, nullptr),
              made_->operation);
    service_.cancelAllRequests();
    service_.cancelRequestsByListener(&listener_);
    EXPECT_EQ(log_,
              (test::Log{callText("requestHistory", "7203", 2, "1min", 100, &listener_, &user),
                         callText("requestHistoryBetween", "7203", 3, "day", "20240104", "20240131",
                                  nullptr, nullptr),
                         callText("cancelAllRequests"),
                         callText("cancelRequestsByListener", &listener_)}));
}

TEST_F(ChartServiceCalls, SubscriptionsAndWhatIsHeld) {
    made_->number = 2;
    made_->historyCount = 0xffffffff;
    made_->historyRecord = new ChartHistoricalDataRecImpl;
    made_->lastRecord = new ChartRealDataRecImpl;
    made_->periodTypes = {"1min", "day"};
    EXPECT_EQ(service_.subscribe("7203", PRICEKIND_LAST, "1min"), 2);
    EXPECT_EQ(service_.unsubscribe("7203", PRICEKIND_LAST, "1min"), 2);
    EXPECT_TRUE(service_.hasSubscription("7203", PRICEKIND_LAST, "1min"));
    EXPECT_EQ(service_.getHistoryCount("7203", PRICEKIND_MID, "1min"), 0xffffffff);
    EXPECT_EQ(service_.getHistoryRecord("7203", PRICEKIND_MID, "1min", 7), made_->historyRecord);
    EXPECT_EQ(service_.getLastRecord("7203", PRICEKIND_NONE, "1min"), made_->lastRecord);
    service_.clearHistory("7203", PRICEKIND_LAST, "1min");
    EXPECT_EQ(service_.getPeriodTypes(), (std::vector<CString>{"1min", "day"}));
    EXPECT_EQ(log_,
              (test::Log{callText("subscribe", "7203", 1, "1min"),
                         callText("unsubscribe", "7203", 1, "1min"),
                         callText("hasSubscription", "7203", 1, "1min"),
                         callText("getHistoryCount", "7203", 4, "1min"),
                         callText("getHistoryRecord", "7203", 4, "1min", 7),
                         callText("getLastRecord", "7203", 0, "1min"),
                         callText("clearHistory", "7203", 1, "1min"), callText("getPeriodTypes")}));
}

}  // namespace
}  // namespace tvk
