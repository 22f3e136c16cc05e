#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/examples/RunProgram.h"

namespace tvk::test {

namespace {

using testing::EndsWith;
using testing::StartsWith;

Outcome agentProgram(std::vector<std::string> const & arguments) {
    return runProgram(TVK_INPROCESS_AGENT, arguments);
}

}  // namespace

TEST(InProcessAgentProgram, WalksThroughASession) {
    Outcome const outcome = agentProgram({});
    EXPECT_EQ(outcome.out, contentOf(TVK_INPROCESS_AGENT_OUTPUT));
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitStatus, 0);
}

TEST(InProcessAgentProgram, HelpSaysWhatItShows) {
    for (char const * const option : {"--help", "-h"}) {
        Outcome const outcome = agentProgram({option});
        EXPECT_EQ(outcome.exitStatus, 0);
        EXPECT_THAT(outcome.out, StartsWith("Usage: inprocess_agent\n"));
        EXPECT_EQ(outcome.err, "");
    }
}

TEST(InProcessAgentProgram, RefusesArguments) {
    std::vector<std::string> const rows[] = {{"x"}, {"--nonsense"}, {""}, {"--help", "x"}};
    for (std::vector<std::string> const & row : rows) {
        Outcome const outcome = agentProgram(row);
        SCOPED_TRACE(testing::PrintToString(row));
        EXPECT_EQ(outcome.exitStatus, 2);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, EndsWith("inprocess_agent --help says more\n"));
    }
}

}  // namespace tvk::test
