#pragma once

#include "tvk/values/MessageKindEnum.h"
#include "tvk/values/RecordData.h"

namespace tvk {

/// The header of a message: its kind, its identifiers, and any further fields as a record.
class TVK_API KestrinMessageHeader : public RecordData {
public:
    ~KestrinMessageHeader() override = 0;

    virtual MessageKindEnum getMessageKind() const = 0;
    virtual void setMessageKind(MessageKindEnum kind) = 0;
    virtual CString getRequestId() const = 0;
    virtual void setRequestId(CString const & id) = 0;
    virtual CString const & getMessageTypeId() const = 0;
    virtual void setMessageTypeId(CString const & id) = 0;
};

}  // namespace tvk
