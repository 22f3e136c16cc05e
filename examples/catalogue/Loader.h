#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tvk/definitions/MessageDefManager.h"
#include "tvk/values/RefCountedPtr.h"

/// What came of a file of definitions: a registry, or what is wrong with the file.
struct LoadedCatalogue {
    /// Null unless there is nothing to complain about: a registry is whole, or it is not there.
    tvk::RefCountedPtr<tvk::MessageDefManager> registry;
    /// One line each, in UTF-8, such as `types[3].fields[1].type: unknown type "Prise"`: first the
    /// faults of shape and of repeated names, in the order of the file, then those of references.
    std::vector<std::string> complaints;
};

/// Reads definitions of types and messages. README.md beside this file describes the format.
LoadedCatalogue loadCatalogue(std::string_view json);
