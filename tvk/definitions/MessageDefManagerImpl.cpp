#include "tvk/definitions/MessageDefManagerImpl.h"

#include "tvk/definitions/SimpleTypeDef.h"

namespace tvk {

MessageDefManagerImpl::MessageDefManagerImpl() { init(); }

MessageDefManagerImpl::~MessageDefManagerImpl() = default;

void MessageDefManagerImpl::init() {
    addDataType(SimpleTypeDef::STRING_TYPE());
    addDataType(SimpleTypeDef::INTEGER_TYPE());
    addDataType(SimpleTypeDef::DECIMAL_TYPE());
    addDataType(SimpleTypeDef::BOOLEAN_TYPE());
}

DataTypeDef const * MessageDefManagerImpl::getDataTypeDefByName(CString const & name) const {
    return dataTypes_.find(name);
}

std::vector<DataTypeDef const *> MessageDefManagerImpl::getDataTypeDefList() const {
    return dataTypes_.inOrder();
}

std::vector<MessageTypeDef const *> MessageDefManagerImpl::getMessageDefList() const {
    return messageTypes_.inOrder();
}

MessageTypeDef const * MessageDefManagerImpl::getMessageDefByName(CString const & name) const {
    return messageTypes_.find(name);
}

void MessageDefManagerImpl::validate() const {}

bool MessageDefManagerImpl::addDataType(DataTypeDef const * type) { return dataTypes_.add(type); }

bool MessageDefManagerImpl::addMessageType(MessageTypeDef const * type) {
    return messageTypes_.add(type);
}

}  // namespace tvk
