#include "tvk/definitions/ListTypeDef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<ListTypeDef, DataTypeDef>);
static_assert(std::is_abstract_v<ListTypeDef>);

TEST(ListTypeDef, KeepsTheOrderOfItsOperations) { test::expectListTypeDefOrder<ListTypeDef>(); }

}  // namespace
}  // namespace tvk
