#include "tvk/agent/AbstractAsyncRequestOperation.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/OperationDoubles.h"
#include "tests/support/Recorded.h"
#include "tvk/values/MappedMessage.h"

namespace tvk {
namespace {

using test::PlainOperation;
using Message = RefCountedPtr<KestrinMessage>;
using Operation = RefCountedPtr<PlainOperation>;

static_assert(std::is_base_of_v<AsyncRequestOperation, AbstractAsyncRequestOperation>);
static_assert(std::is_abstract_v<AbstractAsyncRequestOperation>);
static_assert(std::is_destructible_v<AbstractAsyncRequestOperation>);
static_assert(!std::is_copy_constructible_v<PlainOperation>);
static_assert(!std::is_copy_assignable_v<PlainOperation>);

/// Never called: a handle only carries the pointer.
AsyncReplyHandler * someHandler() {
    static int place;
    return reinterpret_cast<AsyncReplyHandler *>(&place);
}

TEST(AbstractAsyncRequestOperation, BeginsPendingNeitherCanceledNorFired) {
    Operation const operation = new PlainOperation(nullptr, nullptr, nullptr);
    EXPECT_TRUE(operation->isPending());
    EXPECT_FALSE(operation->isCanceled());
    EXPECT_FALSE(operation->isFired());
    EXPECT_EQ(operation->getRefCount(), 1);
}

TEST(AbstractAsyncRequestOperation, GivesWhatItWasMadeWith) {
    Message const request = new MappedMessage;
    int userObject = 0;
    Operation const operation = new PlainOperation(request, someHandler(), &userObject);
    EXPECT_EQ(operation->getRequest(), request);
    EXPECT_EQ(operation->getReplyHandler(), someHandler());
    EXPECT_EQ(operation->getUserObject(), &userObject);
}

TEST(AbstractAsyncRequestOperation, MayBeMadeOfNothing) {
    Operation const operation = new PlainOperation(nullptr, nullptr, nullptr);
    EXPECT_TRUE(operation->getRequest().isNull());
    EXPECT_EQ(operation->getReplyHandler(), nullptr);
    EXPECT_EQ(operation->getUserObject(), nullptr);
}

TEST(AbstractAsyncRequestOperation, HoldsOneReferenceToItsRequestForItsLife) {
    Message const request = new MappedMessage;
    Operation operation = new PlainOperation(request, nullptr, nullptr);
    EXPECT_EQ(request->getRefCount(), 2);
    {
        Message const given = operation->getRequest();
        EXPECT_EQ(request->getRefCount(), 3);
    }
    operation->cancel();
    operation->setFired(true);
    EXPECT_EQ(request->getRefCount(), 2);
    operation = nullptr;
    EXPECT_EQ(request->getRefCount(), 1);
}

TEST(AbstractAsyncRequestOperation, ReleasesARequestThatIsHeldByNobodyElse) {
    test::Log log;
    Operation operation =
        new PlainOperation(new test::Recorded<MappedMessage>(&log, "request"), nullptr, nullptr);
    EXPECT_EQ(log, test::Log{});
    operation = nullptr;
    EXPECT_EQ(log, (test::Log{"end request", "gone request"}));
}

TEST(AbstractAsyncRequestOperation, EachFlagIsItsOwn) {
    for (int flags = 0; flags < 8; ++flags) {
        Operation const operation = new PlainOperation(nullptr, nullptr, nullptr);
        bool const canceled = (flags & 1) != 0;
        bool const pending = (flags & 2) != 0;
        bool const fired = (flags & 4) != 0;
        operation->canceled = canceled;
        operation->pending = pending;
        operation->setFired(fired);
        EXPECT_EQ(operation->isCanceled(), canceled) << flags;
        EXPECT_EQ(operation->isPending(), pending) << flags;
        EXPECT_EQ(operation->isFired(), fired) << flags;
    }
}

TEST(AbstractAsyncRequestOperation, MayBeMarkedAndOpenedAgain) {
    Operation const operation = new PlainOperation(nullptr, nullptr, nullptr);
    for (bool const fired : {true, true, false, false, true}) {
        operation->setFired(fired);
        EXPECT_EQ(operation->isFired(), fired);
    }
}

}  // namespace
}  // namespace tvk
