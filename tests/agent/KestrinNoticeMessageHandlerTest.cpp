#include "tvk/agent/KestrinNoticeMessageHandler.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::slotOf;

static_assert(std::is_abstract_v<KestrinNoticeMessageHandler>);
static_assert(std::has_virtual_destructor_v<KestrinNoticeMessageHandler>);
static_assert(std::is_destructible_v<KestrinNoticeMessageHandler>);
static_assert(std::is_copy_assignable_v<KestrinNoticeMessageHandler>);
static_assert(sizeof(KestrinNoticeMessageHandler) == sizeof(void *));

class OneMore : public KestrinNoticeMessageHandler {
public:
    virtual void oneMore() {}
};

TEST(KestrinNoticeMessageHandler, HasOneOperationBehindItsDestructor) {
    test::expectVirtualOrder(2, {{"onNotice", slotOf(&KestrinNoticeMessageHandler::onNotice)},
                                 {"the end", slotOf(&OneMore::oneMore)}});
}

}  // namespace
}  // namespace tvk
