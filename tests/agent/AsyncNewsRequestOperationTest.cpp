#include "tvk/agent/AsyncNewsRequestOperation.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/CountedContract.h"
#include "tests/support/NewsDoubles.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/agent/AsyncRequestOperation.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_base_of_v<RefCounted, AsyncNewsRequestOperation>);
static_assert(!std::is_base_of_v<AsyncRequestOperation, AsyncNewsRequestOperation>);
static_assert(std::is_abstract_v<AsyncNewsRequestOperation>);
static_assert(!std::is_destructible_v<AsyncNewsRequestOperation>);
static_assert(sizeof(AsyncNewsRequestOperation) == sizeof(RefCounted));

class OneMore : public AsyncNewsRequestOperation {
public:
    virtual void oneMore() {}
};

TEST(AsyncNewsRequestOperation, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(
        3, {{"cancel", slotOf(&AsyncNewsRequestOperation::cancel)},
            {"isCanceled", slotOf(&AsyncNewsRequestOperation::isCanceled)},
            {"isPending", slotOf(&AsyncNewsRequestOperation::isPending)},
            {"getDocumentType", slotOf(&AsyncNewsRequestOperation::getDocumentType)},
            {"getListener", slotOf(&AsyncNewsRequestOperation::getListener)},
            {"getUserObject", slotOf(&AsyncNewsRequestOperation::getUserObject)},
            {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(AsyncNewsRequestOperation, CopiesAndAssignsLikeRefCounted) {
    test::expectCopiesLikeRefCounted<AsyncNewsRequestOperation, test::RecordingNewsOperation>();
}

TEST(AsyncNewsRequestOperation, ReachesItsImplementation) {
    test::Log log;
    test::RecordingNewsListener listener(log);
    int user = 0;
    RefCountedPtr<test::RecordingNewsOperation> const made = new test::RecordingNewsOperation(log);
    made->canceled = true;
    made->pending = false;
    made->documentType = 3;
    made->listener = &listener;
    made->userObject = &user;
    AsyncNewsRequestOperation & operation = *made;
    operation.cancel();
    EXPECT_TRUE(operation.isCanceled());
    EXPECT_FALSE(operation.isPending());
    EXPECT_EQ(operation.getDocumentType(), 3);
    EXPECT_EQ(operation.getListener(), &listener);
    EXPECT_EQ(operation.getUserObject(), &user);
    EXPECT_EQ(log, (test::Log{callText("cancel"), callText("isCanceled"), callText("isPending"),
                              callText("getDocumentType"), callText("getListener"),
                              callText("getUserObject")}));
}

}  // namespace
}  // namespace tvk
