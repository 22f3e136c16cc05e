#include "tvk/agent/ChartNoticeMessageListener.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/ChartDoubles.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/chart/ChartRealDataRecImpl.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_abstract_v<ChartNoticeMessageListener>);
static_assert(std::has_virtual_destructor_v<ChartNoticeMessageListener>);
static_assert(std::is_destructible_v<ChartNoticeMessageListener>);
static_assert(std::is_copy_assignable_v<ChartNoticeMessageListener>);
static_assert(sizeof(ChartNoticeMessageListener) == sizeof(void *));

class OneMore : public ChartNoticeMessageListener {
public:
    virtual void oneMore() {}
};

TEST(ChartNoticeMessageListener, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(
        2, {{"onRealData", slotOf(&ChartNoticeMessageListener::onRealData)},
            {"onRealDataReset", slotOf(&ChartNoticeMessageListener::onRealDataReset)},
            {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(ChartNoticeMessageListener, CopyingAndAssigningMoveNothing) {
    test::Log log;
    test::Log otherLog;
    test::RecordingChartNoticeListener const source(otherLog);
    test::RecordingChartNoticeListener copy(source);
    test::RecordingChartNoticeListener target(log);
    static_cast<ChartNoticeMessageListener &>(target) = source;
    target.onRealDataReset(nullptr, "a");
    copy.onRealDataReset(nullptr, "b");
    EXPECT_EQ(log, (test::Log{callText("onRealDataReset", nullptr, "a")}));
    EXPECT_EQ(otherLog, (test::Log{callText("onRealDataReset", nullptr, "b")}));
}

TEST(ChartNoticeMessageListener, ReachesItsImplementation) {
    test::Log log;
    test::RecordingChartNoticeListener made(log);
    RefCountedPtr<ChartService> const service = new test::RecordingChartService(log);
    RefCountedPtr<ChartRealDataRec> const record = new ChartRealDataRecImpl;
    ChartNoticeMessageListener & listener = made;
    listener.onRealData(service.get(), record);
    listener.onRealDataReset(service.get(), "7203");
    EXPECT_EQ(log, (test::Log{callText("onRealData", service, record),
                              callText("onRealDataReset", service, "7203")}));
}

}  // namespace
}  // namespace tvk
