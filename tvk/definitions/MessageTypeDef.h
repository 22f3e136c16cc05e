#pragma once

#include "tvk/definitions/RecordTypeDef.h"

namespace tvk {

/// The type of a message: a record with the identifier that stands in a message's header.
class TVK_API MessageTypeDef : public RecordTypeDef {
public:
    virtual CString const & getMessageTypeId() const = 0;

protected:
    ~MessageTypeDef() override = 0;
};

}  // namespace tvk
