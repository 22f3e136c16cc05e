#include "tvk/agent/XmlNewsListener.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/support/NewsDoubles.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk {
namespace {

using test::callText;
using test::slotOf;

static_assert(std::is_abstract_v<XmlNewsListener>);
static_assert(std::has_virtual_destructor_v<XmlNewsListener>);
static_assert(std::is_destructible_v<XmlNewsListener>);
static_assert(std::is_copy_assignable_v<XmlNewsListener>);
static_assert(sizeof(XmlNewsListener) == sizeof(void *));

class OneMore : public XmlNewsListener {
public:
    virtual void oneMore() {}
};

TEST(XmlNewsListener, KeepsItsVirtualOrder) {
    test::expectVirtualOrder(2,
                             {{"onDocument", slotOf(&XmlNewsListener::onDocument)},
                              {"onDocumentTimeout", slotOf(&XmlNewsListener::onDocumentTimeout)},
                              {"onDocumentCanceled", slotOf(&XmlNewsListener::onDocumentCanceled)},
                              {"onDocumentError", slotOf(&XmlNewsListener::onDocumentError)},
                              {"onHeadline", slotOf(&XmlNewsListener::onHeadline)},
                              {"the end", slotOf(&OneMore::oneMore)}});
}

TEST(XmlNewsListener, CopyingAndAssigningMoveNothing) {
    test::Log log;
    test::Log otherLog;
    test::RecordingNewsListener const source(otherLog);
    test::RecordingNewsListener copy(source);
    test::RecordingNewsListener target(log);
    static_cast<XmlNewsListener &>(target) = source;
    target.onHeadline(nullptr, nullptr);
    EXPECT_EQ(log, (test::Log{callText("onHeadline", nullptr, nullptr)}));
    EXPECT_EQ(otherLog, test::Log{});
    copy.onHeadline(nullptr, nullptr);
    EXPECT_EQ(otherLog, log);
}

TEST(XmlNewsListener, ReachesItsImplementation) {
    test::Log log;
    test::RecordingNewsListener made(log);
    RefCountedPtr<XmlNewsService> const service = new test::RecordingNewsService(log);
    RefCountedPtr<AsyncNewsRequestOperation> const operation =
        new test::RecordingNewsOperation(log);
    RefCountedPtr<XmlDocument> const document = new XmlDocument;
    RefCountedPtr<XmlElement> const headline = new XmlElement("headline");
    ErrorInfo const error;
    int user = 0;
    XmlNewsListener & listener = made;
    listener.onDocument(service.get(), operation.get(), document, &user);
    listener.onDocumentTimeout(service.get(), operation.get(), &user);
    listener.onDocumentCanceled(service.get(), operation.get(), nullptr);
    listener.onDocumentError(service.get(), operation.get(), error, &user);
    listener.onHeadline(service.get(), headline);
    EXPECT_EQ(log, (test::Log{callText("onDocument", service, operation, document, &user),
                              callText("onDocumentTimeout", service, operation, &user),
                              callText("onDocumentCanceled", service, operation, nullptr),
                              callText("onDocumentError", service, operation, &error, &user),
                              callText("onHeadline", service, headline)}));
}

}  // namespace
}  // namespace tvk
