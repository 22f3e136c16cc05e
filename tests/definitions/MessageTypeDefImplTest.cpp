#include "tvk/definitions/MessageTypeDefImpl.h"

#include <type_traits>

#include "tests/definitions/Orders.h"
#include "tests/definitions/RecordSuite.h"
#include "tvk/definitions/MessageTypeDef.h"
#include "tvk/definitions/RecordTypeDefImpl.h"

namespace tvk {
namespace {

static_assert(test::IS_COUNTED_CLASS<MessageTypeDefImpl, RecordTypeDef>);

class MessageTypeDefImplTest : public testing::Test {
protected:
    MessageTypeDefImplTest() {
        message_->setKind("kind");
        message_->setMessageTypeId("N101");
        message_->addFieldDef(new FieldDefImpl(message_.get(), "price", nullptr));
    }

    /// All that can be asked of a message type, as somebody asks who knows the interface alone.
    void expectAnswers(MessageTypeDef const * definition) const {
        EXPECT_EQ(definition->getName(), "Quote");
        EXPECT_EQ(definition->getNameJa(), "\x8B\x43\x94\x7A");
        EXPECT_EQ(definition->getDescription(), "a quote");
        EXPECT_FALSE(definition->isSimpleType());
        EXPECT_TRUE(definition->isRecordType());
        EXPECT_FALSE(definition->isListType());
        EXPECT_EQ(&definition->getFieldDefList(), &message_->getFieldDefList());
        ASSERT_EQ(definition->getFieldCount(), 1u);
        EXPECT_EQ(definition->getFieldDef("price"), definition->getFieldDefList().front());
        EXPECT_EQ(definition->getFieldDef("Price"), nullptr);
        EXPECT_EQ(definition->getKind(), "kind");
        EXPECT_EQ(definition->getMessageTypeId(), "N101");
    }

    RefCountedPtr<MessageTypeDefImpl> const message_ =
        new MessageTypeDefImpl("Quote", "\x8B\x43\x94\x7A", "a quote");
};

TEST_F(MessageTypeDefImplTest, KeepsTheOrderOfItsOperations) {
    test::expectMessageTypeDefOrder<MessageTypeDefImpl>();
}

TEST_F(MessageTypeDefImplTest, DeliberateStandsBesideMessageTypeDef) {
    EXPECT_FALSE((std::is_base_of_v<MessageTypeDef, MessageTypeDefImpl>));
    EXPECT_FALSE((std::is_base_of_v<RecordTypeDefImpl, MessageTypeDefImpl>));
    EXPECT_FALSE((std::is_convertible_v<MessageTypeDefImpl *, MessageTypeDef const *>));
    DataTypeDef const * const type = message_.get();
    EXPECT_EQ(dynamic_cast<MessageTypeDef const *>(type), nullptr);
    EXPECT_EQ(dynamic_cast<RecordTypeDef const *>(type), message_);
}

TEST_F(MessageTypeDefImplTest, AnswersAsTheMessageTypeDefThatItLooksLike) {
    MessageTypeDef const * const definition = message_->asMessageTypeDef();
    EXPECT_EQ(static_cast<void const *>(definition), message_.get());
    EXPECT_EQ(message_->getRefCount(), 1);
    expectAnswers(definition);
    expectAnswers(reinterpret_cast<MessageTypeDef const *>(message_.get()));
}

// An optimiser that knows what was made must not conclude that the calls cannot happen.
TEST_F(MessageTypeDefImplTest, AnswersWhereTheCompilerSawItMade) {
    auto * const converted = new MessageTypeDefImpl("Made", "", "");
    RefCountedPtr<MessageTypeDef const> const first = converted->asMessageTypeDef();
    EXPECT_EQ(first->getName(), "Made");
    EXPECT_EQ(first->getMessageTypeId(), "");
    EXPECT_EQ(converted->getRefCount(), 1);

    auto * const cast = new MessageTypeDefImpl("Made", "", "");
    RefCountedPtr<MessageTypeDef const> const second = reinterpret_cast<MessageTypeDef *>(cast);
    EXPECT_EQ(second->getName(), "Made");
    EXPECT_EQ(second->getMessageTypeId(), "");
    EXPECT_EQ(cast->getRefCount(), 1);
}

TEST_F(MessageTypeDefImplTest, ShowsLaterChangesThroughThePointer) {
    MessageTypeDef const * const definition = message_->asMessageTypeDef();
    message_->setMessageTypeId(test::oddText());
    message_->setName("other");
    message_->addFieldDef(new FieldDefImpl(message_.get(), "size", nullptr));
    EXPECT_EQ(definition->getMessageTypeId(), test::oddText());
    EXPECT_EQ(definition->getName(), "other");
    EXPECT_EQ(definition->getFieldCount(), 2u);
}

TEST_F(MessageTypeDefImplTest, EndsThroughTheLastReferenceToTheInterface) {
    test::Log log;
    auto * const made = new MessageTypeDefImpl("Made", "", "");
    made->addFieldDef(new test::Recorded<test::FieldDouble>(&log, "field", "a"));
    RefCountedPtr<MessageTypeDef const> held = made->asMessageTypeDef();
    EXPECT_EQ(log, test::Log{});
    held = nullptr;
    EXPECT_EQ(log, (test::Log{"end field", "gone field"}));
}

TEST_F(MessageTypeDefImplTest, ServesAsRecordAndTypeWithoutAConversion) {
    RecordTypeDef const & record = *message_;
    DataTypeDef const & type = *message_;
    EXPECT_EQ(record.getKind(), "kind");
    EXPECT_EQ(type.getName(), "Quote");
    RecordTypeDef const * const asRecord = message_->asMessageTypeDef();
    EXPECT_EQ(asRecord, message_.get());
    EXPECT_EQ(asRecord->getFieldCount(), 1u);
}

TEST_F(MessageTypeDefImplTest, HasNoMessageTypeIdUntilItIsSet) {
    RefCountedPtr<MessageTypeDefImpl> const empty = new MessageTypeDefImpl;
    EXPECT_EQ(empty->getMessageTypeId(), "");
    RefCountedPtr<MessageTypeDefImpl> const named = new MessageTypeDefImpl("a", "b", "c");
    EXPECT_EQ(named->getMessageTypeId(), "");
    named->setMessageTypeId("N1");
    EXPECT_EQ(named->getMessageTypeId(), "N1");
    EXPECT_EQ(named->getName(), "a");
}

}  // namespace

namespace test {
INSTANTIATE_TYPED_TEST_SUITE_P(MessageTypeDefImpl, RecordSuite, MessageTypeDefImpl);
}

}  // namespace tvk
