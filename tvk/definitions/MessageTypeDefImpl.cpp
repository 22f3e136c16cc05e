#include "tvk/definitions/MessageTypeDefImpl.h"

#include "tvk/definitions/MessageTypeDef.h"

namespace tvk {

MessageTypeDefImpl::MessageTypeDefImpl() = default;

MessageTypeDefImpl::MessageTypeDefImpl(char const * name, char const * nameJa,
                                       char const * description)
    : name_(name), nameJa_(nameJa), description_(description) {}

MessageTypeDefImpl::~MessageTypeDefImpl() = default;

CString const & MessageTypeDefImpl::getName() const { return name_; }

CString const & MessageTypeDefImpl::getNameJa() const { return nameJa_; }

CString const & MessageTypeDefImpl::getDescription() const { return description_; }

bool MessageTypeDefImpl::isSimpleType() const { return false; }

bool MessageTypeDefImpl::isRecordType() const { return true; }

bool MessageTypeDefImpl::isListType() const { return false; }

std::vector<FieldDef const *> const & MessageTypeDefImpl::getFieldDefList() const {
    return fields_.inOrder();
}

FieldDef const * MessageTypeDefImpl::getFieldDef(CString const & name) const {
    return fields_.find(name);
}

unsigned int MessageTypeDefImpl::getFieldCount() const {
    return static_cast<unsigned int>(fields_.inOrder().size());
}

CString const & MessageTypeDefImpl::getKind() const { return kind_; }

CString const & MessageTypeDefImpl::getMessageTypeId() const { return messageTypeId_; }

MessageTypeDef const * MessageTypeDefImpl::asMessageTypeDef() const {
    // The result is no object of that class by the rules of the language, so an optimiser that followed
    // the pointer might take calls through it for unreachable. The detour keeps it from following.
    MessageTypeDefImpl const * const volatile self = this;
    return reinterpret_cast<MessageTypeDef const *>(self);
}

void MessageTypeDefImpl::setName(CString const & name) { name_ = name; }

void MessageTypeDefImpl::setNameJa(CString const & nameJa) { nameJa_ = nameJa; }

void MessageTypeDefImpl::setDescription(CString const & description) { description_ = description; }

void MessageTypeDefImpl::setKind(CString const & kind) { kind_ = kind; }

void MessageTypeDefImpl::setMessageTypeId(CString const & messageTypeId) {
    messageTypeId_ = messageTypeId;
}

void MessageTypeDefImpl::addFieldDef(FieldDef const * field) { fields_.add(field); }

}  // namespace tvk
