#pragma once

#include "tvk/definitions/DataTypeDef.h"

namespace tvk {

/// A type without parts. The four that every registry knows are built in.
class TVK_API SimpleTypeDef : public DataTypeDef {
public:
    virtual bool isDerivedType() const = 0;

    // The one object of each built-in type, made at the first call (several threads may race for it)
    // and released at the process's exit. Its Japanese texts are Shift-JIS bytes whatever the
    // application's code page is.
    static SimpleTypeDef const * STRING_TYPE();   ///< "string"
    static SimpleTypeDef const * INTEGER_TYPE();  ///< "integer"
    static SimpleTypeDef const * DECIMAL_TYPE();  ///< "decimal"
    static SimpleTypeDef const * BOOLEAN_TYPE();  ///< "boolean"

protected:
    ~SimpleTypeDef() override = 0;
};

}  // namespace tvk
