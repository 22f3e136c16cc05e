#pragma once

#include <string>

#include "tvk/definitions/MessageDefManager.h"
#include "tvk/values/RecordData.h"

/// The definition of a message by its message type identifier, which stands in the field "type" as
/// text; null if there is no such field or no such definition.
tvk::MessageTypeDef const * definitionOf(tvk::MessageDefManager const & catalogue,
                                         tvk::RecordData const & message);

/// The values of a message with what its definition calls them, as a table in UTF-8: fields in the
/// order of the definition, those of records and elements of lists each in a row of its own, under
/// the path by which KestrinUtil::getFieldValueWithPath finds them (a list directly in a list has
/// one index too many for it). Remarks say where a value is not what the definition expects; fields
/// without a definition come last in their record.
std::string labelled(tvk::MessageTypeDef const & type, tvk::RecordData const & message);
