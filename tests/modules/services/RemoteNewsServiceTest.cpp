#include "modules/services/RemoteNewsService.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "tests/modules/services/support/NewsEar.h"
#include "tests/support/PrintCString.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/xml/FastXmlUtil.h"

namespace tvk {
namespace {

using test::FakeKestrin;
using test::Log;
using test::NewsEar;

static_assert(std::is_base_of_v<XmlNewsService, RemoteNewsService>);
static_assert(!std::is_destructible_v<RemoteNewsService>);
static_assert(!std::is_copy_constructible_v<RemoteNewsService>);
static_assert(!std::is_copy_assignable_v<RemoteNewsService>);

constexpr char OPEN[] = "subscribe headline all";
constexpr char CLOSE[] = "unsubscribe headline all";
constexpr char ASK_INDEX[] = R"(ask newsDocument {"documentId":"","documentType":1})";
constexpr char INDEX[] = R"({"xml":"<index><list id=\"market\" title=\"x\"/></index>"})";

class RemoteNews : public testing::Test {
protected:
    Log log_;
    NewsEar one_{log_, "one"};
    NewsEar two_{log_, "two"};
    RefCountedPtr<FakeKestrin> agent_{new FakeKestrin(log_)};
    RefCountedPtr<RemoteNewsService> service_{new RemoteNewsService(agent_)};

    void run() {
        ErrorInfo error;
        ASSERT_TRUE(service_->start(&error));
        log_.clear();
    }
    RefCountedPtr<AsyncNewsRequestOperation> ask(XmlNewsListener * listener,
                                                 void * userObject = nullptr) {
        return service_->requestDocument(XmlNewsService::TYPE_MASTER_INDEX, "", listener,
                                         userObject);
    }
    void headline(int id) {
        agent_->notify("headline", "all",
                       R"({"xml":"<headline id=\")" + std::to_string(id) + R"(\"/>"})");
    }
    Log taken() { return std::exchange(log_, {}); }
};

// Start and stop.

TEST_F(RemoteNews, StartSubscribesAndRuns) {
    ErrorInfo error;
    EXPECT_FALSE(service_->isRunning());
    EXPECT_TRUE(service_->start(&error));
    EXPECT_TRUE(service_->isRunning());
    EXPECT_TRUE(service_->start(nullptr));
    EXPECT_EQ(taken(), Log{OPEN});
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(agent_->getKestrinListeners().size(), 1U);
}

TEST_F(RemoteNews, StartWantsAnAgentThatIsLoggedIn) {
    agent_->status = KESTRINSTATUS_CONNECTED;
    ErrorInfo error;
    EXPECT_FALSE(service_->start(&error));
    EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_SessionError);
    EXPECT_EQ(error.getErrorMessage(), "not logged in");
    EXPECT_EQ(error.getComponentCode(), RemoteNewsService::COMPONENT_CODE);
    EXPECT_FALSE(service_->start(nullptr));
    EXPECT_FALSE(service_->isRunning());
    EXPECT_EQ(taken(), Log{});
}

TEST_F(RemoteNews, StopLeavesNoTraceAtTheAgent) {
    run();
    ask(&one_);
    ask(&two_);
    log_.clear();
    service_->stop();
    EXPECT_FALSE(service_->isRunning());
    EXPECT_EQ(taken(), (Log{CLOSE, "one canceled", "two canceled"}));
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
    EXPECT_TRUE(agent_->getMessageHandlers("headline", "all").empty());
    EXPECT_TRUE(agent_->open.empty());
    service_->stop();
    EXPECT_EQ(taken(), Log{});
    EXPECT_TRUE(service_->start(nullptr));
    EXPECT_EQ(taken(), Log{OPEN});
}

TEST_F(RemoteNews, TheAgentsEndStopsTheService) {
    run();
    ask(&one_);
    log_.clear();
    ErrorInfo const error = test::backEndError(12);
    agent_->fireOnStopped(&error);
    EXPECT_EQ(taken(), (Log{CLOSE, "one error 12 no such chart"}));
    EXPECT_FALSE(service_->isRunning());
}

TEST_F(RemoteNews, AnAgentThatIsAskedToStopStopsTheServiceLikeIt) {
    run();
    ask(&one_);
    log_.clear();
    agent_->stop();
    EXPECT_EQ(taken(), (Log{"one canceled", CLOSE}));
    EXPECT_FALSE(service_->isRunning());
}

TEST_F(RemoteNews, ALostConnectionAloneChangesNothing) {
    service_->addNewsListener(&one_);
    run();
    ErrorInfo const lost = test::backEndError(10);
    agent_->fireOnRealTimeServiceStopped(&lost);
    agent_->fireOnReloginRequired(lost);
    agent_->fireOnRealTimeServiceStarted(true);
    EXPECT_EQ(taken(), Log{});
    EXPECT_TRUE(service_->isRunning());
}

// Documents.

TEST_F(RemoteNews, ARequestBringsADocument) {
    run();
    int user = 0;
    auto const operation = ask(&one_, &user);
    EXPECT_EQ(taken(), Log{ASK_INDEX});
    EXPECT_EQ(agent_->timeouts, std::vector<int>{RemoteNewsService::DEFAULT_TIMEOUT_MILLI_SEC});
    EXPECT_TRUE(operation->isPending());
    EXPECT_FALSE(operation->isCanceled());
    EXPECT_EQ(operation->getDocumentType(), XmlNewsService::TYPE_MASTER_INDEX);
    EXPECT_EQ(operation->getListener(), &one_);
    EXPECT_EQ(operation->getUserObject(), &user);

    agent_->reply(agent_->newest(), INDEX);
    EXPECT_EQ(taken(), Log{"one document index"});
    EXPECT_EQ(one_.service, service_.get());
    EXPECT_EQ(one_.operation, operation);
    EXPECT_EQ(one_.userObject, &user);
    EXPECT_FALSE(one_.wasPending);
    EXPECT_FALSE(operation->isPending());
    EXPECT_FALSE(operation->isCanceled());
    auto const list = one_.document->getRootElement()->getFirstSubElementWithName("list");
    EXPECT_EQ(list->getAttribute("id"), "market");
}

TEST_F(RemoteNews, RequestsSayWhatTheyWant) {
    service_ = new RemoteNewsService(agent_, 55);
    run();
    EXPECT_EQ(
        service_->requestDocument(XmlNewsService::TYPE_HEADER_LINE, "market", nullptr, nullptr)
            ->getDocumentType(),
        2);
    EXPECT_EQ(service_->requestDocument(XmlNewsService::TYPE_DETAIL, "n1", nullptr, nullptr)
                  ->getDocumentType(),
              3);
    EXPECT_EQ(taken(), (Log{R"(ask newsDocument {"documentId":"market","documentType":2})",
                            R"(ask newsDocument {"documentId":"n1","documentType":3})"}));
    EXPECT_EQ(agent_->timeouts, (std::vector<int>{55, 55}));
}

TEST_F(RemoteNews, NoRequestWhereItDoesNotRunOrOfAnotherKind) {
    EXPECT_TRUE(ask(&one_).isNull());
    run();
    for (int const type : {0, 4, -1}) {
        EXPECT_TRUE(service_->requestDocument(type, "", &one_, nullptr).isNull());
    }
    service_->stop();
    EXPECT_TRUE(ask(&one_).isNull());
    EXPECT_EQ(taken(), Log{CLOSE});
}

TEST_F(RemoteNews, EachRequestHasOneOutcome) {
    run();
    auto const document = ask(&one_);
    auto const atDocument = agent_->newest();
    auto const timeout = ask(&one_);
    auto const atTimeout = agent_->newest();
    auto const error = ask(&one_);
    auto const atError = agent_->newest();
    auto const canceled = ask(&one_);
    log_.clear();

    agent_->fail(atError, test::backEndError());
    EXPECT_EQ(one_.component, 5);
    agent_->reply(atDocument, INDEX);
    agent_->timeOut(atTimeout);
    canceled->cancel();
    EXPECT_EQ(taken(), (Log{"one error 7001 no such chart", "one document index", "one timeout",
                            "one canceled"}));
    for (auto const & operation : {document, timeout, error, canceled}) {
        EXPECT_FALSE(operation->isPending());
        EXPECT_EQ(operation->isCanceled(), operation == canceled);
        operation->cancel();
    }
    service_->stop();
    EXPECT_EQ(taken(), Log{CLOSE});
}

TEST_F(RemoteNews, ARequestWithoutAListenerIsHeardByNobody) {
    run();
    for (int round = 0; round < 4; ++round) {
        ASSERT_TRUE(ask(nullptr));
    }
    log_.clear();
    agent_->reply(agent_->newest(), INDEX);
    agent_->reply(agent_->newest(), "{}");
    agent_->timeOut(agent_->newest());
    service_->cancelAllRequests();
    EXPECT_EQ(taken(), Log{});
    EXPECT_TRUE(agent_->open.empty());
}

TEST_F(RemoteNews, CancelByListenerLeavesTheOthers) {
    run();
    ask(&one_);
    ask(&two_);
    ask(&one_);
    log_.clear();
    service_->cancelRequestsByListener(&one_);
    EXPECT_EQ(taken(), (Log{"one canceled", "one canceled"}));
    service_->cancelAllRequests();
    EXPECT_EQ(taken(), Log{"two canceled"});
}

TEST_F(RemoteNews, DuringAStopNothingIsAskedForAnew) {
    run();
    ask(&one_);
    RefCountedPtr<AsyncNewsRequestOperation> again;
    one_.during = [&] { again = ask(&one_); };
    service_->stop();
    EXPECT_TRUE(again.isNull());
}

struct BadDocument {
    char const * name;
    char const * json;
    char const * told;
};

constexpr BadDocument BAD_DOCUMENTS[] = {
    {"nothing", "{}", "4 newsDocument: the field \"xml\" is missing"},
    {"null", R"({"xml":null})", "4 newsDocument: the field \"xml\" is missing"},
    {"a number", R"({"xml":1})", "4 newsDocument: the field \"xml\" is no text"},
    {"a record", R"({"xml":{"a":"b"}})", "4 newsDocument: the field \"xml\" is no text"},
    {"an empty text", R"({"xml":""})",
     "4 newsDocument: the field \"xml\" cannot be read: XML parsing error at line 1, column 1: "
     "no element found"},
    {"broken XML", R"({"xml":"<a>\n  <b></a>"})",
     "4 newsDocument: the field \"xml\" cannot be read: XML parsing error at line 2, column 8: "
     "mismatched tag"},
    {"broken XML behind a declaration", R"({"xml":"<?xml version=\"1.0\"\n?><a><b></a>"})",
     "4 newsDocument: the field \"xml\" cannot be read: XML parsing error at line 2, column 11: "
     "mismatched tag"},
    {"an external entity",
     R"({"xml":"<!DOCTYPE a [<!ENTITY e SYSTEM \"file:///etc/passwd\">]><a>&e;</a>"})", nullptr},
};

TEST_F(RemoteNews, AnAnswerThatCannotBeReadIsAnError) {
    run();
    for (BadDocument const & row : BAD_DOCUMENTS) {
        SCOPED_TRACE(row.name);
        ask(&one_);
        log_.clear();
        agent_->reply(agent_->newest(), row.json);
        ASSERT_EQ(log_.size(), 1U);
        if (row.told != nullptr) {
            EXPECT_EQ(log_[0], std::string("one error ") + row.told);
        } else {
            EXPECT_EQ(log_[0].substr(0, 12), "one error 4 ");
        }
        EXPECT_EQ(one_.component, RemoteNewsService::COMPONENT_CODE);
    }
    EXPECT_TRUE(service_->isRunning());
}

TEST_F(RemoteNews, TextIsInTheCodePageOnceItIsRead) {
    // U+5186 and U+30BD; the second byte of the latter is a backslash in the code page 932.
    std::string const json = "{\"xml\":\"<a t='\xE5\x86\x86'>\xE3\x82\xBD</a>\"}";
    run();
    ask(&one_);
    agent_->reply(agent_->newest(), json);
    auto const root = one_.document->getRootElement();
    EXPECT_EQ(root->getAttribute("t"), "\x89\x7E");
    EXPECT_EQ(root->text(), "\x83\x5C");

    test::UsingCodePage const utf8(65001);
    ask(&one_);
    agent_->reply(agent_->newest(), json);
    EXPECT_EQ(one_.document->getRootElement()->text(), "\xE3\x82\xBD");
}

TEST_F(RemoteNews, TheEncodingOfADeclarationDoesNotMatter) {
    run();
    for (char const * const declaration :
         {R"(<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>)",
          R"(<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n)",
          R"(<?xml version='1.0' encoding='EUC-JP' standalone='yes'?>)"}) {
        SCOPED_TRACE(declaration);
        ask(&one_);
        agent_->reply(agent_->newest(),
                      std::string("{\"xml\":\"") + declaration + "<a>\xE3\x82\xBD</a>\"}");
        EXPECT_EQ(one_.document->getRootElement()->text(), "\x83\x5C");
        one_.document = nullptr;
    }
}

TEST_F(RemoteNews, AnInstructionAtTheStartIsNoDeclaration) {
    run();
    ask(&one_);
    log_.clear();
    agent_->reply(agent_->newest(), R"({"xml":"<?xml-stylesheet href='a'?><a/>"})");
    agent_->reply((ask(&one_), agent_->newest()), R"({"xml":"<?xml"})");
    EXPECT_EQ(log_.front(), "one document a");
    EXPECT_EQ(log_.back().substr(0, 12), "one error 4 ");
}

// Headlines.

TEST_F(RemoteNews, ListenersStandInTheirOrder) {
    service_->addNewsListener(&one_);
    service_->addNewsListener(&two_);
    service_->addNewsListener(&one_);
    EXPECT_TRUE(service_->hasNewsListener(&one_));
    run();
    headline(1);
    EXPECT_EQ(taken(), (Log{"one headline 1", "two headline 1", "one headline 1"}));
    EXPECT_EQ(one_.service, service_.get());
    EXPECT_EQ(one_.element->elementName(), "headline");
    EXPECT_EQ(one_.element, two_.element);
    service_->removeNewsListener(&one_);
    headline(2);
    EXPECT_EQ(taken(), (Log{"two headline 2", "one headline 2"}));
    service_->removeNewsListener(&one_);
    service_->removeNewsListener(&one_);
    EXPECT_FALSE(service_->hasNewsListener(&one_));
    service_->removeAllNewsListeners();
    headline(3);
    EXPECT_EQ(taken(), Log{});
    EXPECT_EQ(service_->getDroppedNoticeCount(), 0U);
}

TEST_F(RemoteNews, ListenersComeAndGoDuringAPass) {
    service_->addNewsListener(&one_);
    service_->addNewsListener(&two_);
    run();
    one_.during = [&] {
        one_.during = nullptr;
        service_->removeNewsListener(&two_);
        service_->addNewsListener(&two_);
    };
    headline(1);
    EXPECT_EQ(taken(), Log{"one headline 1"});
    headline(2);
    EXPECT_EQ(taken(), (Log{"one headline 2", "two headline 2"}));
    one_.during = [&] { service_->removeAllNewsListeners(); };
    headline(3);
    EXPECT_EQ(taken(), Log{"one headline 3"});
}

TEST_F(RemoteNews, NoHeadlineComesBehindAStop) {
    service_->addNewsListener(&one_);
    service_->addNewsListener(&two_);
    run();
    one_.during = [&] {
        one_.during = nullptr;
        service_->stop();
        service_->start(nullptr);
    };
    headline(1);
    EXPECT_EQ(taken(), (Log{"one headline 1", CLOSE, OPEN}));
    headline(2);
    EXPECT_EQ(taken(), (Log{"one headline 2", "two headline 2"}));
    service_->stop();
    headline(3);
    EXPECT_EQ(taken(), Log{CLOSE});
}

TEST_F(RemoteNews, AHeadlineThatCannotBeReadIsDroppedAndCounted) {
    service_->addNewsListener(&one_);
    run();
    unsigned long long count = 0;
    for (char const * const json : {"{}", R"({"xml":1})", R"({"xml":"<headline>"})"}) {
        agent_->notify("headline", "all", json);
        EXPECT_EQ(service_->getDroppedNoticeCount(), ++count);
    }
    EXPECT_EQ(taken(), Log{});
}

// Ownership.

TEST_F(RemoteNews, TheLastReferenceCancels) {
    service_->addNewsListener(&two_);
    run();
    auto const operation = ask(&one_);
    EXPECT_EQ(operation->getRefCount(), 2);
    log_.clear();
    service_ = nullptr;
    EXPECT_EQ(taken(), (Log{CLOSE, "one canceled"}));
    EXPECT_FALSE(operation->isPending());
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
    agent_ = nullptr;
    EXPECT_EQ(taken(), Log{"end agent"});
}

TEST_F(RemoteNews, TheLastReferenceMayGoInsideEachCallback) {
    struct Scene {
        char const * name;
        std::function<void()> act;
    };
    RefCountedPtr<FakeKestrin> agent;
    ErrorInfo const lost = test::backEndError(10);
    Scene const scenes[] = {
        {"document", [&] { agent->reply(agent->newest(), INDEX); }},
        {"bad document", [&] { agent->reply(agent->newest(), "{}"); }},
        {"timeout", [&] { agent->timeOut(agent->newest()); }},
        {"error", [&] { agent->fail(agent->newest(), lost); }},
        {"cancelled", [&] { service_->cancelAllRequests(); }},
        {"stop", [&] { service_->stop(); }},
        {"cancelled by the agent", [&] { agent->cancelAllAsyncRequests(); }},
        {"the agent's end", [&] { agent->end(&lost); }},
        {"headline", [&] { agent->notify("headline", "all", R"({"xml":"<h/>"})"); }},
    };
    for (Scene const & scene : scenes) {
        SCOPED_TRACE(scene.name);
        agent = agent_ = new FakeKestrin(log_);
        service_ = new RemoteNewsService(agent_);
        service_->addNewsListener(&one_);
        service_->addNewsListener(&two_);
        one_.during = nullptr;
        run();
        ask(&one_);
        ask(&one_);
        one_.during = [&] {
            service_ = nullptr;
            agent_ = nullptr;
        };
        scene.act();
        EXPECT_TRUE(service_.isNull());
        EXPECT_EQ(agent->getRefCount(), 1);  // ours: the service is gone
        EXPECT_TRUE(agent->open.empty());
        EXPECT_TRUE(agent->getKestrinListeners().empty());
        EXPECT_FALSE(agent->hasSubscription("headline", "all"));
    }
}

}  // namespace
}  // namespace tvk
