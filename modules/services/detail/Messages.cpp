#include "modules/services/detail/Messages.h"

#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"

namespace tvk::services {

ErrorInfo errorOf(int componentCode, int code, CString const & text) {
    return {componentCode, KestrinConstants::ErrorDomain_Kestrin, code, text, nullptr};
}

RefCountedPtr<KestrinMessage> requestOfType(char const * messageTypeId) {
    RefCountedPtr<KestrinMessage> message(new MappedMessage);
    message->header().setMessageKind(MSGKIND_REQUEST);
    message->header().setMessageTypeId(messageTypeId);
    return message;
}

MessageReader::MessageReader(KestrinMessage const & message, int componentCode, int code,
                             ErrorInfo * error)
    : message_(message), componentCode_(componentCode), code_(code), error_(error) {}

bool MessageReader::refuse(CString const & field, char const * complaint) const {
    return refuse(code_, field, complaint);
}

bool MessageReader::refuse(int code, CString const & field, char const * complaint) const {
    *error_ = errorOf(
        componentCode_, code,
        message_.header().getMessageTypeId() + ": the field \"" + field + "\" " + complaint);
    return false;
}

bool MessageReader::readOfType(char const * field, FieldTypeEnum type, char const * complaint,
                               FieldValue const ** value) const {
    // The message keeps the value: the counted reference may go at once.
    *value = message_.getFieldValue(field).get();
    if (*value == nullptr) {
        return refuse(field, "is missing");
    }
    return (*value)->getFieldType() == type || refuse(field, complaint);
}

bool MessageReader::readText(char const * field, CString * text) const {
    FieldValue const * value = nullptr;
    if (!readOfType(field, FLDTYPE_STRING, "is no text", &value)) {
        return false;
    }
    *text = value->asString();
    return true;
}

bool MessageReader::readNumber(char const * field, double * number) const {
    FieldValue const * value = nullptr;
    if (!readOfType(field, FLDTYPE_NUMBER, "is no number", &value)) {
        return false;
    }
    *number = value->doubleValue();
    return true;
}

bool MessageReader::readOptionalNumber(char const * field, double * number) const {
    *number = 0;
    return message_.getFieldValue(field).isNull() || readNumber(field, number);
}

bool MessageReader::readList(char const * field, ListData const ** list) const {
    FieldValue const * value = nullptr;
    if (!readOfType(field, FLDTYPE_LIST, "is no list", &value)) {
        return false;
    }
    *list = &value->asList();
    return true;
}

bool isScalar(FieldValue const * value) {
    return value != nullptr &&
           (value->getFieldType() == FLDTYPE_STRING || value->getFieldType() == FLDTYPE_NUMBER);
}

}  // namespace tvk::services
