#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tests/examples/RunProgram.h"

namespace tvk::test {

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string const DATA = TVK_EXAMPLE_DATA;

constexpr char const * SMALL_CATALOGUE =
    R"({"types":[{"name":"Price","form":"simple","nameJa":"\u4fa1\u683c"}],"messages":[)"
    R"({"name":"Quote","id":"quote","nameJa":"\u6642\u4fa1","fields":[)"
    R"({"name":"last","nameJa":"\u73fe\u5728\u5024","type":"Price"}]}]})";

Outcome catalogue(std::vector<std::string> const & arguments, std::string const & input = "") {
    return runProgram(TVK_CATALOGUE, arguments, {input});
}

/// A file that is gone with the object.
class TemporaryFile {
public:
    explicit TemporaryFile(std::string const & content)
        : name_(testing::TempDir() + "catalogue" +
                std::to_string(reinterpret_cast<std::uintptr_t>(this))) {
        std::ofstream(name_, std::ios::binary) << content;
    }
    ~TemporaryFile() { std::filesystem::remove(name_); }
    TemporaryFile(TemporaryFile const &) = delete;
    TemporaryFile & operator=(TemporaryFile const &) = delete;

    std::string const & name() const { return name_; }

private:
    std::string name_;
};

}  // namespace

TEST(CatalogueProgram, PrintsTheTradingCatalogueAndLabelsItsMessages) {
    Outcome const outcome = catalogue({});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, contentOf(TVK_CATALOGUE_OUTPUT));
}

TEST(CatalogueProgram, LabelsTradingMessagesWithoutARemark) {
    // All types of messages but three are defined.
    std::ifstream lines(DATA + "/trading.ndjson");
    std::string known;
    long count = 0;
    for (std::string line; std::getline(lines, line);) {
        for (char const * const type : {"quote", "board", "orderReply", "execution", "balance"}) {
            if (line.rfind(std::string(R"({"type":")") + type + '"', 0) == 0) {
                known += line + "\n";
                ++count;
            }
        }
    }
    EXPECT_EQ(count, 381);
    Outcome const outcome = catalogue({DATA + "/catalogue.json", "-"}, known);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, Not(HasSubstr("Remark")));
    std::string::size_type at = 0;
    while ((at = outcome.out.find("\nField  ", at + 1)) != std::string::npos) {
        --count;
    }
    EXPECT_EQ(count, 0);
}

TEST(CatalogueProgram, PrintsTheCatalogueAloneWithoutMessages) {
    Outcome const outcome = catalogue({"-"}, SMALL_CATALOGUE);
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, HasSubstr("\nPrice    \xE4\xBE\xA1\xE6\xA0\xBC           simple\n"));
    EXPECT_THAT(outcome.out,
                EndsWith("\nQuote    \xE6\x99\x82\xE4\xBE\xA1           message quote\n"
                         "  last   \xE7\x8F\xBE\xE5\x9C\xA8\xE5\x80\xA4         Price          "
                         "\xE4\xBE\xA1\xE6\xA0\xBC\n"));
}

TEST(CatalogueProgram, ReportsBadDefinitionsAndPrintsNothing) {
    TemporaryFile const messages("{\"type\":\"quote\"}\n");
    Outcome const outcome = catalogue(
        {"-", messages.name()},
        R"({"types":[{"name":"L","form":"list","nameJa":"l","elementType":"L"}],"messages":[)"
        R"({"name":"Quote","id":"quote","nameJa":"q","fields":[)"
        R"({"name":"last","nameJa":"l","type":"Prise"},{"name":"last","nameJa":"l","type":"L"}]}]})");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "messages[0].fields[1].name: duplicated field definition: Quote.last\n"
              "messages[0].fields[0].type: unknown type \"Prise\"\n"
              "types[0].elementType: a cycle of types: \"L\" -> \"L\"\n"
              "catalogue: nothing is loaded\n");
}

TEST(CatalogueProgram, ReportsLinesThatItCannotLabelAndGoesOn) {
    TemporaryFile const definitions(SMALL_CATALOGUE);
    Outcome const outcome =
        catalogue({definitions.name(), "-"},
                  "{\"type\":\"quote\",\"last\":1}\n[\x1B\n\n{\"type\":\"news\"}\n"
                  "{\"last\":1}\n{\"type\":\"quote\",\"last\":2}");
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_EQ(outcome.err,
              "line 2: invalid message data near position 0: tag '{' is expected, but was "
              "<[\\x1B>...\n"
              "line 3: invalid message data near position 0: tag '{' is expected, but was <>...\n"
              "line 4: the catalogue does not define this message\n"
              "line 5: the catalogue does not define this message\n");
    EXPECT_THAT(outcome.out,
                EndsWith("\n\nQuote (\xE6\x99\x82\xE4\xBE\xA1)\n\n"
                         "Field  Japanese name  Type   Type in Japanese  Value  Remark\n"
                         "-----  -------------  -----  ----------------  -----  "
                         "--------------------\n"
                         "last   \xE7\x8F\xBE\xE5\x9C\xA8\xE5\x80\xA4         Price  "
                         "\xE4\xBE\xA1\xE6\xA0\xBC              2\n"
                         "type                                           quote  "
                         "not in the catalogue\n"));
}

TEST(CatalogueProgram, HelpNamesTheArguments) {
    Outcome const outcome = catalogue({"--help"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, StartsWith("Usage: catalogue [FILE [MESSAGES]]\n"));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(catalogue({"-h"}).out, outcome.out);
}

TEST(CatalogueProgram, RefusesWrongUsage) {
    struct Row {
        std::vector<std::string> arguments;
        char const * complaint;
    };
    Row const rows[] = {
        {{"--nonsense"}, "catalogue: unknown option: --nonsense\n"},
        {{"-x"}, "catalogue: unknown option: -x\n"},
        {{"one", "two", "three"}, "catalogue: more than two files: three\n"},
        {{"-", "-"}, "catalogue: standard input cannot be both files\n"},
    };
    for (Row const & row : rows) {
        Outcome const outcome = catalogue(row.arguments);
        SCOPED_TRACE(row.complaint);
        EXPECT_EQ(outcome.exitStatus, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, std::string(row.complaint) + "catalogue --help says more\n");
    }
}

TEST(CatalogueProgram, RefusesFilesThatCannotBeRead) {
    TemporaryFile const definitions(SMALL_CATALOGUE);
    for (std::vector<std::string> const & arguments :
         {std::vector<std::string>{"no/such/file"},
          std::vector<std::string>{definitions.name(), "no/such/file"},
          std::vector<std::string>{"--", "no/such/file"}}) {
        Outcome const outcome = catalogue(arguments);
        EXPECT_EQ(outcome.exitStatus, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, StartsWith("catalogue: cannot open no/such/file: "));
    }
    std::string const folder = std::filesystem::temp_directory_path().string();
    Outcome const aFolder = catalogue({folder});
    EXPECT_EQ(aFolder.exitStatus, 2);
    EXPECT_EQ(aFolder.err, "catalogue: cannot read " + folder + "\n");
}

TEST(CatalogueProgram, SurvivesNestingAMillionDeep) {
    constexpr std::size_t DEPTH = 1'000'000;
    std::string deep;
    for (std::size_t i = 0; i < DEPTH; ++i) {
        deep += "{\"types\":";
    }
    deep += "1" + std::string(DEPTH, '}');
    Outcome const definitions = catalogue({"-"}, deep);
    EXPECT_EQ(definitions.exitStatus, 1);
    EXPECT_EQ(definitions.err,
              "types: an array is expected, not an object\n"
              "messages: missing\n"
              "catalogue: nothing is loaded\n");

    TemporaryFile const small(SMALL_CATALOGUE);
    Outcome const messages =
        catalogue({small.name(), "-"}, "{\"type\":\"quote\",\"last\":" + deep + "}\n");
    EXPECT_EQ(messages.exitStatus, 0);
    EXPECT_THAT(messages.out, HasSubstr("record of 1  a single value is expected\n"));
}

}  // namespace tvk::test
