#include "examples/desk/model/OrderListModel.h"

#include <gtest/gtest.h>

#include "tests/examples/DeskMessages.h"

namespace {

using desk::Order;
using desk::OrderListModel;
using desk::Side;
using desk::Tone;
using tvk::test::messageOf;

class DeskOrderListModel : public testing::Test {
protected:
    DeskOrderListModel() { model.setSymbols({{"7203", "みのり自動車", 0.5, 100}}); }

    void place(char const * id, Order const & placed) {
        model.takeReply(
            placed, *messageOf(R"({"status":"accepted","orderId":")" + std::string(id) + R"("})"));
    }

    Order const order{"7203", Side::BUY, 1000, 2540.5};
    OrderListModel model;
};

TEST_F(DeskOrderListModel, ShowsTheNewestFirst) {
    place("A0001", order);
    place("A0002", {"7203", Side::SELL, 100, 0});
    ASSERT_EQ(model.rowCount(), 2);
    EXPECT_EQ(model.id(0), "A0002");
    EXPECT_EQ(model.text(0, OrderListModel::SIDE), "売");
    EXPECT_EQ(model.text(0, OrderListModel::PRICE), "成行");
    EXPECT_EQ(model.text(1, OrderListModel::ID), "A0001");
    EXPECT_EQ(model.text(1, OrderListModel::CODE), "7203");
    EXPECT_EQ(model.text(1, OrderListModel::SIDE), "買");
    EXPECT_EQ(model.text(1, OrderListModel::QUANTITY), "1,000");
    EXPECT_EQ(model.text(1, OrderListModel::PRICE), "2,540.5");
    EXPECT_EQ(model.text(1, OrderListModel::FILLED), "0");
    EXPECT_EQ(model.text(1, OrderListModel::STATUS), "受付済");
    EXPECT_EQ(model.tone(1, OrderListModel::SIDE), Tone::UP);
}

TEST_F(DeskOrderListModel, FollowsTheNotices) {
    place("A0001", order);
    EXPECT_TRUE(model.isOpen(0));
    struct Row {
        char const * json;
        char const * filled;
        char const * status;
        bool isOpen;
    };
    Row const rows[] = {
        {R"({"orderId":"A0001","status":"partly","filled":300,"left":700,"price":2540})", "300",
         "一部約定", true},
        {R"({"orderId":"A0001","status":"filled","filled":1000,"left":0,"price":2540})", "1,000",
         "約定", false},
        {R"({"orderId":"A0001","status":"canceled","filled":300,"left":0})", "300", "取消済",
         false},
        {R"({"orderId":"A0001","status":"lost"})", "0", "lost", false},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.json);
        unsigned int const before = model.revision();
        model.takeNotice(*messageOf(row.json));
        EXPECT_EQ(model.rowCount(), 1);
        EXPECT_EQ(model.text(0, OrderListModel::FILLED), row.filled);
        EXPECT_EQ(model.text(0, OrderListModel::STATUS), row.status);
        EXPECT_EQ(model.isOpen(0), row.isOpen);
        EXPECT_NE(model.revision(), before);
    }
}

TEST_F(DeskOrderListModel, TakesTheNoticeThatComesBeforeTheReply) {
    model.takeNotice(
        *messageOf(R"({"orderId":"A0001","status":"filled","filled":1000,"left":0,"price":2540})"));
    EXPECT_EQ(model.text(0, OrderListModel::SIDE), "");
    EXPECT_EQ(model.text(0, OrderListModel::QUANTITY), "1,000");

    place("A0001", order);
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.text(0, OrderListModel::SIDE), "買");
    EXPECT_EQ(model.text(0, OrderListModel::STATUS), "約定") << "the notice is the newer one";
}

TEST_F(DeskOrderListModel, ShowsThePriceThatAMarketOrderGot) {
    place("A0001", {"7203", Side::BUY, 100, 0});
    model.takeNotice(
        *messageOf(R"({"orderId":"A0001","status":"filled","filled":100,"left":0,"price":2541})"));
    EXPECT_EQ(model.text(0, OrderListModel::PRICE), "2,541.0");
}

}  // namespace
