#pragma once

#include "tvk/values/ListData.h"
#include "tvk/values/RecordData.h"

namespace tvk::detail {

// Deep equality of values, on the interfaces alone and without recursing by depth. Numbers compare
// by the rule of NumberData, which goes by the left one; lists without their type names; a message
// or a header by its plain fields.

bool fieldValuesEqual(FieldValue const & left, FieldValue const & right);

/// What stands in a list or a record: the same pointer is equal, two nulls included; one null is
/// not.
bool fieldReferencesEqual(FieldValue const * left, FieldValue const * right);

bool listDataEqual(ListData const & left, ListData const & right);
bool recordDataEqual(RecordData const & left, RecordData const & right);

}  // namespace tvk::detail
