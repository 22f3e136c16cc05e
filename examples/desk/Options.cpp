#include "examples/desk/Options.h"

#include <charconv>
#include <functional>
#include <map>
#include <string_view>
#include <system_error>

namespace desk {

char const USAGE[] =
    "Usage: desk [OPTION]...\n"
    "\n"
    "A window with quotes, orders, a chart and news of invented companies. Without --connect it\n"
    "starts a small back end in its own process; everybody may log in there whose password is\n"
    "\"secret\".\n"
    "\n"
    "  --connect HOST:PORT  a back end that runs elsewhere\n"
    "  --plain              without TLS\n"
    "  --ca FILE            trusts the authorities in this PEM file instead of the system's\n"
    "  --user NAME          who logs in; hanako\n"
    "  --password TEXT      secret\n"
    "  --login              logs in at once, without asking\n"
    "  --screenshot FILE    writes the window as PNG at the end, and ends after 5 seconds\n"
    "  --seconds N          ends after N seconds\n"
    "  --help               prints this\n";

namespace {

constexpr int SECONDS_BEFORE_SCREENSHOT = 5;
constexpr int MOST_SECONDS = 86'400;

/// The whole word, or false.
template <class Number>
bool readNumber(std::string_view word, Number least, Number most, Number * number) {
    Number read = 0;
    char const * const end = word.data() + word.size();
    auto const result = std::from_chars(word.data(), end, read);
    if (result.ec != std::errc() || result.ptr != end || read < least || read > most) {
        return false;
    }
    *number = read;
    return true;
}

/// The last colon parts host and port: addresses may hold colons, and stand in brackets then.
bool readPeer(std::string const & word, Options * options) {
    std::size_t const colon = word.rfind(':');
    if (colon == std::string::npos || colon == 0) {
        return false;
    }
    std::string host = word.substr(0, colon);
    if (host.size() > 2 && host.front() == '[' && host.back() == ']') {
        host = host.substr(1, host.size() - 2);
    }
    options->host = host;
    constexpr unsigned short HIGHEST = 0xffff;
    return readNumber<unsigned short>(std::string_view(word).substr(colon + 1), 1, HIGHEST,
                                      &options->port);
}

/// Takes the word behind an option; false where it makes no sense.
using Taker = std::function<bool(std::string const & word)>;

std::map<std::string, Taker> takersInto(Options * options) {
    auto const text = [](std::string * target) {
        return [target](std::string const & word) {
            *target = word;
            return !word.empty();
        };
    };
    return {
        {"--connect", [options](std::string const & word) { return readPeer(word, options); }},
        {"--ca", text(&options->certFile)},
        {"--user", text(&options->user)},
        {"--password", text(&options->password)},
        {"--screenshot", text(&options->screenshotFile)},
        {"--seconds",
         [options](std::string const & word) {
             return readNumber(word, 1, MOST_SECONDS, &options->seconds);
         }},
    };
}

std::map<std::string, bool *> flagsOf(Options * options) {
    return {{"--plain", &options->isPlain},
            {"--login", &options->logsIn},
            {"--help", &options->wantsHelp},
            {"-h", &options->wantsHelp}};
}

bool isConsistent(Options const & options, std::string * problem) {
    if (options.host.empty() && (options.isPlain || !options.certFile.empty())) {
        *problem = "--plain and --ca go with --connect";
        return false;
    }
    if (options.isPlain && !options.certFile.empty()) {
        *problem = "--plain and --ca exclude each other";
        return false;
    }
    return true;
}

}  // namespace

bool readOptions(std::vector<std::string> const & words, Options * options, std::string * problem) {
    auto const flags = flagsOf(options);
    auto const takers = takersInto(options);
    for (std::size_t index = 0; index < words.size(); ++index) {
        std::string const & word = words[index];
        if (auto const flag = flags.find(word); flag != flags.end()) {
            *flag->second = true;
            continue;
        }
        auto const taker = takers.find(word);
        if (taker == takers.end()) {
            *problem = "there is no option " + word;
            return false;
        }
        if (++index == words.size() || !taker->second(words[index])) {
            *problem = word + " wants another word behind it";
            return false;
        }
    }
    if (!options->screenshotFile.empty() && options->seconds == 0) {
        options->seconds = SECONDS_BEFORE_SCREENSHOT;
    }
    return isConsistent(*options, problem);
}

}  // namespace desk
