#pragma once

#include "tvk/definitions/FieldDef.h"

namespace tvk {

/// A virtual field that stands for one element of a list field.
class TVK_API ListElementFieldDef : public FieldDef {
public:
    virtual unsigned int getIndex() const = 0;

protected:
    ~ListElementFieldDef() override = 0;
};

}  // namespace tvk
