#include <cstddef>
#include <memory>
#include <random>
#include <stdexcept>
#include <vector>

#include "examples/inprocess_agent/Errors.h"
#include "tests/examples/InProcessKestrinFixture.h"
#include "tests/support/PrintCString.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/RawDataImpl.h"

namespace tvk::test {

namespace {

using InProcessRequests = InProcessKestrinTest;

using OperationHandle = RefCountedPtr<AsyncRequestOperation>;

void expectState(AsyncRequestOperation const & operation, bool pending, bool canceled, bool fired) {
    EXPECT_EQ(operation.isPending(), pending);
    EXPECT_EQ(operation.isCanceled(), canceled);
    EXPECT_EQ(operation.isFired(), fired);
}

}  // namespace

TEST_F(InProcessRequests, HaveEachKindOfOutcomeOnce) {
    logIn();
    OperationHandle const replied = ask("quick");
    OperationHandle const timedOut = ask("never");
    OperationHandle const canceled = ask("slow");
    OperationHandle const failed = ask("fails");
    for (OperationHandle const & operation : {replied, timedOut, canceled, failed}) {
        expectState(*operation, true, false, false);
    }
    agent_->advance(4);
    canceled->cancel();
    EXPECT_THAT(heardAfter(1),
                ElementsAre("slow cancelled", "quick replied n=1", "fails failed 16"));
    EXPECT_THAT(heardAfter(94), IsEmpty());
    EXPECT_THAT(heardAfter(1), ElementsAre("never timed out"));

    expectState(*replied, false, false, true);
    expectState(*timedOut, false, false, true);
    expectState(*canceled, false, true, true);
    expectState(*failed, false, false, true);
    for (OperationHandle const & operation : {replied, timedOut, canceled, failed}) {
        operation->cancel();
    }
    agent_->cancelAllAsyncRequests();
    agent_->stop();
    EXPECT_THAT(heardAfter(1000), ElementsAre("disconnected", "stopped"));
}

TEST_F(InProcessRequests, GiveRequestAndUserObjectBack) {
    logIn();
    int user = 0;
    auto const message = requestOfType("quick");
    auto const operation = agent_->asyncRequest(message, 100, &handler_, &user);
    EXPECT_EQ(operation->getRequest(), message);
    EXPECT_EQ(operation->getReplyHandler(), &handler_);
    EXPECT_EQ(operation->getUserObject(), &user);
    agent_->advance(5);
    EXPECT_EQ(handler_.lastRequest, message);
    EXPECT_EQ(handler_.lastUserObject, &user);
}

TEST_F(InProcessRequests, LeaveTheHeaderOfTheApplicationAlone) {
    logIn();
    recordFrames();
    auto const message = requestOfType("quick");
    message->header().setRequestId("mine");
    message->header().setMessageKind(MSGKIND_NOTICE);
    message->header().setFieldValue("lang", "ja");
    agent_->asyncRequest(message, &handler_, nullptr);
    agent_->asyncRequest(message, &handler_, nullptr);
    EXPECT_THAT(
        sent_,
        ElementsAre(
            "{\"fields\":{\"lang\":\"ja\"},\"id\":\"2\",\"kind\":1,\"type\":\"quick\"}\n{}",
            "{\"fields\":{\"lang\":\"ja\"},\"id\":\"3\",\"kind\":1,\"type\":\"quick\"}\n{}"));
    EXPECT_EQ(message->header().getRequestId(), "mine");
    EXPECT_EQ(message->header().getMessageKind(), MSGKIND_NOTICE);
    EXPECT_THAT(heardAfter(5), ElementsAre("quick replied n=1", "quick replied n=1"));
}

TEST_F(InProcessRequests, TakeTheTimeoutThatIsGivenOrTheAgentsOwn) {
    logIn();
    agent_->asyncRequest(requestOfType("never"), 30, &handler_, nullptr);
    agent_->asyncRequest(requestOfType("never"), 0, &other_, nullptr);
    EXPECT_THAT(heardAfter(0), ElementsAre("other: never timed out"));
    EXPECT_THAT(heardAfter(29), IsEmpty());
    EXPECT_THAT(heardAfter(1), ElementsAre("never timed out"));
    agent_->asyncRequest(requestOfType("never"), &handler_, nullptr);
    EXPECT_THAT(heardAfter(99), IsEmpty());
    EXPECT_THAT(heardAfter(1), ElementsAre("never timed out"));
}

TEST_F(InProcessRequests, IgnoreAReplyThatComesTooLate) {
    logIn();
    agent_->asyncRequest(requestOfType("slow"), 49, &handler_, nullptr);
    EXPECT_THAT(heardAfter(1000), ElementsAre("slow timed out"));
    // The reply and the time-out are due together: the reply was planned first.
    agent_->asyncRequest(requestOfType("slow"), 50, &handler_, nullptr);
    EXPECT_THAT(heardAfter(1000), ElementsAre("slow replied n=2"));
}

TEST_F(InProcessRequests, FailWhereTheReplyCannotBeRead) {
    logIn();
    ask("bad");
    EXPECT_THAT(heardAfter(5), ElementsAre("bad failed 7"));
    EXPECT_EQ(handler_.lastError.getComponentCode(), inprocess::COMPONENT_CODE);
    EXPECT_EQ(handler_.lastError.getErrorMessage(),
              "invalid message data near position 0: tag '{' is expected, but was <no JSON>...");
}

TEST_F(InProcessRequests, FailWithWhatTheReplySays) {
    logIn();
    ask("fails");
    ask("other");
    EXPECT_THAT(heardAfter(0), ElementsAre("other failed 6"));
    agent_->advance(5);
    ErrorInfo const & error = handler_.lastError;
    EXPECT_EQ(error.getComponentCode(), inprocess::COMPONENT_CODE);
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
    EXPECT_EQ(error.getErrorCode(), 16);
    EXPECT_EQ(error.getErrorMessage(), "no");
    EXPECT_FALSE(error.hasUserInfo(ErrorInfo::OrvKey_ErrorTypeHint));
    auto const reply = error.getUserInfo(ErrorInfo::OrvKey_ErrorReply);
    auto const * const message = dynamic_cast<KestrinMessage const *>(reply.get());
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(message->header().getMessageTypeId(), "fails");

    ask("down");
    agent_->advance(5);
    auto const hint = handler_.lastError.getUserInfo(ErrorInfo::OrvKey_ErrorTypeHint);
    auto const * const text = dynamic_cast<FieldValue const *>(hint.get());
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->asString(), ErrorInfo::ErrorType_NetworkFailure);
}

TEST_F(InProcessRequests, FailWithACodeWhereTheReplyHasNone) {
    logIn();
    ask("mute");
    EXPECT_THAT(heardAfter(5), ElementsAre("mute failed 16"));
}

TEST_F(InProcessRequests, NeedNoHandler) {
    logIn();
    auto const operation = agent_->asyncRequest(requestOfType("quick"), nullptr, nullptr);
    auto const canceled = agent_->asyncRequest(requestOfType("quick"), nullptr, nullptr);
    canceled->cancel();
    agent_->advance(5);
    expectState(*operation, false, false, false);
    expectState(*canceled, false, true, false);
}

TEST_F(InProcessRequests, FailLaterWhereTheyCannotBeSent) {
    connect();
    heard_.clear();
    OperationHandle const tooEarly = ask("quick");
    expectState(*tooEarly, true, false, false);
    EXPECT_THAT(heard(), IsEmpty());
    EXPECT_THAT(heardAfter(0), ElementsAre("quick failed 26"));
    EXPECT_EQ(handler_.lastError.getComponentCode(), inprocess::COMPONENT_CODE);

    logInOnly();
    auto const list = MappedMessage::createListMessage(1);
    list->addSubMessage(requestOfType("quick"));
    agent_->asyncRequest(list, &handler_, nullptr);
    EXPECT_THAT(heardAfter(0), ElementsAre("[] failed 24"));
    EXPECT_EQ(handler_.lastError.getComponentCode(), inprocess::COMPONENT_CODE);

    auto const raw = requestOfType("quick");
    raw->setFieldValue("raw", new RawDataImpl("x", 1));
    agent_->asyncRequest(raw, &handler_, nullptr)->cancel();
    EXPECT_THAT(heardAfter(1000), ElementsAre("quick cancelled"));
}

TEST_F(InProcessRequests, FailAtOnceWhereTheAgentHasStopped) {
    logIn();
    agent_->stop();
    heard_.clear();
    OperationHandle const operation = ask("quick");
    EXPECT_THAT(heard(), ElementsAre("quick failed 26"));
    expectState(*operation, false, false, true);
    EXPECT_THAT(heardAfter(1000), IsEmpty());
}

TEST_F(InProcessRequests, MaySendWithoutAReply) {
    logIn();
    recordFrames();
    auto const message = requestOfType("quick");
    message->header().setRequestId("mine");
    EXPECT_TRUE(agent_->send(message, nullptr));
    EXPECT_THAT(sent_, ElementsAre("{\"kind\":1,\"type\":\"quick\"}\n{}"));
    EXPECT_THAT(heardAfter(1000), IsEmpty());

    ErrorInfo error;
    message->setFieldValue("raw", new RawDataImpl("x", 1));
    EXPECT_FALSE(agent_->send(message, &error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageData);
    EXPECT_FALSE(agent_->send(message, nullptr));
}

// Cancellation.

TEST_F(InProcessRequests, AreCancelledAllTogether) {
    logIn();
    ask("never");
    ask("slow", other_);
    ask("quick");
    agent_->cancelAllAsyncRequests();
    EXPECT_THAT(heardAfter(1000),
                ElementsAre("never cancelled", "other: slow cancelled", "quick cancelled"));
}

TEST_F(InProcessRequests, AreCancelledByHandler) {
    logIn();
    ask("never");
    ask("quick", other_);
    ask("slow");
    agent_->cancelAsyncRequestsByHandler(&handler_);
    EXPECT_THAT(heard(), ElementsAre("never cancelled", "slow cancelled"));
    EXPECT_THAT(heardAfter(1000), ElementsAre("other: quick replied n=1"));
}

TEST_F(InProcessRequests, AreCancelledByHandlerAndMessageType) {
    logIn();
    ask("quick");
    ask("quick", other_);
    ask("slow");
    ask("quick");
    agent_->cancelAsyncRequestsByHandler(&handler_, "quick");
    agent_->cancelAsyncRequestsByHandler(&handler_, "qui");
    EXPECT_THAT(heard(), ElementsAre("quick cancelled", "quick cancelled"));
    EXPECT_THAT(heardAfter(1000), ElementsAre("other: quick replied n=1", "slow replied n=2"));
}

TEST_F(InProcessRequests, AreNotToldTwiceWhenTheirOwnCallbackCancels) {
    struct Row {
        char const * type;
        char const * outcome;
    };
    constexpr Row ROWS[] = {
        {"quick", "quick replied n=1"},
        {"never", "never timed out"},
        {"fails", "fails failed 16"},
        {"slow", "slow cancelled"},
    };
    logIn();
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.type);
        OperationHandle const operation = ask(row.type);
        handler_.during = [&] {
            operation->cancel();
            agent_->cancelAllAsyncRequests();
            agent_->cancelAsyncRequestsByHandler(&handler_);
            agent_->cancelAsyncRequestsByHandler(&handler_, row.type);
            expectState(*operation, false, row.outcome == ROWS[3].outcome, false);
        };
        if (row.outcome == ROWS[3].outcome) {
            operation->cancel();
        }
        EXPECT_THAT(heardAfter(1000), ElementsAre(row.outcome));
    }
}

TEST_F(InProcessRequests, AreCancelledFromTheCallbackOfAnother) {
    logIn();
    ask("quick");
    OperationHandle const second = ask("quick", other_);
    handler_.during = [&] { second->cancel(); };
    EXPECT_THAT(heardAfter(1000), ElementsAre("quick replied n=1", "other: quick cancelled"));
}

TEST_F(InProcessRequests, StayOpenWhenTheyAreMadeDuringACancellation) {
    logIn();
    ask("slow");
    ask("slow");
    handler_.during = [&] { ask("quick", other_); };
    agent_->cancelAllAsyncRequests();
    EXPECT_THAT(heard(), ElementsAre("slow cancelled", "slow cancelled"));
    EXPECT_THAT(heardAfter(1000),
                ElementsAre("other: quick replied n=1", "other: quick replied n=1"));
}

// The end of the agent.

TEST_F(InProcessRequests, AreCancelledWhenTheAgentStops) {
    logIn();
    ask("slow");
    ask("never", other_);
    agent_->stop();
    EXPECT_THAT(heardAfter(1000),
                ElementsAre("slow cancelled", "other: never cancelled", "disconnected", "stopped"));
}

TEST_F(InProcessRequests, FailWhenTheyAreMadeDuringAStop) {
    logIn();
    ask("slow");
    handler_.during = [&] { ask("quick", other_); };
    agent_->stop();
    EXPECT_THAT(heardAfter(1000),
                ElementsAre("slow cancelled", "other: quick failed 26", "disconnected", "stopped"));
}

TEST_F(InProcessRequests, AreCancelledWhenACallbackStopsTheAgent) {
    logIn();
    ask("quick");
    ask("quick", other_);
    handler_.during = [&] { agent_->stop(); };
    EXPECT_THAT(heardAfter(1000), ElementsAre("quick replied n=1", "other: quick cancelled",
                                              "disconnected", "stopped"));
}

TEST_F(InProcessRequests, AreCancelledWhenTheAgentEnds) {
    logIn();
    OperationHandle const operation = ask("slow");
    ask("never", other_);
    agent_ = nullptr;
    EXPECT_THAT(heard(), ElementsAre("slow cancelled", "other: never cancelled"));
    EXPECT_THAT(ends_, ElementsAre("end agent", "end agent", "gone agent"));
    expectState(*operation, false, true, true);
    operation->cancel();
    EXPECT_THAT(heard(), IsEmpty());
}

TEST_F(InProcessRequests, FindAWholeAgentWhenItEnds) {
    logIn();
    InProcessKestrin * const agent = agent_.get();
    ask("slow");
    handler_.during = [&] {
        // A reference that comes and goes, as in any callback.
        Agent const reference(agent);
        EXPECT_EQ(reference->getStatus(), KESTRINSTATUS_STOPPED);
        reference->asyncRequest(requestOfType("quick"), &other_, nullptr);
    };
    agent_ = nullptr;
    EXPECT_THAT(heard(), ElementsAre("slow cancelled", "other: quick failed 26"));
    EXPECT_EQ(ends_.back(), "gone agent");
}

TEST_F(InProcessRequests, MayKeepAnAgentThatEnds) {
    logIn();
    InProcessKestrin * const agent = agent_.get();
    ask("slow");
    Agent kept;
    handler_.during = [&] { kept = agent; };
    agent_ = nullptr;
    EXPECT_THAT(ends_, ElementsAre("end agent"));
    EXPECT_EQ(kept->getStatus(), KESTRINSTATUS_STOPPED);
    EXPECT_EQ(kept->getRefCount(), 1);
    kept = nullptr;
    EXPECT_THAT(ends_, ElementsAre("end agent", "end agent", "gone agent"));
    EXPECT_THAT(heard(), ElementsAre("slow cancelled"));
}

TEST_F(InProcessRequests, MayDropTheLastReferenceInACallback) {
    logIn();
    handler_.during = [this] { agent_ = nullptr; };
    ask("quick");
    InProcessKestrin * const agent = agent_.get();
    agent->advance(5);
    EXPECT_THAT(heard(), ElementsAre("quick replied n=1"));
    EXPECT_EQ(ends_.back(), "gone agent");
}

TEST_F(InProcessRequests, MayDropTheLastReferenceInACancellation) {
    logIn();
    handler_.during = [this] { agent_ = nullptr; };
    OperationHandle const operation = ask("slow");
    ask("slow", other_);
    operation->cancel();
    EXPECT_THAT(heard(), ElementsAre("slow cancelled", "other: slow cancelled"));
    EXPECT_EQ(ends_.back(), "gone agent");
    expectState(*operation, false, true, true);
}

TEST_F(InProcessRequests, HaveHadTheirOutcomeWhenItThrows) {
    logIn();
    OperationHandle const operation = ask("quick");
    ask("quick", other_);
    handler_.during = [] { throw std::runtime_error("callback"); };
    EXPECT_THROW(agent_->advance(5), std::runtime_error);
    EXPECT_THAT(heard(), ElementsAre("quick replied n=1"));
    expectState(*operation, false, false, false);
    agent_->cancelAllAsyncRequests();
    EXPECT_THAT(heardAfter(1000), ElementsAre("other: quick cancelled"));
}

// Requests that wait.

TEST_F(InProcessRequests, MayWaitForTheirReply) {
    logIn();
    long long const before = agent_->now();
    ErrorInfo error;
    auto const reply = agent_->request(requestOfType("quick"), &error);
    ASSERT_TRUE(reply);
    EXPECT_EQ(reply->getFieldValue("n")->intValue(), 1);
    EXPECT_EQ(reply->header().getMessageKind(), MSGKIND_REPLY);
    EXPECT_EQ(reply->header().getMessageTypeId(), "quick");
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(agent_->now(), before + 5);
}

TEST_F(InProcessRequests, MayWaitInVain) {
    struct Row {
        char const * type;
        int code;
    };
    constexpr Row ROWS[] = {
        {"never", KestrinConstants::ERR_RequestTimeOut},
        {"fails", KestrinConstants::ERR_UnexpectedError},
        {"bad", KestrinConstants::ERR_InvalidMessageData},
        {"other", KestrinConstants::ERR_UnknownMessage},
    };
    logIn();
    for (Row const & row : ROWS) {
        SCOPED_TRACE(row.type);
        ErrorInfo error;
        EXPECT_EQ(agent_->request(requestOfType(row.type), 20, &error), nullptr);
        EXPECT_EQ(error.getErrorCode(), row.code);
        EXPECT_EQ(error.getComponentCode(), inprocess::COMPONENT_CODE);
        EXPECT_EQ(agent_->request(requestOfType(row.type), 20, nullptr), nullptr);
    }
    agent_->stop();
    ErrorInfo error;
    EXPECT_EQ(agent_->request(requestOfType("quick"), &error), nullptr);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
}

TEST_F(InProcessRequests, MayWaitBeforeTheAgentIsStarted) {
    ErrorInfo error;
    EXPECT_EQ(agent_->request(requestOfType("quick"), 20, &error), nullptr);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
}

TEST_F(InProcessRequests, LetOthersGoOnWhileTheyWait) {
    logIn();
    ask("quick");
    ask("never", other_);
    EXPECT_TRUE(agent_->request(requestOfType("slow"), nullptr));
    EXPECT_THAT(heard(), ElementsAre("quick replied n=1"));
    EXPECT_THAT(heardAfter(50), ElementsAre("other: never timed out"));
}

TEST_F(InProcessRequests, MayWaitInsideACallback) {
    logIn();
    ask("quick");
    ask("slow", other_);
    handler_.during = [&] { EXPECT_TRUE(agent_->request(requestOfType("slow"), nullptr)); };
    EXPECT_THAT(heardAfter(5), ElementsAre("quick replied n=1", "other: slow replied n=2"));
}

TEST_F(InProcessRequests, AreCancelledWhileTheyWait) {
    using Way = std::function<void(InProcessKestrin &)>;
    for (Way const & way : {Way([](InProcessKestrin & agent) { agent.cancelAllAsyncRequests(); }),
                            Way([](InProcessKestrin & agent) { agent.stop(); })}) {
        logIn();
        ask("quick");
        handler_.during = [&] { way(*agent_); };
        ErrorInfo error;
        EXPECT_EQ(agent_->request(requestOfType("slow"), &error), nullptr);
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_RequestCanceled);
        handler_.during = nullptr;
        agent_->logout();
        agent_ = new InProcessKestrin(answersForTests());
    }
}

TEST_F(InProcessRequests, LeaveNothingBehindWhenAnotherThrowsWhileTheyWait) {
    logIn();
    ask("quick");
    handler_.during = [] { throw std::runtime_error("callback"); };
    ErrorInfo error;
    EXPECT_THROW(agent_->request(requestOfType("slow"), &error), std::runtime_error);
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_RequestCanceled);
    EXPECT_THAT(heardAfter(1000), ElementsAre("quick replied n=1"));
}

// Whatever handlers do, one outcome each.

namespace {

/// Counts its outcomes, and does something random inside each of them.
class Restless : public AsyncReplyHandler {
public:
    explicit Restless(std::function<void()> act) : act_(std::move(act)) {}

    int outcomes = 0;

    void onReply(RefCountedPtr<KestrinMessage> const &, RefCountedPtr<KestrinMessage> const &,
                 void *) override {
        take();
    }
    void onTimeout(RefCountedPtr<KestrinMessage> const &, void *) override { take(); }
    void onCanceled(RefCountedPtr<KestrinMessage> const &, void *) override { take(); }
    void onError(RefCountedPtr<KestrinMessage> const &, ErrorInfo const &, void *) override {
        take();
    }

private:
    void take() {
        ++outcomes;
        act_();
    }

    std::function<void()> const act_;
};

/// An application that asks, cancels and lets time pass at random, from inside callbacks too.
class RandomApplication {
public:
    RandomApplication(InProcessKestrin & agent, unsigned int seed, int mostRequests)
        : agent_(agent), random_(seed), mostRequests_(mostRequests) {}

    void act() {
        switch (random_() % 8) {
            case 0:
            case 1:
            case 2:
                ask();
                break;
            case 3:
                agent_.advance(pick(30));
                break;
            case 4:
                if (!operations_.empty()) {
                    operations_[static_cast<std::size_t>(
                                    pick(static_cast<int>(operations_.size())))]
                        ->cancel();
                }
                break;
            case 5:
                if (!handlers_.empty()) {
                    agent_.cancelAsyncRequestsByHandler(handlers_.back().get(), "slow");
                }
                break;
            case 6:
                if (pick(10) == 0) {
                    agent_.cancelAllAsyncRequests();
                }
                break;
            default:
                if (pick(400) == 0) {
                    agent_.stop();
                }
        }
    }

    void expectOneOutcomeEach() const {
        for (auto const & handler : handlers_) {
            EXPECT_EQ(handler->outcomes, 1);
        }
    }

    int requests() const { return static_cast<int>(handlers_.size()); }

private:
    int pick(int below) { return static_cast<int>(random_() % static_cast<unsigned int>(below)); }

    void ask() {
        constexpr char const * TYPES[] = {"quick", "slow", "never", "fails", "bad", "other"};
        if (requests() == mostRequests_) {
            return;
        }
        handlers_.push_back(std::make_unique<Restless>([this] { act(); }));
        Restless * const handler = handlers_.back().get();
        auto const operation =
            agent_.asyncRequest(requestOfType(TYPES[pick(6)]), pick(60), handler, nullptr);
        operations_.push_back(operation);
    }

    InProcessKestrin & agent_;
    std::mt19937 random_;
    int const mostRequests_;
    std::vector<std::unique_ptr<Restless>> handlers_;
    std::vector<OperationHandle> operations_;
};

}  // namespace

TEST_F(InProcessRequests, HaveOneOutcomeEachAtRandom) {
    int requests = 0;
    for (unsigned int seed = 0; seed < 200; ++seed) {
        SCOPED_TRACE(seed);
        agent_ = new InProcessKestrin(answersForTests());
        logIn();
        RandomApplication application(*agent_, seed, 300);
        for (int i = 0; i < 300; ++i) {
            application.act();
        }
        if (seed % 2 == 0) {
            agent_->advance(100);
        }
        agent_ = nullptr;
        application.expectOneOutcomeEach();
        requests += application.requests();
    }
    EXPECT_GT(requests, 10'000);
}

}  // namespace tvk::test
