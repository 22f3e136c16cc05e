#include "examples/backend/Backend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "examples/backend/Names.h"
#include "examples/backend/Texts.h"
#include "examples/support/Fields.h"
#include "tests/examples/BackendClient.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::test {

using backend::Backend;
using backend::utf8In;

namespace {

/// A market that stands, so that nothing comes by itself.
Backend::Options quiet() {
    Backend::Options options;
    options.quoteMilliSec = 0;
    options.headlineMilliSec = 0;
    return options;
}

class BackendConversation : public testing::Test {
protected:
    explicit BackendConversation(Backend::Options const & options = quiet()) : backEnd_(options) {
        std::string problem;
        EXPECT_TRUE(backEnd_.start(&problem)) << problem;
    }

    Backend backEnd_;
};

}  // namespace

TEST_F(BackendConversation, WelcomesWhoGreets) {
    BackendClient client(backEnd_.port());
    client.send(FRAME_HELLO, 0, "",
                R"({"protocol":1,"client":"test","version":"1","heartbeatMilliSec":500})");
    BackendClient::Came const welcome = client.next();
    ASSERT_EQ(welcome.kind, FRAME_WELCOME);
    EXPECT_EQ(numberIn(*welcome.message, "protocol"), 1);
    EXPECT_EQ(numberIn(*welcome.message, "heartbeatMilliSec"), 500);
    EXPECT_GT(numberIn(*welcome.message, "time"), 1'700'000'000'000);
}

TEST_F(BackendConversation, LogsInWhoKnowsThePassword) {
    BackendClient client(backEnd_.port());
    ASSERT_TRUE(client.greet());
    BackendClient::Came const refused =
        client.ask("login", R"({"loginId":"taro","password":"wrong"})");
    ASSERT_EQ(refused.kind, FRAME_REPLY);
    EXPECT_EQ(refused.flags, 0);
    EXPECT_EQ(utf8In(*refused.message, "code"), "1");
    EXPECT_NE(utf8In(*refused.message, "text"), "");

    BackendClient::Came const taken = client.login("taro");
    EXPECT_EQ(taken.type, "login");
    EXPECT_EQ(utf8In(*taken.message, "code"), "0");
    EXPECT_EQ(utf8In(*taken.message, "session").size(), 32U);
    EXPECT_THAT(taken.body, testing::HasSubstr(R"("resumed":false)"));
    ASSERT_NE(recordIn(*taken.message, "startup"), nullptr);
    EXPECT_EQ(utf8In(*recordIn(*taken.message, "startup"), "loginId"), "taro");
}

TEST_F(BackendConversation, EchoesFieldsAsTheyCame) {
    BackendClient client(backEnd_.port());
    ASSERT_TRUE(client.greet());
    std::string const body = R"({"a":1,"b":"み","c":[1,{"d":true}]})";
    BackendClient::Came const echo = client.ask("echo", body);
    EXPECT_EQ(echo.type, "echo");
    EXPECT_EQ(echo.body, body);
}

TEST_F(BackendConversation, SubscriptionsBeginWithTheCurrentQuote) {
    BackendClient client(backEnd_.port());
    ASSERT_TRUE(client.greet());
    client.login("taro");
    client.ask("startRealTime", "{}");
    EXPECT_EQ(client.ask("subscribe", R"({"type":"quote","subject":"7203"})").flags, 0);
    BackendClient::Came const quote = client.next();
    ASSERT_EQ(quote.kind, FRAME_NOTICE);
    EXPECT_EQ(quote.number, 1U);
    EXPECT_EQ(quote.type, "quote");
    EXPECT_EQ(quote.subject, "7203");
    EXPECT_EQ(utf8In(*quote.message, "code"), "7203");
    EXPECT_LT(doubleIn(*quote.message, "bid"), doubleIn(*quote.message, "ask"));
}

TEST_F(BackendConversation, RefusesWhatNeedsALogin) {
    BackendClient client(backEnd_.port());
    ASSERT_TRUE(client.greet());
    BackendClient::Came const refused = client.ask("symbols", "{}");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(numberIn(*refused.message, "code"), KestrinConstants::ERR_SessionError);
    EXPECT_EQ(numberIn(*client.ask("nonsense", "{}").message, "code"),
              KestrinConstants::ERR_UnknownMessage);
}

}  // namespace tvk::test
