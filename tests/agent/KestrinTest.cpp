#include "tvk/agent/Kestrin.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

#include "tests/support/PropertySetOrder.h"
#include "tests/support/RecordingAgent.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::expectVirtualOrder;
using test::slotOf;

using Message = RefCountedPtr<KestrinMessage>;
using Operation = RefCountedPtr<AsyncRequestOperation>;

static_assert(std::is_base_of_v<PropertySet, Kestrin>);
static_assert(std::is_abstract_v<Kestrin>);
static_assert(!std::is_destructible_v<Kestrin>);
static_assert(std::is_copy_assignable_v<Kestrin>);
static_assert(std::is_same_v<std::underlying_type_t<KestrinStatusEnum>, int>);

TEST(KestrinStatusEnum, BeginsWithTheStatusOfAnAgentThatWasConstructed) {
    EXPECT_EQ(KESTRINSTATUS_CREATED, 0);
    EXPECT_EQ(KESTRINSTATUS_CONNECTING, 1);
    EXPECT_EQ(KESTRINSTATUS_CONNECTED, 2);
    EXPECT_EQ(KESTRINSTATUS_LOGGED_IN, 3);
    EXPECT_EQ(KESTRINSTATUS_STOPPED, 4);
}

template <class Class>
void expectOrder() {
    test::expectPropertySetOrder<Class>();
    expectVirtualOrder(
        12, {{"getStatus", slotOf(&Class::getStatus)},
             {"initialize", slotOf(&Class::initialize)},
             {"getConfig", slotOf(&Class::getConfig)},
             {"start", slotOf(&Class::start)},
             {"stop", slotOf(&Class::stop)},
             {"login", slotOf(&Class::login)},
             {"relogin", slotOf(&Class::relogin)},
             {"startRealTimeService", slotOf(&Class::startRealTimeService)},
             {"stopRealTimeService", slotOf(&Class::stopRealTimeService)},
             {"cancelAllAsyncRequests", slotOf(&Class::cancelAllAsyncRequests)},
             {"cancelAsyncRequestsByHandler with a text",
              slotOf<void(AsyncReplyHandler const *, CString const &)>(
                  &Class::cancelAsyncRequestsByHandler)},
             {"cancelAsyncRequestsByHandler",
              slotOf<void(AsyncReplyHandler const *)>(&Class::cancelAsyncRequestsByHandler)},
             {"logout", slotOf(&Class::logout)},
             {"addKestrinListener", slotOf(&Class::addKestrinListener)},
             {"getKestrinListeners", slotOf(&Class::getKestrinListeners)},
             {"hasKestrinListener", slotOf(&Class::hasKestrinListener)},
             {"removeKestrinListener", slotOf(&Class::removeKestrinListener)},
             {"removeAllKestrinListeners", slotOf(&Class::removeAllKestrinListeners)},
             {"send", slotOf(&Class::send)},
             {"request with a time-out",
              slotOf<Message(Message const &, int, ErrorInfo *)>(&Class::request)},
             {"request", slotOf<Message(Message const &, ErrorInfo *)>(&Class::request)},
             {"asyncRequest with a time-out",
              slotOf<Operation(Message const &, int, AsyncReplyHandler *, void *)>(
                  &Class::asyncRequest)},
             {"asyncRequest", slotOf<Operation(Message const &, AsyncReplyHandler *, void *)>(
                                  &Class::asyncRequest)},
             {"addMessageHandler", slotOf(&Class::addMessageHandler)},
             {"removeMessageHandler", slotOf(&Class::removeMessageHandler)},
             {"hasMessageHandler", slotOf(&Class::hasMessageHandler)},
             {"removeMessageHandlers", slotOf(&Class::removeMessageHandlers)},
             {"removeAllMessageHandlers", slotOf(&Class::removeAllMessageHandlers)},
             {"getMessageHandlers", slotOf(&Class::getMessageHandlers)},
             {"subscribe", slotOf(&Class::subscribe)},
             {"unsubscribe", slotOf(&Class::unsubscribe)},
             {"hasSubscription", slotOf(&Class::hasSubscription)},
             {"createSubjectCode", slotOf(&Class::createSubjectCode)},
             {"getServerTimeMilliSec", slotOf(&Class::getServerTimeMilliSec)},
             {"getErrorManager", slotOf(&Class::getErrorManager)}});
}

TEST(KestrinOrder, StandsBehindThatOfPropertySet) { expectOrder<Kestrin>(); }

TEST(KestrinOrder, IsKeptByTheClassesThatDeriveFromIt) {
    expectOrder<AbstractKestrin>();
    expectOrder<test::RecordingAgent>();
}

class OneMore : public Kestrin {
public:
    virtual void oneMore() {}
};

TEST(KestrinOrder, EndsWithTheErrorManager) { EXPECT_EQ(slotOf(&OneMore::oneMore), 47u); }

TEST(Kestrin, DeliberateOneQuestionIsNotConst) {
    using Question =
        bool (Kestrin::*)(CString const &, CString const &, KestrinNoticeMessageHandler const *);
    static_assert(std::is_same_v<decltype(&Kestrin::hasMessageHandler), Question>);
}

/// An agent without the base class: nothing but the interface, each answer empty.
class BareAgent : public Kestrin {
public:
    void setProperty(CString const &, CString const &) override {}
    CString getProperty(CString const &) const override { return CString(); }
    bool hasProperty(CString const &) const override { return false; }
    void addProperties(PropertySet const &) override {}
    void mergeProperties(PropertySet const &) override {}
    void removeProperty(CString const &) override {}
    void removeAllProperties() override {}
    std::vector<CString> getPropertyNames() const override { return {}; }
    unsigned int getPropertyCount() const override { return 0; }
    KestrinStatusEnum getStatus() const override { return KESTRINSTATUS_CREATED; }
    void initialize(RefCountedPtr<KestrinConfig> const &, ErrorInfo *) override {}
    RefCountedPtr<KestrinConfig> getConfig() const override { return nullptr; }
    bool start(ErrorInfo *) override { return false; }
    void stop() override {}
    bool login(CString const &, CString const &, ErrorInfo *) override { return false; }
    bool relogin(ErrorInfo *) override { return false; }
    bool startRealTimeService(ErrorInfo *) override { return false; }
    void stopRealTimeService() override {}
    void cancelAllAsyncRequests() override {}
    void cancelAsyncRequestsByHandler(AsyncReplyHandler const *, CString const &) override {}
    void cancelAsyncRequestsByHandler(AsyncReplyHandler const *) override {}
    void logout() override {}
    void addKestrinListener(KestrinListener *) override {}
    std::vector<KestrinListener *> getKestrinListeners() const override { return {}; }
    bool hasKestrinListener(KestrinListener const *) const override { return false; }
    void removeKestrinListener(KestrinListener const *) override {}
    void removeAllKestrinListeners() override {}
    bool send(Message const &, ErrorInfo *) override { return false; }
    Message request(Message const &, int, ErrorInfo *) override { return nullptr; }
    Message request(Message const &, ErrorInfo *) override { return nullptr; }
    Operation asyncRequest(Message const &, int, AsyncReplyHandler *, void *) override {
        return nullptr;
    }
    Operation asyncRequest(Message const &, AsyncReplyHandler *, void *) override {
        return nullptr;
    }
    void addMessageHandler(CString const &, CString const &,
                           KestrinNoticeMessageHandler *) override {}
    int removeMessageHandler(CString const &, CString const &,
                             KestrinNoticeMessageHandler const *) override {
        return 0;
    }
    bool hasMessageHandler(CString const &, CString const &,
                           KestrinNoticeMessageHandler const *) override {
        return false;
    }
    int removeMessageHandlers(CString const &, CString const &) override { return 0; }
    int removeAllMessageHandlers() override { return 0; }
    std::vector<KestrinNoticeMessageHandler *> getMessageHandlers(CString const &,
                                                                  CString const &) const override {
        return {};
    }
    int subscribe(CString const &, CString const &) override { return 0; }
    int unsubscribe(CString const &, CString const &) override { return 0; }
    bool hasSubscription(CString const &, CString const &) const override { return false; }
    CString createSubjectCode(CString const &, CString const &) const override { return CString(); }
    long long getServerTimeMilliSec() const override { return 0; }
    KestrinErrorManager * getErrorManager() const override { return nullptr; }
};

TEST(Kestrin, NeedsNoBaseClassAndACopyBeginsUnowned) {
    RefCountedPtr<BareAgent> const source = new BareAgent;
    RefCountedPtr<BareAgent> const second = source;
    RefCountedPtr<Kestrin> const copy = new BareAgent(*source);
    EXPECT_EQ(copy->getRefCount(), 1);
    EXPECT_EQ(source->getRefCount(), 2);
}

TEST(Kestrin, DeliberateAssignmentTakesOverTheCountAlone) {
    test::Log log;
    RefCountedPtr<test::RecordingAgent> const source = new test::RecordingAgent(log);
    RefCountedPtr<test::RecordingAgent> const second = source;
    RefCountedPtr<test::RecordingAgent> const target = new test::RecordingAgent(log);
    source->status = KESTRINSTATUS_CONNECTED;
    source->setProperty("a", "1");
    static_cast<Kestrin &>(*target) = *source;
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_EQ(target->getStatus(), KESTRINSTATUS_CREATED);
    EXPECT_EQ(target->getPropertyCount(), 0u);
    EXPECT_EQ(source->getRefCount(), 2);
    target->removeRef();
}

}  // namespace
}  // namespace tvk
