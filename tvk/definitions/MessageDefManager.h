#pragma once

#include <vector>

#include "tvk/definitions/DataTypeDefManager.h"
#include "tvk/definitions/MessageTypeDef.h"

namespace tvk {

/// Read view of the data types and message types of a running system. The two are separate name
/// spaces: one name may stand in both.
class TVK_API MessageDefManager : public DataTypeDefManager {
public:
    /// In the order in which they were added.
    virtual std::vector<MessageTypeDef const *> getMessageDefList() const = 0;
    /// By the definition's name, not its message type identifier; null for an unknown one.
    virtual MessageTypeDef const * getMessageDefByName(CString const & name) const = 0;
    /// Room for checks of an implementation's own.
    virtual void validate() const = 0;

protected:
    ~MessageDefManager() override = 0;
};

}  // namespace tvk
