#include "tvk/definitions/ListTypeDefImpl.h"

#include <gtest/gtest.h>

#include "tests/definitions/Definitions.h"
#include "tests/definitions/Orders.h"
#include "tests/support/PrintCString.h"

namespace tvk {
namespace {

using List = RefCountedPtr<ListTypeDefImpl>;

static_assert(test::IS_COUNTED_CLASS<ListTypeDefImpl, ListTypeDef>);

void expectNoElements(ListTypeDef const & list) {
    EXPECT_EQ(list.getElementTypeDef(), nullptr);
    EXPECT_EQ(list.getElementTypeName(), "");
    EXPECT_EQ(list.getLengthOfCount(), 0u);
    EXPECT_EQ(list.getElementFieldName(), "");
}

TEST(ListTypeDefImpl, KeepsTheOrderOfItsOperations) {
    test::expectListTypeDefOrder<ListTypeDefImpl>();
}

TEST(ListTypeDefImpl, StartsEmpty) {
    List const list = new ListTypeDefImpl;
    EXPECT_EQ(list->getName(), "");
    EXPECT_EQ(list->getNameJa(), "");
    EXPECT_EQ(list->getDescription(), "");
    expectNoElements(*list);
}

TEST(ListTypeDefImpl, TakesThreeTexts) {
    List const list = new ListTypeDefImpl("name", "\x96\xBC\x91\x4F", "description");
    EXPECT_EQ(list->getName(), "name");
    EXPECT_EQ(list->getNameJa(), "\x96\xBC\x91\x4F");
    EXPECT_EQ(list->getDescription(), "description");
    expectNoElements(*list);
}

TEST(ListTypeDefImpl, IsAListTypeAlone) {
    List const list = new ListTypeDefImpl;
    EXPECT_FALSE(list->isSimpleType());
    EXPECT_FALSE(list->isRecordType());
    EXPECT_TRUE(list->isListType());
}

TEST(ListTypeDefImpl, StoresWhatItIsSetTo) {
    CString const odd = test::oddText();
    List const list = new ListTypeDefImpl;
    list->setName(odd);
    list->setNameJa(odd + "ja");
    list->setDescription(odd + "description");
    list->setElementTypeName(odd + "type");
    list->setElementFieldName(odd + "field");
    list->setLengthOfCount(0xFFFFFFFF);
    EXPECT_EQ(list->getName(), odd);
    EXPECT_EQ(list->getNameJa(), odd + "ja");
    EXPECT_EQ(list->getDescription(), odd + "description");
    EXPECT_EQ(list->getElementTypeName(), odd + "type");
    EXPECT_EQ(list->getElementFieldName(), odd + "field");
    EXPECT_EQ(list->getLengthOfCount(), 0xFFFFFFFF);
    EXPECT_EQ(list->getElementTypeDef(), nullptr);
}

TEST(ListTypeDefImpl, DeliberateKeepsTheElementTypeNameApartFromTheType) {
    List const list = new ListTypeDefImpl;
    list->setElementTypeDef(SimpleTypeDef::STRING_TYPE());
    EXPECT_EQ(list->getElementTypeName(), "");
    list->setElementTypeName("integer");
    EXPECT_EQ(list->getElementTypeDef(), SimpleTypeDef::STRING_TYPE());
    list->setElementTypeDef(SimpleTypeDef::DECIMAL_TYPE());
    EXPECT_EQ(list->getElementTypeName(), "integer");
    list->setElementTypeDef(nullptr);
    EXPECT_EQ(list->getElementTypeName(), "integer");
    EXPECT_EQ(list->getElementTypeDef(), nullptr);
}

TEST(ListTypeDefImpl, HoldsOneCountOnItsElementType) {
    test::Log log;
    using Type = test::Recorded<test::TypeDouble>;
    List list = new ListTypeDefImpl;
    auto * const first = new Type(&log, "first", "T");
    list->setElementTypeDef(first);
    list->setElementTypeDef(first);
    EXPECT_EQ(first->getRefCount(), 1);
    list->setElementTypeDef(new Type(&log, "second", "T"));
    EXPECT_EQ(log, (test::Log{"end first", "gone first"}));
    log.clear();
    list->setElementTypeDef(nullptr);
    EXPECT_EQ(log, (test::Log{"end second", "gone second"}));
    log.clear();
    list->setElementTypeDef(new Type(&log, "third", "T"));
    list = nullptr;
    EXPECT_EQ(log, (test::Log{"end third", "gone third"}));
}

}  // namespace
}  // namespace tvk
