#include "tvk/definitions/ListElementFieldDef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<ListElementFieldDef, FieldDef>);
static_assert(std::is_abstract_v<ListElementFieldDef>);

TEST(ListElementFieldDef, KeepsTheOrderOfItsOperations) {
    test::expectListElementFieldDefOrder<ListElementFieldDef>();
}

}  // namespace
}  // namespace tvk
