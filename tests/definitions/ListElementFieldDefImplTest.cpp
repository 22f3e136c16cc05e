#include "tvk/definitions/ListElementFieldDefImpl.h"

#include <gtest/gtest.h>

#include "tests/definitions/Definitions.h"
#include "tests/definitions/Orders.h"
#include "tests/support/PrintCString.h"
#include "tvk/definitions/ListTypeDefImpl.h"
#include "tvk/definitions/RecordTypeDefImpl.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<ListElementFieldDefImpl, ListElementFieldDef>);

class ListElementFieldDefImplTest : public testing::Test {
protected:
    ListElementFieldDefImplTest() {
        items_->setDescription("what is ordered");
        items_->setNameJa("not asked for");
        items_->setMaxSize(7);
        list_->setElementTypeDef(SimpleTypeDef::DECIMAL_TYPE());
        list_->setElementTypeName("not asked for");
    }

    RefCountedPtr<RecordTypeDefImpl> const order_ = new RecordTypeDefImpl("Order", "", "");
    RefCountedPtr<ListTypeDefImpl> const list_ = new ListTypeDefImpl("ItemList", "", "");
    RefCountedPtr<FieldDefImpl> const items_ = new FieldDefImpl(order_.get(), "items", list_.get());
    RefCountedPtr<ListElementFieldDefImpl> const element_ =
        new ListElementFieldDefImpl(items_.get(), list_.get());
};

TEST_F(ListElementFieldDefImplTest, KeepsTheOrderOfItsOperations) {
    test::expectListElementFieldDefOrder<ListElementFieldDefImpl>();
}

TEST_F(ListElementFieldDefImplTest, StartsAtIndexZeroWithoutAName) {
    EXPECT_EQ(element_->getIndex(), 0u);
    EXPECT_EQ(element_->getName(), "");
    EXPECT_EQ(element_->getNameJa(), "");
    EXPECT_EQ(element_->getMaxSize(), 0);
}

TEST_F(ListElementFieldDefImplTest, AsksFieldAndListType) {
    EXPECT_EQ(element_->getEnclosingRecordType(), order_);
    EXPECT_EQ(element_->getDescription(), "what is ordered");
    EXPECT_EQ(&element_->getDescription(), &items_->getDescription());
    EXPECT_EQ(element_->getType(), SimpleTypeDef::DECIMAL_TYPE());
}

TEST_F(ListElementFieldDefImplTest, SeesLaterChangesOfFieldAndListType) {
    items_->setEnclosingRecordType(nullptr);
    items_->setDescription("other");
    items_->setTypeName("other list");
    list_->setElementTypeDef(nullptr);
    EXPECT_EQ(element_->getEnclosingRecordType(), nullptr);
    EXPECT_EQ(element_->getDescription(), "other");
    EXPECT_EQ(element_->getTypeName(), "other list");
    EXPECT_EQ(element_->getType(), nullptr);
    EXPECT_EQ(element_->getQualifiedName(), "items[0]");
}

TEST_F(ListElementFieldDefImplTest, DeliberateGivesTheListsTypeNameBesideTheElementsType) {
    EXPECT_EQ(element_->getTypeName(), "ItemList");
    EXPECT_EQ(element_->getType()->getName(), "decimal");
}

TEST_F(ListElementFieldDefImplTest, TakesItsNameFromTheIndex) {
    struct Row {
        unsigned int index;
        char const * name;
    };
    constexpr Row ROWS[] = {
        {2, "[2]"},
        {0, "[0]"},
        {10, "[10]"},
        {0x80000000, "[2147483648]"},
        {0xFFFFFFFF, "[4294967295]"},
    };
    for (Row const & row : ROWS) {
        element_->setIndex(row.index);
        EXPECT_EQ(element_->getIndex(), row.index);
        EXPECT_EQ(element_->getName(), row.name);
        EXPECT_EQ(element_->getNameJa(), row.name);
        EXPECT_EQ(element_->getQualifiedName(), CString("Order.items") + row.name);
    }
}

TEST_F(ListElementFieldDefImplTest, QualifiesItsNameBeforeItHasOne) {
    EXPECT_EQ(element_->getQualifiedName(), "Order.items[0]");
    EXPECT_EQ(element_->getName(), "");
}

TEST_F(ListElementFieldDefImplTest, QualifiesTheElementsOfElements) {
    element_->setIndex(3);
    RefCountedPtr<ListElementFieldDefImpl> const inner =
        new ListElementFieldDefImpl(element_.get(), list_.get());
    inner->setIndex(1);
    EXPECT_EQ(inner->getQualifiedName(), "Order.items[3][1]");
    EXPECT_EQ(inner->getEnclosingRecordType(), order_);
}

TEST_F(ListElementFieldDefImplTest, HasASizeOfItsOwn) {
    element_->setMaxSize(-5);
    EXPECT_EQ(element_->getMaxSize(), -5);
    EXPECT_EQ(items_->getMaxSize(), 7);
}

TEST_F(ListElementFieldDefImplTest, HoldsNoCounts) {
    EXPECT_EQ(items_->getRefCount(), 1);
    EXPECT_EQ(order_->getRefCount(), 1);
    EXPECT_EQ(list_->getRefCount(), 2);  // ours and the field's
}

}  // namespace
}  // namespace tvk
