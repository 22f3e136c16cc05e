#pragma once

#include <string>
#include <vector>

#include "examples/backend/Backend.h"

namespace backend {

extern char const USAGE[];

/// What the program is told to do.
struct Arguments {
    Backend::Options options;
    bool isVerbose = false;
    bool wantsHelp = false;
};

/// False, with the reason, where they make no sense.
bool readArguments(std::vector<std::string> const & words, Arguments * arguments,
                   std::string * problem);

}  // namespace backend
