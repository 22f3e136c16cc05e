// Sessions that outlive their connections: each notice comes once and in order.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/examples/BackendFixture.h"

namespace tvk::test {

using backend::Fault;
using testing::HasSubstr;

namespace {

class BackendResume : public BackendFixture {
protected:
    /// A client with a session that gets notices of type "test".
    std::string begin(BackendClient & client) {
        EXPECT_TRUE(client.greet());
        std::string const token = bodyText(client.login("taro"), "session");
        client.ask("startRealTime", "{}");
        client.ask("subscribe", R"({"type":"test","subject":"*"})");
        return token;
    }

    void burst(long long count, long long first = 1, bool paced = false) {
        Fault fault;
        fault.kind = Fault::BURST;
        fault.count = count;
        fault.first = first;
        fault.type = "test";
        fault.subject = "x";
        fault.paced = paced;
        backEnd_->inject(fault);
    }

    bool leave(BackendClient & client) {
        std::size_t const before = backEnd_->counts().connections;
        client.close();
        return waitFor([&] { return backEnd_->counts().connections < before; });
    }
};

}  // namespace

TEST_F(BackendResume, GoesOnBehindTheLastNotice) {
    start();
    BackendClient first = newClient();
    std::string const token = begin(first);
    burst(5);
    for (unsigned long long number = 1; number <= 3; ++number) {
        ASSERT_EQ(first.next().number, number);
    }
    ASSERT_TRUE(leave(first));
    burst(5, 6);

    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    BackendClient::Came const login = second.login("taro", token, 3);
    EXPECT_THAT(login.body, HasSubstr(R"("resumed":true)"));
    EXPECT_EQ(bodyText(login, "session"), token);
    for (unsigned long long number = 4; number <= 10; ++number) {
        BackendClient::Came const notice = second.next();
        ASSERT_EQ(notice.number, number);
        ASSERT_EQ(bodyNumber(notice, "n"), static_cast<long long>(number));
    }
    burst(1, 11);
    EXPECT_EQ(second.next().number, 11U) << "subscriptions and the service stand";
    EXPECT_EQ(backEnd_->counts().resumed, 1U);
}

TEST_F(BackendResume, BeginsANewSessionWhereItCannotGoOn) {
    options_.ringSize = 10;
    start();
    BackendClient first = newClient();
    std::string const token = begin(first);
    burst(5);
    for (int notice = 0; notice < 5; ++notice) {
        first.next();
    }
    ASSERT_TRUE(leave(first));
    burst(10, 6);
    struct Row {
        char const * loginId;
        std::string token;
        unsigned long long last;
    };
    for (Row const & row : {Row{"taro", "nonsense", 5}, Row{"jiro", token, 5},
                            Row{"taro", token, 4}, Row{"taro", token, 16}, Row{"taro", "", 5}}) {
        BackendClient other = newClient();
        ASSERT_TRUE(other.greet());
        BackendClient::Came const login = other.login(row.loginId, row.token, row.last);
        EXPECT_THAT(login.body, HasSubstr(R"("resumed":false)"));
        EXPECT_NE(bodyText(login, "session"), token);
        other.ask("startRealTime", "{}");
        other.ask("subscribe", R"({"type":"quote","subject":"7203"})");
        EXPECT_EQ(other.next().number, 1U);
    }
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_THAT(second.login("taro", token, 5).body, HasSubstr(R"("resumed":true)"));
    EXPECT_EQ(second.next().number, 6U);
}

TEST_F(BackendResume, WaitsForTheGraceTime) {
    options_.graceMilliSec = 1;
    start();
    BackendClient first = newClient();
    std::string const token = begin(first);
    first.close();
    ASSERT_TRUE(waitFor([this] { return backEnd_->counts().sessions == 0; }));
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_THAT(second.login("taro", token, 0).body, HasSubstr(R"("resumed":false)"));
}

TEST_F(BackendResume, TakesTheSessionFromAConnectionThatIsStillThere) {
    start();
    BackendClient first = newClient();
    std::string const token = begin(first);
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_THAT(second.login("taro", token, 0).body, HasSubstr(R"("resumed":true)"));
    EXPECT_TRUE(first.ends());
    burst(1);
    EXPECT_EQ(second.next().number, 1U);
    EXPECT_EQ(backEnd_->counts().sessions, 1U);
}

TEST_F(BackendResume, LogsInAgainOnTheSameConnection) {
    start();
    BackendClient client = newClient();
    std::string const token = begin(client);
    burst(2);
    EXPECT_EQ(client.next().number, 1U);
    EXPECT_THAT(client.login("taro", token, 1).body, HasSubstr(R"("resumed":true)"));
    EXPECT_EQ(client.next().number, 2U) << "it may have come before the login as well";
    EXPECT_THAT(client.login("taro").body, HasSubstr(R"("resumed":false)"));
    EXPECT_EQ(backEnd_->counts().sessions, 1U);
}

TEST_F(BackendResume, ForgetsWhatItIsToldToForget) {
    start();
    BackendClient first = newClient();
    std::string const token = begin(first);
    first.ask("fault", R"({"kind":"forgetSession"})");
    burst(1);
    EXPECT_EQ(first.next().number, 1U) << "until it ends";
    ASSERT_TRUE(leave(first));
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_THAT(second.login("taro", token, 1).body, HasSubstr(R"("resumed":false)"));
}

TEST_F(BackendResume, LogoutEndsTheSession) {
    start();
    BackendClient first = newClient();
    std::string const token = begin(first);
    first.ask("logout", "{}");
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_THAT(second.login("taro", token, 0).body, HasSubstr(R"("resumed":false)"));
}

TEST_F(BackendResume, ExpiredLoginsAreRefusedUntilTheNext) {
    start();
    BackendClient client = newClient();
    std::string const token = begin(client);
    client.ask("fault", R"({"kind":"expireLogin"})");
    // The fault follows its reply; the next request comes behind both.
    EXPECT_TRUE(waitFor([this] { return backEnd_->counts().sessions == 0; }));
    BackendClient::Came const refused = client.ask("symbols", "{}");
    EXPECT_EQ(bodyNumber(refused, "code"), 20);
    EXPECT_THAT(client.login("taro", token, 0).body, HasSubstr(R"("resumed":false)"));
    EXPECT_EQ(client.ask("symbols", "{}").flags, 0);
}

TEST_F(BackendResume, LosesAndRepeatsNothingOverManyConnections) {
    constexpr long long NOTICES = 30'000;
    constexpr int LOSSES = 30;
    // It must hold what lies in the network when a connection is lost.
    options_.ringSize = NOTICES;
    start();
    std::optional<BackendClient> client;
    client.emplace(backEnd_->port());
    std::string const token = begin(*client);
    burst(NOTICES, 1, true);
    std::mt19937 random(5);
    long long last = 0;
    int losses = 0;
    while (last < NOTICES) {
        long long const until =
            losses < LOSSES ? std::min(NOTICES, last + static_cast<long long>(random() % 2'000))
                            : NOTICES;
        while (last < until) {
            BackendClient::Came const notice = client->next();
            ASSERT_EQ(notice.kind, FRAME_NOTICE);
            ASSERT_EQ(notice.number, static_cast<unsigned long long>(last + 1));
            ASSERT_EQ(bodyNumber(notice, "n"), last + 1);
            ++last;
        }
        if (last < NOTICES && losses < LOSSES) {
            ++losses;
            client->close();
            client.emplace(backEnd_->port());
            ASSERT_TRUE(client->greet());
            BackendClient::Came const login =
                client->login("taro", token, static_cast<unsigned long long>(last));
            ASSERT_THAT(login.body, HasSubstr(R"("resumed":true)"));
        }
    }
    EXPECT_GT(losses, 10);
    client->ask("echo", "{}");
    EXPECT_EQ(backEnd_->counts().notices, static_cast<unsigned long long>(NOTICES));
}

}  // namespace tvk::test
