#include "tvk/agent/KestrinListener.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/RecordingListener.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::slotOf;

static_assert(std::is_abstract_v<KestrinListener>);
static_assert(std::has_virtual_destructor_v<KestrinListener>);
static_assert(std::is_destructible_v<KestrinListener>);
static_assert(std::is_copy_assignable_v<KestrinListener>);
static_assert(sizeof(KestrinListener) == sizeof(void *));

TEST(KestrinListener, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(
        2, {{"onStartupCompleted", slotOf(&KestrinListener::onStartupCompleted)},
            {"onLoginReply", slotOf(&KestrinListener::onLoginReply)},
            {"onReloginRequired", slotOf(&KestrinListener::onReloginRequired)},
            {"onKestrinError", slotOf(&KestrinListener::onKestrinError)},
            {"onConnected", slotOf(&KestrinListener::onConnected)},
            {"onDisconnected", slotOf(&KestrinListener::onDisconnected)},
            {"onStopped", slotOf(&KestrinListener::onStopped)},
            {"onRealTimeServiceStarted", slotOf(&KestrinListener::onRealTimeServiceStarted)},
            {"onRealTimeServiceStopped", slotOf(&KestrinListener::onRealTimeServiceStopped)}});
}

class OneMore : public KestrinListener {
public:
    virtual void oneMore() {}
};

TEST(KestrinListener, EndsWithTheRealTimeService) { EXPECT_EQ(slotOf(&OneMore::oneMore), 11u); }

TEST(KestrinListener, CopyingAndAssigningMoveNothing) {
    test::Log log;
    test::RecordingListener listener(log, "a");
    test::RecordingListener copy(listener);
    test::RecordingListener other(log, "b");
    static_cast<KestrinListener &>(other) = listener;
    copy.onConnected(nullptr);
    other.onConnected(nullptr);
    EXPECT_EQ(log, (test::Log{"a.onConnected(null)", "b.onConnected(null)"}));
}

}  // namespace
}  // namespace tvk
