// The listeners of AbstractKestrin and its eight fire operations.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/ErrorManagerDouble.h"
#include "tests/support/LikeSimplePropertySet.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/RecordingListener.h"
#include "tests/support/RecordingNoticeHandler.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"

namespace tvk {
namespace {

using test::callText;
using test::Log;
using test::RecordingAgent;
using test::RecordingListener;

using Agent = RefCountedPtr<RecordingAgent>;
using Listeners = std::vector<KestrinListener *>;

// ---- The fire operations ----

/// What the fire operations are called with.
struct Given {
    RefCountedPtr<KestrinMessage> reply = new MappedMessage;
    CString code{"E-17", 4};
    CString text{"not\0now", 7};
    ErrorInfo error;
    RefCountedPtr<RecordData> startupData = new MappedRecordData;
};

/// One way to fire, and the call that a listener must hear of it.
struct Firing {
    char const * name;
    void (*fire)(AbstractKestrin & agent, Given const & given);
    std::string (*heard)(std::string const & listener, Kestrin * agent, Given const & given);

    friend std::ostream & operator<<(std::ostream & output, Firing const & firing) {
        return output << firing.name;
    }
};

constexpr Firing FIRINGS[] = {
    {"LoginReplyThatSucceeded",
     [](AbstractKestrin & agent, Given const & given) {
         agent.fireOnLoginReply(given.reply, true, given.code, given.text);
     },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onLoginReply", agent, given.reply, true, given.code,
                         given.text);
     }},
    {"LoginReplyOfNothing",
     [](AbstractKestrin & agent, Given const & given) {
         agent.fireOnLoginReply(nullptr, false, given.text, "");
     },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onLoginReply", agent, nullptr, false, given.text, "");
     }},
    {"ReloginRequired",
     [](AbstractKestrin & agent, Given const & given) { agent.fireOnReloginRequired(given.error); },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onReloginRequired", agent, &given.error);
     }},
    {"StartupCompleted",
     [](AbstractKestrin & agent, Given const & given) {
         agent.fireStartupCompleted(*given.startupData);
     },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onStartupCompleted", agent, given.startupData);
     }},
    {"Connected", [](AbstractKestrin & agent, Given const &) { agent.fireConnected(); },
     [](std::string const & listener, Kestrin * agent, Given const &) {
         return callText(listener + ".onConnected", agent);
     }},
    {"KestrinError",
     [](AbstractKestrin & agent, Given const & given) { agent.fireKestrinError(given.error); },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onKestrinError", agent, &given.error);
     }},
    {"StoppedByAnError",
     [](AbstractKestrin & agent, Given const & given) { agent.fireOnStopped(&given.error); },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onStopped", agent, &given.error);
     }},
    {"StoppedWithNull",
     [](AbstractKestrin & agent, Given const &) { agent.fireOnStopped(nullptr); },
     [](std::string const & listener, Kestrin * agent, Given const &) {
         return callText(listener + ".onStopped", agent, nullptr);
     }},
    {"RealTimeServiceStarted",
     [](AbstractKestrin & agent, Given const &) { agent.fireOnRealTimeServiceStarted(false); },
     [](std::string const & listener, Kestrin * agent, Given const &) {
         return callText(listener + ".onRealTimeServiceStarted", agent, false);
     }},
    {"RealTimeServiceRestarted",
     [](AbstractKestrin & agent, Given const &) { agent.fireOnRealTimeServiceStarted(true); },
     [](std::string const & listener, Kestrin * agent, Given const &) {
         return callText(listener + ".onRealTimeServiceStarted", agent, true);
     }},
    {"RealTimeServiceStoppedByAnError",
     [](AbstractKestrin & agent, Given const & given) {
         agent.fireOnRealTimeServiceStopped(&given.error);
     },
     [](std::string const & listener, Kestrin * agent, Given const & given) {
         return callText(listener + ".onRealTimeServiceStopped", agent, &given.error);
     }},
    {"RealTimeServiceStoppedWithNull",
     [](AbstractKestrin & agent, Given const &) { agent.fireOnRealTimeServiceStopped(nullptr); },
     [](std::string const & listener, Kestrin * agent, Given const &) {
         return callText(listener + ".onRealTimeServiceStopped", agent, nullptr);
     }},
};

class AbstractKestrinFire : public ::testing::TestWithParam<Firing> {
protected:
    void fire() { GetParam().fire(*agent, given); }

    /// The log of a pass that reaches these listeners, by their names, and nobody else.
    Log heardBy(std::string const & names) const {
        Log expected;
        for (char const name : names) {
            expected.push_back(GetParam().heard(std::string(1, name), agent.get(), given));
        }
        return expected;
    }

    void add(std::initializer_list<KestrinListener *> listeners) {
        for (KestrinListener * const listener : listeners) {
            agent->addKestrinListener(listener);
        }
    }

    Log log;
    Given given;
    Agent agent = new RecordingAgent(log);
    RecordingListener a{log, "a"};
    RecordingListener b{log, "b"};
    RecordingListener c{log, "c"};
};

INSTANTIATE_TEST_SUITE_P(All, AbstractKestrinFire, ::testing::ValuesIn(FIRINGS),
                         ::testing::PrintToStringParamName());

TEST_P(AbstractKestrinFire, ReturnsWhereNobodyListens) {
    fire();
    EXPECT_EQ(log, Log{});
}

TEST_P(AbstractKestrinFire, ReachesAllInTheOrderOfAdditionWithTheArgumentsUnchanged) {
    add({&b, &a, &c});
    fire();
    EXPECT_EQ(log, heardBy("bac"));
}

TEST_P(AbstractKestrinFire, CallsOneThatWasAddedTwiceTwice) {
    add({&a, &b, &a});
    fire();
    EXPECT_EQ(log, heardBy("aba"));
}

TEST_P(AbstractKestrinFire, SkipsOneThatAnEarlierOneRemoved) {
    add({&a, &b, &c});
    a.during = [&] { agent->removeKestrinListener(&b); };
    fire();
    EXPECT_EQ(log, heardBy("ac"));
}

TEST_P(AbstractKestrinFire, CallsOneThatIsRemovedBehindItsTurn) {
    add({&a, &b});
    b.during = [&] { agent->removeKestrinListener(&a); };
    fire();
    EXPECT_EQ(log, heardBy("ab"));
    EXPECT_EQ(agent->getKestrinListeners(), Listeners{&b});
}

TEST_P(AbstractKestrinFire, DoesNotCallOneThatIsAddedMeanwhileInThisPass) {
    add({&a, &b});
    a.during = [&] { agent->addKestrinListener(&c); };
    fire();
    EXPECT_EQ(log, heardBy("ab"));
    a.during = nullptr;
    log.clear();
    fire();
    EXPECT_EQ(log, heardBy("abc"));
}

TEST_P(AbstractKestrinFire, CallsOneThatWasRemovedAndAddedAgainMeanwhileInItsOldPlace) {
    add({&a, &b, &c});
    a.during = [&] {
        agent->removeKestrinListener(&b);
        agent->addKestrinListener(&b);
    };
    fire();
    EXPECT_EQ(log, heardBy("abc"));
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&a, &c, &b}));
}

TEST_P(AbstractKestrinFire, EndsWhenAllAreRemoved) {
    add({&a, &b, &a, &c});
    b.during = [&] { agent->removeAllKestrinListeners(); };
    fire();
    EXPECT_EQ(log, heardBy("ab"));
}

TEST_P(AbstractKestrinFire, OneThatWasAddedTwiceAndRemovesItselfOnceIsStillCalledTwice) {
    add({&a, &a, &b});
    int removals = 0;
    a.during = [&] {
        if (++removals == 1) {
            agent->removeKestrinListener(&a);
        }
    };
    fire();
    EXPECT_EQ(log, heardBy("aab"));
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&a, &b}));
}

TEST_P(AbstractKestrinFire, OneThatRemovesItselfEachTimeEndsWithItsEntries) {
    add({&a, &a, &b});
    a.during = [&] { agent->removeKestrinListener(&a); };
    fire();
    EXPECT_EQ(log, heardBy("aab"));
    EXPECT_EQ(agent->getKestrinListeners(), Listeners{&b});
}

TEST_P(AbstractKestrinFire, MayBeFiredFromInsideACallback) {
    add({&a, &b, &c});
    bool fired = false;
    b.during = [&] {
        if (!fired) {
            fired = true;
            agent->removeKestrinListener(&a);
            agent->removeKestrinListener(&c);
            agent->addKestrinListener(&a);
            fire();
        }
    };
    fire();
    EXPECT_EQ(log, heardBy("abba"));
}

TEST_P(AbstractKestrinFire, WhatAListenerThrowsEndsThePass) {
    add({&a, &b, &c});
    b.during = [] { throw 7; };
    EXPECT_THROW(fire(), int);
    EXPECT_EQ(log, heardBy("ab"));
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&a, &b, &c}));
    b.during = nullptr;
    log.clear();
    fire();
    EXPECT_EQ(log, heardBy("abc"));
}

TEST_P(AbstractKestrinFire, ChangesNothingInTheAgent) {
    RefCountedPtr<KestrinConfig> const config = new KestrinConfig;
    RefCountedPtr<KestrinErrorManager> const manager = new test::ErrorManagerDouble;
    test::RecordingNoticeHandler handler(log, "h");
    agent->initialize(config, nullptr);
    agent->setErrorManager(manager.get());
    agent->setProperty("a", "1");
    agent->addMessageHandler("type", "subject", &handler);
    agent->subscribe("type", "subject");
    agent->status = KESTRINSTATUS_CONNECTING;
    agent->timeout = 30;
    add({&a, &b});
    log.clear();
    fire();
    EXPECT_EQ(log, heardBy("ab"));  // and no operation of the concrete agent
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CONNECTING);
    EXPECT_EQ(agent->getTimeout(), 30);
    EXPECT_EQ(agent->getConfig(), config);
    EXPECT_EQ(agent->getErrorManager(), manager.get());
    EXPECT_EQ(test::propertiesOf(*agent).size(), 1u);
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&a, &b}));
    EXPECT_TRUE(agent->hasMessageHandler("type", "subject", &handler));
    EXPECT_TRUE(agent->hasSubscription("type", "subject"));
    EXPECT_EQ(agent->getRefCount(), 1);
    EXPECT_EQ(config->getRefCount(), 2);
    EXPECT_EQ(manager->getRefCount(), 2);
    EXPECT_EQ(given.reply->getRefCount(), 1);
    EXPECT_EQ(given.startupData->getRefCount(), 1);
}

/// Answers for the listeners itself: whom it knows, and who of them still counts as registered.
class AnsweringAgent : public RecordingAgent {
public:
    using RecordingAgent::RecordingAgent;

    Listeners known;
    KestrinListener const * registered = nullptr;

    Listeners getKestrinListeners() const override {
        record("getKestrinListeners");
        return known;
    }
    bool hasKestrinListener(KestrinListener const * listener) const override {
        record("hasKestrinListener", listener);
        return listener == registered;
    }
};

TEST_P(AbstractKestrinFire, AsksTheAgentsOwnOperationsForTheListeners) {
    RefCountedPtr<AnsweringAgent> const answering = new AnsweringAgent(log);
    agent = answering;
    agent->addKestrinListener(&c);
    answering->known = {&a, &b, &a};
    answering->registered = &b;
    b.during = [&] { answering->registered = &a; };
    fire();
    EXPECT_EQ(log, (Log{"getKestrinListeners()", callText("hasKestrinListener", &a),
                        callText("hasKestrinListener", &b), heardBy("b").front(),
                        callText("hasKestrinListener", &a), heardBy("a").front()}));
}

class CountingListener : public RecordingListener {
public:
    CountingListener() : RecordingListener(log_, "") {}
    void onStartupCompleted(Kestrin *, RecordData const &) override { ++calls; }
    void onLoginReply(Kestrin *, RefCountedPtr<KestrinMessage> const &, bool, CString const &,
                      CString const &) override {
        ++calls;
    }
    void onReloginRequired(Kestrin *, ErrorInfo const &) override { ++calls; }
    void onKestrinError(Kestrin *, ErrorInfo const &) override { ++calls; }
    void onConnected(Kestrin *) override { ++calls; }
    void onStopped(Kestrin *, ErrorInfo const *) override { ++calls; }
    void onRealTimeServiceStarted(Kestrin *, bool) override { ++calls; }
    void onRealTimeServiceStopped(Kestrin *, ErrorInfo const *) override { ++calls; }

    int calls = 0;

private:
    Log log_;
};

TEST_P(AbstractKestrinFire, AllocatesItsSnapshotAlone) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted in this build";
    }
    auto const allocationsOf = [&] {
        test::AllocationCounter const allocations;
        fire();
        return allocations.count();
    };
    EXPECT_EQ(allocationsOf(), 0);
    CountingListener listener;
    for (int i = 0; i < 100; ++i) {
        agent->addKestrinListener(&listener);
    }
    EXPECT_EQ(allocationsOf(), 1);
    EXPECT_EQ(listener.calls, 100);
}

// ---- The list ----

class AbstractKestrinListeners : public ::testing::Test {
protected:
    Log log;
    Agent agent = new RecordingAgent(log);
    RecordingListener a{log, "a"};
    RecordingListener b{log, "b"};
    RecordingListener c{log, "c"};
};

TEST_F(AbstractKestrinListeners, KeepsTheOrderOfAdditionAndDuplicates) {
    for (KestrinListener * const listener : {&b, &a, &b}) {
        agent->addKestrinListener(listener);
    }
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&b, &a, &b}));
    EXPECT_TRUE(agent->hasKestrinListener(&a));
    EXPECT_TRUE(agent->hasKestrinListener(&b));
    EXPECT_FALSE(agent->hasKestrinListener(&c));
    EXPECT_FALSE(agent->hasKestrinListener(nullptr));
    EXPECT_EQ(log, Log{});
}

TEST_F(AbstractKestrinListeners, RemovesTheFirstEntryAlone) {
    for (KestrinListener * const listener : {&a, &b, &a, &c}) {
        agent->addKestrinListener(listener);
    }
    agent->removeKestrinListener(&a);
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&b, &a, &c}));
    EXPECT_TRUE(agent->hasKestrinListener(&a));
    agent->removeKestrinListener(&a);
    EXPECT_EQ(agent->getKestrinListeners(), (Listeners{&b, &c}));
    EXPECT_FALSE(agent->hasKestrinListener(&a));
}

TEST_F(AbstractKestrinListeners, RemovingAnUnknownOneChangesNothing) {
    agent->removeKestrinListener(&a);
    agent->removeKestrinListener(nullptr);
    agent->addKestrinListener(&b);
    agent->removeKestrinListener(&a);
    EXPECT_EQ(agent->getKestrinListeners(), Listeners{&b});
}

TEST_F(AbstractKestrinListeners, RemovesAll) {
    agent->removeAllKestrinListeners();
    agent->addKestrinListener(&a);
    agent->addKestrinListener(&a);
    agent->removeAllKestrinListeners();
    EXPECT_TRUE(agent->getKestrinListeners().empty());
    EXPECT_FALSE(agent->hasKestrinListener(&a));
}

TEST_F(AbstractKestrinListeners, WhatIsGivenOutIsACopy) {
    agent->addKestrinListener(&a);
    Listeners given = agent->getKestrinListeners();
    given.clear();
    EXPECT_EQ(agent->getKestrinListeners(), Listeners{&a});
}

// ---- Random sequences, from inside callbacks too ----

constexpr int LISTENERS = 5;
constexpr int CALLBACKS_WITH_ACTIONS = 60;

struct Action {
    enum Kind { ADD, REMOVE, REMOVE_ALL, FIRE } kind;
    int listener;
    std::size_t firing;
};
using Actions = std::vector<Action>;

Actions randomActions(std::mt19937 & random, unsigned int most) {
    static constexpr Action::Kind KINDS[] = {Action::ADD,    Action::ADD,       Action::ADD,
                                             Action::REMOVE, Action::REMOVE,    Action::REMOVE,
                                             Action::FIRE,   Action::REMOVE_ALL};
    Actions actions;
    for (auto left = random() % (most + 1); left > 0; --left) {
        Action::Kind kind = KINDS[random() % std::size(KINDS)];
        if (kind == Action::REMOVE_ALL && random() % 4 != 0) {
            kind = Action::ADD;
        }
        actions.push_back(
            {kind, static_cast<int>(random() % LISTENERS), random() % std::size(FIRINGS)});
    }
    return actions;
}

std::string nameOf(int listener) { return std::string(1, static_cast<char>('a' + listener)); }

/// What happens, in its order: `outside` at the top, and `inside[i]` in the i-th callback of all. The
/// callbacks behind the last one do nothing, so it ends.
struct Script {
    Actions outside;
    std::vector<Actions> inside;
};

/// Runs a script on one side; a side adds, removes and fires, and calls `callback` from inside.
template <class Side>
void perform(Side & side, Actions const & actions) {
    for (Action const & action : actions) {
        switch (action.kind) {
            case Action::ADD:
                side.add(action.listener);
                break;
            case Action::REMOVE:
                side.remove(action.listener);
                break;
            case Action::REMOVE_ALL:
                side.removeAll();
                break;
            case Action::FIRE:
                side.fire(FIRINGS[action.firing]);
                break;
        }
    }
}

class AgentSide {
public:
    AgentSide(Script const & script, Agent const & agent, Given const & given)
        : script_(script), agent_(agent), given_(given) {
        for (int i = 0; i < LISTENERS; ++i) {
            listeners_.push_back(std::make_unique<RecordingListener>(log, nameOf(i)));
            listeners_.back()->during = [this] {
                if (callbacks_ < script_.inside.size()) {
                    perform(*this, script_.inside[callbacks_++]);
                }
            };
        }
    }

    void add(int listener) { agent_->addKestrinListener(at(listener)); }
    void remove(int listener) { agent_->removeKestrinListener(at(listener)); }
    void removeAll() { agent_->removeAllKestrinListeners(); }
    void fire(Firing const & firing) { firing.fire(*agent_, given_); }

    /// The names of those that are registered.
    std::string registered() const {
        std::string names;
        for (KestrinListener * const listener : agent_->getKestrinListeners()) {
            auto const place =
                std::find_if(listeners_.begin(), listeners_.end(),
                             [&](auto const & each) { return each.get() == listener; });
            names += nameOf(static_cast<int>(place - listeners_.begin()));
        }
        return names;
    }
    bool has(int listener) const { return agent_->hasKestrinListener(at(listener)); }

    Log log;

private:
    KestrinListener * at(int listener) const {
        return listeners_[static_cast<std::size_t>(listener)].get();
    }

    Script const & script_;
    Agent agent_;
    Given const & given_;
    std::size_t callbacks_ = 0;
    std::vector<std::unique_ptr<RecordingListener>> listeners_;
};

/// The rules, written down plainly over the names of the listeners.
class ModelSide {
public:
    ModelSide(Script const & script, Kestrin * agent, Given const & given)
        : script_(script), agent_(agent), given_(given) {}

    void add(int listener) { registered += nameOf(listener); }
    void remove(int listener) {
        std::size_t const place = registered.find(nameOf(listener));
        if (place != std::string::npos) {
            registered.erase(place, 1);
        }
    }
    void removeAll() { registered.clear(); }
    void fire(Firing const & firing) {
        for (char const name : std::string(registered)) {
            if (registered.find(name) != std::string::npos) {
                log.push_back(firing.heard(std::string(1, name), agent_, given_));
                if (callbacks_ < script_.inside.size()) {
                    perform(*this, script_.inside[callbacks_++]);
                }
            }
        }
    }

    std::string registered;
    Log log;

private:
    Script const & script_;
    Kestrin * agent_;
    Given const & given_;
    std::size_t callbacks_ = 0;
};

TEST(AbstractKestrinRandomListeners, FollowThePlainModel) {
    std::size_t heard = 0;
    Given const given;
    for (unsigned int seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Script script;
        script.outside = randomActions(random, 30);
        script.outside.push_back({Action::FIRE, 0, random() % std::size(FIRINGS)});
        for (int i = 0; i < CALLBACKS_WITH_ACTIONS; ++i) {
            script.inside.push_back(randomActions(random, 3));
        }
        Log calls;
        Agent const agent = new RecordingAgent(calls);
        AgentSide agentSide(script, agent, given);
        ModelSide modelSide(script, agent.get(), given);
        perform(agentSide, script.outside);
        perform(modelSide, script.outside);
        ASSERT_EQ(agentSide.log, modelSide.log);
        ASSERT_EQ(agentSide.registered(), modelSide.registered);
        for (int i = 0; i < LISTENERS; ++i) {
            ASSERT_EQ(agentSide.has(i), modelSide.registered.find(nameOf(i)) != std::string::npos);
        }
        ASSERT_EQ(calls, Log{});
        heard += modelSide.log.size();
    }
    EXPECT_GT(heard, 5000u);
}

TEST(AbstractKestrinRandomListeners, AnswersDoNotDependOnWhatWasAskedBefore) {
    constexpr std::size_t MANY = 40;
    std::mt19937 random(7);
    Log log;
    std::vector<std::unique_ptr<RecordingListener>> all;
    for (std::size_t i = 0; i < MANY; ++i) {
        all.push_back(std::make_unique<RecordingListener>(log, ""));
    }
    Agent const agent = new RecordingAgent(log);
    std::vector<KestrinListener *> model;
    for (int step = 0; step < 20000; ++step) {
        KestrinListener * const listener = all[random() % MANY].get();
        auto const place = std::find(model.begin(), model.end(), listener);
        switch (random() % 8) {
            case 0:
                agent->addKestrinListener(listener);
                model.push_back(listener);
                break;
            case 1:
                agent->removeKestrinListener(listener);
                if (place != model.end()) {
                    model.erase(place);
                }
                break;
            case 2:  // one after the other, as a pass does
                for (KestrinListener const * const each : model) {
                    ASSERT_TRUE(agent->hasKestrinListener(each));
                }
                break;
            default:
                ASSERT_EQ(agent->hasKestrinListener(listener), place != model.end());
        }
        if (step % 5000 == 4999) {
            agent->removeAllKestrinListeners();
            model.clear();
        }
    }
}

}  // namespace
}  // namespace tvk
