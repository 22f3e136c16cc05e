#include "examples/inprocess_agent/FrameCodec.h"

#include <algorithm>

#include "examples/support/Fields.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"

namespace inprocess {

using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::KestrinConstants;
using tvk::KestrinMessage;
using tvk::KestrinMessageHeader;
using tvk::MappedRecordData;
using tvk::RefCountedPtr;

namespace {

void setError(ErrorInfo * error, int code, char const * text) {
    error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
    error->setErrorCode(code);
    error->setErrorMessage(text);
}

/// False where the head is none.
bool takeHead(KestrinMessageHeader & header, tvk::RecordData const & head) {
    long long const kind = numberIn(head, "kind");
    CString const type = textIn(head, "type");
    if (kind < MSGKIND_REQUEST || kind > MSGKIND_NOTICE || type.IsEmpty()) {
        return false;
    }
    header.setMessageKind(static_cast<MessageKindEnum>(kind));
    header.setMessageTypeId(type);
    header.setRequestId(textIn(head, "id"));
    if (tvk::RecordData const * const fields = recordIn(head, "fields")) {
        for (tvk::RecordData::Field const & field : fields->getAllFields()) {
            header.setFieldValue(*field.name, RefCountedPtr<FieldValue>(field.value));
        }
    }
    return true;
}

}  // namespace

std::string FrameCodec::writeHead(KestrinMessageHeader const & header) {
    RefCountedPtr<MappedRecordData> const head(new MappedRecordData);
    head->setFieldValue("kind", new tvk::NumberData(header.getMessageKind()));
    head->setFieldValue("type", header.getMessageTypeId());
    if (!header.getRequestId().IsEmpty()) {
        head->setFieldValue("id", header.getRequestId());
    }
    if (header.getFieldCount() != 0) {
        head->setFieldValue("fields", new MappedRecordData(header));
    }
    unsigned int const size = serializer_.recordDataToJson(nullptr, 0, *head, 0);
    return std::string(static_cast<char const *>(serializer_.getResultsBuffer()), size) + '\n';
}

std::string FrameCodec::write(KestrinMessageHeader const & header, KestrinMessage const & message,
                              ErrorInfo * error) {
    if (message.getSubMessageCount() != 0) {
        setError(error, KestrinConstants::ERR_UnsupportedFunction,
                 "a frame carries no sub-messages");
        return "";
    }
    try {
        // A copy: the serializer's buffer holds its last result only until the next one.
        std::string const head = writeHead(header);
        unsigned int const size = serializer_.messageToJson(
            head.data(), static_cast<unsigned int>(head.size()), message, 0);
        return {static_cast<char const *>(serializer_.getResultsBuffer()), size};
    } catch (char * text) {
        // What raw data says when it is asked for a text.
        setError(error, KestrinConstants::ERR_InvalidMessageData, text);
        return "";
    }
}

RefCountedPtr<KestrinMessage> FrameCodec::read(std::string_view frame, ErrorInfo * error) {
    std::size_t const headEnd = std::min(frame.find('\n'), frame.size());
    RefCountedPtr<KestrinMessage> const head = parse(frame.substr(0, headEnd), error);
    if (head.isNull()) {
        return nullptr;
    }
    RefCountedPtr<KestrinMessage> message =
        parse(frame.substr(std::min(headEnd + 1, frame.size())), error);
    if (message.isNull()) {
        message = new tvk::MappedMessage;
    }
    if (!takeHead(message->header(), *head)) {
        setError(error, KestrinConstants::ERR_ProtocolFailure, "the head of a frame is incomplete");
        return nullptr;
    }
    return message;
}

RefCountedPtr<KestrinMessage> FrameCodec::parse(std::string_view json, ErrorInfo * error) {
    return parser_.parseJsonMessage(json.data(), static_cast<unsigned int>(json.size()), 0, error);
}

}  // namespace inprocess
