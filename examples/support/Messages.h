#pragma once

#include "tvk/values/MappedMessage.h"

/// A new request without fields.
inline tvk::RefCountedPtr<tvk::KestrinMessage> requestOfType(char const * messageTypeId) {
    tvk::RefCountedPtr<tvk::KestrinMessage> message(new tvk::MappedMessage);
    message->header().setMessageKind(MSGKIND_REQUEST);
    message->header().setMessageTypeId(messageTypeId);
    return message;
}
