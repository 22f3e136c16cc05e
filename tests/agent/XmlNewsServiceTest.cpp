#include "tvk/agent/XmlNewsService.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/CountedContract.h"
#include "tests/support/NewsDoubles.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_base_of_v<RefCounted, XmlNewsService>);
static_assert(std::is_abstract_v<XmlNewsService>);
static_assert(!std::is_destructible_v<XmlNewsService>);
static_assert(sizeof(XmlNewsService) == sizeof(RefCounted));

static_assert(std::is_same_v<decltype(XmlNewsService::TYPE_MASTER_INDEX), int const>);
static_assert(XmlNewsService::TYPE_MASTER_INDEX == 1);
static_assert(std::is_same_v<decltype(XmlNewsService::TYPE_HEADER_LINE), int const>);
static_assert(XmlNewsService::TYPE_HEADER_LINE == 2);
static_assert(std::is_same_v<decltype(XmlNewsService::TYPE_DETAIL), int const>);
static_assert(XmlNewsService::TYPE_DETAIL == 3);

class OneMore : public XmlNewsService {
public:
    virtual void oneMore() {}
};

TEST(XmlNewsService, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(
        3, {{"start", slotOf(&XmlNewsService::start)},
            {"stop", slotOf(&XmlNewsService::stop)},
            {"isRunning", slotOf(&XmlNewsService::isRunning)},
            {"addNewsListener", slotOf(&XmlNewsService::addNewsListener)},
            {"hasNewsListener", slotOf(&XmlNewsService::hasNewsListener)},
            {"removeNewsListener", slotOf(&XmlNewsService::removeNewsListener)},
            {"removeAllNewsListeners", slotOf(&XmlNewsService::removeAllNewsListeners)},
            {"requestDocument", slotOf(&XmlNewsService::requestDocument)},
            {"cancelAllRequests", slotOf(&XmlNewsService::cancelAllRequests)},
            {"cancelRequestsByListener", slotOf(&XmlNewsService::cancelRequestsByListener)},
            {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(XmlNewsService, CopiesAndAssignsLikeRefCounted) {
    test::expectCopiesLikeRefCounted<XmlNewsService, test::RecordingNewsService>();
}

TEST(XmlNewsService, ReachesItsImplementation) {
    test::Log log;
    test::RecordingNewsListener listener(log);
    RefCountedPtr<test::RecordingNewsService> const made = new test::RecordingNewsService(log);
    made->operation = new test::RecordingNewsOperation(log);
    ErrorInfo error;
    int user = 0;
    XmlNewsService & service = *made;
    EXPECT_TRUE(service.start(&error));
    service.stop();
    made->yes = false;
    EXPECT_FALSE(service.isRunning());
    service.addNewsListener(&listener);
    EXPECT_FALSE(service.hasNewsListener(&listener));
    service.removeNewsListener(&listener);
    service.removeAllNewsListeners();
    EXPECT_EQ(service.requestDocument(XmlNewsService::TYPE_DETAIL, "20240105-1", &listener, &user),
              made->operation);
    service.cancelAllRequests();
    service.cancelRequestsByListener(&listener);
    EXPECT_EQ(log,
              (test::Log{
                  callText("start", &error), callText("stop"), callText("isRunning"),
                  callText("addNewsListener", &listener), callText("hasNewsListener", &listener),
                  callText("removeNewsListener", &listener), callText("removeAllNewsListeners"),
                  callText("requestDocument", 3, "20240105-1", &listener, &user),
                  callText("cancelAllRequests"), callText("cancelRequestsByListener", &listener)}));
}

}  // namespace
}  // namespace tvk
