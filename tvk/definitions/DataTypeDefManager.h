#pragma once

#include <vector>

#include "tvk/definitions/DataTypeDef.h"

namespace tvk {

/// Read view of the data types of a running system.
///
/// Ownership: the pointers are not counted; they live as long as the registry.
/// Threads:   a finished registry may be read by several threads.
class TVK_API DataTypeDefManager : public RefCounted {
public:
    DataTypeDefManager(DataTypeDefManager const &) = delete;
    DataTypeDefManager & operator=(DataTypeDefManager const &) = delete;

    /// Null for an unknown name; the case of letters counts.
    virtual DataTypeDef const * getDataTypeDefByName(CString const & name) const = 0;
    /// In the order in which they were added.
    virtual std::vector<DataTypeDef const *> getDataTypeDefList() const = 0;

protected:
    DataTypeDefManager() = default;
    ~DataTypeDefManager() override = 0;
};

}  // namespace tvk
