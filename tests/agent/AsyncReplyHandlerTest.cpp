#include "tvk/agent/AsyncReplyHandler.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::slotOf;

static_assert(std::is_abstract_v<AsyncReplyHandler>);
static_assert(std::has_virtual_destructor_v<AsyncReplyHandler>);
static_assert(std::is_destructible_v<AsyncReplyHandler>);
static_assert(std::is_copy_assignable_v<AsyncReplyHandler>);
static_assert(sizeof(AsyncReplyHandler) == sizeof(void *));

class OneMore : public AsyncReplyHandler {
public:
    virtual void oneMore() {}
};

TEST(AsyncReplyHandler, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(2, {{"onReply", slotOf(&AsyncReplyHandler::onReply)},
                                 {"onTimeout", slotOf(&AsyncReplyHandler::onTimeout)},
                                 {"onCanceled", slotOf(&AsyncReplyHandler::onCanceled)},
                                 {"onError", slotOf(&AsyncReplyHandler::onError)},
                                 {"the end", slotOf(&OneMore::oneMore)}});
}

}  // namespace
}  // namespace tvk
