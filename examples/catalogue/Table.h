#pragma once

#include <string>

#include "tvk/definitions/MessageDefManager.h"

/// All types and all messages of a catalogue with their fields, as two tables in UTF-8.
std::string catalogueTable(tvk::MessageDefManager const & catalogue);
