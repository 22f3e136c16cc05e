#pragma once

#include <vector>

#include "tvk/definitions/DataTypeDef.h"
#include "tvk/definitions/FieldDef.h"

namespace tvk {

/// A type made of named fields.
class TVK_API RecordTypeDef : public DataTypeDef {
public:
    /// In the order in which they were added. The pointers live as long as this definition.
    virtual std::vector<FieldDef const *> const & getFieldDefList() const = 0;
    /// By the name under which the field was added, the case of letters included; null if there is
    /// none.
    virtual FieldDef const * getFieldDef(CString const & name) const = 0;
    virtual unsigned int getFieldCount() const = 0;
    virtual CString const & getKind() const = 0;  ///< a free label set by the loader

protected:
    ~RecordTypeDef() override = 0;
};

}  // namespace tvk
