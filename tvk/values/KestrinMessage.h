#pragma once

#include "tvk/values/KestrinMessageHeader.h"
#include "tvk/values/RecordData.h"

namespace tvk {

/// What an agent exchanges with its back end: body fields (the record itself), a header, and an
/// ordered list of sub-messages. Requests, replies and notices all have this form.
///
/// The header belongs to the message and lives as long as it. Sub-messages are shared.
class TVK_API KestrinMessage : public RecordData {
public:
    /// "[]", the message type identifier of a message that carries its content as sub-messages.
    static CString const MSGTYPE_LIST_MESSAGE;

    ~KestrinMessage() override = 0;

    virtual KestrinMessageHeader & header() = 0;
    virtual KestrinMessageHeader const & header() const = 0;
    virtual unsigned int getSubMessageCount() const = 0;
    /// Requires: index < getSubMessageCount().
    virtual RefCountedPtr<KestrinMessage> getSubMessage(unsigned int index) const = 0;
    virtual void addSubMessage(RefCountedPtr<KestrinMessage> const & message) = 0;
    /// Before `index`; the count itself appends.
    virtual void insertSubMessageAt(unsigned int index,
                                    RefCountedPtr<KestrinMessage> const & message) = 0;
    /// Removes the occurrences of `message`, but for one that directly follows a removed one.
    virtual void removeSubMessage(KestrinMessage const * message) = 0;
    /// Requires: index < getSubMessageCount().
    virtual void removeSubmessageAt(unsigned int index) = 0;
    /// Removes `count` messages from `first` on, or all up to the end when there are fewer.
    /// Requires: a message has been added before; first <= getSubMessageCount().
    virtual void removeSubMessages(unsigned int first, unsigned int count) = 0;
    virtual void removeAllSubMessages() = 0;
};

}  // namespace tvk
