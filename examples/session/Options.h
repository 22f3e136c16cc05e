#pragma once

#include <optional>
#include <string>
#include <vector>

namespace session {

/// What the command line asks for.
struct Options {
    std::string host;         ///< empty: a back end of the program's own
    unsigned short port = 0;  ///< with a host only
    std::string user = "hanako";
    std::string password = "secret";
    std::string authorities;  ///< file of trusted certificates; empty: those of the system
    bool plain = false;
    std::string symbol = "7203";
    double seconds = 1;  ///< of watching quotes
    std::string svg = TVK_SESSION_PICTURE;
    double patience = 8;  ///< seconds that anything is waited for
    bool quiet = false;
    bool help = false;
};

/// Options from the words behind the program's name. Nothing where they make no sense, and `*complaint`
/// says why. An option and its value may be two words or one, as in --symbol=7203.
std::optional<Options> parseOptions(std::vector<std::string> const & words,
                                    std::string * complaint);

extern char const USAGE[];

}  // namespace session
