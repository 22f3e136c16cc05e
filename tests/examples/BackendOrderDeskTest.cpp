#include "examples/backend/OrderDesk.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "examples/backend/Names.h"

namespace tvk::test {

using namespace backend;

namespace {

/// Ticks of half a yen, units of 100.
constexpr char CODE[] = "7203";

Quote quoteAt(Price bid, Price ask, long long quantity) {
    Quote quote;
    quote.bid = bid;
    quote.ask = ask;
    quote.bidQuantity = quantity;
    quote.askQuantity = quantity;
    return quote;
}

using Lines = std::vector<std::string>;

Lines shown(std::vector<OrderEvent> const & events) {
    Lines lines;
    for (OrderEvent const & event : events) {
        lines.push_back(event.owner + " " + event.orderId + " " + event.status + " " +
                        std::to_string(event.filled) + "/" + std::to_string(event.left) + "@" +
                        textOf(event.price));
    }
    return lines;
}

class BackendOrderDesk : public testing::Test {
protected:
    OrderOutcome buy(double quantity, double price) {
        return desk_.place({"taro", CODE, "buy", quantity, price});
    }

    std::size_t const symbol_ = *findSymbol(CODE);
    OrderDesk desk_;
};

struct Refusal {
    OrderWish wish;
    int code;
};

}  // namespace

TEST_F(BackendOrderDesk, RefusesWhatMakesNoSense) {
    double const nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<Refusal> const refusals = {
        {{"taro", "0000", "buy", 100, 2540}, REFUSED_SYMBOL},
        {{"taro", "", "buy", 100, 2540}, REFUSED_SYMBOL},
        {{"taro", CODE, "hold", 100, 2540}, REFUSED_SIDE},
        {{"taro", CODE, "", 100, 2540}, REFUSED_SIDE},
        {{"taro", CODE, "buy", 0, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", -100, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", 150, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", 100.5, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", nan, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", 1'000'100, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", 1e300, 2540}, REFUSED_QUANTITY},
        {{"taro", CODE, "buy", 100, 2540.2}, REFUSED_PRICE},
        {{"taro", CODE, "buy", 100, -1}, REFUSED_PRICE},
        {{"taro", CODE, "buy", 100, nan}, REFUSED_PRICE},
        {{"taro", CODE, "buy", 100, 1e300}, REFUSED_PRICE},
    };
    for (Refusal const & refusal : refusals) {
        OrderOutcome const outcome = desk_.place(refusal.wish);
        EXPECT_EQ(outcome.refusal, refusal.code);
        EXPECT_FALSE(outcome.text.empty());
        EXPECT_TRUE(outcome.events.empty());
        EXPECT_EQ(outcome.orderId, "");
    }
    EXPECT_EQ(buy(100, 2540).orderId, "A0001") << "a refusal takes no number";
}

TEST_F(BackendOrderDesk, TellsWhatAnOrderComesTo) {
    desk_.quote(symbol_, quoteAt(25'000, 25'010, 200));
    OrderOutcome const waits = buy(100, 2490);
    EXPECT_EQ(waits.refusal, 0);
    EXPECT_STREQ(waits.status, "accepted");
    EXPECT_EQ(shown(waits.events), Lines{"taro A0001 accepted 0/100@2490"});

    OrderOutcome const partly = buy(300, 2501);
    EXPECT_STREQ(partly.status, "partly");
    EXPECT_EQ(shown(partly.events),
              (Lines{"taro A0002 accepted 0/300@2501", "taro A0002 partly 200/100@2501"}));

    OrderOutcome const sold = desk_.place({"jiro", CODE, "sell", 100, 0});
    EXPECT_STREQ(sold.status, "filled");
    EXPECT_EQ(shown(sold.events),
              (Lines{"jiro A0003 accepted 0/100@0", "taro A0002 filled 300/0@2501",
                     "jiro A0003 filled 100/0@2501"}));

    EXPECT_EQ(shown(desk_.quote(symbol_, quoteAt(24'800, 24'850, 500))),
              Lines{"taro A0001 filled 100/0@2490"});
}

TEST_F(BackendOrderDesk, CancelsForTheOwnerAlone) {
    buy(100, 2490);
    EXPECT_EQ(desk_.cancel("jiro", "A0001").refusal, REFUSED_ORDER_ID);
    OrderOutcome const canceled = desk_.cancel("taro", "A0001");
    EXPECT_EQ(canceled.refusal, 0);
    EXPECT_STREQ(canceled.status, "canceled");
    EXPECT_EQ(shown(canceled.events), Lines{"taro A0001 canceled 0/100@2490"});
    EXPECT_EQ(desk_.cancel("taro", "A0001").refusal, REFUSED_ORDER_ID);
    EXPECT_EQ(desk_.cancel("taro", "").refusal, REFUSED_ORDER_ID);
}

TEST_F(BackendOrderDesk, ForgetsOrdersThatAreFilled) {
    desk_.quote(symbol_, quoteAt(25'000, 25'010, 200));
    EXPECT_STREQ(buy(100, 2501).status, "filled");
    EXPECT_EQ(desk_.cancel("taro", "A0001").refusal, REFUSED_ORDER_ID);
}

TEST_F(BackendOrderDesk, BoundsTheOpenOrdersOfAnOwner) {
    for (std::size_t order = 0; order < OrderDesk::MAXIMUM_OPEN; ++order) {
        ASSERT_EQ(buy(100, 2490).refusal, 0);
    }
    EXPECT_EQ(buy(100, 2490).refusal, REFUSED_TOO_MANY);
    EXPECT_EQ(desk_.place({"jiro", CODE, "buy", 100, 2490}).refusal, 0);
    EXPECT_EQ(desk_.cancel("taro", "A0001").refusal, 0);
    EXPECT_EQ(buy(100, 2490).refusal, 0);
}

}  // namespace tvk::test
