#pragma once

#include <string>
#include <vector>

namespace desk {

extern char const USAGE[];

/// What the program is told to do. Texts are UTF-8.
struct Options {
    std::string host;  ///< empty for a back end of the program's own
    unsigned short port = 0;
    bool isPlain = false;
    std::string certFile;  ///< of the authorities that are trusted; empty for those of the system
    std::string user = "hanako";
    std::string password = "secret";
    bool logsIn = false;         ///< at once, without the login window
    std::string screenshotFile;  ///< written at the end; empty for none
    int seconds = 0;             ///< after which the program ends; 0 for never
    bool wantsHelp = false;
};

/// False, with the reason, where they make no sense.
bool readOptions(std::vector<std::string> const & words, Options * options, std::string * problem);

}  // namespace desk
