#include "tests/boundary/Module.h"

#include "tests/support/RecordingAgent.h"
#include "tvk/definitions/FieldDefImpl.h"
#include "tvk/definitions/MessageDefManagerImpl.h"
#include "tvk/definitions/MessageTypeDefImpl.h"
#include "tvk/definitions/SimpleTypeDef.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

namespace {

SeenAtLoad const SEEN_AT_LOAD{FieldValue::TRUE_VALUE, FieldValue::TRUE_VALUE->getRefCount(),
                              KestrinConstants::WILDCARD, ErrorInfo::ErrorDomain_System,
                              KestrinContainer::instance()};

class ModuleRecord : public MappedRecordData {
public:
    explicit ModuleRecord(int * alive) : alive_(alive) { ++*alive_; }
    CString toString() const override { return "a record of the module"; }

private:
    ~ModuleRecord() override { --*alive_; }

    int * alive_;
};

class PriceType : public SimpleTypeDef {
public:
    CString const & getName() const override { return name_; }
    CString const & getNameJa() const override { return name_; }
    CString const & getDescription() const override { return name_; }
    bool isSimpleType() const override { return true; }
    bool isRecordType() const override { return false; }
    bool isListType() const override { return false; }
    bool isDerivedType() const override { return true; }

private:
    ~PriceType() override = default;

    CString name_ = "Price";
};

class ModuleAgent : public RecordingAgent {
public:
    ModuleAgent(Log & log, int * alive) : RecordingAgent(log), alive_(alive) { ++*alive_; }

private:
    ~ModuleAgent() override { --*alive_; }

    int * alive_;
};

class ModuleConverter : public SimpleObjectCache::RawDataToObjectConverter {
public:
    FieldValue * stringFromRawData(void const * data, unsigned int size) override {
        CString text(static_cast<char const *>(data), static_cast<int>(size));
        for (int i = 0; i < text.GetLength(); ++i) {
            char const letter = text.GetAt(i);
            if (letter >= 'a' && letter <= 'z') {
                text.SetAt(i, static_cast<char>(letter - 'a' + 'A'));
            }
        }
        return new StringData(text);
    }
    FieldValue * numberFromRawData(void const *, unsigned int, void const *,
                                   void const *) override {
        throw JsonUtil::XParsingError("no numbers here");
    }
};

SimpleJsonHandler ignoringHandler() {
    SimpleJsonHandler handler{};
    handler.startObject = handler.endObject = handler.startArray = handler.endArray =
        handler.nullValue = [](void *) { return 0; };
    handler.fieldName = [](void *, char const *, unsigned int) { return 0; };
    handler.stringValue = [](void *, unsigned int, char const *, unsigned int) { return 0; };
    handler.booleanValue = [](void *, int) { return 0; };
    handler.numberValue = [](void *, unsigned int, char const *, unsigned int, char const *,
                             char const *) { return 0; };
    return handler;
}

}  // namespace

SeenAtLoad const & seenAtLoad() { return SEEN_AT_LOAD; }

void throwParsingError(char const * message) { throw JsonUtil::XParsingError(message); }

void throwErrorInfo(char const * message) {
    ErrorInfo const cause(0, KestrinConstants::ErrorDomain_Kestrin,
                          KestrinConstants::ERR_RequestTimeOut, "the cause", nullptr);
    throw ErrorInfo(0, KestrinConstants::ErrorDomain_Kestrin,
                    KestrinConstants::ERR_UnsupportedFunction, message, &cause);
}

std::string messageOfScanning(std::string const & json) {
    SimpleJsonHandler handler = ignoringHandler();
    try {
        JsonUtil::parseOneJsonObject(json.data(), static_cast<unsigned int>(json.size()), &handler,
                                     nullptr, 0);
    } catch (JsonUtil::XParsingError const & error) {
        return error.getErrorMessage();
    }
    return "";
}

std::string messageOfAskingForAList(FieldValue const & value) {
    try {
        static_cast<void>(value.asList());
    } catch (char const * text) {
        return text;
    }
    return "";
}

std::string messageOfAddingAField(RecordTypeDefImpl & record, char const * name) {
    RefCountedPtr<FieldDef> const field = new FieldDefImpl(&record, CString(name), nullptr);
    try {
        record.addFieldDef(field.get());
    } catch (ErrorInfo const & error) {
        return error.getErrorMessage().GetString();
    }
    return "";
}

RefCountedPtr<MessageDefManager const> makeModuleRegistry() {
    RefCountedPtr<MessageDefManagerImpl> const registry = new MessageDefManagerImpl;
    auto * const price = new PriceType;
    registry->addDataType(price);
    auto * const quote = new MessageTypeDefImpl("Quote", "", "");
    quote->setMessageTypeId("N101");
    registry->addMessageType(quote->asMessageTypeDef());
    quote->addFieldDef(new FieldDefImpl(quote, CString("price"), price));
    return registry;
}

RefCountedPtr<RecordData> makeModuleRecord(int * alive) { return new ModuleRecord(alive); }

RefCountedPtr<AbstractKestrin> makeModuleAgent(Log & log, int * alive) {
    return new ModuleAgent(log, alive);
}

bool isModuleRecord(FieldValue const & value) {
    return dynamic_cast<ModuleRecord const *>(&value) != nullptr;
}

SimpleObjectCache::RawDataToObjectConverter * moduleConverter() {
    static ModuleConverter converter;
    return &converter;
}

}  // namespace tvk::test
