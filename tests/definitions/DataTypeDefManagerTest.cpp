#include "tvk/definitions/DataTypeDefManager.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<DataTypeDefManager, RefCounted>);
static_assert(std::is_abstract_v<DataTypeDefManager>);

TEST(DataTypeDefManager, KeepsTheOrderOfItsOperations) {
    test::expectDataTypeDefManagerOrder<DataTypeDefManager>();
}

}  // namespace
}  // namespace tvk
