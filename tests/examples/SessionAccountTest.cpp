#include "examples/session/Account.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace tvk::test {

namespace {

using session::Account;
using testing::MatchesRegex;

}  // namespace

TEST(SessionAccount, PrintsSectionsLinesAndVerdicts) {
    std::ostringstream out;
    Account account(out, false);
    account.section("Log in");
    account.say("connected");
    account.say("quote", "7203 1,764.5");
    EXPECT_TRUE(account.expect(true, "the login is accepted"));
    EXPECT_FALSE(account.expect(false, "a reply comes"));
    account.close();
    EXPECT_THAT(out.str(), MatchesRegex("\nLog in\n\n"
                                        " +[0-9]+  connected\n"
                                        " +[0-9]+  quote       7203 1,764.5\n"
                                        "    ok  the login is accepted\n"
                                        "FAILED  a reply comes\n"
                                        "\n1 of 2 expectations held\n"));
}

TEST(SessionAccount, HoldsWhereAllExpectationsDo) {
    std::ostringstream out;
    Account account(out, false);
    EXPECT_TRUE(account.allHeld());
    account.expect(true, "a");
    EXPECT_TRUE(account.allHeld());
    account.expect(false, "b");
    account.expect(true, "c");
    EXPECT_FALSE(account.allHeld());
    EXPECT_EQ(account.count(), 3U);
}

TEST(SessionAccount, IsQuietButForWhatDidNotHold) {
    std::ostringstream out;
    Account account(out, true);
    account.section("Log in");
    account.say("connected");
    account.expect(true, "the login is accepted");
    account.expect(false, "a reply comes");
    account.close();
    EXPECT_EQ(out.str(), "FAILED  a reply comes\n1 of 2 expectations held\n");
}

}  // namespace tvk::test
