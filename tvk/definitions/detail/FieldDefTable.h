#pragma once

#include "tvk/definitions/FieldDef.h"
#include "tvk/definitions/detail/NamedDefinitions.h"

namespace tvk::detail {

/// The fields of a record or message type.
class FieldDefTable : private NamedDefinitions<FieldDef> {
public:
    /// Throws an ErrorInfo, with nothing changed, when the name is taken.
    void add(FieldDef const * field);
    using NamedDefinitions::find;
    using NamedDefinitions::inOrder;
};

}  // namespace tvk::detail
