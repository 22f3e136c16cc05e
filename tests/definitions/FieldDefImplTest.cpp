#include "tvk/definitions/FieldDefImpl.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/definitions/Definitions.h"
#include "tests/definitions/Orders.h"
#include "tests/support/PrintCString.h"
#include "tvk/definitions/RecordTypeDefImpl.h"

namespace tvk {
namespace {

using Field = RefCountedPtr<FieldDefImpl>;
using Type = test::Recorded<test::TypeDouble>;

static_assert(test::IS_COUNTED_CLASS<FieldDefImpl, FieldDef>);

class FieldDefImplTest : public testing::Test {
protected:
    RefCountedPtr<RecordTypeDefImpl> const quote_ = new RecordTypeDefImpl("Quote", "", "");
    test::Log log_;
};

TEST_F(FieldDefImplTest, KeepsTheOrderOfItsOperations) {
    test::expectFieldDefOrder<FieldDefImpl>();
}

TEST_F(FieldDefImplTest, TakesThreeTexts) {
    Field const field = new FieldDefImpl("name", "\x96\xBC\x91\x4F", "description");
    EXPECT_EQ(field->getName(), "name");
    EXPECT_EQ(field->getNameJa(), "\x96\xBC\x91\x4F");
    EXPECT_EQ(field->getDescription(), "description");
    EXPECT_EQ(field->getTypeName(), "");
    EXPECT_EQ(field->getType(), nullptr);
    EXPECT_EQ(field->getEnclosingRecordType(), nullptr);
    EXPECT_EQ(field->getMaxSize(), 0);
}

TEST_F(FieldDefImplTest, TakesRecordNameAndType) {
    Field const field =
        new FieldDefImpl(quote_.get(), test::oddText(), SimpleTypeDef::STRING_TYPE());
    EXPECT_EQ(field->getEnclosingRecordType(), quote_);
    EXPECT_EQ(field->getName(), test::oddText());
    EXPECT_EQ(field->getType(), SimpleTypeDef::STRING_TYPE());
    EXPECT_EQ(field->getTypeName(), "string");
    EXPECT_EQ(field->getNameJa(), "");
    EXPECT_EQ(field->getDescription(), "");
    EXPECT_EQ(field->getMaxSize(), 0);
}

TEST_F(FieldDefImplTest, TakesNullForRecordAndType) {
    Field const field = new FieldDefImpl(nullptr, CString("a"), nullptr);
    EXPECT_EQ(field->getEnclosingRecordType(), nullptr);
    EXPECT_EQ(field->getType(), nullptr);
    EXPECT_EQ(field->getTypeName(), "");
    EXPECT_EQ(field->getName(), "a");
}

TEST_F(FieldDefImplTest, StoresWhatItIsSetTo) {
    CString const odd = test::oddText();
    Field const field = new FieldDefImpl("", "", "");
    field->setName(odd);
    field->setNameJa(odd + "ja");
    field->setDescription(odd + "description");
    field->setTypeName(odd + "type");
    field->setEnclosingRecordType(quote_.get());
    field->setMaxSize(std::numeric_limits<int>::min());
    EXPECT_EQ(field->getName(), odd);
    EXPECT_EQ(field->getNameJa(), odd + "ja");
    EXPECT_EQ(field->getDescription(), odd + "description");
    EXPECT_EQ(field->getTypeName(), odd + "type");
    EXPECT_EQ(field->getEnclosingRecordType(), quote_);
    EXPECT_EQ(field->getMaxSize(), std::numeric_limits<int>::min());
    field->setEnclosingRecordType(nullptr);
    EXPECT_EQ(field->getEnclosingRecordType(), nullptr);
}

TEST_F(FieldDefImplTest, QualifiesItsNameWithItsRecord) {
    Field const field = new FieldDefImpl(quote_.get(), "price", nullptr);
    EXPECT_EQ(field->getQualifiedName(), "Quote.price");
    field->setEnclosingRecordType(nullptr);
    EXPECT_EQ(field->getQualifiedName(), "price");
    field->setEnclosingRecordType(quote_.get());
    quote_->setName(test::oddText());
    field->setName(test::oddText());
    EXPECT_EQ(field->getQualifiedName(), test::oddText() + "." + test::oddText());
    quote_->setName("");
    field->setName("");
    EXPECT_EQ(field->getQualifiedName(), ".");
}

TEST_F(FieldDefImplTest, DeliberateNamesOneLevelAlone) {
    RefCountedPtr<RecordTypeDefImpl> const book = new RecordTypeDefImpl("Book", "", "");
    book->addFieldDef(new FieldDefImpl(book.get(), "best", quote_.get()));
    quote_->addFieldDef(new FieldDefImpl(quote_.get(), "price", nullptr));
    EXPECT_EQ(book->getFieldDef("best")->getQualifiedName(), "Book.best");
    EXPECT_EQ(quote_->getFieldDef("price")->getQualifiedName(), "Quote.price");
}

TEST_F(FieldDefImplTest, DeliberateKeepsTheTypeNameApartFromTheType) {
    Field const field = new FieldDefImpl(quote_.get(), "a", SimpleTypeDef::STRING_TYPE());
    field->setType(SimpleTypeDef::INTEGER_TYPE());
    EXPECT_EQ(field->getTypeName(), "string");
    EXPECT_EQ(field->getType(), SimpleTypeDef::INTEGER_TYPE());
    field->setTypeName("decimal");
    EXPECT_EQ(field->getType(), SimpleTypeDef::INTEGER_TYPE());
    field->setType(nullptr);
    EXPECT_EQ(field->getTypeName(), "decimal");
    EXPECT_EQ(field->getType(), nullptr);
}

TEST_F(FieldDefImplTest, HoldsOneCountOnItsType) {
    auto * const first = new Type(&log_, "first", "T");
    Field field = new FieldDefImpl(quote_.get(), "a", first);
    EXPECT_EQ(first->getRefCount(), 1);
    field->setType(first);
    EXPECT_EQ(first->getRefCount(), 1);
    field->setType(new Type(&log_, "second", "T"));
    EXPECT_EQ(log_, (test::Log{"end first", "gone first"}));
    log_.clear();
    field->setType(nullptr);
    EXPECT_EQ(log_, (test::Log{"end second", "gone second"}));
    log_.clear();
    field->setType(new Type(&log_, "third", "T"));
    field = nullptr;
    EXPECT_EQ(log_, (test::Log{"end third", "gone third"}));
}

TEST_F(FieldDefImplTest, HoldsNoCountOnItsRecord) {
    Field const made = new FieldDefImpl(quote_.get(), "a", nullptr);
    Field const set = new FieldDefImpl("a", "", "");
    set->setEnclosingRecordType(quote_.get());
    quote_->addFieldDef(made.get());
    EXPECT_EQ(quote_->getRefCount(), 1);
}

}  // namespace
}  // namespace tvk
