#include "tvk/definitions/MessageTypeDefImpl.h"

#include "tvk/definitions/MessageTypeDef.h"

namespace tvk {

MessageTypeDefImpl::MessageTypeDefImpl() = default;

MessageTypeDefImpl::MessageTypeDefImpl(char const * name, char const * nameJa,
                                       char const * description)
    : RecordDef(name, nameJa, description) {}

MessageTypeDefImpl::~MessageTypeDefImpl() = default;

CString const & MessageTypeDefImpl::getMessageTypeId() const { return messageTypeId_; }

MessageTypeDef const * MessageTypeDefImpl::asMessageTypeDef() const {
    // The result is no object of that class by the rules of the language, so an optimiser that
    // followed the pointer might take calls through it for unreachable. The detour keeps it from
    // following.
    MessageTypeDefImpl const * const volatile self = this;
    return reinterpret_cast<MessageTypeDef const *>(self);
}

void MessageTypeDefImpl::setMessageTypeId(CString const & messageTypeId) {
    messageTypeId_ = messageTypeId;
}

}  // namespace tvk
