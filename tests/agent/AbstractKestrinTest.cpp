#include "tvk/agent/AbstractKestrin.h"

#include <gtest/gtest.h>

#include <new>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationFailure.h"
#include "tests/support/ErrorManagerDouble.h"
#include "tests/support/LikeSimplePropertySet.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/RecordingListener.h"
#include "tests/support/RecordingNoticeHandler.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

using test::ErrorManagerDouble;
using test::Log;
using test::propertiesOf;
using test::RecordingAgent;
using test::slotOf;

using Agent = RefCountedPtr<RecordingAgent>;
using Config = RefCountedPtr<KestrinConfig>;
using Message = RefCountedPtr<KestrinMessage>;

static_assert(std::is_base_of_v<Kestrin, AbstractKestrin>);
static_assert(std::is_abstract_v<AbstractKestrin>);
static_assert(!std::is_destructible_v<AbstractKestrin>);
static_assert(!std::is_copy_constructible_v<RecordingAgent>);
static_assert(!std::is_copy_assignable_v<RecordingAgent>);

class AbstractKestrinTest : public ::testing::Test {
protected:
    Log log;
    Agent agent = new RecordingAgent(log);
};

Config configWith(std::vector<std::pair<char const *, char const *>> const & properties) {
    Config const config = new KestrinConfig;
    for (auto const & [name, value] : properties) {
        config->setProperty(name, value);
    }
    return config;
}

using Properties = std::vector<std::pair<std::string, std::string>>;

// ---- The beginning ----

TEST_F(AbstractKestrinTest, BeginsWithNothing) {
    EXPECT_EQ(agent->getRefCount(), 1);
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CREATED);
    EXPECT_EQ(agent->getTimeout(), 0);
    EXPECT_TRUE(agent->getConfig().isNull());
    EXPECT_EQ(agent->getErrorManager(), nullptr);
    EXPECT_EQ(agent->getPropertyCount(), 0u);
    EXPECT_TRUE(agent->getKestrinListeners().empty());
    EXPECT_TRUE(agent->getMessageHandlers("", "").empty());
    EXPECT_FALSE(agent->hasSubscription("", ""));
    EXPECT_EQ(log, Log{});
}

TEST_F(AbstractKestrinTest, GivesWhatTheConcreteAgentWrites) {
    agent->status = KESTRINSTATUS_LOGGED_IN;
    agent->timeout = -7;
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_LOGGED_IN);
    EXPECT_EQ(agent->getTimeout(), -7);
    agent->status = static_cast<KestrinStatusEnum>(99);
    EXPECT_EQ(agent->getStatus(), 99);
}

TEST_F(AbstractKestrinTest, LogoutIsTheConcreteAgents) {
    agent->status = KESTRINSTATUS_LOGGED_IN;
    agent->logout();
    EXPECT_EQ(log, Log{"doLogout()"});
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_LOGGED_IN);
}

TEST_F(AbstractKestrinTest, WhatLogoutThrowsPasses) {
    agent->during = [] { throw 7; };
    EXPECT_THROW(agent->logout(), int);
}

// ---- Properties ----

TEST_F(AbstractKestrinTest, PropertiesBehaveAsThoseOfASimplePropertySet) {
    test::expectLikeSimplePropertySet(*agent, 12);
    EXPECT_EQ(log, Log{});
}

TEST_F(AbstractKestrinTest, OffersTheConveniencesOfAPropertySet) {
    agent->setProperty("a", "12");
    agent->setProperty(CString("b"), "123", 1);
    EXPECT_TRUE(agent->hasProperty("a"));
    EXPECT_EQ(agent->getProperty("b"), "1");
}

// Without memory for its properties an agent is made all the same, and gets them with their first use:
// the first allocation is the agent, the other two are its properties.
class AbstractKestrinWithoutMemory : public ::testing::TestWithParam<int> {};

TEST_P(AbstractKestrinWithoutMemory, IsAsUsableAsAnyOther) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    Log log;
    test::AllocationFailure failure(GetParam());
    Agent const agent = new RecordingAgent(log);
    bool refused = false;
    try {
        static_cast<void>(agent->getPropertyCount());
    } catch (std::bad_alloc const &) {
        refused = true;
    }
    failure.end();
    EXPECT_TRUE(refused);
    EXPECT_EQ(agent->getRefCount(), 1);
    test::expectLikeSimplePropertySet(*agent, 13);
    agent->removeAllProperties();
    agent->initialize(configWith({{"a", "1"}}), nullptr);
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"a", "1"}}));
}

TEST_P(AbstractKestrinWithoutMemory, MayBeInitializedFirst) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    Log log;
    Config const config = configWith({{"a", "1"}});
    test::AllocationFailure failure(GetParam());
    Agent const agent = new RecordingAgent(log);
    failure.end();
    agent->initialize(config, nullptr);
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"a", "1"}}));
}

INSTANTIATE_TEST_SUITE_P(AllowedAllocations, AbstractKestrinWithoutMemory, ::testing::Values(1, 2));

// ---- Configuration ----

TEST_F(AbstractKestrinTest, InitializeStoresTheConfigurationAndMergesItsProperties) {
    agent->setProperty("both", "of the agent");
    Config const config = configWith({{"both", "of the config"}, {"new", "x"}});
    ErrorInfo error(3, "domain", 4, "message", nullptr);
    agent->initialize(config, &error);
    EXPECT_EQ(agent->getConfig(), config);
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"both", "of the agent"}, {"new", "x"}}));
    EXPECT_EQ(propertiesOf(*config), (Properties{{"both", "of the config"}, {"new", "x"}}));
    EXPECT_EQ(error.getErrorCode(), 4);
    EXPECT_STREQ(error.getErrorMessage(), "message");
    EXPECT_EQ(agent->getStatus(), KESTRINSTATUS_CREATED);
    EXPECT_EQ(log, Log{});
}

TEST_F(AbstractKestrinTest, InitializeStoresAConfigurationThatBringsNothingNew) {
    agent->setProperty("a", "1");
    Config const empty = configWith({});
    agent->initialize(empty, nullptr);
    EXPECT_EQ(agent->getConfig(), empty);
    Config const known = configWith({{"a", "2"}});
    agent->initialize(known, nullptr);
    EXPECT_EQ(agent->getConfig(), known);
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"a", "1"}}));
}

TEST_F(AbstractKestrinTest, HoldsOneReferenceToItsConfiguration) {
    Config const first = configWith({});
    Config const second = configWith({});
    agent->initialize(first, nullptr);
    EXPECT_EQ(first->getRefCount(), 2);
    {
        Config const given = agent->getConfig();
        EXPECT_EQ(given.get(), first.get());
        EXPECT_EQ(first->getRefCount(), 3);
    }
    agent->initialize(first, nullptr);
    EXPECT_EQ(first->getRefCount(), 2);
    agent->initialize(second, nullptr);
    EXPECT_EQ(first->getRefCount(), 1);
    EXPECT_EQ(second->getRefCount(), 2);
    agent = nullptr;
    EXPECT_EQ(second->getRefCount(), 1);
}

TEST_F(AbstractKestrinTest, TakesAConfigurationThatNobodyElseHolds) {
    agent->initialize(new KestrinConfig, nullptr);
    EXPECT_EQ(agent->getConfig()->getRefCount(), 2);
    agent->initialize(agent->getConfig(), nullptr);
    EXPECT_EQ(agent->getConfig()->getRefCount(), 2);
}

TEST_F(AbstractKestrinTest, InitializingAgainMergesAgain) {
    Config const config = configWith({{"a", "1"}});
    agent->initialize(config, nullptr);
    agent->setProperty("a", "changed");
    config->setProperty("b", "2");
    agent->initialize(config, nullptr);
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"a", "changed"}, {"b", "2"}}));
    agent->removeProperty("a");
    agent->initialize(config, nullptr);
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"a", "1"}, {"b", "2"}}));
}

TEST_F(AbstractKestrinTest, ItsPropertiesAreApartFromThoseOfTheConfiguration) {
    Config const config = configWith({{"a", "1"}});
    agent->initialize(config, nullptr);
    agent->setProperty("a", "2");
    agent->setProperty("b", "3");
    EXPECT_EQ(propertiesOf(*config), (Properties{{"a", "1"}}));
    config->setProperty("a", "4");
    config->setProperty("c", "5");
    EXPECT_EQ(propertiesOf(*agent), (Properties{{"a", "2"}, {"b", "3"}}));
    config->removeAllProperties();
    EXPECT_EQ(agent->getPropertyCount(), 2u);
}

/// Takes no properties over, and tells what it is asked to.
class UnmergingAgent : public RecordingAgent {
public:
    using RecordingAgent::RecordingAgent;

    void mergeProperties(PropertySet const & other) override {
        record("mergeProperties", &other, getConfig());
    }
};

TEST_F(AbstractKestrinTest, InitializeMergesThroughItsOwnOperationBehindTheStoring) {
    agent = new UnmergingAgent(log);
    Config const config = configWith({{"a", "1"}});
    agent->initialize(config, nullptr);
    PropertySet const * const properties = config.get();
    EXPECT_EQ(log, Log{test::callText("mergeProperties", properties, config)});
    EXPECT_EQ(agent->getPropertyCount(), 0u);
}

TEST_F(AbstractKestrinTest, WhatMergingThrowsPassesAndTheConfigurationIsStored) {
    agent = new UnmergingAgent(log);
    agent->during = [] { throw 7; };
    Config const config = configWith({});
    EXPECT_THROW(agent->initialize(config, nullptr), int);
    EXPECT_EQ(agent->getConfig(), config);
    EXPECT_EQ(config->getRefCount(), 2);
}

// ---- The error manager ----

TEST_F(AbstractKestrinTest, HoldsOneReferenceToItsErrorManager) {
    RefCountedPtr<KestrinErrorManager> const first = new ErrorManagerDouble;
    RefCountedPtr<KestrinErrorManager> const second = new ErrorManagerDouble;
    agent->setErrorManager(first.get());
    EXPECT_EQ(agent->getErrorManager(), first.get());
    EXPECT_EQ(first->getRefCount(), 2);
    agent->setErrorManager(first.get());
    EXPECT_EQ(first->getRefCount(), 2);
    agent->setErrorManager(second.get());
    EXPECT_EQ(agent->getErrorManager(), second.get());
    EXPECT_EQ(first->getRefCount(), 1);
    EXPECT_EQ(second->getRefCount(), 2);
    agent = nullptr;
    EXPECT_EQ(second->getRefCount(), 1);
}

TEST_F(AbstractKestrinTest, SettingNullReleasesTheErrorManager) {
    agent->setErrorManager(nullptr);
    EXPECT_EQ(agent->getErrorManager(), nullptr);
    RefCountedPtr<KestrinErrorManager> const manager = new ErrorManagerDouble;
    agent->setErrorManager(manager.get());
    agent->setErrorManager(nullptr);
    EXPECT_EQ(agent->getErrorManager(), nullptr);
    EXPECT_EQ(manager->getRefCount(), 1);
}

TEST_F(AbstractKestrinTest, KeepsAnErrorManagerThatNobodyElseHolds) {
    int ends = 0;
    agent->setErrorManager(new ErrorManagerDouble([&] { ++ends; }));
    agent->setErrorManager(agent->getErrorManager());
    EXPECT_EQ(ends, 0);
    agent->setErrorManager(new ErrorManagerDouble([&] { ++ends; }));
    EXPECT_EQ(ends, 1);
    agent->setErrorManager(nullptr);
    EXPECT_EQ(ends, 2);
}

TEST_F(AbstractKestrinTest, AnErrorManagerThatIsReplacedEndsBeforeTheNewOneIsStored) {
    KestrinErrorManager * seen = nullptr;
    auto * const old = new ErrorManagerDouble([&] { seen = agent->getErrorManager(); });
    agent->setErrorManager(old);
    agent->setErrorManager(new ErrorManagerDouble);
    EXPECT_EQ(seen, old);
}

// ---- The end ----

TEST_F(AbstractKestrinTest, EndsWithoutAWord) {
    test::RecordingListener listener(log, "a");
    test::RecordingNoticeHandler handler(log, "h");
    agent->addKestrinListener(&listener);
    agent->addMessageHandler("type", "subject", &handler);
    agent->subscribe("type", "open");
    agent->subscribe("type", "open");
    agent->subscribe("type", "closed");
    agent->unsubscribe("type", "closed");
    agent->status = KESTRINSTATUS_LOGGED_IN;
    log.clear();
    agent = nullptr;
    EXPECT_EQ(log, Log{});
}

TEST_F(AbstractKestrinTest, EndsInItsOrder) {
    test::RecordingListener listener(log, "a");
    test::RecordingNoticeHandler handler(log, "h");
    Config const config = configWith({{"a", "1"}});
    AbstractKestrin * const ending = agent.get();
    bool looked = false;
    agent->initialize(config, nullptr);
    agent->addKestrinListener(&listener);
    agent->addMessageHandler("type", "subject", &handler);
    agent->subscribe("type", "subject");
    // Subscriptions are gone when the error manager is released, all else is still there.
    agent->setErrorManager(new ErrorManagerDouble([&] {
        looked = true;
        EXPECT_FALSE(ending->hasSubscription("type", "subject"));
        EXPECT_EQ(ending->unsubscribe("type", "subject"), 0);
        EXPECT_TRUE(ending->hasMessageHandler("type", "subject", &handler));
        EXPECT_TRUE(ending->hasKestrinListener(&listener));
        EXPECT_EQ(ending->getProperty("a"), "1");
        EXPECT_EQ(ending->getConfig(), config);
        EXPECT_EQ(config->getRefCount(), 2);
    }));
    log.clear();
    agent = nullptr;
    EXPECT_TRUE(looked);
    EXPECT_EQ(log, Log{});
    EXPECT_EQ(config->getRefCount(), 1);
}

// ---- The virtual order ----

TEST(AbstractKestrinOrder, StandsBehindThatOfKestrin) {
    using Open = RecordingAgent;  // what is protected in the base class is open here
    test::expectVirtualOrder(
        47, {{"doLogout", slotOf(&Open::doLogout)},
             {"doSubscribe", slotOf(&Open::doSubscribe)},
             {"doUnsubscribe", slotOf(&Open::doUnsubscribe)},
             {"doHeartbeat", slotOf(&Open::doHeartbeat)},
             {"fireReplyHandlerOnReply", slotOf(&Open::fireReplyHandlerOnReply)},
             {"fireReplyHandlerOnTimeout", slotOf(&Open::fireReplyHandlerOnTimeout)},
             {"fireReplyHandlerOnCanceled", slotOf(&Open::fireReplyHandlerOnCanceled)},
             {"fireReplyHandlerOnError", slotOf(&Open::fireReplyHandlerOnError)},
             {"fireOnLoginReply", slotOf(&Open::fireOnLoginReply)},
             {"fireOnReloginRequired", slotOf(&Open::fireOnReloginRequired)},
             {"fireStartupCompleted", slotOf(&Open::fireStartupCompleted)},
             {"fireConnected", slotOf(&Open::fireConnected)},
             {"fireKestrinError", slotOf(&Open::fireKestrinError)},
             {"fireOnStopped", slotOf(&Open::fireOnStopped)},
             {"fireOnRealTimeServiceStarted", slotOf(&Open::fireOnRealTimeServiceStarted)},
             {"fireOnRealTimeServiceStopped", slotOf(&Open::fireOnRealTimeServiceStopped)},
             {"doCancelAllAsyncRequests", slotOf(&Open::doCancelAllAsyncRequests)},
             {"doCancelAsyncRequestsByHandler with a text",
              slotOf<void(AsyncReplyHandler const *, CString const &)>(
                  &Open::doCancelAsyncRequestsByHandler)},
             {"doCancelAsyncRequestsByHandler",
              slotOf<void(AsyncReplyHandler const *)>(&Open::doCancelAsyncRequestsByHandler)}});
}

class OneMore : public AbstractKestrin {
public:
    virtual void oneMore() {}
};

TEST(AbstractKestrinOrder, EndsWithTheCancellationByHandler) {
    EXPECT_EQ(slotOf(&OneMore::oneMore), 66u);
}

TEST(AbstractKestrinOrder, HasOperationsThatAreNotVirtual) {
    EXPECT_EQ(slotOf(&AbstractKestrin::getTimeout), std::nullopt);
    EXPECT_EQ(slotOf(&AbstractKestrin::setErrorManager), std::nullopt);
    EXPECT_EQ(slotOf(&AbstractKestrin::getAllPossibleMessageHandlers), std::nullopt);
}

}  // namespace
}  // namespace tvk
