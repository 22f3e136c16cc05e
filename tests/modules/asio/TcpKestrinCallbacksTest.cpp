// What callbacks may do: everything. Each way to a callback is walked with each operation in it, with an
// exception out of it, and with the last reference dropped in it.

#include <stdexcept>

#include "modules/asio/TcpKestrin.h"
#include "tests/modules/asio/support/TcpKestrinFixture.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;
using tvk::RefCountedPtr;

struct Way {
    char const * line;  ///< what is heard in the callback
    void (*walk)(class CallbackTest & test);
    bool needsSession = true;  ///< logged in, with the real-time service on
};

class CallbackTest : public TcpKestrinTest, public testing::WithParamInterface<Way> {
public:
    CallbackTest() {
        auto const inside = [this](std::string const & line) {
            ++callbacks;
            if (act && line == GetParam().line) {
                std::exchange(act, nullptr)();
            }
        };
        listener.during = inside;
        replies.during = inside;
        notices.during = inside;
    }

    /// Up to the callback, in which `act` runs.
    void walk(std::function<void()> theAct) {
        server.answer = [this](FrameServer::Incoming const & incoming) {
            if (incoming.type == "refuse") {
                server.fail(incoming, R"({"code":7001,"text":"no"})");
            } else if (incoming.type == "expire") {
                server.fail(incoming, R"({"code":20,"text":"expired"})");
            }
            return incoming.type == "refuse" || incoming.type == "expire";
        };
        make();
        agent->addMessageHandler("quote", "*", &notices);
        agent->subscribe("quote", "1");
        if (GetParam().needsSession) {
            startRealTime();
        }
        act = std::move(theAct);
        GetParam().walk(*this);
    }
    void toCallback() {
        ASSERT_TRUE(until([&] { return act == nullptr; })) << GetParam().line;
    }
    void ask(char const * type, int timeoutMilliSec) {
        TcpKestrinTest::ask(type, std::to_string(++asked), timeoutMilliSec);
    }
    /// Each request has exactly one outcome.
    void expectOneOutcomeEach() {
        for (int value = 1; value <= asked; ++value) {
            std::string const name = " " + std::to_string(value);
            long outcomes = 0;
            for (std::string const & line : heard) {
                for (char const * what : {"reply", "timeout", "canceled", "failed"}) {
                    std::string const start = what + name;
                    outcomes += line == start || line.rfind(start + " ", 0) == 0 ? 1 : 0;
                }
            }
            EXPECT_EQ(outcomes, 1) << "request" << name;
        }
    }

    using TcpKestrinTest::agent;
    using TcpKestrinTest::heard;
    using TcpKestrinTest::listener;
    using TcpKestrinTest::notices;
    using TcpKestrinTest::replies;
    using TcpKestrinTest::server;
    using TcpKestrinTest::untilHeard;

    std::function<void()> act;
    int asked = 0;
    int callbacks = 0;
};

Way const WAYS[] = {
    {"connected", [](CallbackTest & test) { test.agent->start(nullptr); }, false},
    {"error 10",
     [](CallbackTest & test) {
         test.server.answer = [&](auto const &) {
             test.server.disconnect();
             return true;
         };
         test.agent->start(nullptr);
     },
     false},
    {"login no 1",
     [](CallbackTest & test) {
         test.agent->start(nullptr);
         test.untilHeard("connected");
         test.server.answer = [&](FrameServer::Incoming const & incoming) {
             if (incoming.type == "login") {
                 test.server.reply(incoming, R"({"code":"1","text":"no"})");
             }
             return incoming.type == "login";
         };
         test.agent->login("trader", "wrong", nullptr);
     },
     false},
    {"login yes 0",
     [](CallbackTest & test) {
         test.agent->start(nullptr);
         test.untilHeard("connected");
         test.agent->login("trader", "secret", nullptr);
     },
     false},
    {"startup open",
     [](CallbackTest & test) {
         test.agent->start(nullptr);
         test.untilHeard("connected");
         test.agent->login("trader", "secret", nullptr);
     },
     false},
    {"real time",
     [](CallbackTest & test) {
         test.agent->start(nullptr);
         test.untilHeard("connected");
         test.agent->login("trader", "secret", nullptr);
         test.untilHeard("startup open");
         test.agent->startRealTimeService(nullptr);
     },
     false},
    {"notice 1", [](CallbackTest & test) { test.server.notice("quote", "1", R"({"value":1})"); }},
    {"reply 1 1", [](CallbackTest & test) { test.ask("echo", 10'000); }},
    {"timeout 1", [](CallbackTest & test) { test.ask("nothing", 1); }},
    {"canceled 1",
     [](CallbackTest & test) {
         test.ask("nothing", 10'000);
         test.agent->cancelAllAsyncRequests();
     }},
    {"failed 1 7001", [](CallbackTest & test) { test.ask("refuse", 10'000); }},
    {"disconnected 10", [](CallbackTest & test) { test.server.disconnect(); }},
    {"error 7", [](CallbackTest & test) { test.server.notice("quote", "1", "{\"value\":"); }},
    {"relogin 20", [](CallbackTest & test) { test.ask("expire", 10'000); }},
    {"real time stopped null", [](CallbackTest & test) { test.agent->stopRealTimeService(); }},
    {"disconnected null", [](CallbackTest & test) { test.agent->stop(); }},
    {"stopped null", [](CallbackTest & test) { test.agent->stop(); }},
};

std::string nameOf(testing::TestParamInfo<Way> const & info) {
    std::string name = info.param.line;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Each, CallbackTest, testing::ValuesIn(WAYS), nameOf);

TEST_P(CallbackTest, MayCallEveryOperation) {
    using Operation = std::function<void(CallbackTest &)>;
    static ErrorInfo error;
    std::vector<Operation> const operations = {
        [](CallbackTest & test) { test.agent->start(&error); },
        [](CallbackTest & test) { test.agent->stop(); },
        [](CallbackTest & test) { test.agent->login("trader", "secret", &error); },
        [](CallbackTest & test) { test.agent->login("other", "secret", &error); },
        [](CallbackTest & test) { test.agent->relogin(&error); },
        [](CallbackTest & test) { test.agent->startRealTimeService(&error); },
        [](CallbackTest & test) { test.agent->stopRealTimeService(); },
        [](CallbackTest & test) { test.agent->send(makeRequest("echo", "s"), &error); },
        [](CallbackTest & test) { test.agent->request(makeRequest("echo", "r"), 50, &error); },
        [](CallbackTest & test) { test.agent->request(makeRequest("nothing", "r"), 1, &error); },
        [](CallbackTest & test) { test.ask("echo", 10'000); },
        [](CallbackTest & test) { test.ask("nothing", 0); },
        [](CallbackTest & test) { test.agent->cancelAllAsyncRequests(); },
        [](CallbackTest & test) { test.agent->cancelAsyncRequestsByHandler(&test.replies); },
        [](CallbackTest & test) {
            test.agent->cancelAsyncRequestsByHandler(&test.replies, "nothing");
        },
        [](CallbackTest & test) { test.agent->logout(); },
        [](CallbackTest & test) { test.agent->subscribe("quote", "2"); },
        [](CallbackTest & test) { test.agent->unsubscribe("quote", "1"); },
        [](CallbackTest & test) { test.agent->addMessageHandler("*", "*", &test.notices); },
        [](CallbackTest & test) { test.agent->removeMessageHandler("quote", "*", &test.notices); },
        [](CallbackTest & test) { test.agent->removeMessageHandlers("quote", "*"); },
        [](CallbackTest & test) { test.agent->removeAllMessageHandlers(); },
        [](CallbackTest & test) { test.agent->addKestrinListener(&test.listener); },
        [](CallbackTest & test) { test.agent->removeKestrinListener(&test.listener); },
        [](CallbackTest & test) { test.agent->removeAllKestrinListeners(); },
        [](CallbackTest & test) { test.agent->getServerTimeMilliSec(); },
        [](CallbackTest & test) { test.agent->poll(3); },
        [](CallbackTest & test) {
            test.agent->stop();
            test.agent->run();
        },
    };
    for (std::size_t which = 0; which < operations.size(); ++which) {
        SCOPED_TRACE(which);
        if (agent) {
            agent->stop();
            agent = nullptr;
            heard.clear();
            server.clear();
            asked = 0;
        }
        ASSERT_NO_FATAL_FAILURE(walk([&] {
            ask("nothing", 10'000);
            operations[which](*this);
            ask("echo", 10'000);
        }));
        ASSERT_NO_FATAL_FAILURE(toCallback());
        settle(3);
        agent->removeAllKestrinListeners();
        agent->addKestrinListener(&listener);
        bool const wasStopped = agent->getStatus() == KESTRINSTATUS_STOPPED;
        agent->stop();
        agent->run();
        expectOneOutcomeEach();
        EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_STOPPED);
        if (!wasStopped) {
            EXPECT_EQ(timesHeard("stopped null"), 1);
        }
        act = nullptr;
    }
}

TEST_P(CallbackTest, MayThrowAndTheAgentStaysUsable) {
    bool thrown = false;
    auto const drive = [&](auto const & call) {
        try {
            call();
        } catch (std::runtime_error const &) {
            thrown = true;
        }
    };
    drive([&] { ASSERT_NO_FATAL_FAILURE(walk([] { throw std::runtime_error("thrown"); })); });
    auto const end = std::chrono::steady_clock::now() + PATIENCE;
    while (!thrown && std::chrono::steady_clock::now() < end) {
        drive([&] { agent->poll(1000); });
    }
    ASSERT_TRUE(thrown);
    EXPECT_EQ(timesHeard(GetParam().line), 1);
    settle(3);
    if (agent->getStatus() != KESTRINSTATUS_STOPPED) {
        std::string const line = GetParam().line;
        if (line != "error 10") {
            EXPECT_EQ(timesHeard(line), 1) << "told twice";
        }
        server.answer = nullptr;
        EXPECT_TRUE(until([&] {
            if (agent->getStatus() == KESTRINSTATUS_CONNECTED) {
                agent->login("trader", "secret", nullptr);
            }
            return agent->getStatus() == KESTRINSTATUS_LOGGED_IN;
        }));
        TcpKestrinTest::ask("echo", "behind");
        EXPECT_TRUE(untilHeard("reply behind behind"));
        agent->stop();
    }
    EXPECT_EQ(timesHeard("stopped null"), 1);
}

TEST_P(CallbackTest, MayDropTheLastReference) {
    ASSERT_NO_FATAL_FAILURE(walk([&] {
        ask("nothing", 10'000);
        ask("echo", 10'000);
        agent = nullptr;
    }));
    ASSERT_TRUE(until([&] { return act == nullptr; }));
    heard.push_back("dropped");
    settle(3);
    expectOneOutcomeEach();
    // Nobody hears anything once the agent is gone.
    EXPECT_EQ(heard.back(), "dropped");
}

}  // namespace
