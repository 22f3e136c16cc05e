#include "tvk/definitions/DataTypeDef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<DataTypeDef, RefCounted>);
static_assert(std::is_abstract_v<DataTypeDef>);

TEST(DataTypeDef, KeepsTheOrderOfItsOperations) { test::expectDataTypeDefOrder<DataTypeDef>(); }

}  // namespace
}  // namespace tvk
