// Both services over a real connection, with the back end of the examples at its other end.

#include <gtest/gtest.h>

#include <algorithm>
#include <asio/io_context.hpp>
#include <memory>
#include <string>
#include <string_view>

#include "examples/backend/Backend.h"
#include "modules/asio/EventLoop.h"
#include "modules/asio/TcpKestrin.h"
#include "modules/services/RemoteChartService.h"
#include "modules/services/RemoteNewsService.h"
#include "tests/modules/asio/Driven.h"
#include "tests/modules/services/support/ChartEars.h"
#include "tests/modules/services/support/NewsEar.h"
#include "tests/support/PrintCString.h"
#include "tvk/agent/KestrinConfig.h"
#include "tvk/platform/CodePage.h"

namespace tvk {
namespace {

using backend::Backend;
using backend::Fault;

constexpr int SHORT_TIMEOUT_MILLI_SEC = 300;

CString ansi(std::string_view utf8) {
    return platform::utf8ToAnsi(utf8.data(), static_cast<unsigned int>(utf8.size()));
}

class OverTcp : public testing::Test {
protected:
    void SetUp() override {
        std::string problem;
        ASSERT_TRUE(backEnd_.start(&problem)) << problem;
        TcpOptions options;
        options.host = "127.0.0.1";
        options.port = backEnd_.port();
        options.plain = true;
        options.backOffFirstMilliSec = 1;
        agent_ = new TcpKestrin(loop_, options);
        ErrorInfo error;
        agent_->initialize(new KestrinConfig, &error);
        ASSERT_TRUE(agent_->start(&error)) << error.toString();
        ASSERT_TRUE(until([&] { return agent_->getStatus() == KESTRINSTATUS_CONNECTED; }));
        ASSERT_TRUE(agent_->login("trader", "secret", &error)) << error.toString();
        ASSERT_TRUE(until([&] { return agent_->getStatus() == KESTRINSTATUS_LOGGED_IN; }));
        ASSERT_TRUE(agent_->startRealTimeService(&error)) << error.toString();
    }

    template <class Condition>
    bool until(Condition const & condition) {
        return driveUntil(*loop_, condition);
    }
    /// A line of the log that begins so; those before it are gone then.
    bool hears(std::string const & start) {
        auto const matches = [&](std::string const & line) {
            return line.compare(0, start.size(), start) == 0;
        };
        auto const place = [&] { return std::find_if(log_.begin(), log_.end(), matches); };
        bool const isThere = until([&] { return place() != log_.end(); });
        log_.erase(log_.begin(), isThere ? place() + 1 : log_.end());
        return isThere;
    }

    void startCharts(int timeoutMilliSec = RemoteChartService::DEFAULT_TIMEOUT_MILLI_SEC) {
        charts_ = new RemoteChartService(agent_, timeoutMilliSec);
        charts_->addChartListener(&chart_);
        ASSERT_TRUE(charts_->start(nullptr));
        ASSERT_TRUE(hears("chart started"));
    }
    void askForHistory(unsigned int count = 5) {
        ASSERT_TRUE(charts_->requestHistory("7203", PRICEKIND_LAST, "5", count, &chart_, nullptr));
    }
    void inject(Fault::Kind kind) {
        Fault fault;
        fault.kind = kind;
        backEnd_.inject(fault);
    }

    static Backend::Options backEndOptions() {
        Backend::Options options;
        options.quoteMilliSec = 5;
        options.headlineMilliSec = 20;
        return options;
    }

    test::Log log_;
    test::ChartEar chart_{log_, "chart"};
    test::ChartNoticeEar all_{log_, "all"};
    test::ChartNoticeEar some_{log_, "some"};
    test::NewsEar reader_{log_, "news"};
    Backend backEnd_{backEndOptions()};
    asio::io_context context_;
    std::shared_ptr<EventLoop> loop_ = std::make_shared<EventLoop>(context_);
    RefCountedPtr<TcpKestrin> agent_;
    RefCountedPtr<RemoteChartService> charts_;
};

TEST_F(OverTcp, ChartsComeAndMove) {
    startCharts();
    EXPECT_EQ(charts_->getPeriodTypes(), (std::vector<CString>{"1", "5", "60", "D"}));

    askForHistory();
    ASSERT_TRUE(hears("chart history 5"));
    EXPECT_EQ(charts_->getHistoryCount("7203", PRICEKIND_LAST, "5"), 5U);
    for (auto const & bar : chart_.records) {
        EXPECT_EQ(bar->getSymbolCode(), "7203");
        EXPECT_EQ(bar->getDataDate().GetLength(), 8);
        EXPECT_FALSE(bar->getClosePrice().IsEmpty());
    }

    charts_->addNoticeMessageListener("7203", &some_);
    charts_->addNoticeMessageListener(KestrinConstants::WILDCARD, &all_);
    EXPECT_EQ(charts_->subscribe("7203", PRICEKIND_LAST, "5"), 1);
    ASSERT_TRUE(hears("all update 7203 "));
    ASSERT_TRUE(hears("some update 7203 "));
    EXPECT_EQ(charts_->getLastRecord("7203", PRICEKIND_LAST, "5"), some_.record);
    inject(Fault::NEW_DAY);
    EXPECT_TRUE(hears("all reset 7203"));
    EXPECT_TRUE(hears("some reset 7203"));
    EXPECT_EQ(charts_->getDroppedNoticeCount(), 0U);
}

TEST_F(OverTcp, HistoryMayBeOpenAtItsEnds) {
    startCharts();
    askForHistory(0);
    ASSERT_TRUE(hears("chart history 1000"));
    auto const between = [&](char const * from, char const * to) {
        charts_->requestHistoryBetween("7203", PRICEKIND_LAST, "D", from, to, &chart_, nullptr);
    };
    between("20240102", "20240104");
    EXPECT_TRUE(hears("chart history 3"));
    between("", "");
    ASSERT_TRUE(hears("chart history 1000"));
    CString const newest = chart_.records.back()->getDataDate();
    between("20240102", "");
    ASSERT_TRUE(hears("chart history "));
    EXPECT_EQ(chart_.records.back()->getDataDate(), newest);
    between("", "19700103");
    EXPECT_TRUE(hears("chart history 3"));
}

TEST_F(OverTcp, WhatTheBackEndRefusesIsAnError) {
    startCharts();
    charts_->requestHistory("none", PRICEKIND_LAST, "5", 1, &chart_, nullptr);
    EXPECT_TRUE(hears("chart error 70"));
    EXPECT_TRUE(charts_->isRunning());
}

TEST_F(OverTcp, FaultsOfTheBackEndEndInOneOutcomeEach) {
    startCharts(SHORT_TIMEOUT_MILLI_SEC);
    inject(Fault::DROP);
    askForHistory();
    EXPECT_TRUE(hears("chart timeout"));
    inject(Fault::BAD_JSON);
    askForHistory();
    EXPECT_TRUE(hears("chart error 7 "));
    inject(Fault::DROP);
    askForHistory();
    inject(Fault::DISCONNECT);
    EXPECT_TRUE(hears("chart error "));
    EXPECT_TRUE(charts_->isRunning());
    ASSERT_TRUE(until([&] { return agent_->getStatus() == KESTRINSTATUS_LOGGED_IN; }));
    askForHistory();
    EXPECT_TRUE(hears("chart history 5"));
    EXPECT_TRUE(log_.empty());
}

TEST_F(OverTcp, AResumedConnectionTellsNoReset) {
    startCharts();
    charts_->addNoticeMessageListener("*", &all_);
    charts_->subscribe("7203", PRICEKIND_LAST, "5");
    ASSERT_TRUE(hears("all update 7203 "));
    inject(Fault::DISCONNECT);
    ASSERT_TRUE(until([&] {
        return backEnd_.counts().resumed == 1 && agent_->getStatus() == KESTRINSTATUS_LOGGED_IN;
    }));
    log_.clear();
    ASSERT_TRUE(hears("all "));
    ASSERT_TRUE(until([&] { return log_.size() > 3; }));
    EXPECT_EQ(std::count(log_.begin(), log_.end(), "all reset 7203"), 0);
}

TEST_F(OverTcp, ASessionThatIsLostTellsAReset) {
    startCharts();
    charts_->addNoticeMessageListener("*", &all_);
    charts_->subscribe("7203", PRICEKIND_LAST, "5");
    charts_->subscribe("7203", PRICEKIND_LAST, "D");
    ASSERT_TRUE(hears("all update 7203 "));
    inject(Fault::FORGET_SESSION);
    inject(Fault::DISCONNECT);
    EXPECT_TRUE(hears("all reset 7203"));
    EXPECT_TRUE(hears("all update 7203 "));
}

TEST_F(OverTcp, NewsIsReadFromTheTop) {
    RefCountedPtr<RemoteNewsService> const news(new RemoteNewsService(agent_));
    news->addNewsListener(&reader_);
    ASSERT_TRUE(news->start(nullptr));
    news->requestDocument(XmlNewsService::TYPE_MASTER_INDEX, "", &reader_, nullptr);
    ASSERT_TRUE(hears("news document index"));
    auto const list = reader_.document->getRootElement()->getFirstSubElementWithName("list");
    ASSERT_TRUE(list);
    EXPECT_EQ(list->getAttribute("title"), ansi("市況"));

    news->requestDocument(XmlNewsService::TYPE_HEADER_LINE, list->getAttribute("id"), &reader_,
                          nullptr);
    ASSERT_TRUE(hears("news document list"));
    auto const headline =
        reader_.document->getRootElement()->getFirstSubElementWithName("headline");
    ASSERT_TRUE(headline);

    news->requestDocument(XmlNewsService::TYPE_DETAIL, headline->getAttribute("id"), &reader_,
                          nullptr);
    ASSERT_TRUE(hears("news document article"));
    auto const title = reader_.document->getRootElement()->getFirstSubElementWithName("title");
    ASSERT_TRUE(title);
    EXPECT_EQ(title->text(), headline->getAttribute("title"));

    ASSERT_TRUE(hears("news headline "));
    EXPECT_EQ(reader_.element->elementName(), "headline");
    EXPECT_EQ(news->getDroppedNoticeCount(), 0U);

    news->requestDocument(XmlNewsService::TYPE_DETAIL, "none", &reader_, nullptr);
    EXPECT_TRUE(hears("news error 70"));
}

TEST_F(OverTcp, TheAgentsStopStopsBoth) {
    startCharts();
    RefCountedPtr<RemoteNewsService> const news(new RemoteNewsService(agent_));
    ASSERT_TRUE(news->start(nullptr));
    inject(Fault::DROP);
    askForHistory();
    agent_->stop();
    EXPECT_TRUE(hears("chart canceled"));
    EXPECT_TRUE(hears("chart stopped null"));
    EXPECT_FALSE(charts_->isRunning());
    ASSERT_TRUE(until([&] { return !news->isRunning(); }));
    EXPECT_TRUE(agent_->getKestrinListeners().empty());
}

TEST_F(OverTcp, AllMayGoInsideACallback) {
    startCharts();
    charts_->addNoticeMessageListener("*", &all_);
    charts_->subscribe("7203", PRICEKIND_LAST, "5");
    askForHistory();
    all_.during = [&] {
        charts_ = nullptr;
        agent_ = nullptr;
    };
    EXPECT_TRUE(until([&] { return charts_.isNull(); }));
    EXPECT_TRUE(until([&] { return backEnd_.counts().connections == 0; }));
}

}  // namespace
}  // namespace tvk
