#include "tvk/agent/KestrinContainer.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "tests/support/AtEnd.h"
#include "tests/support/ChartDoubles.h"
#include "tests/support/ErrorManagerDouble.h"
#include "tests/support/NewsDoubles.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/RecordingThreadPool.h"

namespace tvk {
namespace {

static_assert(!std::is_polymorphic_v<KestrinContainer>);
static_assert(!std::is_destructible_v<KestrinContainer>);
static_assert(!std::is_default_constructible_v<KestrinContainer>);
static_assert(!std::is_copy_constructible_v<KestrinContainer>);
static_assert(!std::is_copy_assignable_v<KestrinContainer>);
static_assert(sizeof(KestrinContainer) == 5 * sizeof(void *));

/// What a static initialiser of the application sees.
struct Sight {
    KestrinContainer * container = KestrinContainer::instance();
    bool empty = container != nullptr && container->getKestrin() == nullptr &&
                 container->getErrorManager() == nullptr && container->getThreadPool() == nullptr &&
                 container->getXmlNewsService() == nullptr &&
                 container->getChartService() == nullptr;
};
Sight const AT_LOAD;

TEST(KestrinContainer, IsThereAndEmptyBeforeAnyApplicationCode) {
    ASSERT_NE(AT_LOAD.container, nullptr);
    EXPECT_TRUE(AT_LOAD.empty);
}

TEST(KestrinContainer, IsTheSameOnEachCall) {
    EXPECT_EQ(KestrinContainer::instance(), AT_LOAD.container);
    EXPECT_EQ(KestrinContainer::instance(), AT_LOAD.container);
}

// ---- The counted members ---------------------------------------------------------------------

struct Agent {
    using Contract = Kestrin;
    using Double = test::RecordingAgent;
    static constexpr auto GET = &KestrinContainer::getKestrin;
    static constexpr auto SET = &KestrinContainer::setKestrin;
};

struct ErrorManager {
    /// Made like the others; it has nothing to record.
    struct Double : test::ErrorManagerDouble {
        explicit Double(test::Log &) {}
    };
    using Contract = KestrinErrorManager;
    static constexpr auto GET = &KestrinContainer::getErrorManager;
    static constexpr auto SET = &KestrinContainer::setErrorManager;
};

struct NewsService {
    using Contract = XmlNewsService;
    using Double = test::RecordingNewsService;
    static constexpr auto GET = &KestrinContainer::getXmlNewsService;
    static constexpr auto SET = &KestrinContainer::setXmlNewsService;
};

struct Chart {
    using Contract = ChartService;
    using Double = test::RecordingChartService;
    static constexpr auto GET = &KestrinContainer::getChartService;
    static constexpr auto SET = &KestrinContainer::setChartService;
};

template <class Member>
class KestrinContainerMember : public testing::Test {
protected:
    using Contract = typename Member::Contract;
    using Made = test::AtEnd<typename Member::Double>;

    ~KestrinContainerMember() override { set(nullptr); }

    static_assert(
        std::is_same_v<decltype(Member::GET), Contract * (KestrinContainer::*const)() const>);
    static_assert(
        std::is_same_v<decltype(Member::SET), void (KestrinContainer::*const)(Contract *)>);

    static Contract * get() { return (KestrinContainer::instance()->*Member::GET)(); }
    static void set(Contract * member) { (KestrinContainer::instance()->*Member::SET)(member); }

    Contract * make(std::function<void()> act = [] {}) {
        return new Made(
            [this, act = std::move(act)] {
                ++ends_;
                act();
            },
            log_);
    }

    test::Log log_;
    int ends_ = 0;
};

using Members = testing::Types<Agent, ErrorManager, NewsService, Chart>;
TYPED_TEST_SUITE(KestrinContainerMember, Members);

TYPED_TEST(KestrinContainerMember, IsHeldByOneReference) {
    RefCountedPtr<typename TypeParam::Contract> const member(this->make());
    this->set(member.get());
    EXPECT_EQ(this->get(), member.get());
    EXPECT_EQ(member->getRefCount(), 2);
    this->set(nullptr);
    EXPECT_EQ(this->get(), nullptr);
    EXPECT_EQ(member->getRefCount(), 1);
    EXPECT_EQ(this->ends_, 0);
}

TYPED_TEST(KestrinContainerMember, SetAgainIsHeldAsBefore) {
    this->set(this->make());
    this->set(this->get());
    this->set(this->get());
    EXPECT_EQ(this->ends_, 0);
    EXPECT_EQ(this->get()->getRefCount(), 1);
}

TYPED_TEST(KestrinContainerMember, EndsInTheSetterWhenNobodyElseHoldsIt) {
    this->set(this->make());
    auto * const next = this->make();
    this->set(next);
    EXPECT_EQ(this->ends_, 1);
    EXPECT_EQ(this->get(), next);
    this->set(nullptr);
    EXPECT_EQ(this->ends_, 2);
}

TYPED_TEST(KestrinContainerMember, FindsItselfInTheContainerWhenItEndsInTheSetter) {
    using Held = typename TypeParam::Contract;
    std::vector<Held *> seen;
    int nextCount = 0;
    RefCountedPtr<Held> const next(this->make());
    auto * const old = this->make([&] {
        seen.push_back(this->get());
        nextCount = next->getRefCount();
    });
    this->set(old);
    this->set(next.get());
    EXPECT_EQ(seen, (std::vector<Held *>{old}));
    EXPECT_EQ(nextCount, 2) << "the new one is counted first";
    EXPECT_EQ(this->get(), next.get());
}

TYPED_TEST(KestrinContainerMember, MayBeReplacedByOneThatOnlyTheOldOneHolds) {
    using Held = typename TypeParam::Contract;
    RefCountedPtr<Held> held(this->make());
    auto * const next = held.get();
    this->set(this->make([&] { held = nullptr; }));
    this->set(next);
    EXPECT_EQ(this->ends_, 1);
    EXPECT_EQ(this->get(), next);
    EXPECT_EQ(next->getRefCount(), 1);
}

TYPED_TEST(KestrinContainerMember, StandsApartFromTheOthers) {
    this->set(this->make());
    KestrinContainer const & container = *KestrinContainer::instance();
    int const members = (container.getKestrin() != nullptr ? 1 : 0) +
                        (container.getErrorManager() != nullptr ? 1 : 0) +
                        (container.getThreadPool() != nullptr ? 1 : 0) +
                        (container.getXmlNewsService() != nullptr ? 1 : 0) +
                        (container.getChartService() != nullptr ? 1 : 0);
    EXPECT_EQ(members, 1);
}

// ---- The others ------------------------------------------------------------------------------

TEST(KestrinContainer, StoresTheThreadPoolAlone) {
    static_assert(std::is_same_v<decltype(&KestrinContainer::getThreadPool),
                                 ThreadPool * (KestrinContainer::*)() const>);
    static_assert(std::is_same_v<decltype(&KestrinContainer::setThreadPool),
                                 void (KestrinContainer::*)(ThreadPool *)>);
    test::Log log;
    test::RecordingThreadPool pool(log);
    test::RecordingThreadPool other(log);
    KestrinContainer & container = *KestrinContainer::instance();
    container.setThreadPool(&pool);
    EXPECT_EQ(container.getThreadPool(), &pool);
    container.setThreadPool(&other);
    EXPECT_EQ(container.getThreadPool(), &other);
    container.setThreadPool(nullptr);
    EXPECT_EQ(container.getThreadPool(), nullptr);
    EXPECT_EQ(log, test::Log{});
}

TEST(KestrinContainer, DoesNotLinkItsMembers) {
    test::Log log;
    KestrinContainer & container = *KestrinContainer::instance();
    RefCountedPtr<test::RecordingAgent> const agent(new test::RecordingAgent(log));
    RefCountedPtr<KestrinErrorManager> const own(new test::ErrorManagerDouble);
    RefCountedPtr<KestrinErrorManager> const shared(new test::ErrorManagerDouble);
    agent->setErrorManager(own.get());
    container.setKestrin(agent.get());
    container.setErrorManager(shared.get());
    EXPECT_EQ(agent->getErrorManager(), own.get());
    container.setErrorManager(nullptr);
    agent->setErrorManager(shared.get());
    EXPECT_EQ(container.getErrorManager(), nullptr);
    container.setKestrin(nullptr);
    EXPECT_EQ(agent->getRefCount(), 1);
    EXPECT_EQ(log, test::Log{});
}

}  // namespace
}  // namespace tvk
