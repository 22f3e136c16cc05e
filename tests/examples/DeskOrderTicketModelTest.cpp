#include "examples/desk/model/OrderTicketModel.h"

#include <gtest/gtest.h>

#include "tests/examples/DeskMessages.h"

namespace {

using desk::Order;
using desk::OrderInput;
using desk::OrderTicketModel;
using desk::Side;
using desk::Tone;
using tvk::test::messageOf;

OrderTicketModel modelWithSymbols() {
    OrderTicketModel model;
    model.setSymbols({{"7203", "みのり自動車", 0.5, 100}, {"5903", "かなえ工具", 1, 10}});
    return model;
}

OrderInput soundInput() { return {"7203", Side::BUY, "300", false, "2,540.5"}; }

TEST(DeskOrderTicketModel, TakesSoundInput) {
    OrderTicketModel const model = modelWithSymbols();
    EXPECT_FALSE(model.problemOf(soundInput()).has_value());
    EXPECT_FALSE(model.problemOf({"5903", Side::SELL, "１０", true, "anything"}).has_value())
        << "at the market the price is not looked at";
}

TEST(DeskOrderTicketModel, NamesTheFieldAtFault) {
    OrderTicketModel const model = modelWithSymbols();
    struct Row {
        char const * name;
        OrderInput input;
        OrderTicketModel::Field field;
        char const * text;
    };
    Row const rows[] = {
        {"no symbol",
         {"", Side::BUY, "100", false, "1"},
         OrderTicketModel::CODE,
         "銘柄を選んでください。"},
        {"unknown symbol",
         {"1", Side::BUY, "100", false, "1"},
         OrderTicketModel::CODE,
         "銘柄を選んでください。"},
        {"no quantity",
         {"7203", Side::BUY, "", false, "1"},
         OrderTicketModel::QUANTITY,
         "数量を正しく入力してください。"},
        {"none at all",
         {"7203", Side::BUY, "0", false, "1"},
         OrderTicketModel::QUANTITY,
         "数量を正しく入力してください。"},
        {"off the unit",
         {"7203", Side::BUY, "150", false, "1"},
         OrderTicketModel::QUANTITY,
         "数量は100株単位で入力してください。"},
        {"no price",
         {"7203", Side::BUY, "100", false, ""},
         OrderTicketModel::PRICE,
         "指値を正しく入力してください。"},
        {"for nothing",
         {"7203", Side::BUY, "100", false, "0"},
         OrderTicketModel::PRICE,
         "指値を正しく入力してください。"},
        {"off the tick",
         {"7203", Side::BUY, "100", false, "2540.3"},
         OrderTicketModel::PRICE,
         "指値は0.5円刻みで入力してください。"},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        auto const problem = model.problemOf(row.input);
        ASSERT_TRUE(problem.has_value());
        EXPECT_EQ(problem->field, row.field);
        EXPECT_EQ(problem->text, row.text);
    }
}

TEST(DeskOrderTicketModel, MakesTheRequest) {
    auto const message = OrderTicketModel::messageOf(OrderTicketModel::orderOf(soundInput()));
    EXPECT_EQ(message->header().getMessageKind(), MSGKIND_REQUEST);
    EXPECT_EQ(message->header().getMessageTypeId(), CString("orderNew"));
    EXPECT_EQ(message->getFieldValue("code")->asString(), CString("7203"));
    EXPECT_EQ(message->getFieldValue("side")->asString(), CString("buy"));
    EXPECT_EQ(message->getFieldValue("quantity")->getFieldType(), FLDTYPE_NUMBER);
    EXPECT_EQ(message->getFieldValue("quantity")->intValue(), 300);
    EXPECT_EQ(message->getFieldValue("price")->doubleValue(), 2540.5);
}

TEST(DeskOrderTicketModel, SendsZeroAsThePriceAtTheMarket) {
    OrderInput input = soundInput();
    input.atMarket = true;
    input.side = Side::SELL;
    auto const message = OrderTicketModel::messageOf(OrderTicketModel::orderOf(input));
    EXPECT_EQ(message->getFieldValue("side")->asString(), CString("sell"));
    EXPECT_EQ(message->getFieldValue("price")->doubleValue(), 0);
}

TEST(DeskOrderTicketModel, IsUnderWayUntilTheAnswer) {
    OrderTicketModel model = modelWithSymbols();
    Order const order = OrderTicketModel::orderOf(soundInput());
    model.sent(order);
    EXPECT_TRUE(model.isUnderWay());
    EXPECT_EQ(model.order().quantity, 300);

    model.takeReply(*messageOf(R"({"orderId":"A0001","status":"accepted"})"));
    EXPECT_FALSE(model.isUnderWay());
    EXPECT_EQ(model.answer(), "注文番号 A0001：受付済");
    EXPECT_EQ(model.answerTone(), Tone::PLAIN);

    model.sent(order);
    model.takeFailure("呼値の単位が正しくありません。");
    EXPECT_FALSE(model.isUnderWay());
    EXPECT_EQ(model.answer(), "呼値の単位が正しくありません。");
    EXPECT_EQ(model.answerTone(), Tone::WARNING);
}

TEST(DeskOrderTicketModel, SaysWhyItRefuses) {
    OrderTicketModel model = modelWithSymbols();
    unsigned int const before = model.revision();
    model.refuse({OrderTicketModel::PRICE, "x"});
    EXPECT_EQ(model.fieldAtFault(), OrderTicketModel::PRICE);
    EXPECT_EQ(model.answer(), "x");
    EXPECT_NE(model.revision(), before);

    model.sent(OrderTicketModel::orderOf(soundInput()));
    EXPECT_EQ(model.fieldAtFault(), OrderTicketModel::NONE);
}

}  // namespace
