#include "tvk/json/JsonMessageParser.h"

#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/SimpleJsonHandler.h"
#include "tvk/json/detail/MessageBuilder.h"

namespace tvk {

namespace {

using detail::MessageBuilder;

void setError(ErrorInfo * error, char const * message) {
    if (error != nullptr) {
        error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
        error->setErrorCode(KestrinConstants::ERR_InvalidMessageData);
        error->setErrorMessage(message);
    }
}

MessageBuilder & builder(void * userData) { return *static_cast<MessageBuilder *>(userData); }

SimpleJsonHandler HANDLER = {
    [](void * user) { return builder(user).startObject(), 0; },
    [](void * user) { return builder(user).endObject(), 0; },
    [](void * user) { return builder(user).startArray(), 0; },
    [](void * user) { return builder(user).endArray(), 0; },
    [](void * user, char const * name, unsigned int length) {
        return builder(user).fieldName(name, length), 0;
    },
    [](void * user, unsigned int hash, char const * text, unsigned int length) {
        return builder(user).stringValue(hash, text, length), 0;
    },
    [](void * user, int value) { return builder(user).booleanValue(value != 0), 0; },
    [](void * user) { return builder(user).nullValue(), 0; },
    [](void * user, unsigned int hash, char const * text, unsigned int length,
       char const * fractionStart, char const * exponentStart) {
        return builder(user).numberValue(hash, text, length, fractionStart, exponentStart), 0;
    },
};

}  // namespace

struct JsonMessageParser::Impl : MessageBuilder {
    using MessageBuilder::MessageBuilder;
};

JsonMessageParser::JsonMessageParser(SimpleObjectCache * cache) : impl_(new Impl(cache)) {}

JsonMessageParser::~JsonMessageParser() { delete impl_; }

SimpleObjectCache * JsonMessageParser::cache() const { return impl_->cache(); }

RefCountedPtr<KestrinMessage> JsonMessageParser::parseJsonMessage(void const * data,
                                                                  unsigned int size, int options,
                                                                  ErrorInfo * error) {
    try {
        auto const * const text = static_cast<char const *>(data);
        impl_->start(MessageBuilder::Root::MESSAGE, text, size, options);
        JsonUtil::parseOneJsonObject(text, size, &HANDLER, static_cast<MessageBuilder *>(impl_),
                                     options);
        return static_cast<KestrinMessage *>(impl_->result().get());
    } catch (JsonUtil::XParsingError const & failure) {
        setError(error, failure.getErrorMessage());
        return nullptr;
    }
}

RefCountedPtr<FieldValue> JsonMessageParser::parseOneJsonValue(void const * data, unsigned int size,
                                                               int options, ErrorInfo * error) {
    try {
        auto const * const text = static_cast<char const *>(data);
        impl_->start(MessageBuilder::Root::RECORD, text, size, options);
        JsonUtil::parseOneJsonValue(text, size, &HANDLER, static_cast<MessageBuilder *>(impl_),
                                    options);
        return impl_->result();
    } catch (JsonUtil::XParsingError const & failure) {
        setError(error, failure.getErrorMessage());
        return nullptr;
    }
}

}  // namespace tvk
