#pragma once

#include "tests/support/SameValue.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk::test {

/// Deep equality of two messages: fields, kind, identifiers, fields of the header, and sub-messages.
inline bool sameMessage(KestrinMessage & left, KestrinMessage & right) {
    KestrinMessageHeader & leftHeader = left.header();
    KestrinMessageHeader & rightHeader = right.header();
    bool same = leftHeader.getMessageKind() == rightHeader.getMessageKind() &&
                leftHeader.getMessageTypeId() == rightHeader.getMessageTypeId() &&
                leftHeader.getRequestId() == rightHeader.getRequestId() &&
                sameValue(&left, &right) && sameValue(&leftHeader, &rightHeader) &&
                left.getSubMessageCount() == right.getSubMessageCount();
    for (unsigned int i = 0; same && i < left.getSubMessageCount(); ++i) {
        same = sameMessage(*left.getSubMessage(i), *right.getSubMessage(i));
    }
    return same;
}

}  // namespace tvk::test
