#include "modules/asio/FrameMessages.h"

#include <limits>

#include "modules/asio/detail/FrameLayout.h"
#include "modules/asio/detail/KnownTexts.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/values/MappedMessage.h"

namespace tvk {

namespace {

using MessageReference = RefCountedPtr<KestrinMessage>;

/// As the scanner has it, which takes bytes as signed.
unsigned int hashOf(std::string_view text) {
    unsigned int hash = SimpleObjectCache::HASH_CODE_INITIAL_VALUE;
    for (char const byte : text) {
        hash = SimpleObjectCache::nextHash(hash, static_cast<signed char>(byte));
    }
    return hash;
}

bool isMessageKind(int kind) { return kind >= MSGKIND_REQUEST && kind <= MSGKIND_NOTICE; }

CString decimal(unsigned long long number) {
    char digits[std::numeric_limits<unsigned long long>::digits10 + 1];
    char * const end = digits + sizeof digits;
    char * first = end;
    do {
        *--first = static_cast<char>('0' + number % 10);
        number /= 10;
    } while (number != 0);
    return CString(first, static_cast<int>(end - first));
}

}  // namespace

struct FrameMessages::Impl {
    explicit Impl(SimpleObjectCache * cache) : parser(cache) {}

    /// Null with `*error`.
    MessageReference message(Frame const & frame, int depth, ErrorInfo * error);
    /// A message with the members of the object as fields. Null with `*error`.
    MessageReference parse(std::string_view json, char const * name, ErrorInfo * error);
    bool addHeaderFields(std::string_view json, KestrinMessageHeader & header, ErrorInfo * error);
    bool addSubMessages(std::string_view bytes, int depth, KestrinMessage & message,
                        ErrorInfo * error);
    RefCountedPtr<FieldValue> subject(std::string_view utf8);

    JsonMessageParser parser;
    detail::KnownTexts types;
    CString const subjectName = "subject";
};

FrameMessages::FrameMessages(SimpleObjectCache * cache) : impl_(std::make_unique<Impl>(cache)) {}

FrameMessages::~FrameMessages() = default;

MessageReference FrameMessages::read(Frame const & frame, ErrorInfo * error) {
    MessageReference message = impl_->message(frame, 0, error);
    if (!message.isNull() && (frame.kind == FRAME_REQUEST || frame.kind == FRAME_REPLY)) {
        message->header().setRequestId(decimal(frame.number));
    }
    return message;
}

MessageReference FrameMessages::Impl::message(Frame const & frame, int depth, ErrorInfo * error) {
    MessageReference message = parse(frame.body, "body", error);
    if (message.isNull()) {
        return nullptr;
    }
    KestrinMessageHeader & header = message->header();
    if (isMessageKind(frame.kind)) {
        header.setMessageKind(static_cast<MessageKindEnum>(frame.kind));
    }
    header.setMessageTypeId(types.text(frame.type));
    if (!frame.headerFields.empty() && !addHeaderFields(frame.headerFields, header, error)) {
        return nullptr;
    }
    if (!frame.subject.empty()) {
        header.setFieldValue(subjectName, subject(frame.subject));
    }
    if (!frame.subMessages.empty() &&
        !addSubMessages(frame.subMessages, depth + 1, *message, error)) {
        return nullptr;
    }
    return message;
}

MessageReference FrameMessages::Impl::parse(std::string_view json, char const * name,
                                            ErrorInfo * error) {
    if (json.empty()) {
        return new MappedMessage;
    }
    ErrorInfo failure;
    MessageReference message =
        parser.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, &failure);
    if (message.isNull()) {
        detail::refuseFrame(error, KestrinConstants::ERR_InvalidMessageData,
                            "bad JSON in the %s of %zu bytes: %s", name, json.size(),
                            failure.getErrorMessage().GetString());
    }
    return message;
}

bool FrameMessages::Impl::addHeaderFields(std::string_view json, KestrinMessageHeader & header,
                                          ErrorInfo * error) {
    MessageReference const fields = parse(json, "header fields", error);
    if (fields.isNull()) {
        return false;
    }
    for (RecordData::Field const & field : fields->getAllFields()) {
        if (*field.name != subjectName) {
            header.setFieldValue(*field.name, field.value);
        }
    }
    return true;
}

bool FrameMessages::Impl::addSubMessages(std::string_view bytes, int depth,
                                         KestrinMessage & message, ErrorInfo * error) {
    if (!detail::checkDepth(depth, KestrinConstants::ERR_ProtocolFailure, error)) {
        return false;
    }
    detail::SubFrames frames(bytes);
    detail::SubFrame frame;
    detail::SubFrames::Step step = frames.next(&frame, error);
    while (step == detail::SubFrames::Step::FRAME) {
        MessageReference const subMessage = this->message(frame, depth, error);
        if (subMessage.isNull()) {
            return false;
        }
        if (!frame.requestId.empty()) {
            subMessage->header().setRequestId(platform::utf8ToAnsi(
                frame.requestId.data(), static_cast<unsigned int>(frame.requestId.size())));
        }
        message.addSubMessage(subMessage);
        step = frames.next(&frame, error);
    }
    return step == detail::SubFrames::Step::END;
}

RefCountedPtr<FieldValue> FrameMessages::Impl::subject(std::string_view utf8) {
    return parser.cache()->cachedString(hashOf(utf8), utf8.data(),
                                        static_cast<unsigned int>(utf8.size()));
}

}  // namespace tvk
