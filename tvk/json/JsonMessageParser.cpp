#include "tvk/json/JsonMessageParser.h"

#include <array>
#include <cstring>
#include <vector>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleJsonHandler.h"
#include "tvk/json/detail/JsonSpace.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"

namespace tvk {

namespace {

/// The texts of field names seen lately: nearly every name of a message has stood in the one before
/// it, and a copy of its text costs no allocation then.
class NameTexts {
public:
    CString const & textOf(char const * name, unsigned int length) {
        // Longer names are rare; keeping them would hold memory that nobody asked for.
        constexpr unsigned int MAXIMUM_LENGTH = 64;
        CString & text = length <= MAXIMUM_LENGTH ? texts_[placeOf(name, length)] : other_;
        if (static_cast<unsigned int>(text.GetLength()) != length ||
            std::memcmp(text.GetString(), name, length) != 0) {
            text = CString(name, static_cast<int>(length));
        }
        return text;
    }

private:
    static constexpr unsigned int PLACES = 256;

    static unsigned int placeOf(char const * name, unsigned int length) {
        unsigned int hash = length;
        for (unsigned int i = 0; i < length; ++i) {
            hash = hash * 33 + static_cast<unsigned char>(name[i]);
        }
        return (hash ^ (hash >> 8)) % PLACES;
    }

    std::array<CString, PLACES> texts_;
    CString other_;
};

/// An open container, one of the two pointers being null. Entry 0 is the root, which the parser
/// refers to. A deeper one has a count of 0 until it is attached to its parent, at its end.
struct OpenContainer {
    RecordData * record = nullptr;
    ListData * list = nullptr;
    CString fieldName;  // the one seen last in this container

    FieldValue * value() const {
        return record != nullptr ? static_cast<FieldValue *>(record) : list;
    }
};

constexpr std::size_t STACK_ROOM = 32;

void setError(ErrorInfo * error, char const * message) {
    if (error != nullptr) {
        error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
        error->setErrorCode(KestrinConstants::ERR_InvalidMessageData);
        error->setErrorMessage(message);
    }
}

}  // namespace

/// The state machine behind the scanner's callbacks. Its first member is the table of these, so one
/// address serves as the handler and as the user data of a scan.
struct JsonMessageParser::Impl {
    explicit Impl(SimpleObjectCache * valueCache);
    ~Impl() { reset(nullptr); }

    /// Drops the last result and what a failure has left behind.
    void reset(RefCountedPtr<FieldValue> const & newRoot);
    void scan(decltype(JsonUtil::parseOneJsonValue) * entry, void const * input,
              unsigned int inputSize, int inputOptions);

    void startObject();
    void startArray();
    void endContainer();
    void attach(RefCountedPtr<FieldValue> const & value);
    void requireContainer() const {
        if (stack.empty()) {
            refuseScalar();
        }
    }
    [[noreturn]] void refuseScalar() const;

    static Impl & of(void * userData) { return *static_cast<Impl *>(userData); }

    SimpleJsonHandler handler = {};
    SimpleObjectCache * cache;
    RefCountedPtr<FieldValue> root;
    std::vector<OpenContainer> stack;
    NameTexts names;

    // The input of the scan that runs.
    char const * data = nullptr;
    unsigned int size = 0;
    int options = 0;
};

JsonMessageParser::JsonMessageParser(SimpleObjectCache * cache) : impl_(new Impl(cache)) {}

JsonMessageParser::~JsonMessageParser() { delete impl_; }

SimpleObjectCache * JsonMessageParser::cache() const { return impl_->cache; }

RefCountedPtr<KestrinMessage> JsonMessageParser::parseJsonMessage(void const * data,
                                                                  unsigned int size, int options,
                                                                  ErrorInfo * error) {
    try {
        RefCountedPtr<KestrinMessage> const message(new MappedMessage);
        impl_->reset(message);
        impl_->scan(JsonUtil::parseOneJsonObject, data, size, options);
        return message;
    } catch (JsonUtil::XParsingError const & failure) {
        setError(error, failure.getErrorMessage());
        return nullptr;
    }
}

RefCountedPtr<FieldValue> JsonMessageParser::parseOneJsonValue(void const * data, unsigned int size,
                                                               int options, ErrorInfo * error) {
    try {
        impl_->reset(nullptr);
        impl_->scan(JsonUtil::parseOneJsonValue, data, size, options);
        return impl_->root;
    } catch (JsonUtil::XParsingError const & failure) {
        setError(error, failure.getErrorMessage());
        return nullptr;
    }
}

JsonMessageParser::Impl::Impl(SimpleObjectCache * valueCache) : cache(valueCache) {
    handler.startObject = [](void * userData) {
        of(userData).startObject();
        return 0;
    };
    handler.endObject = [](void * userData) {
        of(userData).endContainer();
        return 0;
    };
    handler.startArray = [](void * userData) {
        of(userData).startArray();
        return 0;
    };
    handler.endArray = handler.endObject;
    handler.fieldName = [](void * userData, char const * name, unsigned int length) {
        Impl & parser = of(userData);
        parser.stack.back().fieldName = parser.names.textOf(name, length);
        return 0;
    };
    handler.stringValue = [](void * userData, unsigned int hash, char const * text,
                             unsigned int length) {
        Impl & parser = of(userData);
        parser.requireContainer();
        parser.attach(parser.cache->cachedString(hash, text, length));
        return 0;
    };
    handler.booleanValue = [](void * userData, int value) {
        Impl & parser = of(userData);
        parser.requireContainer();
        parser.attach(value != 0 ? FieldValue::TRUE_VALUE : FieldValue::FALSE_VALUE);
        return 0;
    };
    handler.nullValue = [](void * userData) {
        of(userData).requireContainer();
        return 0;
    };
    handler.numberValue = [](void * userData, unsigned int hash, char const * text,
                             unsigned int length, char const * fractionStart,
                             char const * exponentStart) {
        Impl & parser = of(userData);
        parser.requireContainer();
        parser.attach(parser.cache->cachedNumber(hash, text, length, fractionStart, exponentStart));
        return 0;
    };
    stack.reserve(STACK_ROOM);
}

void JsonMessageParser::Impl::reset(RefCountedPtr<FieldValue> const & newRoot) {
    root = newRoot;
    for (std::size_t i = 1; i < stack.size(); ++i) {
        // Counting to 1 and back ends it; null where making it failed.
        RefCountedPtr<FieldValue> const endOfWhatWasMade(stack[i].value());
    }
    stack.clear();
}

void JsonMessageParser::Impl::scan(decltype(JsonUtil::parseOneJsonValue) * entry,
                                   void const * input, unsigned int inputSize, int inputOptions) {
    data = static_cast<char const *>(input);
    size = inputSize;
    options = inputOptions;
    entry(data, size, &handler, this, options);
}

// The entry comes before the container: where there is no memory for the one, the other is not left
// behind with nobody to end it.
void JsonMessageParser::Impl::startObject() {
    if (stack.empty()) {
        if (root.isNull()) {
            root = new MappedRecordData;
        }
        stack.emplace_back();
        stack.back().record = &root->asRecord();
    } else {
        stack.emplace_back();
        stack.back().record = new MappedRecordData;
    }
}

void JsonMessageParser::Impl::startArray() {
    if (stack.empty()) {
        root = new ListDataImpl(CString());
        stack.emplace_back();
        stack.back().list = &root->asList();
    } else {
        stack.emplace_back();
        stack.back().list = new ListDataImpl(stack[stack.size() - 2].fieldName);
    }
}

void JsonMessageParser::Impl::endContainer() {
    if (stack.size() == 1) {
        stack.pop_back();
        return;
    }
    RefCountedPtr<FieldValue> const ended(stack.back().value());
    stack.pop_back();
    attach(ended);
}

void JsonMessageParser::Impl::attach(RefCountedPtr<FieldValue> const & value) {
    OpenContainer & top = stack.back();
    if (top.list != nullptr) {
        top.list->addElement(value);
    } else {
        top.record->setFieldValue(top.fieldName, value);
    }
}

/// A value outside of any container: the scanner takes it, this parser does not.
void JsonMessageParser::Impl::refuseScalar() const {
    CString message;
    message.Format("invalid message data near position %d: an object or an array is expected",
                   static_cast<int>(detail::skipSpace(data, size, 0, options)));
    throw JsonUtil::XParsingError(message);
}

}  // namespace tvk
