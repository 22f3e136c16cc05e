#include "examples/backend/Arguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tvk::test {

using backend::Arguments;
using backend::readArguments;

namespace {

using Words = std::vector<std::string>;

/// Why they are refused; empty where they are not.
std::string problemWith(Words const & words) {
    Arguments arguments;
    std::string problem;
    bool const areTaken = readArguments(words, &arguments, &problem);
    EXPECT_EQ(areTaken, problem.empty());
    return problem;
}

}  // namespace

TEST(BackendArguments, HaveDefaults) {
    Arguments arguments;
    std::string problem;
    ASSERT_TRUE(readArguments({}, &arguments, &problem));
    EXPECT_EQ(arguments.options.port, 0);
    EXPECT_EQ(arguments.options.address, "127.0.0.1");
    EXPECT_EQ(arguments.options.certFile, "");
    EXPECT_EQ(arguments.options.quoteMilliSec, 200);
    EXPECT_FALSE(arguments.isVerbose);
    EXPECT_FALSE(arguments.wantsHelp);
}

TEST(BackendArguments, SetOptions) {
    Arguments arguments;
    std::string problem;
    ASSERT_TRUE(readArguments(
        {"--port",  "7400",           "--address", "127.0.0.2",  "--tls", "cert.pem",
         "key.pem", "--seed",         "9",         "--quote-ms", "0",     "--headline-ms",
         "7",       "--heartbeat-ms", "8",         "--grace-ms", "11",    "--ring",
         "12",      "--verbose",      "--help"},
        &arguments, &problem))
        << problem;
    EXPECT_EQ(arguments.options.port, 7400);
    EXPECT_EQ(arguments.options.address, "127.0.0.2");
    EXPECT_EQ(arguments.options.certFile, "cert.pem");
    EXPECT_EQ(arguments.options.keyFile, "key.pem");
    EXPECT_EQ(arguments.options.seed, 9U);
    EXPECT_EQ(arguments.options.quoteMilliSec, 0);
    EXPECT_EQ(arguments.options.headlineMilliSec, 7);
    EXPECT_EQ(arguments.options.heartbeatMilliSec, 8);
    EXPECT_EQ(arguments.options.graceMilliSec, 11);
    EXPECT_EQ(arguments.options.ringSize, 12U);
    EXPECT_TRUE(arguments.isVerbose);
    EXPECT_TRUE(arguments.wantsHelp);
}

TEST(BackendArguments, AreRefusedWithAReason) {
    EXPECT_EQ(problemWith({"--prot"}), "unknown option --prot");
    EXPECT_EQ(problemWith({"7400"}), "unknown option 7400");
    EXPECT_EQ(problemWith({"--port"}), "--port needs 1 more");
    EXPECT_EQ(problemWith({"--tls", "cert.pem"}), "--tls needs 2 more");
    EXPECT_EQ(problemWith({"--port", "70000"}), "no sense in --port 70000");
    EXPECT_EQ(problemWith({"--port", "-1"}), "no sense in --port -1");
    EXPECT_EQ(problemWith({"--seed", "1x"}), "no sense in --seed 1x");
    EXPECT_EQ(problemWith({"--quote-ms", ""}), "no sense in --quote-ms ");
    EXPECT_EQ(problemWith({"--heartbeat-ms", "0"}), "no sense in --heartbeat-ms 0");
    EXPECT_EQ(problemWith({"--ring", "0"}), "no sense in --ring 0");
    EXPECT_EQ(problemWith({"--address", ""}), "no sense in --address ");
}

}  // namespace tvk::test
