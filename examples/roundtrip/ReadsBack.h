#pragma once

#include "tvk/values/RecordData.h"

/// True if `read` is what reading back the JSON of `written` must give, to any depth, and without
/// recursion. Kind, text and value of each scalar, the elements of each list in their order and the
/// fields of each record are compared. Headers and sub-messages are no part of the JSON.
///
/// What the format changes on the way is expected, not forgiven:
///   - null fields and null elements are not read back;
///   - a NUL ends a text or a name when it is written;
///   - a name with bytes of 0x80 and above is written as if it were text of the code page, and read
///     back in UTF-8; so is the element type name of a list. Where two names become one by this,
///     the last in the order of the record stays.
bool readsBackAs(tvk::RecordData const & written, tvk::RecordData const & read);
