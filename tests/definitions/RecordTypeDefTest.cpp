#include "tvk/definitions/RecordTypeDef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/definitions/Orders.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<RecordTypeDef, DataTypeDef>);
static_assert(std::is_abstract_v<RecordTypeDef>);

TEST(RecordTypeDef, KeepsTheOrderOfItsOperations) {
    test::expectRecordTypeDefOrder<RecordTypeDef>();
}

}  // namespace
}  // namespace tvk
