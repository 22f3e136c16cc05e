// The desk without its window, in a session with a back end.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "examples/backend/Backend.h"
#include "examples/desk/Connection.h"
#include "examples/desk/feed/DeskSession.h"

namespace {

using namespace desk;

backend::Backend::Options backEndOptions() {
    backend::Backend::Options options;
    options.quoteMilliSec = 20;
    options.headlineMilliSec = 100;
    return options;
}

class DeskSessionTest : public testing::Test {
protected:
    DeskSessionTest() : backEnd(backEndOptions()) {
        std::string problem;
        EXPECT_TRUE(backEnd.start(&problem)) << problem;
        Options options;
        options.host = "127.0.0.1";
        options.port = backEnd.port();
        options.isPlain = true;
        connection = std::make_unique<Connection>(options, [] {});
        EXPECT_TRUE(connection->isSound(&problem)) << problem;
        session = std::make_unique<DeskSession>(models);
        session->start();
    }
    ~DeskSessionTest() override {
        session->stop();
        EXPECT_TRUE(comesTrue([this] { return session->isStopped(); }));
    }

    /// Lets the session go on until the condition holds; false where it does not in good time.
    bool comesTrue(std::function<bool()> const & condition) {
        using Clock = std::chrono::steady_clock;
        auto const end = Clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (Clock::now() > end) {
                return false;
            }
            constexpr std::size_t CALLBACKS = 100;
            if (!connection->poll(CALLBACKS)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            }
        }
        return true;
    }

    void logIn() {
        session->logIn("hanako", "secret");
        ASSERT_TRUE(comesTrue([this] {
            return !models.chart.candles().empty() && models.chart.isLive() &&
                   !models.news.articleBody().empty() && isQuoted("7203");
        }));
    }

    bool isQuoted(char const * code) const {
        int const row = models.board.rowOf(code);
        return row >= 0 && !models.board.text(row, QuoteBoardModel::LAST).empty();
    }

    bool isRealTime() const {
        return models.status.connectionText().find("リアルタイム配信中") == 0;
    }

    backend::Backend backEnd;
    std::unique_ptr<Connection> connection;
    Models models;
    std::unique_ptr<DeskSession> session;
};

TEST_F(DeskSessionTest, BringsTheWholeDeskToLife) {
    logIn();
    EXPECT_FALSE(models.login.isWanted());
    EXPECT_EQ(models.board.rowCount(), 12);
    EXPECT_EQ(models.status.loginText(), "利用者 hanako");
    EXPECT_TRUE(comesTrue([this] { return isRealTime(); }));
    EXPECT_FALSE(models.chart.periods().empty());
    EXPECT_GT(models.news.rowCount(), 0);
    EXPECT_TRUE(models.alerts.isEmpty());

    session->refreshStatus();
    EXPECT_NE(models.status.serverTimeText(), "--:--:--");
    std::string const before =
        models.board.text(models.board.rowOf("7203"), QuoteBoardModel::VOLUME);
    EXPECT_TRUE(comesTrue([&] {
        return models.board.text(models.board.rowOf("7203"), QuoteBoardModel::VOLUME) != before;
    }));
}

TEST_F(DeskSessionTest, AsksAgainWhereTheLoginIsRefused) {
    session->logIn("hanako", "wrong");
    ASSERT_TRUE(comesTrue([this] { return models.login.isWanted(); }));
    EXPECT_FALSE(models.login.isUnderWay());
    EXPECT_FALSE(models.login.text().empty());
    logIn();
    EXPECT_FALSE(models.login.isWanted());
}

TEST_F(DeskSessionTest, PlacesAnOrder) {
    logIn();
    session->orders().place({"7203", Side::BUY, "100", true, ""});
    EXPECT_TRUE(models.ticket.isUnderWay());
    ASSERT_TRUE(comesTrue([this] {
        return models.orders.rowCount() == 1 && !models.ticket.isUnderWay() &&
               models.orders.text(0, OrderListModel::STATUS) == "約定";
    }));
    EXPECT_EQ(models.orders.text(0, OrderListModel::FILLED), "100");
    EXPECT_EQ(models.orders.text(0, OrderListModel::SIDE), "買");
}

TEST_F(DeskSessionTest, CancelsAnOrder) {
    logIn();
    session->orders().place({"7203", Side::BUY, "100", false, "1000"});
    ASSERT_TRUE(
        comesTrue([this] { return models.orders.rowCount() == 1 && !models.ticket.isUnderWay(); }));
    ASSERT_TRUE(models.orders.isOpen(0));
    session->orders().cancel(models.orders.id(0));
    EXPECT_TRUE(comesTrue([this] { return !models.orders.isOpen(0); }));
    EXPECT_EQ(models.orders.text(0, OrderListModel::STATUS), "取消済");
}

TEST_F(DeskSessionTest, SendsNoOrderThatIsAtFault) {
    logIn();
    auto const before = backEnd.counts().requests;
    session->orders().place({"7203", Side::BUY, "7", true, ""});
    EXPECT_FALSE(models.ticket.isUnderWay());
    EXPECT_EQ(models.ticket.fieldAtFault(), OrderTicketModel::QUANTITY);
    EXPECT_EQ(backEnd.counts().requests, before);
}

TEST_F(DeskSessionTest, TurnsToAnotherChart) {
    logIn();
    session->showChart("9407", "D");
    EXPECT_TRUE(models.chart.candles().empty());
    ASSERT_TRUE(comesTrue([this] { return models.chart.candles().size() > 1; }));
    EXPECT_NE(models.chart.title().find("日足"), std::string::npos);
    EXPECT_TRUE(comesTrue([this] { return models.chart.isLive(); }));
}

TEST_F(DeskSessionTest, ReadsNews) {
    logIn();
    int const rows = models.news.rowCount();
    EXPECT_TRUE(comesTrue([&] { return models.news.rowCount() > rows; })) << "headlines come";
    std::string const id = models.news.headline(0).id;
    unsigned int const before = models.news.articleRevision();
    session->news().read(id);
    EXPECT_TRUE(comesTrue([&] { return models.news.articleRevision() != before; }));
    EXPECT_GE(models.news.rowBeingRead(), 0);
    EXPECT_NE(models.news.articleTitle(), "");
}

TEST_F(DeskSessionTest, ShowsAnErrorOnceUntilItIsDismissed) {
    logIn();
    session->orders().cancel("X1");
    ASSERT_TRUE(comesTrue([this] { return !models.alerts.isEmpty(); }));
    auto const replies = backEnd.counts().replies;
    session->orders().cancel("X1");
    ASSERT_TRUE(comesTrue([&] { return backEnd.counts().replies > replies; }));
    session->orders().place({"7203", Side::BUY, "100", true, ""});
    ASSERT_TRUE(comesTrue([this] { return models.orders.rowCount() == 1; }))
        << "the reply to the cancellation is there too by now";
    EXPECT_EQ(models.alerts.count(), 1U);

    models.alerts.dismiss();
    session->orders().cancel("X1");
    EXPECT_TRUE(comesTrue([this] { return !models.alerts.isEmpty(); }));
}

TEST_F(DeskSessionTest, ComesBackWhenTheConnectionIsLost) {
    logIn();
    ASSERT_TRUE(comesTrue([this] { return isRealTime(); }));
    backend::Fault fault;
    fault.kind = backend::Fault::DISCONNECT;
    backEnd.inject(fault);
    ASSERT_TRUE(comesTrue([this] { return models.status.connectionText().find("再接続中") == 0; }));
    EXPECT_EQ(models.alerts.count(), 1U);
    ASSERT_TRUE(comesTrue([this] {
        return models.status.connectionText().find("再接続中") != 0 &&
               models.status.loginText() == "利用者 hanako";
    }));
    std::string const before =
        models.board.text(models.board.rowOf("7203"), QuoteBoardModel::VOLUME);
    EXPECT_TRUE(comesTrue([&] {
        return models.board.text(models.board.rowOf("7203"), QuoteBoardModel::VOLUME) != before;
    })) << "quotes go on";
}

TEST_F(DeskSessionTest, AsksForANewLoginWhereTheOldOneExpired) {
    logIn();
    backend::Fault fault;
    fault.kind = backend::Fault::EXPIRE_LOGIN;
    backEnd.inject(fault);
    session->orders().cancel("X1");
    ASSERT_TRUE(comesTrue([this] { return models.login.isWanted(); }));
    EXPECT_FALSE(models.login.text().empty());
    session->logIn("hanako", "secret");
    EXPECT_TRUE(comesTrue([this] { return !models.login.isWanted(); }));
}

}  // namespace
