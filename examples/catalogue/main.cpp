// A catalogue of types and messages: loaded from a file of definitions, printed as a table, and used
// to label the fields of messages. README.md beside this file describes the format.

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <limits>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "examples/catalogue/Labels.h"
#include "examples/catalogue/Loader.h"
#include "examples/catalogue/Table.h"
#include "examples/support/Printable.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/SimpleObjectCache.h"

namespace {

enum ExitStatus { ALL_WELL = 0, BAD_INPUT = 1, NOT_RUN = 2 };

constexpr char USAGE[] =
    "Usage: catalogue [FILE [MESSAGES]]\n"
    "\n"
    "Loads the definitions of types and messages in FILE and prints them as a table, then the\n"
    "messages in MESSAGES, one JSON object a line, with what the definitions say about their\n"
    "fields. Without FILE both are those that come with the example; one of them may be -,\n"
    "standard input. examples/catalogue/README.md describes the format of FILE.\n"
    "\n"
    "  --help  prints this\n"
    "\n"
    "What is wrong with FILE is reported on standard error, each fault with its place in the\n"
    "structure of the file, and nothing is printed then. A line of MESSAGES that is no message, "
    "or\n"
    "one that FILE does not define, is reported with its number, and the run goes on. Exit "
    "status:\n"
    "0 all well, 1 bad definitions or bad lines, 2 wrong usage or a file that cannot be read.\n";

/// The longest error text of the scanner holds 256 bytes of input.
constexpr std::size_t COMPLAINT_BYTES = 400;

struct Arguments {
    std::string definitions = TVK_CATALOGUE_DEFINITIONS;
    std::string messages = TVK_CATALOGUE_MESSAGES;  ///< empty for none
    bool help = false;
};

/// Nothing if the usage is wrong, which has been reported then.
std::optional<Arguments> parseArguments(int argc, char ** argv) {
    Arguments arguments;
    std::vector<std::string> files;
    bool onlyFiles = false;
    for (int i = 1; i < argc; ++i) {
        std::string_view const word = argv[i];
        if (onlyFiles || word == "-" || word.substr(0, 1) != "-") {
            files.emplace_back(word);
        } else if (word == "--") {
            onlyFiles = true;
        } else if (word == "--help" || word == "-h") {
            arguments.help = true;
        } else {
            std::fprintf(stderr, "catalogue: unknown option: %s\n", argv[i]);
            return std::nullopt;
        }
    }
    if (files.size() > 2) {
        std::fprintf(stderr, "catalogue: more than two files: %s\n", files[2].c_str());
        return std::nullopt;
    }
    if (files.size() == 2 && files[0] == "-" && files[1] == "-") {
        std::fputs("catalogue: standard input cannot be both files\n", stderr);
        return std::nullopt;
    }
    if (!files.empty()) {
        arguments.definitions = files[0];
        arguments.messages = files.size() == 2 ? files[1] : "";
    }
    return arguments;
}

/// Nothing if the file cannot be read, which has been reported then.
std::optional<std::string> contentOf(std::string const & name) {
    std::ifstream file;
    if (name != "-") {
        file.open(name, std::ios::binary);
        if (!file) {
            std::fprintf(stderr, "catalogue: cannot open %s: %s\n", name.c_str(),
                         std::strerror(errno));
            return std::nullopt;
        }
    }
    std::istream & input = name == "-" ? std::cin : file;
    std::string content;
    char block[1 << 16];
    while (input.read(block, sizeof block), input.gcount() > 0) {
        content.append(block, static_cast<std::size_t>(input.gcount()));
    }
    if (input.bad()) {
        std::fprintf(stderr, "catalogue: cannot read %s\n", name.c_str());
        return std::nullopt;
    }
    return content;
}

/// Prints messages under what a catalogue says about them.
class MessagePrinter {
public:
    explicit MessagePrinter(tvk::MessageDefManager const & catalogue) : catalogue_(catalogue) {}

    /// Empty if all went well, else what was wrong with the line.
    std::string print(std::string_view line) {
        if (line.size() > std::numeric_limits<unsigned int>::max()) {
            return "the line is longer than the parser can take";
        }
        tvk::ErrorInfo error;
        auto const message = parser_.parseJsonMessage(
            line.data(), static_cast<unsigned int>(line.size()), 0, &error);
        if (message.isNull()) {
            return printable(bytesOf(error.getErrorMessage()), COMPLAINT_BYTES);
        }
        tvk::MessageTypeDef const * const type = definitionOf(catalogue_, *message);
        if (type == nullptr) {
            return "the catalogue does not define this message";
        }
        std::printf("\n%s (%s)\n\n%s", printableAnsi(type->getName(), COMPLAINT_BYTES).c_str(),
                    printableAnsi(type->getNameJa(), COMPLAINT_BYTES).c_str(),
                    labelled(*type, *message).c_str());
        return "";
    }

private:
    tvk::MessageDefManager const & catalogue_;
    tvk::SimpleObjectCache cache_{tvk::SimpleObjectCache::defaultRawDataConverter()};
    tvk::JsonMessageParser parser_{&cache_};
};

bool printMessages(tvk::MessageDefManager const & catalogue, std::string const & lines) {
    MessagePrinter printer(catalogue);
    std::istringstream input(lines);
    bool allWell = true;
    unsigned long long number = 0;
    for (std::string line; std::getline(input, line);) {
        ++number;
        std::string const complaint = printer.print(line);
        if (!complaint.empty()) {
            std::fprintf(stderr, "line %llu: %s\n", number, complaint.c_str());
            allWell = false;
        }
    }
    return allWell;
}

int run(Arguments const & arguments) {
    std::optional<std::string> const definitions = contentOf(arguments.definitions);
    if (!definitions) {
        return NOT_RUN;
    }
    std::string messages;
    if (!arguments.messages.empty()) {
        std::optional<std::string> const content = contentOf(arguments.messages);
        if (!content) {
            return NOT_RUN;
        }
        messages = *content;
    }

    LoadedCatalogue const loaded = loadCatalogue(*definitions);
    if (loaded.registry.isNull()) {
        for (std::string const & complaint : loaded.complaints) {
            std::fprintf(stderr, "%s\n", complaint.c_str());
        }
        std::fprintf(stderr, "catalogue: nothing is loaded\n");
        return BAD_INPUT;
    }
    std::fputs(catalogueTable(*loaded.registry).c_str(), stdout);
    return printMessages(*loaded.registry, messages) ? ALL_WELL : BAD_INPUT;
}

}  // namespace

int main(int argc, char ** argv) {
    std::ios::sync_with_stdio(false);
    std::optional<Arguments> const arguments = parseArguments(argc, argv);
    if (!arguments) {
        std::fputs("catalogue --help says more\n", stderr);
        return NOT_RUN;
    }
    if (arguments->help) {
        std::fputs(USAGE, stdout);
        return ALL_WELL;
    }
    return run(*arguments);
}
