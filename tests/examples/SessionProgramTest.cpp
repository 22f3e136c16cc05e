#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "examples/backend/Backend.h"
#include "tests/examples/RunProgram.h"
#include "tests/examples/SvgRoot.h"
#include "tests/support/TemporaryFolder.h"

namespace tvk::test {

namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// The program in a folder of its own.
class SessionProgram : public testing::Test {
protected:
    Outcome session(std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(), {"--svg", picture(), "--seconds", "0.3"});
        return runProgram(TVK_SESSION, arguments);
    }
    Outcome sessionWith(backend::Backend const & backEnd,
                        std::vector<std::string> arguments) const {
        arguments.insert(arguments.end(),
                         {"--connect", "127.0.0.1:" + std::to_string(backEnd.port()), "--plain"});
        return session(arguments);
    }
    static std::unique_ptr<backend::Backend> started(backend::Backend::Options const & options) {
        auto backEnd = std::make_unique<backend::Backend>(options);
        std::string problem;
        EXPECT_TRUE(backEnd->start(&problem)) << problem;
        return backEnd;
    }
    std::string picture() const { return (folder_.path() / "chart.svg").string(); }

private:
    TemporaryFolder const folder_;
};

/// Expects an account in which everything held.
void expectAllHeld(Outcome const & outcome) {
    EXPECT_EQ(outcome.exitStatus, 0) << outcome.out;
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, Not(HasSubstr("FAILED")));
    EXPECT_THAT(outcome.out, testing::ContainsRegex("\n([0-9]+) of [0-9]+ expectations held\n$"));
}

}  // namespace

TEST_F(SessionProgram, WalksASessionWithABackEndOfItsOwn) {
    Outcome const outcome = session({});
    expectAllHeld(outcome);
    char const * const wanted[] = {
        ", with TLS\n",
        "\nStart up\n",
        "\nLog in\n",
        "    ok  a wrong password is refused\n",
        "みのり自動車",
        "    ok  each of 1000 requests at once gets its own reply\n",
        "こんにちは、世界",
        "    ok  a request without a reply times out after 150 ms\n",
        "    ok  a request that is cancelled ends so, and its late reply is dropped\n",
        "    ok  it is shown, held back while it is shown, and shown anew\n",
        "    ok  an order at the market is filled\n",
        "    ok  the session is resumed, and no notice is lost or comes twice\n",
        "    ok  its newest bar moves\n",
        "    ok  the first headline has its article\n",
        "    ok  nobody holds the agent any more but its maker\n",
    };
    for (char const * const text : wanted) {
        EXPECT_THAT(outcome.out, HasSubstr(text));
    }
}

TEST_F(SessionProgram, SaysLittleWhenItIsQuietButDrawsTheChart) {
    Outcome const outcome = session({"--quiet", "--plain"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, testing::MatchesRegex("[0-9]+ of [0-9]+ expectations held\n"));
    std::string const svg = contentOf(picture());
    EXPECT_THAT(svg, HasSubstr("<title>7203  みのり自動車</title>"));
    EXPECT_THAT(svg, HasSubstr(">リアルタイム</text>"));
    auto const root = svgRootOf(svg);
    ASSERT_TRUE(root);
    EXPECT_GE(root->getSubElementsWithName("g").size(), 80U);
}

TEST_F(SessionProgram, WalksASessionWithABackEndStartedElsewhere) {
    backend::Backend::Options options;
    options.quoteMilliSec = 20;
    auto const backEnd = started(options);
    Outcome const outcome = sessionWith(*backEnd, {"--user", "taro", "--symbol", "9407"});
    expectAllHeld(outcome);
    EXPECT_THAT(outcome.out, HasSubstr("ほしぞら通信"));
    EXPECT_GE(backEnd->counts().resumed, 1U);
}

TEST_F(SessionProgram, FailsWhereTheBackEndForgetsNotices) {
    backend::Backend::Options options;
    options.quoteMilliSec = 20;
    options.ringSize = 10;
    auto const backEnd = started(options);
    Outcome const outcome = sessionWith(*backEnd, {"--patience", "1"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(
        outcome.out,
        HasSubstr("FAILED  the session is resumed, and no notice is lost or comes twice\n"));
}

TEST_F(SessionProgram, GoesNoFurtherThanTheLogin) {
    auto const backEnd = started({});
    Outcome const outcome = sessionWith(*backEnd, {"--password", "wrong"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.out, HasSubstr("FAILED  the right one is accepted\n"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("\nOrders\n")));
    EXPECT_THAT(outcome.out, HasSubstr("    ok  the agent stops, once\n"));
    EXPECT_FALSE(std::filesystem::exists(picture()));
}

TEST_F(SessionProgram, FailsWhereTheOtherSideSpeaksNoTls) {
    auto const backEnd = started({});
    Outcome const outcome =
        session({"--connect", "127.0.0.1:" + std::to_string(backEnd->port()), "--patience", "1"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.out, HasSubstr("FAILED  the connection stands\n"));
}

TEST_F(SessionProgram, FailsWhereThePictureCannotBeWritten) {
    Outcome const outcome = runProgram(
        TVK_SESSION, {"--svg", picture() + "/no/such/folder", "--seconds", "0.1", "--quiet"});
    EXPECT_EQ(outcome.exitStatus, 1);
    EXPECT_THAT(outcome.out,
                StartsWith("FAILED  the chart is written as a picture, by a thread of the pool\n"));
}

TEST_F(SessionProgram, HelpSaysWhatItTakes) {
    Outcome const outcome = runProgram(TVK_SESSION, {"--help"});
    EXPECT_EQ(outcome.exitStatus, 0);
    EXPECT_THAT(outcome.out, StartsWith("Usage: session [OPTION]...\n"));
    EXPECT_EQ(outcome.err, "");
}

TEST_F(SessionProgram, RefusesWhatItDoesNotKnow) {
    Outcome const outcome = runProgram(TVK_SESSION, {"--nonsense"});
    EXPECT_EQ(outcome.exitStatus, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err, "session: unknown option: --nonsense\nsession --help says more\n");
}

}  // namespace tvk::test
