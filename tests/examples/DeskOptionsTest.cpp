#include "examples/desk/Options.h"

#include <gtest/gtest.h>

namespace {

using desk::Options;
using desk::readOptions;

using Words = std::vector<std::string>;

TEST(DeskOptions, HaveDefaultsForTheOwnBackEnd) {
    Options options;
    std::string problem;
    ASSERT_TRUE(readOptions({}, &options, &problem)) << problem;
    EXPECT_EQ(options.host, "");
    EXPECT_FALSE(options.logsIn);
    EXPECT_EQ(options.seconds, 0);
}

TEST(DeskOptions, TakeWhatIsTold) {
    Options options;
    std::string problem;
    ASSERT_TRUE(readOptions({"--connect", "desk.example:4433", "--ca", "root.pem", "--user", "taro",
                             "--password", "x", "--login", "--seconds", "7"},
                            &options, &problem))
        << problem;
    EXPECT_EQ(options.host, "desk.example");
    EXPECT_EQ(options.port, 4433);
    EXPECT_FALSE(options.isPlain) << "TLS unless a plain connection is asked for";
    EXPECT_EQ(options.certFile, "root.pem");
    EXPECT_EQ(options.user, "taro");
    EXPECT_EQ(options.password, "x");
    EXPECT_TRUE(options.logsIn);
    EXPECT_EQ(options.seconds, 7);
}

TEST(DeskOptions, TakeAnAddressInBrackets) {
    Options options;
    std::string problem;
    ASSERT_TRUE(readOptions({"--connect", "[::1]:80", "--plain"}, &options, &problem)) << problem;
    EXPECT_EQ(options.host, "::1");
    EXPECT_EQ(options.port, 80);
}

TEST(DeskOptions, EndByThemselvesAfterAScreenshot) {
    Options options;
    std::string problem;
    ASSERT_TRUE(readOptions({"--screenshot", "desk.png"}, &options, &problem));
    EXPECT_GT(options.seconds, 0);
    options = {};
    ASSERT_TRUE(readOptions({"--seconds", "2", "--screenshot", "desk.png"}, &options, &problem));
    EXPECT_EQ(options.seconds, 2);
}

TEST(DeskOptions, SayWhatMakesNoSense) {
    struct Row {
        Words words;
        char const * problem;
    };
    Row const rows[] = {
        {{"--connekt", "a:1"}, "there is no option --connekt"},
        {{"file"}, "there is no option file"},
        {{"--connect"}, "--connect wants another word behind it"},
        {{"--connect", "host"}, "--connect wants another word behind it"},
        {{"--connect", ":80"}, "--connect wants another word behind it"},
        {{"--connect", "host:0"}, "--connect wants another word behind it"},
        {{"--connect", "host:65536"}, "--connect wants another word behind it"},
        {{"--connect", "host:8o"}, "--connect wants another word behind it"},
        {{"--seconds", "0"}, "--seconds wants another word behind it"},
        {{"--seconds", "-1"}, "--seconds wants another word behind it"},
        {{"--user", ""}, "--user wants another word behind it"},
        {{"--plain"}, "--plain and --ca go with --connect"},
        {{"--ca", "x"}, "--plain and --ca go with --connect"},
        {{"--connect", "a:1", "--plain", "--ca", "x"}, "--plain and --ca exclude each other"},
    };
    for (Row const & row : rows) {
        Options options;
        std::string problem;
        EXPECT_FALSE(readOptions(row.words, &options, &problem));
        EXPECT_EQ(problem, row.problem);
    }
}

}  // namespace
