#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "examples/session/Options.h"
#include "tests/examples/RunProgram.h"

namespace tvk::test {

namespace {

using testing::HasSubstr;

std::vector<std::string> optionsIn(std::string const & usage) {
    std::vector<std::string> options;
    std::regex const pattern("\n  (--[a-z]+)");
    for (std::sregex_iterator found(usage.begin(), usage.end(), pattern), end; found != end;
         ++found) {
        options.push_back((*found)[1]);
    }
    return options;
}

}  // namespace

TEST(RunScript, HelpListsTheExamplesAndTheOptionsOfTheFirst) {
    Outcome const outcome = runProgram(TVK_RUN, {"--help"});
    EXPECT_EQ(outcome.exitStatus, 0);
    for (char const * const example :
         {"session", "desk", "backend", "roundtrip", "catalogue", "inprocess_agent"}) {
        EXPECT_THAT(outcome.out, HasSubstr(std::string("\n  ") + example));
    }
    std::vector<std::string> const options = optionsIn(session::USAGE);
    EXPECT_GE(options.size(), 10U);
    for (std::string const & option : options) {
        if (option != "--help") {
            EXPECT_THAT(outcome.out, HasSubstr(option));
        }
    }
}

TEST(RunScript, RefusesAnExampleThatDoesNotExist) {
    Outcome const outcome = runProgram(TVK_RUN, {"nothing"});
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "./run: there is no example nothing\n./run --help lists them\n");
}

}  // namespace tvk::test
