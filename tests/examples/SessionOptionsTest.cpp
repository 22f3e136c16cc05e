#include "examples/session/Options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tvk::test {

namespace {

using session::Options;
using session::parseOptions;
using Words = std::vector<std::string>;

Options optionsOf(Words const & words) {
    std::string complaint;
    auto const options = parseOptions(words, &complaint);
    EXPECT_TRUE(options.has_value()) << complaint;
    return options.value_or(Options{});
}

}  // namespace

TEST(SessionOptions, HaveDefaultsThatNeedNothing) {
    Options const options = optionsOf({});
    EXPECT_EQ(options.host, "");
    EXPECT_EQ(options.user, "hanako");
    EXPECT_EQ(options.password, "secret");
    EXPECT_EQ(options.symbol, "7203");
    EXPECT_THAT(options.svg, testing::EndsWith("/session.svg"));
    EXPECT_EQ(options.seconds, 1);
    EXPECT_EQ(options.patience, 8);
    EXPECT_FALSE(options.plain);
    EXPECT_FALSE(options.quiet);
    EXPECT_FALSE(options.help);
}

TEST(SessionOptions, AreTakenAsTwoWordsOrOne) {
    Options const options = optionsOf(
        {"--connect", "example.test:4711", "--user=taro", "--password", "=", "--ca=a.pem",
         "--symbol", "8306", "--seconds=2.5", "--svg", "a b.svg", "--patience", "0.5", "--quiet"});
    EXPECT_EQ(options.patience, 0.5);
    EXPECT_EQ(options.host, "example.test");
    EXPECT_EQ(options.port, 4711);
    EXPECT_EQ(options.user, "taro");
    EXPECT_EQ(options.password, "=");
    EXPECT_EQ(options.authorities, "a.pem");
    EXPECT_EQ(options.symbol, "8306");
    EXPECT_EQ(options.seconds, 2.5);
    EXPECT_EQ(options.svg, "a b.svg");
    EXPECT_TRUE(options.quiet);
}

TEST(SessionOptions, SwitchesStandAlone) {
    EXPECT_TRUE(optionsOf({"--plain"}).plain);
    EXPECT_TRUE(optionsOf({"--help"}).help);
    EXPECT_TRUE(optionsOf({"-h"}).help);
}

TEST(SessionOptions, AddressWithColonsStandsInBrackets) {
    Options const options = optionsOf({"--connect", "[::1]:65535"});
    EXPECT_EQ(options.host, "::1");
    EXPECT_EQ(options.port, 65535);
}

TEST(SessionOptions, SayWhatIsWrong) {
    struct Row {
        Words words;
        char const * complaint;
    };
    Row const rows[] = {
        {{"--nonsense"}, "unknown option: --nonsense"},
        {{"--nonsense=1"}, "unknown option: --nonsense=1"},
        {{"--plain=yes"}, "unknown option: --plain=yes"},
        {{"x"}, "takes no x"},
        {{""}, "takes no "},
        {{"--user"}, "--user needs a value"},
        {{"--user", ""}, "--user cannot be "},
        {{"--symbol="}, "--symbol cannot be "},
        {{"--connect", "host"}, "--connect cannot be host"},
        {{"--connect", ":1"}, "--connect cannot be :1"},
        {{"--connect", "host:"}, "--connect cannot be host:"},
        {{"--connect", "host:0"}, "--connect cannot be host:0"},
        {{"--connect", "host:65536"}, "--connect cannot be host:65536"},
        {{"--connect", "host:1x"}, "--connect cannot be host:1x"},
        {{"--connect", "::1:80"}, "--connect cannot be ::1:80"},
        {{"--connect", "[]:80"}, "--connect cannot be []:80"},
        {{"--seconds", "0"}, "--seconds cannot be 0"},
        {{"--seconds", "3601"}, "--seconds cannot be 3601"},
        {{"--seconds", "1s"}, "--seconds cannot be 1s"},
        {{"--seconds", "nan"}, "--seconds cannot be nan"},
        {{"--patience", "-1"}, "--patience cannot be -1"},
        {{"--ca", "a.pem"}, "--ca goes with --connect"},
    };
    for (Row const & row : rows) {
        std::string complaint;
        EXPECT_FALSE(parseOptions(row.words, &complaint).has_value()) << row.complaint;
        EXPECT_EQ(complaint, row.complaint);
    }
}

}  // namespace tvk::test
