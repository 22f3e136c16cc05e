#include "examples/session/Options.h"

#include <charconv>
#include <cstddef>
#include <functional>
#include <map>
#include <string_view>
#include <system_error>
#include <utility>

namespace session {

char const USAGE[] =
    "Usage: session [OPTION]...\n"
    "\n"
    "Walks a trading session over a TCP connection, from the login to the clean-up, and says what "
    "it\n"
    "expected and whether it held. Without --connect the back end is a small one of its own, on a\n"
    "loopback port, with TLS and a certificate made for this run.\n"
    "\n"
    "  --connect HOST:PORT  a back end started elsewhere, such as ./run backend; with TLS unless\n"
    "                       --plain is given\n"
    "  --ca FILE            the authorities to trust, as PEM; else those of the system\n"
    "  --plain              without TLS: passwords and orders are then open to read\n"
    "  --user NAME          the login, hanako unless told otherwise\n"
    "  --password TEXT      its password; all users of the back end have the same, secret\n"
    "  --symbol CODE        the stock to trade and to draw, 7203 unless told otherwise\n"
    "  --seconds N          how long quotes are watched, 0.1 to 3600; 1 unless told otherwise\n"
    "  --patience N         how many seconds anything is waited for, 0.1 to 3600; 8 unless told "
    "otherwise\n"
    "  --svg FILE           where the chart is written; session.svg in the build folder unless "
    "told\n"
    "                       otherwise\n"
    "  --quiet              prints only what did not hold, and the last line\n"
    "  --help               prints this\n"
    "\n"
    "Exit status: 0 every expectation held, 1 one did not, 2 wrong usage or nothing to connect "
    "to.\n";

namespace {

using Words = std::vector<std::string>;

/// Takes the value of an option; false where it makes no sense.
using Taker = std::function<bool(Options &, std::string const &)>;

template <class Number>
bool readNumber(std::string_view text, Number * number) {
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number);
    return error == std::errc() && end == text.data() + text.size();
}

/// The host may be an address with colons in brackets, as in [::1]:4711.
bool takeAddress(Options & options, std::string const & text) {
    std::size_t const colon = text.rfind(':');
    if (colon == std::string::npos || colon == 0) {
        return false;
    }
    std::string host = text.substr(0, colon);
    bool const isBracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (isBracketed) {
        host = host.substr(1, host.size() - 2);
    } else if (host.find_first_of(":[]") != std::string::npos) {
        return false;
    }
    options.host = host;
    return readNumber(std::string_view(text).substr(colon + 1), &options.port) && options.port != 0;
}

Taker intoSeconds(double Options::*member) {
    return [member](Options & options, std::string const & text) {
        constexpr double LEAST = 0.1;
        constexpr double MOST = 3600;
        double & seconds = options.*member;
        return readNumber(text, &seconds) && seconds >= LEAST && seconds <= MOST;
    };
}

Taker intoText(std::string Options::*member) {
    return [member](Options & options, std::string const & text) {
        options.*member = text;
        return !text.empty();
    };
}

std::map<std::string, Taker> const & takers() {
    static std::map<std::string, Taker> const TAKERS{
        {"--connect", takeAddress},
        {"--ca", intoText(&Options::authorities)},
        {"--user", intoText(&Options::user)},
        {"--password", intoText(&Options::password)},
        {"--symbol", intoText(&Options::symbol)},
        {"--seconds", intoSeconds(&Options::seconds)},
        {"--patience", intoSeconds(&Options::patience)},
        {"--svg", intoText(&Options::svg)},
    };
    return TAKERS;
}

std::map<std::string, bool Options::*> const & switches() {
    static std::map<std::string, bool Options::*> const SWITCHES{
        {"--plain", &Options::plain},
        {"--quiet", &Options::quiet},
        {"--help", &Options::help},
        {"-h", &Options::help},
    };
    return SWITCHES;
}

/// Takes one option from the front of the words; what is wrong with it, or an empty text.
std::string takeOne(Options & options, Words::const_iterator & word, Words::const_iterator end) {
    std::string const & whole = *word++;
    auto const found = switches().find(whole);
    if (found != switches().end()) {
        options.*found->second = true;
        return "";
    }
    std::size_t const equals = whole.find('=');
    std::string const name = whole.substr(0, equals);
    auto const taker = takers().find(name);
    if (taker == takers().end()) {
        return (whole.substr(0, 1) == "-" ? "unknown option: " : "takes no ") + whole;
    }
    if (equals == std::string::npos && word == end) {
        return name + " needs a value";
    }
    std::string const value = equals == std::string::npos ? *word++ : whole.substr(equals + 1);
    return taker->second(options, value) ? "" : name + " cannot be " + value;
}

}  // namespace

std::optional<Options> parseOptions(Words const & words, std::string * complaint) {
    Options options;
    for (auto word = words.begin(); word != words.end();) {
        *complaint = takeOne(options, word, words.end());
        if (!complaint->empty()) {
            return std::nullopt;
        }
    }
    if (options.host.empty() && !options.authorities.empty()) {
        *complaint = "--ca goes with --connect";
        return std::nullopt;
    }
    return options;
}

}  // namespace session
