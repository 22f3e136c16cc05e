// The two tables of AbstractKestrin: handlers of notices, and subscriptions.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <map>
#include <new>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/RecordingNoticeHandler.h"
#include "tests/support/TextBytes.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"

namespace tvk {
namespace {

using test::callText;
using test::Log;
using test::RecordingAgent;
using test::RecordingNoticeHandler;
using test::textOf;

using Agent = RefCountedPtr<RecordingAgent>;
using Handlers = std::vector<KestrinNoticeMessageHandler *>;

class AbstractKestrinNotices : public ::testing::Test {
protected:
    Log log;
    Agent agent = new RecordingAgent(log);
    RecordingNoticeHandler h1{log, "1"};
    RecordingNoticeHandler h2{log, "2"};
    RecordingNoticeHandler h3{log, "3"};
    RecordingNoticeHandler h4{log, "4"};
};

// ---- The key ----

TEST_F(AbstractKestrinNotices, TheCodeIsTypeHyphenSubject) {
    struct Row {
        CString type, subject, code;
    };
    for (Row const & row :
         {Row{"", "", "-"}, Row{"a", "", "a-"}, Row{"", "b", "-b"},
          Row{"quote", "7203", "quote-7203"}, Row{"a-b", "c", "a-b-c"}, Row{"a", "b-c", "a-b-c"},
          Row{"-", "-", "---"}, Row{"*", "*", "*-*"}, Row{"\x83\x5C", "%s", "\x83\x5C-%s"},
          Row{textOf({"a\0", 2}), textOf({"\0b", 2}), textOf({"a\0-\0b", 5})}}) {
        EXPECT_EQ(agent->createSubjectCode(row.type, row.subject), row.code);
    }
}

// The pages of the block are never touched, so the test needs no memory.
TEST_F(AbstractKestrinNotices, RefusesACodeBeyondTheGreatestLength) {
    CString half;
    try {
        half.GetBuffer(INT_MAX / 2 + 1)[0] = 'x';
    } catch (std::bad_alloc const &) {
        GTEST_SKIP() << "no address space for so long a text";
    }
    half.ReleaseBuffer(INT_MAX / 2 + 1);
    EXPECT_THROW(agent->createSubjectCode(half, half), std::bad_alloc);
}

TEST_F(AbstractKestrinNotices, DeliberatePairsWithTheSameCodeAreOne) {
    agent->addMessageHandler("a-b", "c", &h1);
    agent->addMessageHandler("a", "b-c", &h2);
    EXPECT_EQ(agent->getMessageHandlers("a-b", "c"), (Handlers{&h1, &h2}));
    EXPECT_EQ(agent->getMessageHandlers("a", "b-c"), (Handlers{&h1, &h2}));
    EXPECT_EQ(agent->removeMessageHandler("a", "b-c", &h1), 1);
    EXPECT_EQ(agent->removeMessageHandlers("a-b", "c"), 1);

    EXPECT_EQ(agent->subscribe("a-b", "c"), 1);
    EXPECT_EQ(agent->subscribe("a", "b-c"), 2);
    EXPECT_TRUE(agent->hasSubscription("a", "b-c"));
    EXPECT_EQ(agent->unsubscribe("a-b", "c"), 1);
    EXPECT_EQ(agent->unsubscribe("a", "b-c"), 0);
    // The concrete agent gets the texts of the call, not those of the first one.
    EXPECT_EQ(log,
              (Log{callText("doSubscribe", "a-b", "c"), callText("doUnsubscribe", "a", "b-c")}));
}

TEST_F(AbstractKestrinNotices, KeysSeeEveryByte) {
    CString const one = textOf({"a\0b", 3});
    CString const other = textOf({"a\0c", 3});
    agent->addMessageHandler(one, "s", &h1);
    agent->addMessageHandler("\xE3", "s", &h2);
    EXPECT_EQ(agent->getMessageHandlers(one, "s"), Handlers{&h1});
    EXPECT_TRUE(agent->getMessageHandlers(other, "s").empty());
    EXPECT_TRUE(agent->getMessageHandlers("a", "s").empty());
    EXPECT_EQ(agent->getMessageHandlers("\xE3", "s"), Handlers{&h2});
    EXPECT_TRUE(agent->getMessageHandlers("c", "s").empty());
}

/// Writes each question for a code into the log.
class CodingAgent : public RecordingAgent {
public:
    using RecordingAgent::RecordingAgent;

    CString createSubjectCode(CString const & type, CString const & subject) const override {
        record("createSubjectCode", type, subject);
        return subject + "/" + type;
    }
};

TEST_F(AbstractKestrinNotices, EveryOperationAsksTheAgentsOwnOperationForTheCode) {
    agent = new CodingAgent(log);
    std::string const code = callText("createSubjectCode", "t", "s");
    agent->addMessageHandler("t", "s", &h1);
    agent->removeMessageHandler("t", "s", &h2);
    agent->hasMessageHandler("t", "s", &h1);
    agent->getMessageHandlers("t", "s");
    agent->removeMessageHandlers("t", "s");
    EXPECT_EQ(log, Log(5, code));
    log.clear();
    agent->removeAllMessageHandlers();
    EXPECT_EQ(log, Log{});
    agent->hasSubscription("t", "s");
    agent->subscribe("t", "s");
    agent->subscribe("t", "s");
    agent->unsubscribe("t", "s");
    agent->unsubscribe("t", "s");
    EXPECT_EQ(log, (Log{code, code, callText("doSubscribe", "t", "s"), code, code, code,
                        callText("doUnsubscribe", "t", "s")}));
}

TEST_F(AbstractKestrinNotices, TheFourCodesOfANoticeAreAskedForInTheirOrder) {
    agent = new CodingAgent(log);
    agent->getAllPossibleMessageHandlers("t", "s");
    EXPECT_EQ(
        log,
        (Log{callText("createSubjectCode", "t", "s"), callText("createSubjectCode", "*", "s"),
             callText("createSubjectCode", "t", "*"), callText("createSubjectCode", "*", "*")}));
}

// ---- Handlers ----

TEST_F(AbstractKestrinNotices, KeepsHandlersInTheOrderOfAdditionWithDuplicates) {
    for (KestrinNoticeMessageHandler * const handler : {&h2, &h1, &h2}) {
        agent->addMessageHandler("t", "s", handler);
    }
    agent->addMessageHandler("t", "other", &h3);
    EXPECT_EQ(agent->getMessageHandlers("t", "s"), (Handlers{&h2, &h1, &h2}));
    EXPECT_EQ(agent->getMessageHandlers("t", "other"), Handlers{&h3});
    EXPECT_TRUE(agent->getMessageHandlers("other", "s").empty());
    EXPECT_EQ(log, Log{});
}

TEST_F(AbstractKestrinNotices, RemovesTheFirstEntryOfAHandler) {
    for (KestrinNoticeMessageHandler * const handler : {&h1, &h2, &h1}) {
        agent->addMessageHandler("t", "s", handler);
    }
    EXPECT_EQ(agent->removeMessageHandler("t", "s", &h1), 1);
    EXPECT_EQ(agent->getMessageHandlers("t", "s"), (Handlers{&h2, &h1}));
    EXPECT_TRUE(agent->hasMessageHandler("t", "s", &h1));
    EXPECT_EQ(agent->removeMessageHandler("t", "s", &h1), 1);
    EXPECT_FALSE(agent->hasMessageHandler("t", "s", &h1));
    EXPECT_EQ(agent->removeMessageHandler("t", "s", &h1), 0);
    EXPECT_EQ(agent->removeMessageHandler("t", "s", &h3), 0);
    EXPECT_EQ(agent->removeMessageHandler("unknown", "s", &h2), 0);
    EXPECT_EQ(agent->getMessageHandlers("t", "s"), Handlers{&h2});
}

TEST_F(AbstractKestrinNotices, AKeyWithoutHandlersCountsNone) {
    agent->addMessageHandler("t", "s", &h1);
    EXPECT_EQ(agent->removeMessageHandler("t", "s", &h1), 1);
    EXPECT_TRUE(agent->getMessageHandlers("t", "s").empty());
    EXPECT_TRUE(agent->getAllPossibleMessageHandlers("t", "s").empty());
    EXPECT_EQ(agent->removeMessageHandlers("t", "s"), 0);
    EXPECT_EQ(agent->removeMessageHandlers("t", "s"), 0);
    agent->addMessageHandler("t", "s", &h2);
    EXPECT_EQ(agent->getMessageHandlers("t", "s"), Handlers{&h2});
}

TEST_F(AbstractKestrinNotices, RemovesAKeyWithItsHandlers) {
    agent->addMessageHandler("t", "s", &h1);
    agent->addMessageHandler("t", "s", &h1);
    agent->addMessageHandler("t", "other", &h1);
    EXPECT_EQ(agent->removeMessageHandlers("unknown", "s"), 0);
    EXPECT_EQ(agent->removeMessageHandlers("t", "s"), 2);
    EXPECT_FALSE(agent->hasMessageHandler("t", "s", &h1));
    EXPECT_EQ(agent->getMessageHandlers("t", "other"), Handlers{&h1});
}

TEST_F(AbstractKestrinNotices, RemovesAllAndCountsTheEntries) {
    EXPECT_EQ(agent->removeAllMessageHandlers(), 0);
    agent->addMessageHandler("t", "s", &h1);
    agent->addMessageHandler("t", "s", &h1);
    agent->addMessageHandler("*", "s", &h1);
    agent->addMessageHandler("t", "emptied", &h2);
    agent->removeMessageHandler("t", "emptied", &h2);
    EXPECT_EQ(agent->removeAllMessageHandlers(), 3);
    EXPECT_EQ(agent->removeAllMessageHandlers(), 0);
    EXPECT_TRUE(agent->getAllPossibleMessageHandlers("t", "s").empty());
}

TEST_F(AbstractKestrinNotices, WhatIsGivenOutIsACopy) {
    agent->addMessageHandler("t", "s", &h1);
    Handlers given = agent->getMessageHandlers("t", "s");
    given.push_back(&h2);
    EXPECT_EQ(agent->getMessageHandlers("t", "s"), Handlers{&h1});
}

TEST_F(AbstractKestrinNotices, AHandlerMayBeNull) {
    agent->addMessageHandler("t", "s", nullptr);
    EXPECT_TRUE(agent->hasMessageHandler("t", "s", nullptr));
    EXPECT_EQ(agent->getMessageHandlers("t", "s"), Handlers{nullptr});
    EXPECT_EQ(agent->removeMessageHandler("t", "s", nullptr), 1);
}

// ---- Who gets a notice ----

TEST_F(AbstractKestrinNotices, DeliberateTheWidestHandlersComeFirst) {
    agent->addMessageHandler("T", "S", &h1);
    agent->addMessageHandler("*", "S", &h2);
    agent->addMessageHandler("T", "*", &h3);
    agent->addMessageHandler("*", "*", &h4);
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("T", "S"), (Handlers{&h4, &h3, &h2, &h1}));
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("T", "other"), (Handlers{&h4, &h3}));
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("other", "S"), (Handlers{&h4, &h2}));
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("", ""), Handlers{&h4});
}

TEST_F(AbstractKestrinNotices, WithinAKeyTheOrderOfAdditionHolds) {
    agent->addMessageHandler("T", "S", &h1);
    agent->addMessageHandler("T", "S", &h2);
    agent->addMessageHandler("*", "*", &h3);
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("T", "S"), (Handlers{&h3, &h1, &h2}));
}

TEST_F(AbstractKestrinNotices, AHandlerIsListedAsOftenAsItIsRegistered) {
    agent->addMessageHandler("T", "S", &h1);
    agent->addMessageHandler("T", "S", &h1);
    agent->addMessageHandler("T", "*", &h1);
    agent->addMessageHandler("*", "*", &h2);
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("T", "S"), (Handlers{&h2, &h1, &h1, &h1}));
}

TEST_F(AbstractKestrinNotices, DeliberateAWildcardInTheNoticeListsHandlersTwice) {
    agent->addMessageHandler("*", "S", &h1);
    agent->addMessageHandler("T", "*", &h2);
    agent->addMessageHandler("*", "*", &h3);
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("*", "S"), (Handlers{&h3, &h3, &h1, &h1}));
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("T", "*"), (Handlers{&h3, &h2, &h3, &h2}));
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("*", "*"), (Handlers{&h3, &h3, &h3, &h3}));
}

TEST_F(AbstractKestrinNotices, ElsewhereTheWildcardIsATextLikeAnyOther) {
    EXPECT_EQ(KestrinConstants::WILDCARD, "*");
    agent->addMessageHandler("*", "S", &h1);
    agent->addMessageHandler("T", "S", &h2);
    EXPECT_EQ(agent->getMessageHandlers("*", "S"), Handlers{&h1});
    EXPECT_EQ(agent->getMessageHandlers("T", "S"), Handlers{&h2});
    EXPECT_FALSE(agent->hasMessageHandler("T", "S", &h1));
    EXPECT_FALSE(agent->hasMessageHandler("*", "S", &h2));
    EXPECT_EQ(agent->removeMessageHandler("T", "S", &h1), 0);
    EXPECT_EQ(agent->removeMessageHandlers("*", "*"), 0);

    EXPECT_EQ(agent->subscribe("*", "S"), 1);
    EXPECT_FALSE(agent->hasSubscription("T", "S"));
    EXPECT_EQ(agent->unsubscribe("T", "S"), 0);
    EXPECT_TRUE(agent->hasSubscription("*", "S"));
}

TEST_F(AbstractKestrinNotices, TheQueriesHaveTheirRoomFromTheStart) {
    EXPECT_GE(agent->getMessageHandlers("t", "s").capacity(), 8u);
    EXPECT_GE(agent->getAllPossibleMessageHandlers("t", "s").capacity(), 16u);
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted in this build";
    }
    for (int i = 0; i < 4; ++i) {
        agent->addMessageHandler("t", "s", &h1);
        agent->addMessageHandler("*", "s", &h1);
        agent->addMessageHandler("t", "*", &h1);
        agent->addMessageHandler("*", "*", &h1);
    }
    CString const type = "t";
    CString const subject = "s";
    test::AllocationCounter const allocations;
    Handlers const handlers = agent->getAllPossibleMessageHandlers(type, subject);
    EXPECT_EQ(allocations.count(), 5);  // four keys and one vector
    EXPECT_EQ(handlers.size(), 16u);
}

TEST_F(AbstractKestrinNotices, HandlersMayBeRemovedWhileANoticeIsDelivered) {
    agent->addMessageHandler("T", "S", &h1);
    agent->addMessageHandler("*", "*", &h2);
    h2.during = [&] {
        agent->removeAllMessageHandlers();
        agent->addMessageHandler("T", "S", &h3);
    };
    RefCountedPtr<KestrinMessage> const notice = new MappedMessage;
    // As a concrete agent delivers: the list is its own.
    for (KestrinNoticeMessageHandler * const handler :
         agent->getAllPossibleMessageHandlers("T", "S")) {
        handler->onNotice(agent.get(), notice);
    }
    EXPECT_EQ(log,
              (Log{callText("2.onNotice", agent, notice), callText("1.onNotice", agent, notice)}));
    EXPECT_EQ(agent->getAllPossibleMessageHandlers("T", "S"), Handlers{&h3});
}

// ---- Subscriptions ----

TEST_F(AbstractKestrinNotices, TheFirstSubscriptionAndTheLastAreTold) {
    EXPECT_EQ(agent->subscribe("t", "s"), 1);
    EXPECT_EQ(log, Log{callText("doSubscribe", "t", "s")});
    EXPECT_EQ(agent->subscribe("t", "s"), 2);
    EXPECT_EQ(agent->unsubscribe("t", "s"), 1);
    EXPECT_TRUE(agent->hasSubscription("t", "s"));
    EXPECT_EQ(log.size(), 1u);
    EXPECT_EQ(agent->unsubscribe("t", "s"), 0);
    EXPECT_FALSE(agent->hasSubscription("t", "s"));
    EXPECT_EQ(agent->unsubscribe("t", "s"), 0);
    EXPECT_EQ(log, (Log{callText("doSubscribe", "t", "s"), callText("doUnsubscribe", "t", "s")}));
}

TEST_F(AbstractKestrinNotices, ASubscriptionMayBeOpenedAgain) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(agent->subscribe("t", "s"), 1);
        EXPECT_TRUE(agent->hasSubscription("t", "s"));
        EXPECT_EQ(agent->unsubscribe("t", "s"), 0);
    }
    EXPECT_EQ(log.size(), 6u);
}

TEST_F(AbstractKestrinNotices, ClosingWhatWasNeverOpenedDoesNothing) {
    EXPECT_EQ(agent->unsubscribe("t", "s"), 0);
    EXPECT_FALSE(agent->hasSubscription("t", "s"));
    EXPECT_EQ(log, Log{});
    EXPECT_EQ(agent->subscribe("t", "s"), 1);
}

/// Subscribes in silence.
class SilentAgent : public RecordingAgent {
public:
    using RecordingAgent::RecordingAgent;

    void doSubscribe(CString const &, CString const &) override {}
    void doUnsubscribe(CString const &, CString const &) override {}
};

TEST_F(AbstractKestrinNotices, WhatWasEmptiedKeepsItsEntry) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted in this build";
    }
    agent = new SilentAgent(log);
    CString const type = "t";
    CString const subject = "s";
    agent->subscribe(type, subject);
    agent->unsubscribe(type, subject);
    agent->addMessageHandler(type, subject, &h1);
    agent->removeMessageHandler(type, subject, &h1);
    test::AllocationCounter const subscribing;
    agent->subscribe(type, subject);
    EXPECT_EQ(subscribing.count(), 1);  // the code
    test::AllocationCounter const adding;
    agent->addMessageHandler(type, subject, &h1);
    EXPECT_EQ(adding.count(), 2);  // the code and the place in the list
}

TEST_F(AbstractKestrinNotices, HandlersAndSubscriptionsAreIndependent) {
    agent->addMessageHandler("t", "s", &h1);
    EXPECT_FALSE(agent->hasSubscription("t", "s"));
    EXPECT_EQ(agent->subscribe("t", "s"), 1);
    EXPECT_EQ(agent->removeAllMessageHandlers(), 1);
    EXPECT_TRUE(agent->hasSubscription("t", "s"));
    agent->addMessageHandler("t", "s", &h1);
    EXPECT_EQ(agent->unsubscribe("t", "s"), 0);
    EXPECT_TRUE(agent->hasMessageHandler("t", "s", &h1));
}

TEST_F(AbstractKestrinNotices, WhatTheConcreteAgentThrowsPassesAndTheCountStaysChanged) {
    agent->during = [] { throw 7; };
    EXPECT_THROW(agent->subscribe("t", "s"), int);
    EXPECT_TRUE(agent->hasSubscription("t", "s"));
    EXPECT_EQ(agent->subscribe("t", "s"), 2);
    EXPECT_EQ(agent->unsubscribe("t", "s"), 1);
    EXPECT_THROW(agent->unsubscribe("t", "s"), int);
    EXPECT_FALSE(agent->hasSubscription("t", "s"));
    EXPECT_EQ(agent->unsubscribe("t", "s"), 0);
    EXPECT_THROW(agent->subscribe("t", "s"), int);
    EXPECT_EQ(agent->subscribe("t", "s"), 2);
}

TEST_F(AbstractKestrinNotices, TheCountHasChangedWhenTheConcreteAgentIsCalled) {
    std::vector<bool> open;
    agent->during = [&] { open.push_back(agent->hasSubscription("t", "s")); };
    agent->subscribe("t", "s");
    agent->unsubscribe("t", "s");
    EXPECT_EQ(open, (std::vector<bool>{true, false}));
}

TEST_F(AbstractKestrinNotices, MaySubscribeFromInsideASubscription) {
    std::vector<int> counts;
    agent->during = [&] {
        if (log.size() == 1) {
            counts.push_back(agent->subscribe("t", "s"));
            counts.push_back(agent->subscribe("other", "s"));
        }
    };
    EXPECT_EQ(agent->subscribe("t", "s"), 1);
    EXPECT_EQ(counts, (std::vector<int>{2, 1}));
    EXPECT_EQ(log, (Log{callText("doSubscribe", "t", "s"), callText("doSubscribe", "other", "s")}));
    EXPECT_EQ(agent->unsubscribe("t", "s"), 1);
}

// ---- Random sequences ----

/// One key for all subjects of a type.
class TypeOnlyAgent : public RecordingAgent {
public:
    using RecordingAgent::RecordingAgent;

    CString createSubjectCode(CString const & type, CString const &) const override { return type; }
};

struct Coding {
    char const * name;
    RecordingAgent * (*make)(Log & log);
    std::string (*code)(std::string const & type, std::string const & subject);

    friend std::ostream & operator<<(std::ostream & output, Coding const & coding) {
        return output << coding.name;
    }
};

constexpr Coding CODINGS[] = {
    {"OfTheBaseClass", [](Log & log) { return new RecordingAgent(log); },
     [](std::string const & type, std::string const & subject) { return type + "-" + subject; }},
    {"ByTypeAlone", [](Log & log) -> RecordingAgent * { return new TypeOnlyAgent(log); },
     [](std::string const & type, std::string const &) { return type; }},
};

class AbstractKestrinRandomNotices : public ::testing::TestWithParam<Coding> {
protected:
    /// Also what shares a code: (a-b, c) and (a, b-c), and what holds the wildcard.
    std::string pick() {
        static std::string const TEXTS[] = {"a", "b", "c", "a-b", "b-c", "*", "", {"a\0b", 3}};
        return TEXTS[random() % std::size(TEXTS)];
    }
    std::string codeOf(std::string const & type, std::string const & subject) const {
        return GetParam().code(type, subject);
    }

    std::mt19937 random;
    Log log;
};

INSTANTIATE_TEST_SUITE_P(Codes, AbstractKestrinRandomNotices, ::testing::ValuesIn(CODINGS),
                         ::testing::PrintToStringParamName());

TEST_P(AbstractKestrinRandomNotices, HandlersFollowThePlainModel) {
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random.seed(seed);
        Agent const agent = GetParam().make(log);
        std::vector<RecordingNoticeHandler> places(4, RecordingNoticeHandler(log, ""));
        std::map<std::string, Handlers> model;
        for (int step = 0; step < 500; ++step) {
            std::string const type = pick();
            std::string const subject = pick();
            CString const typeText = textOf(type);
            CString const subjectText = textOf(subject);
            KestrinNoticeMessageHandler * const handler = &places[random() % places.size()];
            std::string const code = codeOf(type, subject);
            switch (random() % 12) {
                case 0: {
                    ASSERT_EQ(agent->removeMessageHandlers(typeText, subjectText),
                              static_cast<int>(model[code].size()));
                    model.erase(code);
                    break;
                }
                case 1: {
                    if (random() % 20 == 0) {
                        int entries = 0;
                        for (auto const & [key, handlers] : model) {
                            entries += static_cast<int>(handlers.size());
                        }
                        ASSERT_EQ(agent->removeAllMessageHandlers(), entries);
                        model.clear();
                    }
                    break;
                }
                case 2:
                case 3:
                case 4: {
                    Handlers & handlers = model[code];
                    auto const place = std::find(handlers.begin(), handlers.end(), handler);
                    bool const known = place != handlers.end();
                    if (known) {
                        handlers.erase(place);
                    }
                    ASSERT_EQ(agent->removeMessageHandler(typeText, subjectText, handler),
                              known ? 1 : 0);
                    break;
                }
                default:
                    agent->addMessageHandler(typeText, subjectText, handler);
                    model[code].push_back(handler);
            }
            std::string const askedType = pick();
            std::string const askedSubject = pick();
            CString const askedTypeText = textOf(askedType);
            CString const askedSubjectText = textOf(askedSubject);
            Handlers const exact = model[codeOf(askedType, askedSubject)];
            ASSERT_EQ(agent->getMessageHandlers(askedTypeText, askedSubjectText), exact);
            ASSERT_EQ(agent->hasMessageHandler(askedTypeText, askedSubjectText, handler),
                      std::find(exact.begin(), exact.end(), handler) != exact.end());
            Handlers possible;
            for (std::string const & each :
                 {codeOf("*", "*"), codeOf(askedType, "*"), codeOf("*", askedSubject),
                  codeOf(askedType, askedSubject)}) {
                possible.insert(possible.end(), model[each].begin(), model[each].end());
            }
            ASSERT_EQ(agent->getAllPossibleMessageHandlers(askedTypeText, askedSubjectText),
                      possible);
        }
    }
    EXPECT_EQ(log, Log{});
}

TEST_P(AbstractKestrinRandomNotices, SubscriptionsFollowThePlainModel) {
    Log expected;
    for (unsigned int seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        random.seed(seed);
        Agent const agent = GetParam().make(log);
        std::map<std::string, int> model;
        for (int step = 0; step < 500; ++step) {
            std::string const type = pick();
            std::string const subject = pick();
            CString const typeText = textOf(type);
            CString const subjectText = textOf(subject);
            int & open = model[codeOf(type, subject)];
            if (random() % 2 == 0) {
                if (++open == 1) {
                    expected.push_back(callText("doSubscribe", typeText, subjectText));
                }
                ASSERT_EQ(agent->subscribe(typeText, subjectText), open);
            } else {
                if (open > 0 && --open == 0) {
                    expected.push_back(callText("doUnsubscribe", typeText, subjectText));
                }
                ASSERT_EQ(agent->unsubscribe(typeText, subjectText), open);
            }
            ASSERT_EQ(log, expected);
            std::string const askedType = pick();
            std::string const askedSubject = pick();
            ASSERT_EQ(agent->hasSubscription(textOf(askedType), textOf(askedSubject)),
                      model[codeOf(askedType, askedSubject)] != 0);
        }
        log.clear();
        expected.clear();
    }
}

}  // namespace
}  // namespace tvk
