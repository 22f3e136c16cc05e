#include "tvk/json/JsonMessageParser.h"

#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleJsonHandler.h"
#include "tvk/json/detail/JsonSpace.h"
#include "tvk/json/detail/NameSequences.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/detail/FieldMap.h"

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
///
/// A record is built in one of two ways. While its names follow a sequence that is known, its values
/// wait in the parser and go into the record together, at its end. Where there is no such sequence,
/// each field is set as it comes.
struct OpenContainer {
    RecordData * record = nullptr;
    ListData * list = nullptr;
    detail::FieldMap * fields = nullptr;                       // those of the record
    detail::NameSequences::Sequence * names = nullptr;         // of the values that wait, or null
    detail::NameSequences::Sequence * namesAndNext = nullptr;  // with the name seen last
    CString fieldName;  // that name, where there is no sequence
    std::size_t firstWaiting = 0;

    /// The name seen last in this container.
    CString const & lastName() const {
        return namesAndNext != nullptr ? namesAndNext->name() : fieldName;
    }
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
    void endObject();
    void takeName(char const * name, unsigned int length);
    void attach(RefCountedPtr<FieldValue> value);
    void endContainer();
    void storeWaiting(OpenContainer & container);
    void setWaitingOneByOne(OpenContainer & container);
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
    detail::NameSequences sequences;
    std::vector<RefCountedPtr<FieldValue>> waiting;  // those of the inner containers come last
    NameTexts texts;

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
        RefCountedPtr<KestrinMessage> message(new MappedMessage);
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
        of(userData).endObject();
        return 0;
    };
    handler.startArray = [](void * userData) {
        of(userData).startArray();
        return 0;
    };
    handler.endArray = [](void * userData) {
        of(userData).endContainer();
        return 0;
    };
    handler.fieldName = [](void * userData, char const * name, unsigned int length) {
        of(userData).takeName(name, length);
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
    waiting.clear();
    sequences.forgetIfFull();
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
    bool const isMessage = stack.empty() && !root.isNull();
    OpenContainer & entry = stack.emplace_back();
    entry.names = sequences.empty();
    entry.firstWaiting = waiting.size();
    if (isMessage) {
        auto * const message = static_cast<MappedMessage *>(root.get());
        entry.record = message;
        entry.fields = &detail::FieldMap::of(*message);
        return;
    }
    auto * const record = new MappedRecordData;
    entry.record = record;
    entry.fields = &detail::FieldMap::of(*record);
    if (stack.size() == 1) {
        root = record;
    }
}

void JsonMessageParser::Impl::startArray() {
    if (stack.empty()) {
        root = new ListDataImpl(CString());
        stack.emplace_back();
        stack.back().list = &root->asList();
    } else {
        stack.emplace_back();
        stack.back().list = new ListDataImpl(stack[stack.size() - 2].lastName());
    }
}

void JsonMessageParser::Impl::endObject() {
    if (stack.back().names != nullptr) {
        storeWaiting(stack.back());
    }
    endContainer();
}

void JsonMessageParser::Impl::endContainer() {
    if (stack.size() == 1) {
        stack.pop_back();
        return;
    }
    RefCountedPtr<FieldValue> ended(stack.back().value());
    stack.pop_back();
    attach(std::move(ended));
}

void JsonMessageParser::Impl::takeName(char const * name, unsigned int length) {
    OpenContainer & top = stack.back();
    if (top.names != nullptr) {
        top.namesAndNext = sequences.extended(*top.names, name, length);
        if (top.namesAndNext != nullptr) {
            return;
        }
        setWaitingOneByOne(top);
    }
    top.fieldName = texts.textOf(name, length);
}

void JsonMessageParser::Impl::attach(RefCountedPtr<FieldValue> value) {
    OpenContainer & top = stack.back();
    if (top.list != nullptr) {
        top.list->addElement(value);
    } else if (top.names != nullptr) {
        waiting.push_back(std::move(value));
        top.names = top.namesAndNext;
    } else {
        top.record->setFieldValue(top.fieldName, value);
    }
}

void JsonMessageParser::Impl::storeWaiting(OpenContainer & container) {
    std::size_t const count = waiting.size() - container.firstWaiting;
    if (count != 0) {
        container.fields->adopt(container.names->shape(), &waiting[container.firstWaiting], count);
        waiting.resize(container.firstWaiting);
    }
}

void JsonMessageParser::Impl::setWaitingOneByOne(OpenContainer & container) {
    std::vector<CString const *> const names = container.names->names();
    for (std::size_t i = 0; i < names.size(); ++i) {
        container.fields->set(*names[i], waiting[container.firstWaiting + i]);
    }
    waiting.resize(container.firstWaiting);
    container.names = nullptr;
}

/// A value outside of any container: the scanner takes it, this parser does not.
void JsonMessageParser::Impl::refuseScalar() const {
    CString message;
    message.Format("invalid message data near position %d: an object or an array is expected",
                   static_cast<int>(detail::skipSpace(data, size, 0, options)));
    throw JsonUtil::XParsingError(message);
}

}  // namespace tvk
