#include "examples/backend/Arguments.h"

#include <charconv>
#include <functional>
#include <map>

namespace backend {

char const USAGE[] =
    "Usage: backend [OPTION]...\n"
    "\n"
    "A small back end: quotes, orders, charts and news for invented companies. Prints the address "
    "that it\n"
    "listens on, and ends with SIGINT or SIGTERM. Everybody may log in whose password is "
    "\"secret\".\n"
    "\n"
    "  --port N          the port; 0, the default, for any that is free\n"
    "  --address A       the address; 127.0.0.1\n"
    "  --tls CERT KEY    TLS, with the certificate and the key in these PEM files; plain without "
    "it\n"
    "  --seed N          what quotes, charts and news come from; 1\n"
    "  --quote-ms N      milliseconds between moves of the market, 0 for none; 200\n"
    "  --headline-ms N   milliseconds between headlines, 0 for none; 5000\n"
    "  --heartbeat-ms N  milliseconds between heartbeats; 15000\n"
    "  --grace-ms N      milliseconds that a session waits for its client to come back; 30000\n"
    "  --ring N          notices that a session keeps for a client that comes back; 100000\n"
    "  --verbose         prints connections, sessions and requests on the standard error stream\n"
    "  --help            prints this\n";

namespace {

using Words = std::vector<std::string>;

template <class Number>
bool readNumber(std::string const & word, Number least, Number * number) {
    Number read = 0;
    char const * const end = word.data() + word.size();
    auto const result = std::from_chars(word.data(), end, read);
    if (result.ec != std::errc() || result.ptr != end || read < least) {
        return false;
    }
    *number = read;
    return true;
}

/// What an option does with the words behind it.
struct Option {
    std::size_t words;
    std::function<bool(Words const &)> take;
};

template <class Number>
Option numberOption(Number * number, Number least) {
    return {1, [number, least](Words const & words) {
                return readNumber(words.front(), least, number);
            }};
}

std::map<std::string, Option> optionsInto(Arguments & arguments) {
    Backend::Options & options = arguments.options;
    std::size_t const atLeastOne = 1;
    return {
        {"--port", numberOption<unsigned short>(&options.port, 0)},
        {"--address",
         {1, [&options](Words const & words) { return !(options.address = words[0]).empty(); }}},
        {"--tls",
         {2,
          [&options](Words const & words) {
              options.certFile = words[0];
              options.keyFile = words[1];
              return !options.certFile.empty();
          }}},
        {"--seed", numberOption<unsigned int>(&options.seed, 0)},
        {"--quote-ms", numberOption(&options.quoteMilliSec, 0)},
        {"--headline-ms", numberOption(&options.headlineMilliSec, 0)},
        {"--heartbeat-ms", numberOption(&options.heartbeatMilliSec, 1)},
        {"--grace-ms", numberOption(&options.graceMilliSec, 0)},
        {"--ring", numberOption(&options.ringSize, atLeastOne)},
        {"--verbose", {0, [&arguments](Words const &) { return arguments.isVerbose = true; }}},
        {"--help", {0, [&arguments](Words const &) { return arguments.wantsHelp = true; }}},
    };
}

}  // namespace

bool readArguments(Words const & words, Arguments * arguments, std::string * problem) {
    auto const options = optionsInto(*arguments);
    for (std::size_t place = 0; place < words.size();) {
        std::string const & name = words[place++];
        auto const option = options.find(name);
        if (option == options.end()) {
            *problem = "unknown option " + name;
            return false;
        }
        std::size_t const count = option->second.words;
        if (words.size() - place < count) {
            *problem = name + " needs " + std::to_string(count) + " more";
            return false;
        }
        auto const first = words.begin() + static_cast<std::ptrdiff_t>(place);
        if (!option->second.take(Words(first, first + static_cast<std::ptrdiff_t>(count)))) {
            *problem = "no sense in " + name + " " + *first;
            return false;
        }
        place += count;
    }
    return true;
}

}  // namespace backend
