// Trading messages from JSON to typed messages and back: one message a line, from a file or standard
// input, compared after the way back, with the speed of both ways at the end.

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "examples/roundtrip/Progress.h"
#include "examples/roundtrip/RoundTrip.h"
#include "examples/support/Printable.h"

namespace {

enum ExitStatus { ALL_WELL = 0, BAD_LINES = 1, NOT_RUN = 2 };

constexpr char USAGE[] =
    "Usage: roundtrip [--options BITS] [FILE]\n"
    "\n"
    "Reads one JSON message a line from FILE (- is standard input; without FILE the trading\n"
    "messages that come with the example), turns each into a message and back into JSON, reads\n"
    "that again and compares. Text behind the object of a line is not looked at.\n"
    "\n"
    "  --options BITS  what the scanner allows, as the sum of\n"
    "                    2  comments that start with //\n"
    "                    4  comments that start with #\n"
    "                    8  field names without quotes\n"
    "                   16  a comma before a closing bracket\n"
    "  --help          prints this\n"
    "\n"
    "A line that is no message is reported on standard error with its number, and the run goes\n"
    "on; so is an empty line. Exit status: 0 all well, 1 bad lines, 2 wrong usage or a file that\n"
    "cannot be read.\n";

/// The longest error text of the scanner holds 256 bytes of input.
constexpr std::size_t COMPLAINT_BYTES = 400;

struct Arguments {
    int options = 0;
    std::string file = TVK_TRADING_MESSAGES;
    bool help = false;
};

std::optional<int> toBits(std::string_view text) {
    int bits = 0;
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), bits);
    if (error != std::errc() || end != text.data() + text.size() || bits < 0) {
        return std::nullopt;
    }
    return bits;
}

/// Nothing if the usage is wrong, which has been reported then.
std::optional<Arguments> parseArguments(int argc, char ** argv) {
    constexpr std::string_view OPTIONS = "--options";
    Arguments arguments;
    bool hasFile = false;
    bool onlyFiles = false;
    for (int i = 1; i < argc; ++i) {
        std::string_view const word = argv[i];
        if (onlyFiles || word == "-" || word.substr(0, 1) != "-") {
            if (hasFile) {
                std::fprintf(stderr, "roundtrip: more than one file: %s\n", argv[i]);
                return std::nullopt;
            }
            arguments.file = word;
            hasFile = true;
        } else if (word == "--") {
            onlyFiles = true;
        } else if (word == "--help" || word == "-h") {
            arguments.help = true;
        } else if (word.substr(0, OPTIONS.size()) == OPTIONS &&
                   (word.size() == OPTIONS.size() || word[OPTIONS.size()] == '=')) {
            bool const apart = word.size() == OPTIONS.size();
            if (apart && i + 1 == argc) {
                std::fprintf(stderr, "roundtrip: --options needs a number\n");
                return std::nullopt;
            }
            std::string_view const text = apart ? argv[++i] : word.substr(OPTIONS.size() + 1);
            std::optional<int> const bits = toBits(text);
            if (!bits) {
                std::fprintf(stderr, "roundtrip: --options needs a number, not '%s'\n",
                             std::string(text).c_str());
                return std::nullopt;
            }
            arguments.options = *bits;
        } else {
            std::fprintf(stderr, "roundtrip: unknown option: %s\n", argv[i]);
            return std::nullopt;
        }
    }
    return arguments;
}

struct Counts {
    unsigned long long lines = 0;
    unsigned long long bytes = 0;
    unsigned long long bad = 0;
};

Counts takeAll(std::istream & input, RoundTrip & roundTrip) {
    Counts counts;
    Progress progress;
    for (std::string line; std::getline(input, line);) {
        ++counts.lines;
        counts.bytes += line.size();
        std::string const complaint = roundTrip.take(line);
        if (!complaint.empty()) {
            ++counts.bad;
            progress.clear();
            std::fprintf(stderr, "line %llu: %s\n", counts.lines,
                         printable(complaint, COMPLAINT_BYTES).c_str());
        }
        progress.show(counts.lines, counts.bytes);
    }
    progress.clear();
    return counts;
}

void printWay(char const * name, RoundTrip::Way const & way) {
    double const seconds = std::chrono::duration<double>(way.time).count();
    auto const rate = [seconds](unsigned long long count) {
        return seconds > 0 ? static_cast<double>(count) / seconds : 0.0;
    };
    std::printf("%-16s %10llu messages %12llu bytes %12.0f messages/s %14.0f bytes/s\n", name,
                way.messages, way.bytes, rate(way.messages), rate(way.bytes));
}

void printReport(RoundTrip const & roundTrip, Counts const & counts) {
    if (!roundTrip.firstMessage().empty()) {
        std::printf("The first message:\n%s\n", roundTrip.firstMessage().c_str());
    }
    printWay("JSON to message", roundTrip.fromJson());
    printWay("message to JSON", roundTrip.toJson());
    tvk::SimpleObjectCache const & cache = roundTrip.cache();
    std::printf("cache            %u of %u places, %lu hits, %lu conflicts\n", cache.size(),
                cache.capacity(), cache.fastHitCount(), cache.conflictCount());
    std::printf("%llu lines, %llu read back the same, %llu bad\n", counts.lines,
                counts.lines - counts.bad, counts.bad);
}

int run(Arguments const & arguments) {
    std::ifstream file;
    bool const fromFile = arguments.file != "-";
    if (fromFile) {
        file.open(arguments.file, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "roundtrip: cannot open %s: %s\n", arguments.file.c_str(),
                         std::strerror(errno));
            return NOT_RUN;
        }
    }
    std::istream & input = fromFile ? file : std::cin;
    std::printf("Messages of %s, from JSON and back\n\n",
                fromFile ? arguments.file.c_str() : "standard input");

    RoundTrip roundTrip(arguments.options);
    Counts const counts = takeAll(input, roundTrip);
    if (input.bad()) {
        std::fprintf(stderr, "roundtrip: cannot read %s\n", arguments.file.c_str());
        return NOT_RUN;
    }
    printReport(roundTrip, counts);
    return counts.bad == 0 ? ALL_WELL : BAD_LINES;
}

}  // namespace

int main(int argc, char ** argv) {
    std::ios::sync_with_stdio(false);
    std::optional<Arguments> const arguments = parseArguments(argc, argv);
    if (!arguments) {
        std::fputs("roundtrip --help says more\n", stderr);
        return NOT_RUN;
    }
    if (arguments->help) {
        std::fputs(USAGE, stdout);
        return ALL_WELL;
    }
    return run(*arguments);
}
