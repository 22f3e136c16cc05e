#include "tvk/agent/AsyncRequestOperation.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/OperationDoubles.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::slotOf;

static_assert(std::is_base_of_v<RefCounted, AsyncRequestOperation>);
static_assert(std::is_abstract_v<AsyncRequestOperation>);
static_assert(!std::is_destructible_v<AsyncRequestOperation>);

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(3, {{"cancel", slotOf(&Class::cancel)},
                                 {"isCanceled", slotOf(&Class::isCanceled)},
                                 {"isPending", slotOf(&Class::isPending)},
                                 {"isFired", slotOf(&Class::isFired)},
                                 {"setFired", slotOf(&Class::setFired)},
                                 {"getRequest", slotOf(&Class::getRequest)},
                                 {"getReplyHandler", slotOf(&Class::getReplyHandler)},
                                 {"getUserObject", slotOf(&Class::getUserObject)}});
}

TEST(AsyncRequestOperation, KeepsItsVirtualOrder) {
    expectOrder<AsyncRequestOperation>();
    expectOrder<AbstractAsyncRequestOperation>();
}

template <class Class>
class OneMore : public Class {
public:
    virtual void oneMore() {}
};

TEST(AsyncRequestOperation, EndsWithTheUserObjectHereAndInItsBaseClass) {
    EXPECT_EQ(slotOf(&OneMore<AsyncRequestOperation>::oneMore), 11u);
    EXPECT_EQ(slotOf(&OneMore<AbstractAsyncRequestOperation>::oneMore), 11u);
}

TEST(AsyncRequestOperation, ACopyBeginsUnowned) {
    test::Log log;
    RefCountedPtr<test::LoggedOperation> const source = new test::LoggedOperation(log);
    RefCountedPtr<AsyncRequestOperation> const copy = new test::LoggedOperation(*source);
    EXPECT_EQ(copy->getRefCount(), 1);
    EXPECT_EQ(source->getRefCount(), 1);
}

TEST(AsyncRequestOperation, DeliberateAssignmentTakesOverTheCountAlone) {
    test::Log log;
    RefCountedPtr<test::LoggedOperation> const source = new test::LoggedOperation(log);
    RefCountedPtr<test::LoggedOperation> const second = source;
    RefCountedPtr<test::LoggedOperation> const target = new test::LoggedOperation(log);
    source->fired = true;
    static_cast<AsyncRequestOperation &>(*target) = *source;
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_FALSE(target->fired);
    target->removeRef();
}

}  // namespace
}  // namespace tvk
