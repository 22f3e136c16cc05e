#include "tvk/agent/ChartListener.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/ChartDoubles.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_abstract_v<ChartListener>);
static_assert(std::has_virtual_destructor_v<ChartListener>);
static_assert(std::is_destructible_v<ChartListener>);
static_assert(std::is_copy_assignable_v<ChartListener>);
static_assert(sizeof(test::RecordingChartListener::tag_) == 4);

class OneMore : public ChartListener {
public:
    virtual void oneMore() {}
};

TEST(ChartListener, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(2, {{"onServiceStarted", slotOf(&ChartListener::onServiceStarted)},
                                 {"onServiceStopped", slotOf(&ChartListener::onServiceStopped)},
                                 {"onHistory", slotOf(&ChartListener::onHistory)},
                                 {"onHistoryTimeout", slotOf(&ChartListener::onHistoryTimeout)},
                                 {"onHistoryCanceled", slotOf(&ChartListener::onHistoryCanceled)},
                                 {"onHistoryError", slotOf(&ChartListener::onHistoryError)},
                                 {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(ChartListener, CopiesAndAssignsItsTag) {
    test::Log log;
    test::RecordingChartListener listener(log);
    EXPECT_EQ(listener.tag_, 0);
    listener.tag_ = -7;
    test::RecordingChartListener const copy(listener);
    EXPECT_EQ(copy.tag_, -7);
    test::RecordingChartListener target(log);
    target.tag_ = 1;
    ChartListener & contract = target;
    contract = static_cast<ChartListener const &>(listener);
    EXPECT_EQ(target.tag_, -7);
    EXPECT_EQ(log, test::Log{});
}

TEST(ChartListener, ReachesItsImplementation) {
    test::Log log;
    test::RecordingChartListener made(log);
    RefCountedPtr<ChartService> const service = new test::RecordingChartService(log);
    RefCountedPtr<AsyncChartRequestOperation> const operation =
        new test::RecordingChartOperation(log);
    std::vector<RefCountedPtr<ChartHistoricalDataRec>> const records;
    ErrorInfo const error;
    int user = 0;
    ChartListener & listener = made;
    listener.onServiceStarted(service.get());
    listener.onServiceStopped(service.get(), nullptr);
    listener.onHistory(service.get(), operation.get(), records, &user);
    listener.onHistoryTimeout(service.get(), operation.get(), &user);
    listener.onHistoryCanceled(service.get(), operation.get(), &user);
    listener.onHistoryError(service.get(), operation.get(), error, nullptr);
    EXPECT_EQ(log, (test::Log{callText("onServiceStarted", service),
                              callText("onServiceStopped", service, nullptr),
                              callText("onHistory", service, operation, &records, &user),
                              callText("onHistoryTimeout", service, operation, &user),
                              callText("onHistoryCanceled", service, operation, &user),
                              callText("onHistoryError", service, operation, &error, nullptr)}));
}

}  // namespace
}  // namespace tvk
