#pragma once

#include "tvk/definitions/DataTypeDef.h"

namespace tvk {

/// A type made of any number of elements of one type.
class TVK_API ListTypeDef : public DataTypeDef {
public:
    virtual DataTypeDef const * getElementTypeDef() const = 0;  ///< null until a loader sets it
    virtual CString const & getElementTypeName() const = 0;     ///< kept apart from the pointer
    virtual unsigned int getLengthOfCount() const = 0;  ///< for loaders and users of definitions
    virtual CString const & getElementFieldName() const = 0;  ///< likewise

protected:
    ~ListTypeDef() override = 0;
};

}  // namespace tvk
