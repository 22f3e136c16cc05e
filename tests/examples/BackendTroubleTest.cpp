// Faults that are asked for, and clients that are not as they should be.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "examples/backend/Names.h"
#include "tests/examples/BackendFixture.h"
#include "tests/support/RandomBytes.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::test {

using backend::Fault;
using testing::HasSubstr;

namespace {

/// The first byte makes a length of it that no limit allows.
std::string noFrame(std::string const & bytes) { return std::string(1, '\xFF').append(bytes); }

class BackendTrouble : public BackendFixture {
protected:
    /// A client that has been greeted.
    BackendClient & client() {
        if (!client_) {
            client_.emplace(backEnd_->port());
            EXPECT_TRUE(client_->greet());
        }
        return *client_;
    }

    void ask(std::string const & fault) { EXPECT_EQ(client().ask("fault", fault).flags, 0); }

    void echo(unsigned long long number) { client().send(FRAME_REQUEST, number, "echo", "{}"); }

    std::optional<BackendClient> client_;
};

}  // namespace

TEST_F(BackendTrouble, RefusesFaultsWithoutSense) {
    start();
    BackendClient::Came const refused = client().ask("fault", R"({"kind":"flood"})");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(bodyNumber(refused, "code"), backend::REFUSED_FAULT);
}

TEST_F(BackendTrouble, DelaysReplies) {
    start();
    ask(R"({"kind":"delay","milliSec":50,"count":2})");
    std::string requests;
    for (unsigned long long const number : {11U, 12U, 13U}) {
        requests += BackendClient::frameOf(FRAME_REQUEST, number, "echo", "{}");
    }
    client().sendBytes(requests);
    EXPECT_EQ(client().next().number, 13U) << "the others are overtaken";
    EXPECT_EQ(client().next().number, 11U);
    EXPECT_EQ(client().next().number, 12U);
}

TEST_F(BackendTrouble, DropsReplies) {
    start();
    ask(R"({"kind":"drop","count":2})");
    echo(11);
    echo(12);
    echo(13);
    EXPECT_EQ(client().next().number, 13U);
}

TEST_F(BackendTrouble, SpoilsReplies) {
    start();
    ask(R"({"kind":"badJson"})");
    echo(11);
    BackendClient::Came const bad = client().next();
    EXPECT_EQ(bad.number, 11U);
    EXPECT_TRUE(bad.message.isNull());
    EXPECT_EQ(client().ask("echo", "{}").kind, FRAME_REPLY) << "the stream goes on";

    ask(R"({"kind":"badKind"})");
    echo(12);
    EXPECT_EQ(client().next().kind, 0) << "that is no frame";
}

TEST_F(BackendTrouble, GivesBadLengths) {
    start();
    ask(R"({"kind":"badLength"})");
    echo(11);
    EXPECT_EQ(client().next().kind, 0) << "that is no frame";
}

TEST_F(BackendTrouble, BreaksOffInTheMiddleOfAFrame) {
    start();
    ask(R"({"kind":"halfFrame"})");
    client().send(FRAME_REQUEST, 11, "echo", R"({"a":1})");
    EXPECT_EQ(client().rest().size(), (24 + std::string(R"(echo{"a":1})").size()) / 2);
}

TEST_F(BackendTrouble, SendsGarbage) {
    start();
    ask(R"({"kind":"garbage"})");
    EXPECT_EQ(client().next().kind, 0);
}

TEST_F(BackendTrouble, DisconnectsBehindTheReply) {
    start();
    ask(R"({"kind":"disconnect"})");
    EXPECT_EQ(client().rest(), "");
}

TEST_F(BackendTrouble, DisconnectsAfterSomeBytes) {
    start();
    ask(R"({"kind":"disconnect","afterBytes":40})");
    // The fault follows its reply; these come in behind it.
    for (int request = 0; request < 3; ++request) {
        client().send(FRAME_REQUEST, 11, "echo", "{}");
    }
    EXPECT_EQ(client().rest().size(), 40U);
}

TEST_F(BackendTrouble, FallsSilent) {
    options_.heartbeatMilliSec = 20;
    start();
    auto const before = std::chrono::steady_clock::now();
    ask(R"({"kind":"silence","milliSec":300})");
    client().send(FRAME_HEARTBEAT, 5, "", "");
    client().answerHeartbeats(false);
    EXPECT_EQ(client().nextOf(FRAME_HEARTBEAT_ANSWER).number, 5U);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(300));
}

TEST_F(BackendTrouble, SaysGoodbye) {
    start();
    ask(R"({"kind":"goodbye","code":18,"text":"保守中","retry":false})");
    BackendClient::Came const goodbye = client().next();
    EXPECT_EQ(goodbye.kind, FRAME_GOODBYE);
    EXPECT_EQ(bodyNumber(goodbye, "code"), KestrinConstants::ERR_SystemMaintenance);
    EXPECT_EQ(bodyText(goodbye, "text"), "保守中");
    EXPECT_THAT(goodbye.body, HasSubstr(R"("retry":false)"));
    EXPECT_TRUE(client().ends());
}

TEST_F(BackendTrouble, ReadsSlowly) {
    start();
    ask(R"({"kind":"slowReading","bytesPerSecond":2000})");
    // A request that was read at full speed may come before.
    client().ask("echo", "{}");
    auto const before = std::chrono::steady_clock::now();
    std::string const body = R"({"a":")" + std::string(500, 'x') + "\"}";
    EXPECT_EQ(client().ask("echo", body).body, body);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(150));
    ask(R"({"kind":"slowReading","bytesPerSecond":0})");
}

TEST_F(BackendTrouble, InjectsIntoAllConnections) {
    start();
    client();
    BackendClient other = newClient();
    ASSERT_TRUE(other.greet());
    Fault fault;
    fault.kind = Fault::GOODBYE;
    fault.code = 11;
    backEnd_->inject(fault);
    EXPECT_EQ(bodyNumber(client().next(), "code"), 11);
    EXPECT_EQ(bodyNumber(other.next(), "code"), 11);
}

TEST_F(BackendTrouble, InjectsIntoTheNextConnectionWhereThereIsNone) {
    start();
    Fault fault;
    fault.kind = Fault::GOODBYE;
    fault.code = 18;
    backEnd_->inject(fault);
    BackendClient first = newClient();
    EXPECT_EQ(bodyNumber(first.next(), "code"), 18) << "instead of a welcome";
    EXPECT_TRUE(first.ends());
    first.close();
    EXPECT_TRUE(newClient().greet());
    EXPECT_TRUE(waitFor([this] { return backEnd_->counts().connections == 0; }));

    fault.kind = Fault::DISCONNECT;
    backEnd_->inject(fault);
    EXPECT_EQ(newClient().rest(), "");
}

TEST_F(BackendTrouble, EndsWithWhoDoesNotGreet) {
    options_.helloMilliSec = 50;
    start();
    BackendClient silent = newClient();
    EXPECT_TRUE(silent.ends());
    BackendClient slow = newClient();
    slow.sendBytes(std::string("\0\0\0\x20", 4));
    EXPECT_TRUE(slow.ends());
}

TEST_F(BackendTrouble, EndsWithWhoFallsSilent) {
    options_.heartbeatMilliSec = 20;
    start();
    BackendClient deaf = newClient();
    ASSERT_TRUE(deaf.greet(20));
    deaf.answerHeartbeats(false);
    EXPECT_EQ(deaf.next().kind, FRAME_HEARTBEAT);
    EXPECT_TRUE(deaf.ends());

    BackendClient alive = newClient();
    ASSERT_TRUE(alive.greet(500));
    EXPECT_EQ(alive.next(1'800).kind, 0);
    EXPECT_EQ(alive.ask("echo", "{}").kind, FRAME_REPLY) << "heartbeats keep it";
}

TEST_F(BackendTrouble, EndsWithWhoSendsNoFrames) {
    start();
    RandomBytes random(7);
    for (std::size_t size = 1; size < 2'000; size += 67) {
        BackendClient client = newClient();
        client.sendBytes(noFrame(random(size)));
        client.sendBytes(random(size));
        EXPECT_TRUE(size < 4 || client.ends());
    }
    for (std::size_t size = 1; size < 2'000; size += 67) {
        BackendClient client = newClient();
        ASSERT_TRUE(client.greet());
        client.sendBytes(noFrame(random(size + 3)));
        EXPECT_EQ(client.next().kind, FRAME_GOODBYE);
        EXPECT_TRUE(client.ends());
    }
    EXPECT_EQ(client().ask("echo", "{}").kind, FRAME_REPLY);
}

TEST_F(BackendTrouble, SurvivesFramesThatAreNearlyRight) {
    start();
    BackendClient & other = client();
    std::vector<std::string> const requests = {
        R"(login{"loginId":"taro","password":"secret","session":"","lastSequence":0})",
        R"(subscribe{"type":"quote","subject":"7203"})",
        R"(orderNew{"code":"7203","side":"buy","quantity":100,"price":2540.5})",
        R"(chartHistory{"symbol":"7203","priceKind":1,"periodType":"5","count":3})",
        R"(newsDocument{"documentType":2,"documentId":"market"})",
        R"(fault{"kind":"burst","type":"test","subject":"x","count":3})",
    };
    std::mt19937 random(13);
    for (int round = 0; round < 200; ++round) {
        BackendClient nearly = newClient();
        ASSERT_TRUE(nearly.greet());
        nearly.login("jiro");
        for (int step = 0; step < 5; ++step) {
            std::string const & request = requests[random() % requests.size()];
            std::size_t const type = request.find('{');
            std::string frame = BackendClient::frameOf(FRAME_REQUEST, 7, request.substr(0, type),
                                                       request.substr(type));
            for (auto change = random() % 3; change > 0; --change) {
                frame[random() % frame.size()] ^= static_cast<char>(1U << random() % 8);
            }
            nearly.sendBytes(frame);
        }
        nearly.close();
    }
    EXPECT_EQ(other.ask("echo", "{}").kind, FRAME_REPLY);
}

TEST_F(BackendTrouble, AnswersBodiesOfAnyKind) {
    options_.heartbeatMilliSec = 60'000;
    start();
    client().login("taro");
    std::vector<std::string> const values = {"null",
                                             "true",
                                             "[]",
                                             "[[1]]",
                                             "{}",
                                             R"({"a":{}})",
                                             "0",
                                             "-1",
                                             "1e400",
                                             "0.5",
                                             "\"\"",
                                             R"("\u0000")",
                                             "99999999999999999999",
                                             R"("7203")",
                                             "-9223372036854775808"};
    for (char const * const request :
         {"symbols", "orderNew code side quantity price", "orderCancel orderId", "chartPeriods",
          "chartHistory symbol priceKind periodType count from to", "subscribe type subject",
          "newsDocument documentType documentId", "unsubscribe type subject",
          "fault kind milliSec count", "login loginId password session lastSequence"}) {
        std::vector<std::string> words;
        std::istringstream stream(request);
        for (std::string word; stream >> word;) {
            words.push_back(word);
        }
        for (std::string const & value : values) {
            std::string body;
            for (std::size_t word = 1; word < words.size(); ++word) {
                body += (word == 1 ? "\"" : ",\"") + words[word] + "\":" + value;
            }
            BackendClient::Came const reply = client().ask(words[0], "{" + body + "}");
            EXPECT_EQ(reply.kind, FRAME_REPLY) << request << " " << value;
            EXPECT_FALSE(reply.message.isNull()) << request << " " << value;
        }
    }
}

TEST_F(BackendTrouble, EndsWithWhoSendsTooLargeFrames) {
    options_.maximumFrameSize = 1'000;
    start();
    client().send(FRAME_REQUEST, 1, "echo", R"({"a":")" + std::string(1'000, 'x') + "\"}");
    BackendClient::Came const goodbye = client().next();
    EXPECT_EQ(goodbye.kind, FRAME_GOODBYE);
    EXPECT_EQ(bodyNumber(goodbye, "code"), KestrinConstants::ERR_InvalidMessageSize);
}

TEST_F(BackendTrouble, FailsWhereTheReplyWouldBeTooLarge) {
    options_.maximumFrameSize = 1'000;
    start();
    client().login("taro");
    BackendClient::Came const refused = client().ask(
        "chartHistory", R"({"symbol":"7203","priceKind":1,"periodType":"1","count":100})");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(bodyNumber(refused, "code"), KestrinConstants::ERR_InvalidMessageSize);
}

TEST_F(BackendTrouble, TakesRequestsInPieces) {
    start();
    client();
    std::string const frame(
        "\0\0\0\x1A\x01\0\0\x04\0\0\0\0\0\0\0\x04\0\0\0\0\0\0\0\x09"
        "echo{}",
        30);
    for (char const byte : frame) {
        client().sendBytes(std::string(1, byte));
    }
    EXPECT_EQ(client().next().number, 9U);
}

TEST_F(BackendTrouble, BoundsItsConnectionsAndSessions) {
    options_.maximumConnections = 2;
    options_.maximumSessions = 1;
    start();
    client();
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_FALSE(newClient().greet());
    EXPECT_EQ(bodyText(client().login("taro"), "code"), "0");
    BackendClient::Came const refused = second.login("jiro");
    EXPECT_EQ(refused.flags, FRAME_FAILURE);
    EXPECT_EQ(bodyNumber(refused, "code"), KestrinConstants::ERR_SystemMaintenance);
}

TEST_F(BackendTrouble, DropsWhoDoesNotReadAndKeepsTheSession) {
    constexpr long long NOTICES = 60'000;
    options_.maximumQueuedBytes = 1U << 20U;
    options_.ringSize = 2 * NOTICES;
    start();
    std::string const token = bodyText(client().login("taro"), "session");
    client().ask("startRealTime", "{}");
    // The longer the type, the sooner the buffers of the system are full.
    std::string const type(250, 't');
    client().ask("subscribe", R"({"type":")" + type + R"(","subject":"*"})");
    Fault burst;
    burst.kind = Fault::BURST;
    burst.count = NOTICES;
    burst.type = type;
    burst.subject = "x";
    backEnd_->inject(burst);
    ASSERT_TRUE(waitFor([this] { return backEnd_->counts().connections == 0; }));
    ASSERT_TRUE(waitFor([this] { return backEnd_->counts().notices == std::size_t{NOTICES}; }));
    EXPECT_EQ(backEnd_->counts().dropped, 1U);

    unsigned long long last = 0;
    BackendClient second = newClient();
    ASSERT_TRUE(second.greet());
    EXPECT_THAT(second.login("taro", token, last).body, HasSubstr(R"("resumed":true)"));
    while (last < NOTICES) {
        BackendClient::Came const notice = second.next();
        ASSERT_EQ(notice.number, last + 1) << "all that it missed does not count against it";
        ++last;
    }
}

TEST_F(BackendTrouble, DropsWhoAsksAndDoesNotRead) {
    options_.maximumQueuedBytes = 1U << 20U;
    start();
    std::string const body = R"({"a":")" + std::string(100'000, 'x') + "\"}";
    client();
    for (unsigned long long request = 1; request < 1'000; ++request) {
        client().send(FRAME_REQUEST, request, "echo", body);
        if (backEnd_->counts().connections == 0) {
            break;
        }
    }
    EXPECT_TRUE(waitFor([this] { return backEnd_->counts().connections == 0; }));
    EXPECT_EQ(backEnd_->counts().dropped, 1U);
}

}  // namespace tvk::test
