#include "tvk/definitions/RecordTypeDefImpl.h"

#include "tests/definitions/Orders.h"
#include "tests/definitions/RecordSuite.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<RecordTypeDefImpl, RecordTypeDef>);

TEST(RecordTypeDefImpl, KeepsTheOrderOfItsOperations) {
    test::expectRecordTypeDefOrder<RecordTypeDefImpl>();
}

}  // namespace

namespace test {
INSTANTIATE_TYPED_TEST_SUITE_P(RecordTypeDefImpl, RecordSuite, RecordTypeDefImpl);
}

}  // namespace tvk
