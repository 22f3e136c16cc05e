#include "tvk/json/JsonMessageParser.h"

#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/json/detail/MessageBuilder.h"
#include "tvk/json/detail/Scan.h"

namespace tvk {

struct JsonMessageParser::Impl {
    explicit Impl(SimpleObjectCache * cache) : builder(cache) {}

    /// What comes of the text; null, with the error, where the scanner or the builder refuses it.
    RefCountedPtr<FieldValue> parse(detail::ScanEntry entry, detail::MessageBuilder::Root root,
                                    void const * data, unsigned int size, int options,
                                    ErrorInfo * error);

    detail::MessageBuilder builder;
};

JsonMessageParser::JsonMessageParser(SimpleObjectCache * cache) : impl_(new Impl(cache)) {}

JsonMessageParser::~JsonMessageParser() { delete impl_; }

SimpleObjectCache * JsonMessageParser::cache() const { return impl_->builder.cache(); }

RefCountedPtr<KestrinMessage> JsonMessageParser::parseJsonMessage(void const * data,
                                                                  unsigned int size, int options,
                                                                  ErrorInfo * error) {
    RefCountedPtr<FieldValue> message =
        impl_->parse(detail::ScanEntry::OBJECT, detail::MessageBuilder::Root::MESSAGE, data, size,
                     options, error);
    return RefCountedPtr<KestrinMessage>::attached(static_cast<KestrinMessage *>(message.detach()));
}

RefCountedPtr<FieldValue> JsonMessageParser::parseOneJsonValue(void const * data, unsigned int size,
                                                               int options, ErrorInfo * error) {
    return impl_->parse(detail::ScanEntry::VALUE, detail::MessageBuilder::Root::RECORD, data, size,
                        options, error);
}

RefCountedPtr<FieldValue> JsonMessageParser::Impl::parse(detail::ScanEntry entry,
                                                         detail::MessageBuilder::Root root,
                                                         void const * data, unsigned int size,
                                                         int options, ErrorInfo * error) {
    try {
        auto const * const text = static_cast<char const *>(data);
        builder.start(root, text, size, options);
        detail::bestScanVariant().message(entry, text, size, builder, options);
        return builder.result();
    } catch (JsonUtil::XParsingError const & failure) {
        if (error != nullptr) {
            error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
            error->setErrorCode(KestrinConstants::ERR_InvalidMessageData);
            error->setErrorMessage(failure.getErrorMessage());
        }
        return nullptr;
    }
}

}  // namespace tvk
