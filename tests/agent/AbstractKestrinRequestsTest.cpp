// The requests of AbstractKestrin: defaults, cancellation, and the guards of delivery.

#include <gtest/gtest.h>

#include <functional>
#include <iterator>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/OperationDoubles.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordingAgent.h"
#include "tvk/agent/AsyncReplyHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/MappedMessage.h"

namespace tvk {
namespace {

using test::callText;
using test::Log;
using test::LoggedOperation;
using test::PlainOperation;
using test::RecordingAgent;

using Agent = RefCountedPtr<RecordingAgent>;
using Message = RefCountedPtr<KestrinMessage>;

/// Writes what it hears into a log.
class RecordingReplyHandler : public AsyncReplyHandler {
public:
    explicit RecordingReplyHandler(Log & log) : log_(log) {}

    std::function<void()> during;  ///< runs inside each callback; may throw

    void onReply(Message const & request, Message const & reply, void * userObject) override {
        record("onReply", request, reply, userObject);
    }
    void onTimeout(Message const & request, void * userObject) override {
        record("onTimeout", request, userObject);
    }
    void onCanceled(Message const & request, void * userObject) override {
        record("onCanceled", request, userObject);
    }
    void onError(Message const & request, ErrorInfo const & error, void * userObject) override {
        record("onError", request, &error, userObject);
    }

private:
    template <class... Arguments>
    void record(char const * name, Arguments const &... arguments) {
        log_.push_back(callText(name, arguments...));
        if (during) {
            during();
        }
    }

    Log & log_;
};

class AbstractKestrinRequests : public ::testing::Test {
protected:
    Log log;
    Agent agent = new RecordingAgent(log);
    RecordingReplyHandler handler{log};
    Message const request = new MappedMessage;
    ErrorInfo error;
    int userObject = 0;
};

// ---- Defaults ----

TEST_F(AbstractKestrinRequests, RequestTakesTheTimeoutOfTheAgent) {
    Kestrin & kestrin = *agent;
    agent->reply = new MappedMessage;
    for (int const timeout : {0, 30000, -1}) {
        log.clear();
        agent->timeout = timeout;
        EXPECT_EQ(kestrin.request(request, &error), agent->reply);
        EXPECT_EQ(log, Log{callText("request", request, timeout, &error)});
    }
    EXPECT_EQ(agent->reply->getRefCount(), 1);
    EXPECT_EQ(request->getRefCount(), 1);
}

TEST_F(AbstractKestrinRequests, RequestHandsNullOnAndBack) {
    EXPECT_TRUE(agent->request(nullptr, nullptr).isNull());
    EXPECT_EQ(log, Log{callText("request", nullptr, 0, nullptr)});
}

TEST_F(AbstractKestrinRequests, AsyncRequestTakesTheTimeoutOfTheAgent) {
    Kestrin & kestrin = *agent;
    agent->operation = new PlainOperation(request, &handler, &userObject);
    for (int const timeout : {0, 30000, -1}) {
        log.clear();
        agent->timeout = timeout;
        EXPECT_EQ(kestrin.asyncRequest(request, &handler, &userObject), agent->operation);
        EXPECT_EQ(log, Log{callText("asyncRequest", request, timeout, &handler, &userObject)});
    }
    EXPECT_EQ(agent->operation->getRefCount(), 1);
    EXPECT_EQ(request->getRefCount(), 2);
}

TEST_F(AbstractKestrinRequests, AsyncRequestHandsNullOnAndBack) {
    EXPECT_TRUE(agent->asyncRequest(nullptr, nullptr, nullptr).isNull());
    EXPECT_EQ(log, Log{callText("asyncRequest", nullptr, 0, nullptr, nullptr)});
}

TEST_F(AbstractKestrinRequests, WhatTheConcreteAgentThrowsPasses) {
    agent->during = [] { throw 7; };
    EXPECT_THROW(agent->request(request, &error), int);
    EXPECT_THROW(agent->asyncRequest(request, &handler, nullptr), int);
    EXPECT_THROW(agent->cancelAllAsyncRequests(), int);
    EXPECT_EQ(request->getRefCount(), 1);
}

// ---- Cancellation ----

TEST_F(AbstractKestrinRequests, CancellationsAreHandedOn) {
    agent->cancelAllAsyncRequests();
    agent->cancelAsyncRequestsByHandler(&handler, "quote");
    agent->cancelAsyncRequestsByHandler(&handler);
    agent->cancelAsyncRequestsByHandler(nullptr, "");
    agent->cancelAsyncRequestsByHandler(nullptr);
    EXPECT_EQ(log, (Log{"doCancelAllAsyncRequests(null)",
                        callText("doCancelAsyncRequestsByHandler", &handler, "quote"),
                        callText("doCancelAsyncRequestsByHandler", &handler),
                        callText("doCancelAsyncRequestsByHandler", nullptr, ""),
                        callText("doCancelAsyncRequestsByHandler", nullptr)}));
}

// ---- Delivery ----

/// What the outcomes are delivered with.
struct Given {
    Message request = new MappedMessage;
    Message reply = new MappedMessage;
    ErrorInfo error;
    int userPlace = 0;
    void * userObject = &userPlace;
};

/// One of the four outcomes: how it is delivered, what the handler must hear of it, and whether a
/// cancelled operation holds it back.
struct Outcome {
    char const * name;
    bool isHeldBackByCancellation;
    void (*deliver)(AbstractKestrin & agent, AsyncRequestOperation * operation,
                    AsyncReplyHandler * handler, Given const & given);
    std::string (*heard)(Given const & given);

    friend std::ostream & operator<<(std::ostream & output, Outcome const & outcome) {
        return output << outcome.name;
    }
};

constexpr Outcome OUTCOMES[] = {
    {"Reply", true,
     [](AbstractKestrin & agent, AsyncRequestOperation * operation, AsyncReplyHandler * handler,
        Given const & given) {
         agent.fireReplyHandlerOnReply(operation, handler, given.request, given.reply,
                                       given.userObject);
     },
     [](Given const & given) {
         return callText("onReply", given.request, given.reply, given.userObject);
     }},
    {"Timeout", true,
     [](AbstractKestrin & agent, AsyncRequestOperation * operation, AsyncReplyHandler * handler,
        Given const & given) {
         agent.fireReplyHandlerOnTimeout(operation, handler, given.request, given.userObject);
     },
     [](Given const & given) { return callText("onTimeout", given.request, given.userObject); }},
    {"Canceled", false,
     [](AbstractKestrin & agent, AsyncRequestOperation * operation, AsyncReplyHandler * handler,
        Given const & given) {
         agent.fireReplyHandlerOnCanceled(operation, handler, given.request, given.userObject);
     },
     [](Given const & given) { return callText("onCanceled", given.request, given.userObject); }},
    {"Error", true,
     [](AbstractKestrin & agent, AsyncRequestOperation * operation, AsyncReplyHandler * handler,
        Given const & given) {
         agent.fireReplyHandlerOnError(operation, handler, given.request, given.error,
                                       given.userObject);
     },
     [](Given const & given) {
         return callText("onError", given.request, &given.error, given.userObject);
     }},
};

class AbstractKestrinDelivery : public ::testing::TestWithParam<Outcome> {
protected:
    void deliver(AsyncRequestOperation * operation, AsyncReplyHandler * to) {
        GetParam().deliver(*agent, operation, to, given);
    }
    std::string heard() const { return GetParam().heard(given); }

    /// The questions that come before the callback.
    Log questions() const {
        return GetParam().isHeldBackByCancellation ? Log{"isCanceled()", "isFired()"}
                                                   : Log{"isFired()"};
    }

    Log log;
    Given given;
    Agent agent = new RecordingAgent(log);
    RecordingReplyHandler handler{log};
    RefCountedPtr<LoggedOperation> logged = new LoggedOperation(log);
    RefCountedPtr<PlainOperation> plain = new PlainOperation(nullptr, nullptr, nullptr);
};

INSTANTIATE_TEST_SUITE_P(All, AbstractKestrinDelivery, ::testing::ValuesIn(OUTCOMES),
                         ::testing::PrintToStringParamName());

TEST_P(AbstractKestrinDelivery, KeepsItsGuardsInEveryCombination) {
    for (int combination = 0; combination < 8; ++combination) {
        logged->canceled = (combination & 1) != 0;
        logged->fired = (combination & 2) != 0;
        bool const hasHandler = (combination & 4) != 0;
        SCOPED_TRACE(testing::Message() << "canceled " << logged->canceled << " fired "
                                        << logged->fired << " handler " << hasHandler);
        Log expected;
        bool isOpen = hasHandler;
        if (isOpen && GetParam().isHeldBackByCancellation) {
            expected.push_back("isCanceled()");
            isOpen = !logged->canceled;
        }
        if (isOpen) {
            expected.push_back("isFired()");
            isOpen = !logged->fired;
        }
        if (isOpen) {
            expected.push_back(heard());
            expected.push_back("setFired(true)");
        }
        bool const firedAfterwards = logged->fired || isOpen;
        bool const canceledBefore = logged->canceled;
        log.clear();
        deliver(logged.get(), hasHandler ? &handler : nullptr);
        EXPECT_EQ(log, expected);
        EXPECT_EQ(logged->fired, firedAfterwards);
        EXPECT_EQ(logged->canceled, canceledBefore);
    }
}

TEST_P(AbstractKestrinDelivery, WithoutAHandlerTheOperationIsNotTouchedAndMayBeNull) {
    deliver(nullptr, nullptr);
    deliver(logged.get(), nullptr);
    EXPECT_EQ(log, Log{});
    EXPECT_FALSE(logged->fired);
    deliver(logged.get(), &handler);
    EXPECT_TRUE(logged->fired);
}

TEST_P(AbstractKestrinDelivery, HandsNullsOnUnchanged) {
    given.request = nullptr;
    given.reply = nullptr;
    given.userObject = nullptr;
    deliver(plain.get(), &handler);
    EXPECT_EQ(log, Log{heard()});
}

TEST_P(AbstractKestrinDelivery, TheHandlerGivenCountsNotThatOfTheOperation) {
    Log otherLog;
    RecordingReplyHandler other(otherLog);
    RefCountedPtr<PlainOperation> const operation =
        new PlainOperation(new MappedMessage, &other, nullptr);
    deliver(operation.get(), nullptr);
    EXPECT_FALSE(operation->isFired());
    deliver(operation.get(), &handler);
    EXPECT_EQ(log, Log{heard()});
    EXPECT_EQ(otherLog, Log{});
}

TEST_P(AbstractKestrinDelivery, WhetherItIsPendingPlaysNoPart) {
    plain->pending = false;
    deliver(plain.get(), &handler);
    EXPECT_EQ(log, Log{heard()});
    EXPECT_FALSE(plain->isPending());
    EXPECT_FALSE(plain->isCanceled());
    EXPECT_TRUE(plain->isFired());
}

TEST_P(AbstractKestrinDelivery, IsTheLastOutcomeOfItsOperation) {
    for (Outcome const & second : OUTCOMES) {
        SCOPED_TRACE(second.name);
        plain->setFired(false);
        log.clear();
        deliver(plain.get(), &handler);
        second.deliver(*agent, plain.get(), &handler, given);
        EXPECT_EQ(log, Log{heard()});
    }
}

TEST_P(AbstractKestrinDelivery, ACanceledOperationHearsOfItsCancellationAlone) {
    plain->cancel();
    deliver(plain.get(), &handler);
    bool const isHeldBack = GetParam().isHeldBackByCancellation;
    EXPECT_EQ(log, isHeldBack ? Log{} : Log{heard()});
    EXPECT_EQ(plain->isFired(), !isHeldBack);
    log.clear();
    plain->setFired(false);
    agent->fireReplyHandlerOnCanceled(plain.get(), &handler, given.request, given.userObject);
    EXPECT_EQ(log, Log{callText("onCanceled", given.request, given.userObject)});
    EXPECT_TRUE(plain->isFired());
}

TEST_P(AbstractKestrinDelivery, MayRunAgainWhenTheMarkIsTakenBack) {
    for (int i = 0; i < 3; ++i) {
        deliver(plain.get(), &handler);
        EXPECT_TRUE(plain->isFired());
        plain->setFired(false);
    }
    EXPECT_EQ(log, Log(3, heard()));
}

TEST_P(AbstractKestrinDelivery, DeliberateWhatTheHandlerThrowsLeavesTheOperationOpen) {
    for (Outcome const & second : OUTCOMES) {
        SCOPED_TRACE(second.name);
        logged->fired = false;
        log.clear();
        handler.during = [] { throw 7; };
        EXPECT_THROW(deliver(logged.get(), &handler), int);
        Log expected = questions();
        expected.push_back(heard());
        EXPECT_EQ(log, expected);
        EXPECT_FALSE(logged->fired);
        handler.during = nullptr;
        second.deliver(*agent, logged.get(), &handler, given);
        EXPECT_TRUE(logged->fired);
    }
}

TEST_P(AbstractKestrinDelivery, DeliberateTheOperationIsMarkedBehindTheCallback) {
    std::vector<bool> firedInside;
    handler.during = [&] { firedInside.push_back(plain->isFired()); };
    deliver(plain.get(), &handler);
    EXPECT_EQ(firedInside, std::vector<bool>{false});
    EXPECT_TRUE(plain->isFired());
}

TEST_P(AbstractKestrinDelivery, DeliberateAHandlerThatDeliversAgainIsCalledAgain) {
    int calls = 0;
    handler.during = [&] {
        if (++calls == 1) {
            deliver(logged.get(), &handler);
        }
    };
    deliver(logged.get(), &handler);
    Log expected;
    for (int i = 0; i < 2; ++i) {
        for (std::string const & question : questions()) {
            expected.push_back(question);
        }
        expected.push_back(heard());
    }
    expected.insert(expected.end(), 2, "setFired(true)");
    EXPECT_EQ(log, expected);
}

TEST_P(AbstractKestrinDelivery, AHandlerMayCancelTheOperationFromInside) {
    handler.during = [&] { plain->cancel(); };
    deliver(plain.get(), &handler);
    EXPECT_TRUE(plain->isCanceled());
    EXPECT_TRUE(plain->isFired());
    agent->fireReplyHandlerOnCanceled(plain.get(), &handler, given.request, given.userObject);
    EXPECT_EQ(log, Log{heard()});
}

TEST_P(AbstractKestrinDelivery, CountsNothing) {
    deliver(plain.get(), &handler);
    deliver(plain.get(), &handler);
    EXPECT_EQ(given.request->getRefCount(), 1);
    EXPECT_EQ(given.reply->getRefCount(), 1);
    EXPECT_EQ(plain->getRefCount(), 1);
    EXPECT_EQ(agent->getRefCount(), 1);
}

TEST(AbstractKestrinRandomDelivery, FollowsThePlainModel) {
    Given const given;
    Log log;
    RecordingReplyHandler handler(log);
    Agent const agent = new RecordingAgent(log);
    std::size_t heard = 0;
    for (unsigned int seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        RefCountedPtr<PlainOperation> const operation =
            new PlainOperation(nullptr, nullptr, nullptr);
        Log expected;
        bool canceled = false;
        bool fired = false;
        log.clear();
        for (int step = 0; step < 60; ++step) {
            switch (random() % 10) {
                case 0:
                    operation->canceled = canceled = !canceled;
                    continue;
                case 1:
                case 2:
                    fired = random() % 4 == 0;
                    operation->setFired(fired);
                    continue;
                default:
                    break;
            }
            Outcome const & outcome = OUTCOMES[random() % std::size(OUTCOMES)];
            bool const hasHandler = random() % 4 != 0;
            bool const throws = random() % 4 == 0;
            handler.during = throws ? std::function<void()>([] { throw 7; }) : nullptr;
            bool const reaches =
                hasHandler && !fired && !(outcome.isHeldBackByCancellation && canceled);
            if (reaches) {
                expected.push_back(outcome.heard(given));
                fired = !throws;
            }
            bool thrown = false;
            try {
                outcome.deliver(*agent, operation.get(), hasHandler ? &handler : nullptr, given);
            } catch (int) {
                thrown = true;
            }
            ASSERT_EQ(thrown, reaches && throws);
            ASSERT_EQ(log, expected);
            ASSERT_EQ(operation->isFired(), fired);
            ASSERT_EQ(operation->isCanceled(), canceled);
            ASSERT_TRUE(operation->isPending());
        }
        heard += expected.size();
    }
    EXPECT_GT(heard, 1000u);
}

}  // namespace
}  // namespace tvk
