#include "tvk/definitions/MessageDefManagerImpl.h"

#include <gtest/gtest.h>

#include <new>
#include <random>
#include <string>
#include <vector>

#include "tests/definitions/Definitions.h"
#include "tests/definitions/Orders.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/PrintCString.h"
#include "tvk/definitions/ListTypeDefImpl.h"
#include "tvk/definitions/MessageTypeDefImpl.h"
#include "tvk/definitions/RecordTypeDefImpl.h"
#include "tvk/definitions/SimpleTypeDefImpl.h"

namespace tvk {
namespace {

using test::AllocationFailure;
using test::Log;
using test::MessageTypeDouble;
using test::Recorded;
using test::TypeDouble;
using Types = std::vector<DataTypeDef const *>;
using Messages = std::vector<MessageTypeDef const *>;
using Registry = RefCountedPtr<MessageDefManagerImpl>;

static_assert(test::IS_COUNTED_CLASS<MessageDefManagerImpl, MessageDefManager>);

Types builtInTypes() {
    return {SimpleTypeDef::STRING_TYPE(), SimpleTypeDef::INTEGER_TYPE(),
            SimpleTypeDef::DECIMAL_TYPE(), SimpleTypeDef::BOOLEAN_TYPE()};
}

class MessageDefManagerImplTest : public testing::Test {
protected:
    Log log_;  // outlives the registry and what that holds
    Registry registry_ = new MessageDefManagerImpl;
};

TEST_F(MessageDefManagerImplTest, KeepsTheOrderOfItsOperations) {
    test::expectMessageDefManagerOrder<MessageDefManagerImpl>();
}

TEST_F(MessageDefManagerImplTest, StartsWithTheBuiltInTypes) {
    EXPECT_EQ(registry_->getDataTypeDefList(), builtInTypes());
    std::vector<CString> names;
    for (DataTypeDef const * each : registry_->getDataTypeDefList()) {
        names.push_back(each->getName());
        EXPECT_EQ(registry_->getDataTypeDefByName(each->getName()), each);
    }
    EXPECT_EQ(names, (std::vector<CString>{"string", "integer", "decimal", "boolean"}));
    EXPECT_EQ(registry_->getMessageDefList(), Messages{});
    EXPECT_EQ(registry_->getMessageDefByName("string"), nullptr);
}

TEST_F(MessageDefManagerImplTest, GivesNullForAnUnknownName) {
    EXPECT_EQ(registry_->getDataTypeDefByName("String"), nullptr);
    EXPECT_EQ(registry_->getDataTypeDefByName(""), nullptr);
    EXPECT_EQ(registry_->getDataTypeDefByName(CString("string\0", 7)), nullptr);
    EXPECT_EQ(registry_->getMessageDefByName("Quote"), nullptr);
}

TEST_F(MessageDefManagerImplTest, RefusesADataTypeWhoseNameIsTaken) {
    RefCountedPtr<SimpleTypeDefImpl> const other = new SimpleTypeDefImpl("string", "", "");
    EXPECT_FALSE(registry_->addDataType(other.get()));
    EXPECT_FALSE(registry_->addDataType(SimpleTypeDef::STRING_TYPE()));
    EXPECT_EQ(registry_->getDataTypeDefList(), builtInTypes());
    EXPECT_EQ(registry_->getDataTypeDefByName("string"), SimpleTypeDef::STRING_TYPE());
    EXPECT_EQ(other->getRefCount(), 1);
    EXPECT_EQ(SimpleTypeDef::STRING_TYPE()->getRefCount(), 2);
}

TEST_F(MessageDefManagerImplTest, RefusesAMessageTypeWhoseNameIsTaken) {
    RefCountedPtr<MessageTypeDouble> const first = new MessageTypeDouble("Quote");
    RefCountedPtr<MessageTypeDouble> const second = new MessageTypeDouble("Quote");
    EXPECT_TRUE(registry_->addMessageType(first.get()));
    EXPECT_FALSE(registry_->addMessageType(second.get()));
    EXPECT_FALSE(registry_->addMessageType(first.get()));
    EXPECT_EQ(registry_->getMessageDefList(), Messages{first.get()});
    EXPECT_EQ(registry_->getMessageDefByName("Quote"), first);
    EXPECT_EQ(first->getRefCount(), 2);
    EXPECT_EQ(second->getRefCount(), 1);
}

TEST_F(MessageDefManagerImplTest, ListsInTheOrderOfAddingAndFindsByName) {
    auto * const b = new RecordTypeDefImpl("b", "", "");
    auto * const a = new ListTypeDefImpl("a", "", "");
    EXPECT_TRUE(registry_->addDataType(b));
    EXPECT_TRUE(registry_->addDataType(a));
    Types expected = builtInTypes();
    expected.insert(expected.end(), {b, a});
    EXPECT_EQ(registry_->getDataTypeDefList(), expected);
    EXPECT_EQ(registry_->getDataTypeDefByName("a"), a);
    EXPECT_EQ(registry_->getDataTypeDefByName("b"), b);

    auto * const d = new MessageTypeDouble("d");
    auto * const c = new MessageTypeDouble("c");
    EXPECT_TRUE(registry_->addMessageType(d));
    EXPECT_TRUE(registry_->addMessageType(c));
    EXPECT_EQ(registry_->getMessageDefList(), (Messages{d, c}));
    EXPECT_EQ(registry_->getMessageDefByName("c"), c);
    EXPECT_EQ(registry_->getMessageDefByName("d"), d);
}

TEST_F(MessageDefManagerImplTest, TakesAMessageTypeDefImpl) {
    auto * const quote = new MessageTypeDefImpl("Quote", "", "");
    quote->setMessageTypeId("N101");
    quote->addFieldDef(new FieldDefImpl(quote, "price", SimpleTypeDef::DECIMAL_TYPE()));
    ASSERT_TRUE(registry_->addMessageType(quote->asMessageTypeDef()));
    EXPECT_EQ(quote->getRefCount(), 1);

    MessageTypeDef const * const found = registry_->getMessageDefByName("Quote");
    ASSERT_EQ(found, quote->asMessageTypeDef());
    EXPECT_EQ(registry_->getMessageDefList(), Messages{found});
    EXPECT_EQ(found->getMessageTypeId(), "N101");
    ASSERT_NE(found->getFieldDef("price"), nullptr);
    EXPECT_EQ(found->getFieldDef("price")->getQualifiedName(), "Quote.price");
    RefCountedPtr<MessageTypeDefImpl> const twin = new MessageTypeDefImpl("Quote", "", "");
    EXPECT_FALSE(registry_->addMessageType(twin->asMessageTypeDef()));
}

TEST_F(MessageDefManagerImplTest, FindsMessagesByNameAndNotByTheirIdentifier) {
    auto * const quote = new MessageTypeDefImpl("Quote", "", "");
    quote->setMessageTypeId("N101");
    registry_->addMessageType(quote->asMessageTypeDef());
    EXPECT_EQ(registry_->getMessageDefByName("N101"), nullptr);
    EXPECT_NE(registry_->getMessageDefByName("Quote"), nullptr);
}

TEST_F(MessageDefManagerImplTest, KeepsTheNamesOfTypesAndMessagesApart) {
    auto * const record = new RecordTypeDefImpl("Quote", "", "");
    EXPECT_TRUE(registry_->addDataType(record));
    EXPECT_EQ(registry_->getMessageDefByName("Quote"), nullptr);
    auto * const message = new MessageTypeDouble("Quote");
    EXPECT_TRUE(registry_->addMessageType(message));
    EXPECT_EQ(registry_->getDataTypeDefByName("Quote"), record);
    EXPECT_EQ(registry_->getMessageDefByName("Quote"), message);
    auto * const only = new MessageTypeDouble("Only");
    EXPECT_TRUE(registry_->addMessageType(only));
    EXPECT_EQ(registry_->getDataTypeDefByName("Only"), nullptr);
}

TEST_F(MessageDefManagerImplTest, DeliberateKeepsADefinitionUnderTheNameOfItsAdding) {
    auto * const type = new RecordTypeDefImpl("old", "", "");
    auto * const message = new MessageTypeDefImpl("old", "", "");
    registry_->addDataType(type);
    registry_->addMessageType(message->asMessageTypeDef());
    type->setName("new");
    message->setName("new");
    EXPECT_EQ(registry_->getDataTypeDefByName("old"), type);
    EXPECT_EQ(registry_->getDataTypeDefByName("new"), nullptr);
    EXPECT_EQ(registry_->getMessageDefByName("old"), message->asMessageTypeDef());
    EXPECT_EQ(registry_->getMessageDefByName("new"), nullptr);
}

TEST_F(MessageDefManagerImplTest, GivesListsThatDoNotChange) {
    Types const types = registry_->getDataTypeDefList();
    Messages const messages = registry_->getMessageDefList();
    registry_->addDataType(new TypeDouble("a"));
    registry_->addMessageType(new MessageTypeDouble("a"));
    EXPECT_EQ(types.size(), 4u);
    EXPECT_EQ(messages.size(), 0u);
    EXPECT_EQ(registry_->getDataTypeDefList().size(), 5u);
    EXPECT_EQ(registry_->getMessageDefList().size(), 1u);
}

TEST_F(MessageDefManagerImplTest, HoldsOneCountUntilItsEndAndReleasesMessagesFirst) {
    auto * const type = new Recorded<TypeDouble>(&log_, "type", "T");
    auto * const message = new Recorded<MessageTypeDouble>(&log_, "message", "M");
    registry_->addDataType(type);
    registry_->addMessageType(message);
    EXPECT_EQ(type->getRefCount(), 1);
    EXPECT_EQ(message->getRefCount(), 1);
    EXPECT_EQ(log_, Log{});
    registry_ = nullptr;
    EXPECT_EQ(log_, (Log{"end message", "gone message", "end type", "gone type"}));
}

TEST_F(MessageDefManagerImplTest, LeavesDefinitionsThatOthersHold) {
    RefCountedPtr<Recorded<TypeDouble>> const type = new Recorded<TypeDouble>(&log_, "type", "T");
    registry_->addDataType(type.get());
    EXPECT_EQ(type->getRefCount(), 2);
    registry_ = nullptr;
    EXPECT_EQ(type->getRefCount(), 1);
    EXPECT_EQ(log_, Log{});
}

TEST_F(MessageDefManagerImplTest, SharesTheBuiltInTypesWithOtherRegistries) {
    Registry other = new MessageDefManagerImpl;
    EXPECT_EQ(other->getDataTypeDefList(), registry_->getDataTypeDefList());
    for (DataTypeDef const * each : builtInTypes()) {
        EXPECT_EQ(each->getRefCount(), 3);
    }
    registry_ = nullptr;
    for (DataTypeDef const * each : builtInTypes()) {
        EXPECT_EQ(each->getRefCount(), 2);
    }
    other = nullptr;
    for (DataTypeDef const * each : builtInTypes()) {
        EXPECT_EQ(each->getRefCount(), 1);
    }
    EXPECT_EQ(SimpleTypeDef::STRING_TYPE()->getName(), "string");
}

TEST_F(MessageDefManagerImplTest, DeliberateValidateChecksNothing) {
    auto * const record = new RecordTypeDefImpl("R", "", "");
    auto * const field = new FieldDefImpl(record, "a", nullptr);
    field->setTypeName("nobody knows it");
    record->addFieldDef(field);
    auto * const list = new ListTypeDefImpl("L", "", "");
    list->setElementTypeName("nobody knows it");
    registry_->addDataType(record);
    registry_->addDataType(list);
    registry_->addMessageType((new MessageTypeDefImpl)->asMessageTypeDef());
    MessageDefManager const & view = *registry_;
    view.validate();
    EXPECT_EQ(view.getDataTypeDefList().size(), 6u);
    EXPECT_EQ(view.getMessageDefList().size(), 1u);
}

/// Adds with no allocation allowed, one, two and so on until it succeeds; `unchanged` looks behind
/// each failure. Gives the count of failures.
template <class Add, class Unchanged>
int addUntilMemorySuffices(Add const & add, Unchanged const & unchanged) {
    for (int failures = 0;; ++failures) {
        AllocationFailure failure(failures);
        try {
            bool const added = add();
            failure.end();
            EXPECT_TRUE(added);
            return failures;
        } catch (std::bad_alloc const &) {
            failure.end();
            unchanged();
        }
    }
}

TEST_F(MessageDefManagerImplTest, StaysAsItWasWhenMemoryIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot fail here";
    }
    auto * const type = new Recorded<TypeDouble>(&log_, "type", "T");
    int const typeFailures =
        addUntilMemorySuffices([&] { return registry_->addDataType(type); },
                               [&] {
                                   EXPECT_EQ(registry_->getDataTypeDefList(), builtInTypes());
                                   EXPECT_EQ(registry_->getDataTypeDefByName("T"), nullptr);
                                   EXPECT_EQ(type->getRefCount(), 0);
                               });
    EXPECT_EQ(typeFailures, 2);
    EXPECT_EQ(registry_->getDataTypeDefByName("T"), type);
    EXPECT_EQ(registry_->getDataTypeDefList().size(), 5u);
    EXPECT_EQ(type->getRefCount(), 1);

    auto * const message = new Recorded<MessageTypeDouble>(&log_, "message", "M");
    int const messageFailures =
        addUntilMemorySuffices([&] { return registry_->addMessageType(message); },
                               [&] {
                                   EXPECT_EQ(registry_->getMessageDefList(), Messages{});
                                   EXPECT_EQ(registry_->getMessageDefByName("M"), nullptr);
                                   EXPECT_EQ(message->getRefCount(), 0);
                               });
    EXPECT_EQ(messageFailures, 2);
    EXPECT_EQ(registry_->getMessageDefByName("M"), message);
    EXPECT_EQ(registry_->getMessageDefList(), Messages{message});
    EXPECT_EQ(message->getRefCount(), 1);
    EXPECT_EQ(log_, Log{});
}

/// One name space of a registry as the plainest code has it.
struct PlainNames {
    std::vector<std::string> names;
    std::vector<void const *> definitions;

    void const * find(std::string const & name) const {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (names[i] == name) {
                return definitions[i];
            }
        }
        return nullptr;
    }
    bool add(std::string const & name, void const * definition) {
        if (find(name) != nullptr) {
            return false;
        }
        names.push_back(name);
        definitions.push_back(definition);
        return true;
    }
};

template <class Definition>
std::vector<void const *> addresses(std::vector<Definition const *> const & list) {
    return {list.begin(), list.end()};
}

TEST_F(MessageDefManagerImplTest, AgreesWithAPlainModel) {
    PlainNames types;
    PlainNames messages;
    for (DataTypeDef const * each : builtInTypes()) {
        types.add(each->getName().GetString(), each);
    }
    std::mt19937 random(32);
    for (int i = 0; i < 2000; ++i) {
        std::string name(random() % 4, 'x');
        for (char & letter : name) {
            letter = "\0sS\x80"[random() % 4];
        }
        CString const text(name.data(), static_cast<int>(name.size()));
        if (random() % 2 == 0) {
            RefCountedPtr<RecordTypeDefImpl> const type = new RecordTypeDefImpl;
            type->setName(text);
            EXPECT_EQ(registry_->addDataType(type.get()), types.add(name, type.get()));
        } else {
            RefCountedPtr<MessageTypeDefImpl> const type = new MessageTypeDefImpl;
            type->setName(text);
            MessageTypeDef const * const message = type->asMessageTypeDef();
            EXPECT_EQ(registry_->addMessageType(message), messages.add(name, message));
        }
        EXPECT_EQ(registry_->getDataTypeDefByName(text), types.find(name));
        EXPECT_EQ(registry_->getMessageDefByName(text), messages.find(name));
    }
    EXPECT_EQ(addresses(registry_->getDataTypeDefList()), types.definitions);
    EXPECT_EQ(addresses(registry_->getMessageDefList()), messages.definitions);
    EXPECT_EQ(messages.names.size(), 1u + 4 + 16 + 64);
}

}  // namespace
}  // namespace tvk
