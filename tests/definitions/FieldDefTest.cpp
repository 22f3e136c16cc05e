#include "tvk/definitions/FieldDef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<FieldDef, RefCounted>);
static_assert(std::is_abstract_v<FieldDef>);

TEST(FieldDef, KeepsTheOrderOfItsOperations) { test::expectFieldDefOrder<FieldDef>(); }

}  // namespace
}  // namespace tvk
