#include "tvk/definitions/MessageTypeDef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<MessageTypeDef, RecordTypeDef>);
static_assert(std::is_abstract_v<MessageTypeDef>);

TEST(MessageTypeDef, KeepsTheOrderOfItsOperations) {
    test::expectMessageTypeDefOrder<MessageTypeDef>();
}

}  // namespace
}  // namespace tvk
