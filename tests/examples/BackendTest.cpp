#include "examples/backend/Backend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "examples/backend/Names.h"
#include "tests/examples/BackendFixture.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::test {

using backend::Backend;
using testing::HasSubstr;

namespace {

/// With one client that has been greeted.
class BackendConversation : public BackendFixture {
protected:
    BackendConversation() {
        start();
        client_.emplace(backEnd_->port());
        EXPECT_TRUE(client_->greet());
    }

    void logIn() {
        client_->login("taro");
        client_->ask("startRealTime", "{}");
    }

    std::optional<BackendClient> client_;
};

std::string subscription(std::string const & type, std::string const & subject) {
    return R"({"type":")" + type + R"(","subject":")" + subject + "\"}";
}

}  // namespace

TEST_F(BackendConversation, WelcomesWhoGreets) {
    BackendClient client = newClient();
    client.send(FRAME_HELLO, 0, "",
                R"({"protocol":1,"client":"test","version":"1","heartbeatMilliSec":500})");
    BackendClient::Came const welcome = client.next();
    ASSERT_EQ(welcome.kind, FRAME_WELCOME);
    EXPECT_EQ(bodyNumber(welcome, "protocol"), 1);
    EXPECT_EQ(bodyNumber(welcome, "heartbeatMilliSec"), 500);
    EXPECT_GT(bodyNumber(welcome, "time"), 1'700'000'000'000);
}

TEST_F(BackendConversation, SendsAwayWhoSpeaksAnotherProtocol) {
    BackendClient client = newClient();
    client.send(FRAME_HELLO, 0, "", R"({"protocol":2})");
    BackendClient::Came const goodbye = client.next();
    ASSERT_EQ(goodbye.kind, FRAME_GOODBYE);
    EXPECT_EQ(bodyNumber(goodbye, "code"), KestrinConstants::ERR_VersionUpRequired);
    EXPECT_THAT(goodbye.body, HasSubstr(R"("retry":false)"));
    EXPECT_TRUE(client.ends());
}

TEST_F(BackendConversation, WantsTheGreetingFirstAndOnce) {
    BackendClient rude = newClient();
    rude.send(FRAME_REQUEST, 1, "echo", "{}");
    EXPECT_EQ(bodyNumber(rude.next(), "code"), KestrinConstants::ERR_ProtocolFailure);
    EXPECT_TRUE(rude.ends());

    client_->send(FRAME_HELLO, 0, "", R"({"protocol":1})");
    EXPECT_EQ(bodyNumber(client_->next(), "code"), KestrinConstants::ERR_ProtocolFailure);
    EXPECT_TRUE(client_->ends());
}

TEST_F(BackendConversation, AnswersHeartbeats) {
    client_->send(FRAME_HEARTBEAT, 77, "", "");
    BackendClient::Came const answer = client_->next();
    EXPECT_EQ(answer.kind, FRAME_HEARTBEAT_ANSWER);
    EXPECT_EQ(answer.number, 77U);
}

TEST_F(BackendConversation, LogsInWhoKnowsThePassword) {
    BackendClient::Came const refused =
        client_->ask("login", R"({"loginId":"taro","password":"wrong"})");
    ASSERT_EQ(refused.kind, FRAME_REPLY);
    EXPECT_EQ(refused.flags, 0);
    EXPECT_EQ(bodyText(refused, "code"), "1");
    EXPECT_NE(bodyText(refused, "text"), "");
    EXPECT_EQ(bodyText(refused, "session"), "");
    EXPECT_EQ(bodyText(client_->login(""), "code"), "1");

    BackendClient::Came const taken = client_->login("taro");
    EXPECT_EQ(taken.type, "login");
    EXPECT_EQ(bodyText(taken, "code"), "0");
    EXPECT_EQ(bodyText(taken, "session").size(), 32U);
    EXPECT_THAT(taken.body, HasSubstr(R"("resumed":false)"));
    ASSERT_NE(recordIn(*taken.message, "startup"), nullptr);
    EXPECT_EQ(textIn(*recordIn(*taken.message, "startup"), "loginId"), "taro");
}

TEST_F(BackendConversation, RefusesWhatNeedsALogin) {
    for (char const * const type :
         {"logout", "startRealTime", "stopRealTime", "subscribe", "unsubscribe", "symbols",
          "orderNew", "orderCancel", "chartPeriods", "chartHistory", "newsDocument"}) {
        SCOPED_TRACE(type);
        BackendClient::Came const refused = client_->ask(type, "{}");
        EXPECT_EQ(refused.flags, FRAME_FAILURE);
        EXPECT_EQ(bodyNumber(refused, "code"), KestrinConstants::ERR_SessionError);
        EXPECT_THAT(refused.body, HasSubstr(R"("network":false)"));
    }
    logIn();
    client_->ask("logout", "{}");
    EXPECT_EQ(bodyNumber(client_->ask("symbols", "{}"), "code"),
              KestrinConstants::ERR_SessionError);
    EXPECT_EQ(backEnd_->counts().sessions, 0U);
}

TEST_F(BackendConversation, RefusesWhatItDoesNotKnow) {
    logIn();
    for (char const * const type : {"", "nonsense", "LOGIN", "日本"}) {
        EXPECT_EQ(bodyNumber(client_->ask(type, "{}"), "code"),
                  KestrinConstants::ERR_UnknownMessage);
    }
}

TEST_F(BackendConversation, RefusesBadJsonAndGoesOn) {
    BackendClient::Came const refused = client_->ask("echo", R"({"a":)");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(bodyNumber(refused, "code"), KestrinConstants::ERR_InvalidMessageData);
    EXPECT_EQ(client_->ask("echo", R"({"a":1})").body, R"({"a":1})");
}

TEST_F(BackendConversation, AnswersNothingToNumberZero) {
    client_->send(FRAME_REQUEST, 0, "echo", R"({"a":1})");
    client_->send(FRAME_REQUEST, 0, "nonsense", "{}");
    client_->send(FRAME_REQUEST, 0, "echo", "{");
    EXPECT_EQ(client_->ask("echo", "{}").kind, FRAME_REPLY);
    EXPECT_EQ(backEnd_->counts().requests, 4U);
    EXPECT_EQ(backEnd_->counts().replies, 1U);
}

TEST_F(BackendConversation, EchoesFieldsAsTheyCame) {
    std::string const body = R"({"a":1,"b":"み","c":[1,{"d":true}]})";
    BackendClient::Came const echo = client_->ask("echo", body);
    EXPECT_EQ(echo.type, "echo");
    EXPECT_EQ(echo.body, body);
}

TEST_F(BackendConversation, NamesItsSymbols) {
    logIn();
    BackendClient::Came const symbols = client_->ask("symbols", "{}");
    ListData const * const list = listIn(*symbols.message, "symbols");
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->getCount(), 12U);
    EXPECT_THAT(symbols.body,
                HasSubstr(R"({"code":"7203","name":"みのり自動車","tick":0.5,"unit":100})"));
}

TEST_F(BackendConversation, SubscriptionsBeginWithTheCurrentQuote) {
    logIn();
    EXPECT_EQ(client_->ask("subscribe", subscription("quote", "7203")).flags, 0);
    BackendClient::Came const quote = client_->next();
    ASSERT_EQ(quote.kind, FRAME_NOTICE);
    EXPECT_EQ(quote.number, 1U);
    EXPECT_EQ(quote.type, "quote");
    EXPECT_EQ(quote.subject, "7203");
    EXPECT_EQ(bodyText(quote, "code"), "7203");
    EXPECT_EQ(bodyText(quote, "time").size(), 6U);
    EXPECT_LT(doubleIn(*quote.message, "bid"), doubleIn(*quote.message, "ask"));
    for (char const * const name : {"last", "high", "low", "volume", "change"}) {
        EXPECT_TRUE(quote.message->hasField(name)) << name;
    }
    // One that stands already brings no second one, a wildcard brings all.
    client_->ask("subscribe", subscription("quote", "7203"));
    client_->ask("subscribe", subscription("quote", "*"));
    client_->ask("echo", "{}");
    for (unsigned long long number = 2; number < 14; ++number) {
        EXPECT_EQ(client_->next().number, number);
    }
    EXPECT_EQ(backEnd_->counts().notices, 13U);
}

TEST_F(BackendConversation, NothingComesWithoutTheRealTimeService) {
    client_->login("taro");
    client_->ask("subscribe", subscription("quote", "7203"));
    client_->ask("fault", R"({"kind":"burst","type":"quote","subject":"7203"})");
    client_->ask("startRealTime", "{}");
    client_->ask("echo", "{}");
    BackendClient::Came const quote = client_->next();
    EXPECT_EQ(bodyText(quote, "code"), "7203") << "the current quote comes with the service";
    client_->ask("stopRealTime", "{}");
    client_->ask("fault", R"({"kind":"burst","type":"quote","subject":"7203"})");
    client_->ask("echo", "{}");
    EXPECT_EQ(backEnd_->counts().notices, 1U);
}

TEST_F(BackendConversation, RefusesSubscriptionsWithoutSense) {
    logIn();
    for (std::string const & body :
         {std::string("{}"), subscription("quote", ""), subscription("", "7203"),
          subscription("quote", std::string(257, 'x'))}) {
        EXPECT_EQ(bodyNumber(client_->ask("subscribe", body), "code"),
                  backend::REFUSED_SUBSCRIPTION);
    }
    EXPECT_EQ(client_->ask("unsubscribe", "{}").flags, 0);
}

TEST_F(BackendConversation, HasSentAllBeforeTheReplyToUnsubscribe) {
    logIn();
    client_->ask("subscribe", subscription("test", "x"));
    backend::Fault burst;
    burst.kind = backend::Fault::BURST;
    burst.count = 5'000;
    burst.type = "test";
    burst.subject = "x";
    backEnd_->inject(burst);
    client_->ask("unsubscribe", subscription("test", "x"));
    unsigned long long const sent = backEnd_->counts().notices;
    backEnd_->inject(burst);
    client_->ask("echo", "{}");
    for (unsigned long long number = 1; number <= sent; ++number) {
        ASSERT_EQ(client_->next().number, number);
    }
    EXPECT_EQ(backEnd_->counts().notices, sent);
}

TEST_F(BackendConversation, TakesOrders) {
    logIn();
    client_->ask("subscribe", subscription("order", "taro"));
    BackendClient::Came const taken =
        client_->ask("orderNew", R"({"code":"7203","side":"buy","quantity":100,"price":100})");
    EXPECT_EQ(taken.flags, 0);
    EXPECT_EQ(bodyText(taken, "orderId"), "A0001");
    EXPECT_EQ(bodyText(taken, "status"), "accepted");
    BackendClient::Came const notice = client_->next();
    EXPECT_EQ(notice.type, "order");
    EXPECT_EQ(notice.subject, "taro");
    EXPECT_EQ(notice.body,
              R"({"filled":0,"left":100,"orderId":"A0001","price":100,"status":"accepted"})");

    BackendClient::Came const canceled = client_->ask("orderCancel", R"({"orderId":"A0001"})");
    EXPECT_EQ(bodyText(canceled, "status"), "canceled");
    EXPECT_EQ(bodyText(client_->next(), "status"), "canceled");

    BackendClient::Came const refused =
        client_->ask("orderNew", R"({"code":"7203","side":"buy","quantity":150,"price":100})");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(bodyNumber(refused, "code"), backend::REFUSED_QUANTITY);
    EXPECT_NE(bodyText(refused, "text"), "");
}

TEST_F(BackendConversation, TellsOrdersToTheirOwnerAlone) {
    logIn();
    client_->ask("subscribe", subscription("order", "*"));
    BackendClient other = newClient();
    ASSERT_TRUE(other.greet());
    other.login("jiro");
    other.ask("startRealTime", "{}");
    other.ask("subscribe", subscription("*", "*"));
    std::string const body = R"({"code":"8105","side":"sell","quantity":100,"price":9000})";
    EXPECT_EQ(other.ask("orderNew", body).flags, 0);
    client_->ask("orderNew", body);
    EXPECT_EQ(client_->next().subject, "taro");
    other.ask("echo", "{}");
    for (int quote = 0; quote < 12; ++quote) {
        EXPECT_EQ(other.next().type, "quote");
    }
    EXPECT_EQ(other.next().subject, "jiro");
}

TEST_F(BackendConversation, GivesChartsInBarsOfAllPeriods) {
    logIn();
    EXPECT_EQ(client_->ask("chartPeriods", "{}").body, R"({"periods":["1","5","60","D"]})");
    for (char const * const period : {"1", "5", "60", "D"}) {
        BackendClient::Came const history =
            client_->ask("chartHistory", R"({"symbol":"7203","priceKind":1,"periodType":")" +
                                             std::string(period) + R"(","count":30})");
        EXPECT_EQ(bodyText(history, "symbol"), "7203");
        EXPECT_EQ(bodyNumber(history, "priceKind"), 1);
        EXPECT_EQ(bodyText(history, "periodType"), period);
        ListData const * const bars = listIn(*history.message, "bars");
        ASSERT_NE(bars, nullptr);
        ASSERT_EQ(bars->getCount(), 30U);
        CString before;
        for (unsigned int bar = 0; bar < bars->getCount(); ++bar) {
            RecordData const & record = bars->getElement(bar)->asRecord();
            CString const begin = textIn(record, "date") + textIn(record, "time");
            EXPECT_EQ(begin.GetLength(), 14);
            EXPECT_LT(before, begin);
            before = begin;
            EXPECT_LE(doubleIn(record, "low"), doubleIn(record, "open"));
            EXPECT_GE(doubleIn(record, "high"), doubleIn(record, "close"));
            EXPECT_GE(numberIn(record, "volume"), 0);
        }
    }
    BackendClient::Came const between = client_->ask(
        "chartHistory",
        R"({"symbol":"7203","priceKind":1,"periodType":"D","from":"20200101","to":"20200131"})");
    EXPECT_EQ(listIn(*between.message, "bars")->getCount(), 31U);
}

TEST_F(BackendConversation, RefusesChartsWithoutSense) {
    logIn();
    for (char const * const body :
         {R"({})", R"({"symbol":"0000","priceKind":1,"periodType":"1","count":1})",
          R"({"symbol":"7203","priceKind":0,"periodType":"1","count":1})",
          R"({"symbol":"7203","priceKind":5,"periodType":"1","count":1})",
          R"({"symbol":"7203","priceKind":4294967297,"periodType":"1","count":1})",
          R"({"symbol":"7203","priceKind":1,"periodType":"2","count":1})",
          R"({"symbol":"7203","priceKind":1,"periodType":"1","count":-1})",
          R"({"symbol":"7203","priceKind":1,"periodType":"1"})",
          R"({"symbol":"7203","priceKind":1,"periodType":"1","from":"x","to":"20200131"})"}) {
        EXPECT_EQ(bodyNumber(client_->ask("chartHistory", body), "code"), backend::REFUSED_CHART)
            << body;
    }
}

TEST_F(BackendConversation, GivesNewsAsXml) {
    logIn();
    BackendClient::Came const index =
        client_->ask("newsDocument", R"({"documentType":1,"documentId":""})");
    EXPECT_THAT(bodyText(index, "xml"), testing::StartsWith("<index><list id=\"market\""));
    EXPECT_THAT(
        bodyText(client_->ask("newsDocument", R"({"documentType":2,"documentId":"company"})"),
                 "xml"),
        testing::StartsWith("<list id=\"company\">"));
    EXPECT_THAT(
        bodyText(client_->ask("newsDocument", R"({"documentType":3,"documentId":"N0001"})"), "xml"),
        testing::StartsWith("<article id=\"N0001\""));
    BackendClient::Came const refused =
        client_->ask("newsDocument", R"({"documentType":3,"documentId":"N9999"})");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(bodyNumber(refused, "code"), backend::REFUSED_DOCUMENT);
    EXPECT_EQ(bodyNumber(client_->ask("newsDocument", R"({"documentType":4294967297})"), "code"),
              backend::REFUSED_DOCUMENT);
}

TEST_F(BackendConversation, ResetsChartsWithANewDay) {
    logIn();
    client_->ask("subscribe", subscription("chart", "7203/1/D"));
    client_->ask("fault", R"({"kind":"newDay"})");
    BackendClient::Came const reset = client_->next();
    EXPECT_EQ(reset.type, "chart");
    EXPECT_EQ(reset.subject, "7203/1/D");
    EXPECT_EQ(reset.body, R"({"reset":true,"symbol":"7203"})");
}

TEST_F(BackendConversation, CountsWhatItDoes) {
    logIn();
    Backend::Counts const counts = backEnd_->counts();
    EXPECT_EQ(counts.connections, 1U);
    EXPECT_EQ(counts.sessions, 1U);
    EXPECT_EQ(counts.accepted, 1U);
    EXPECT_EQ(counts.requests, 2U);
    EXPECT_EQ(counts.replies, 2U);
    EXPECT_EQ(counts.notices, 0U);
    EXPECT_EQ(counts.resumed, 0U);
    client_->close();
    EXPECT_TRUE(waitFor([this] { return backEnd_->counts().connections == 0; }));
    EXPECT_EQ(backEnd_->counts().sessions, 1U) << "it waits for its client";
}

TEST_F(BackendConversation, LogsWhatItDoes) {
    std::vector<std::string> lines;
    options_.log = [&lines](std::string const & line) { lines.push_back(line); };
    start();
    {
        BackendClient client = newClient();
        ASSERT_TRUE(client.greet());
        client.login("ta\x1Bro");
        client.ask("an\x1Bother", "{}");
        client.close();
    }
    EXPECT_TRUE(waitFor([this] { return backEnd_->counts().connections == 0; }));
    backEnd_->stop();
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[0], "client 1: connected");
    EXPECT_EQ(lines[1], "client 1: request 1 login");
    EXPECT_EQ(lines[2], "client 1: session begun for ta\\x1Bro");
    EXPECT_EQ(lines[3], "client 1: request 2 an\\x1Bother");
    EXPECT_THAT(lines[4], testing::StartsWith("client 1: closed: "));
}

TEST_F(BackendFixture, MovesItsMarket) {
    options_.quoteMilliSec = 1;
    options_.headlineMilliSec = 1;
    start();
    BackendClient client = newClient();
    ASSERT_TRUE(client.greet());
    client.login("taro");
    client.ask("startRealTime", "{}");
    client.ask("subscribe", subscription("quote", "7203"));
    for (unsigned long long number = 1; number <= 20; ++number) {
        BackendClient::Came const quote = client.next();
        ASSERT_EQ(quote.type, "quote");
        ASSERT_EQ(quote.number, number);
    }
    client.ask("unsubscribe", subscription("quote", "7203"));
    client.ask("subscribe", subscription("chart", "7203/2/60"));
    BackendClient::Came chart = client.next();
    while (chart.type == "quote") {
        chart = client.next();
    }
    EXPECT_EQ(chart.subject, "7203/2/60");
    EXPECT_EQ(bodyText(chart, "symbol"), "7203");
    EXPECT_EQ(bodyNumber(chart, "priceKind"), 2);
    EXPECT_EQ(bodyText(chart, "periodType"), "60");
    EXPECT_GT(doubleIn(*chart.message, "close"), 0);
    client.ask("unsubscribe", subscription("chart", "7203/2/60"));
    client.ask("subscribe", subscription("headline", "all"));
    BackendClient::Came headline = client.next();
    while (headline.type == "chart") {
        headline = client.next();
    }
    EXPECT_EQ(headline.subject, "all");
    EXPECT_THAT(bodyText(headline, "xml"), testing::StartsWith("<headline id=\"N"));
}

TEST_F(BackendFixture, FillsOrdersFromItsMarket) {
    options_.quoteMilliSec = 1;
    start();
    BackendClient client = newClient();
    ASSERT_TRUE(client.greet());
    client.login("taro");
    client.ask("startRealTime", "{}");
    client.ask("subscribe", subscription("order", "taro"));
    client.ask("orderNew", R"({"code":"7203","side":"buy","quantity":5000,"price":0})");
    long long filled = 0;
    std::string status;
    while (status != "filled") {
        BackendClient::Came const event = client.next();
        ASSERT_EQ(event.type, "order");
        status = bodyText(event, "status");
        EXPECT_EQ(bodyNumber(event, "filled") + bodyNumber(event, "left"), 5'000);
        EXPECT_GE(bodyNumber(event, "filled"), filled);
        filled = bodyNumber(event, "filled");
    }
    EXPECT_EQ(filled, 5'000);
}

TEST_F(BackendFixture, SaysWhyItCannotStart) {
    start();
    Backend::Options options = options_;
    options.port = backEnd_->port();
    std::string problem;
    Backend occupied(options);
    EXPECT_FALSE(occupied.start(&problem));
    EXPECT_NE(problem, "");
    options.port = 0;
    options.certFile = "no such file";
    problem.clear();
    Backend nameless(options);
    EXPECT_FALSE(nameless.start(&problem));
    EXPECT_NE(problem, "");
    EXPECT_EQ(nameless.counts().accepted, 0U);
    nameless.stop();
}

TEST_F(BackendFixture, StopsWithConnectionsOpen) {
    start();
    BackendClient client = newClient();
    BackendClient silent = newClient();
    ASSERT_TRUE(client.greet());
    client.login("taro");
    unsigned short const port = backEnd_->port();
    backEnd_->stop();
    EXPECT_TRUE(client.ends());
    EXPECT_TRUE(silent.ends());
    EXPECT_THROW(BackendClient again(port), std::exception);
    backEnd_->stop();
}

}  // namespace tvk::test
