#include "tvk/definitions/MessageDefManager.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<MessageDefManager, DataTypeDefManager>);
static_assert(std::is_abstract_v<MessageDefManager>);

TEST(MessageDefManager, KeepsTheOrderOfItsOperations) {
    test::expectMessageDefManagerOrder<MessageDefManager>();
}

}  // namespace
}  // namespace tvk
