#include "tvk/definitions/SimpleTypeDefImpl.h"

#include <gtest/gtest.h>

#include "tests/definitions/Definitions.h"
#include "tests/definitions/Orders.h"
#include "tests/support/PrintCString.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

using Simple = RefCountedPtr<SimpleTypeDefImpl>;

static_assert(test::IS_COUNTED_CLASS<SimpleTypeDefImpl, SimpleTypeDef>);

TEST(SimpleTypeDefImpl, KeepsTheOrderOfItsOperations) {
    test::expectSimpleTypeDefOrder<SimpleTypeDefImpl>();
}

TEST(SimpleTypeDefImpl, StartsEmpty) {
    Simple const type = new SimpleTypeDefImpl;
    EXPECT_EQ(type->getName(), "");
    EXPECT_EQ(type->getNameJa(), "");
    EXPECT_EQ(type->getDescription(), "");
    EXPECT_EQ(type->getRefCount(), 1);
}

TEST(SimpleTypeDefImpl, TakesThreeTexts) {
    CString const odd = test::oddText();
    Simple const type = new SimpleTypeDefImpl(odd, odd + "ja", odd + "description");
    EXPECT_EQ(type->getName(), odd);
    EXPECT_EQ(type->getNameJa(), odd + "ja");
    EXPECT_EQ(type->getDescription(), odd + "description");
}

TEST(SimpleTypeDefImpl, IsASimpleTypeAloneAndNotDerived) {
    Simple const type = new SimpleTypeDefImpl;
    EXPECT_TRUE(type->isSimpleType());
    EXPECT_FALSE(type->isRecordType());
    EXPECT_FALSE(type->isListType());
    EXPECT_FALSE(type->isDerivedType());
}

TEST(SimpleTypeDefImpl, StoresWhatItIsSetTo) {
    CString const odd = test::oddText();
    Simple const type = new SimpleTypeDefImpl("name", "ja", "description");
    type->setName(odd);
    type->setNameJa(odd + "ja");
    type->setDescription(odd + "description");
    EXPECT_EQ(type->getName(), odd);
    EXPECT_EQ(type->getNameJa(), odd + "ja");
    EXPECT_EQ(type->getDescription(), odd + "description");
}

}  // namespace
}  // namespace tvk
