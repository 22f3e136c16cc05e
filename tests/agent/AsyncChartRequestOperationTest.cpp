#include "tvk/agent/AsyncChartRequestOperation.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/ChartDoubles.h"
#include "tests/support/CountedContract.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/agent/AsyncRequestOperation.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_base_of_v<RefCounted, AsyncChartRequestOperation>);
static_assert(!std::is_base_of_v<AsyncRequestOperation, AsyncChartRequestOperation>);
static_assert(std::is_abstract_v<AsyncChartRequestOperation>);
static_assert(std::is_destructible_v<AsyncChartRequestOperation>);
static_assert(sizeof(AsyncChartRequestOperation) == sizeof(RefCounted));

class OneMore : public AsyncChartRequestOperation {
public:
    virtual void oneMore() {}
};

TEST(AsyncChartRequestOperation, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(3, {{"cancel", slotOf(&AsyncChartRequestOperation::cancel)},
                                 {"isCanceled", slotOf(&AsyncChartRequestOperation::isCanceled)},
                                 {"isPending", slotOf(&AsyncChartRequestOperation::isPending)},
                                 {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(AsyncChartRequestOperation, CopiesAndAssignsLikeRefCounted) {
    test::expectCopiesLikeRefCounted<AsyncChartRequestOperation, test::RecordingChartOperation>();
}

TEST(AsyncChartRequestOperation, ReachesItsImplementation) {
    test::Log log;
    RefCountedPtr<test::RecordingChartOperation> const made =
        new test::RecordingChartOperation(log);
    made->canceled = true;
    made->pending = false;
    AsyncChartRequestOperation & operation = *made;
    operation.cancel();
    EXPECT_TRUE(operation.isCanceled());
    EXPECT_FALSE(operation.isPending());
    EXPECT_EQ(log, (test::Log{callText("cancel"), callText("isCanceled"), callText("isPending")}));
}

}  // namespace
}  // namespace tvk
