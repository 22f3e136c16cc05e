#pragma once

#include "tvk/values/MappedMessage.h"

namespace tvk::detail {

/// A new request without fields.
inline RefCountedPtr<KestrinMessage> requestOfType(char const * messageTypeId) {
    RefCountedPtr<KestrinMessage> message(new MappedMessage);
    message->header().setMessageKind(MSGKIND_REQUEST);
    message->header().setMessageTypeId(messageTypeId);
    return message;
}

}  // namespace tvk::detail
