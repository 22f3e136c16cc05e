#include <gtest/gtest.h>

#include <string>
#include <typeinfo>

#include "tests/boundary/Module.h"
#include "tests/support/RecordingListener.h"
#include "tvk/definitions/SimpleTypeDef.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

namespace {

RefCountedPtr<KestrinMessage> parsedByModule(std::string const & json, ErrorInfo * error) {
    SimpleObjectCache cache(moduleConverter());
    JsonMessageParser parser(&cache);
    return parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, error);
}

}  // namespace

TEST(Boundary, ProgramCatchesWhatTheModuleThrows) {
    try {
        throwParsingError("thrown far away");
        FAIL() << "nothing thrown";
    } catch (JsonUtil::XParsingError const & error) {
        EXPECT_STREQ(error.getErrorMessage(), "thrown far away");
    }
    try {
        throwErrorInfo("refused");
        FAIL() << "nothing thrown";
    } catch (ErrorInfo const & error) {
        EXPECT_EQ(error.getErrorCode(), 24);
        EXPECT_STREQ(error.getErrorMessage(), "refused");
        ASSERT_NE(error.getCause(), nullptr);
        EXPECT_EQ(error.getCause()->getErrorCode(), 9);
    }
}

TEST(Boundary, ModuleCatchesWhatTheLibraryThrows) {
    EXPECT_EQ(messageOfScanning("{}"), "");
    EXPECT_EQ(messageOfScanning("x"),
              "invalid message data near position 0: tag '{' is expected, but was <x>...");
    EXPECT_EQ(messageOfAskingForAList(*FieldValue::TRUE_VALUE), "not a list data value");
    RefCountedPtr<RecordTypeDefImpl> const record = new RecordTypeDefImpl("Rec", "", "");
    EXPECT_EQ(messageOfAddingAField(*record, "a"), "");
    EXPECT_EQ(messageOfAddingAField(*record, "a"), "duplicated field definition: Rec.a");
}

TEST(Boundary, LibraryCatchesWhatTheModuleThrows) {
    ErrorInfo error;
    EXPECT_TRUE(parsedByModule(R"({"a":1})", &error).isNull());
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageData);
    EXPECT_STREQ(error.getErrorMessage(), "no numbers here");
}

TEST(Boundary, LibraryCallsTheModulesConverter) {
    auto const message = parsedByModule(R"({"a":"xyz"})", nullptr);
    ASSERT_FALSE(message.isNull());
    EXPECT_STREQ(message->getFieldValue("a")->asString(), "XYZ");
}

TEST(Boundary, LibraryDestroysARecordOfTheModule) {
    int alive = 0;
    RefCountedPtr<RecordData> record = makeModuleRecord(&alive);
    record->setFieldValue("a", CString("text"));
    EXPECT_EQ(alive, 1);

    RefCountedPtr<ListData> list = new ListDataImpl("records");
    list->addElement(record);
    record = nullptr;
    EXPECT_EQ(alive, 1);
    list->removeAllElements();
    EXPECT_EQ(alive, 0);
}

TEST(Boundary, ProgramReadsTheDefinitionsOfTheModule) {
    RefCountedPtr<MessageDefManager const> const registry = makeModuleRegistry();
    ASSERT_EQ(registry->getDataTypeDefList().size(), 5u);
    EXPECT_EQ(registry->getDataTypeDefByName("string"), SimpleTypeDef::STRING_TYPE());
    MessageTypeDef const * const quote = registry->getMessageDefByName("Quote");
    ASSERT_NE(quote, nullptr);
    EXPECT_STREQ(quote->getMessageTypeId(), "N101");
    FieldDef const * const price = quote->getFieldDef("price");
    ASSERT_NE(price, nullptr);
    EXPECT_STREQ(price->getQualifiedName(), "Quote.price");
    EXPECT_EQ(price->getType(), registry->getDataTypeDefByName("Price"));
    auto const * const type = dynamic_cast<SimpleTypeDef const *>(price->getType());
    ASSERT_NE(type, nullptr);
    EXPECT_TRUE(type->isDerivedType());
}

TEST(Boundary, LibraryWritesARecordOfTheModule) {
    int alive = 0;
    RefCountedPtr<RecordData> const record = makeModuleRecord(&alive);
    record->setFieldValue("a", CString("text"));
    JsonMessageSerializer serializer;
    unsigned int const size = serializer.recordDataToJson(nullptr, 0, *record, 0);
    EXPECT_EQ(std::string(static_cast<char const *>(serializer.getResultsBuffer()), size),
              R"({"a":"text"})");
}

TEST(Boundary, LibraryCallsAndDestroysAnAgentOfTheModule) {
    int alive = 0;
    Log log;
    RecordingListener listener(log, "a");
    RefCountedPtr<Kestrin> agent;
    {
        RefCountedPtr<AbstractKestrin> const made = makeModuleAgent(log, &alive);
        agent = made;
        agent->addKestrinListener(&listener);
        agent->subscribe("quote", "7203");
        made->fireConnected();
        agent->logout();
    }
    EXPECT_EQ(log, (Log{callText("doSubscribe", "quote", "7203"), callText("a.onConnected", agent),
                        "doLogout()"}));
    EXPECT_NE(dynamic_cast<AbstractKestrin *>(agent.get()), nullptr);
    EXPECT_EQ(alive, 1);
    agent = nullptr;
    EXPECT_EQ(alive, 0);
}

TEST(Boundary, TypesKeepTheirIdentity) {
    int alive = 0;
    RefCountedPtr<RecordData> const record = makeModuleRecord(&alive);
    EXPECT_NE(dynamic_cast<MappedRecordData *>(record.get()), nullptr);
    EXPECT_EQ(dynamic_cast<KestrinMessage *>(record.get()), nullptr);
    EXPECT_STREQ(record->toString(), "a record of the module");
    EXPECT_TRUE(isModuleRecord(*record));

    RefCountedPtr<FieldValue> const plain = new MappedRecordData;
    EXPECT_FALSE(isModuleRecord(*plain));
    FieldValue const & value = *plain;
    EXPECT_EQ(typeid(value), typeid(MappedRecordData));
}

TEST(Boundary, ConstantsWereThereWhenTheModuleWasLoaded) {
    SeenAtLoad const & seen = seenAtLoad();
    EXPECT_EQ(seen.trueValue, FieldValue::TRUE_VALUE);
    EXPECT_EQ(seen.trueCount, RefCounted::CONSTANT_REF_COUNT);
    EXPECT_STREQ(seen.wildcard, "*");
    EXPECT_STREQ(seen.systemDomain, "System");
}

TEST(Boundary, ModulesMeetInOneContainer) {
    ASSERT_NE(seenAtLoad().container, nullptr);
    EXPECT_EQ(seenAtLoad().container, KestrinContainer::instance());
}

}  // namespace tvk::test
