#include "examples/backend/OrderBook.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "examples/backend/Numbered.h"

namespace tvk::test {

using namespace backend;

namespace {

Quote quoteOf(Price bid, long long bidQuantity, Price ask, long long askQuantity) {
    Quote quote;
    quote.bid = bid;
    quote.bidQuantity = bidQuantity;
    quote.ask = ask;
    quote.askQuantity = askQuantity;
    return quote;
}

Order orderOf(std::string const & id, Side side, Price price, long long quantity) {
    return {id, "owner of " + id, side, price, quantity, 0};
}

std::string shown(Order const & order) {
    return order.id + " " + std::to_string(order.left()) + "@" + std::to_string(order.price);
}

/// "id quantity@price, left n" for each.
std::vector<std::string> shown(std::vector<Fill> const & fills) {
    std::vector<std::string> lines;
    for (Fill const & fill : fills) {
        lines.push_back(fill.order.id + " " + std::to_string(fill.quantity) + "@" +
                        std::to_string(fill.price) + " left " + std::to_string(fill.order.left()));
    }
    return lines;
}

std::vector<std::string> shown(std::vector<Order> const & orders) {
    std::vector<std::string> lines;
    for (Order const & order : orders) {
        lines.push_back(shown(order));
    }
    return lines;
}

using Lines = std::vector<std::string>;

/// The same book without any order in it: looks through all of them for each trade.
class PlainBook {
public:
    std::vector<Fill> place(Order order) {
        std::vector<Fill> fills;
        while (order.left() > 0) {
            Order * const best = bestAgainst(order.side);
            long long & offered = order.side == Side::BUY ? askQuantity_ : bidQuantity_;
            Price const offer = order.side == Side::BUY ? ask_ : bid_;
            bool const byOffer =
                offered > 0 &&
                (best == nullptr || (order.side == Side::BUY ? offer < restingPrice(*best)
                                                             : offer > restingPrice(*best)));
            if (best == nullptr && !byOffer) {
                break;
            }
            Price const price = byOffer ? offer : restingPrice(*best);
            if (!accepts(order, price)) {
                break;
            }
            long long const quantity = std::min(order.left(), byOffer ? offered : best->left());
            if (byOffer) {
                offered -= quantity;
            } else {
                best->filled += quantity;
                fills.push_back({*best, quantity, price});
            }
            order.filled += quantity;
            fills.push_back({order, quantity, price});
            sweep();
        }
        if (order.left() > 0) {
            orders_.push_back(order);
        }
        return fills;
    }

    bool cancel(std::string const & id) {
        return std::erase_if(orders_, [&id](Order const & order) { return order.id == id; }) != 0;
    }

    std::vector<Fill> quote(Quote const & quote) {
        bid_ = quote.bid;
        bidQuantity_ = quote.bidQuantity;
        ask_ = quote.ask;
        askQuantity_ = quote.askQuantity;
        std::vector<Fill> fills;
        for (Side const side : {Side::BUY, Side::SELL}) {
            long long & offered = side == Side::BUY ? askQuantity_ : bidQuantity_;
            Price const offer = side == Side::BUY ? ask_ : bid_;
            while (offered > 0) {
                Order * const best = bestAgainst(side == Side::BUY ? Side::SELL : Side::BUY);
                if (best == nullptr || !accepts(*best, offer)) {
                    break;
                }
                long long const quantity = std::min(best->left(), offered);
                offered -= quantity;
                best->filled += quantity;
                fills.push_back({*best, quantity, restingPrice(*best)});
                sweep();
            }
        }
        return fills;
    }

    Lines open(Side side) const {
        std::vector<Order> orders;
        for (Order const & order : orders_) {
            if (order.side == side) {
                orders.push_back(order);
            }
        }
        std::stable_sort(orders.begin(), orders.end(), goesFirst);
        return shown(orders);
    }

private:
    static bool accepts(Order const & order, Price price) {
        return order.price == 0 ||
               (order.side == Side::BUY ? price <= order.price : price >= order.price);
    }

    /// Orders at the market, then by price; the sort keeps the order of arrival.
    static bool goesFirst(Order const & left, Order const & right) {
        if (left.price == 0 || right.price == 0) {
            return left.price == 0 && right.price != 0;
        }
        return left.side == Side::BUY ? left.price > right.price : left.price < right.price;
    }

    Price restingPrice(Order const & order) const {
        return order.price != 0 ? order.price : order.side == Side::BUY ? ask_ : bid_;
    }

    Order * bestAgainst(Side side) {
        Order * best = nullptr;
        for (Order & order : orders_) {
            if (order.side != side && (best == nullptr || goesFirst(order, *best))) {
                best = &order;
            }
        }
        return best;
    }

    void sweep() {
        std::erase_if(orders_, [](Order const & order) { return order.left() == 0; });
    }

    std::vector<Order> orders_;  // as they came
    Price bid_ = 0;
    Price ask_ = 0;
    long long bidQuantity_ = 0;
    long long askQuantity_ = 0;
};

}  // namespace

TEST(BackendOrderBook, TakesWhatTheMarketOffersAndWaitsForMore) {
    OrderBook book;
    book.quote(quoteOf(99, 300, 101, 200));
    EXPECT_EQ(shown(book.place(orderOf("A", Side::BUY, 101, 500))), Lines{"A 200@101 left 300"});
    EXPECT_EQ(shown(book.open(Side::BUY)), Lines{"A 300@101"});
    EXPECT_EQ(shown(book.quote(quoteOf(99, 300, 101, 100))), Lines{"A 100@101 left 200"});
    EXPECT_EQ(shown(book.quote(quoteOf(99, 300, 102, 900))), Lines());
    // The order was there first, so its price counts.
    EXPECT_EQ(shown(book.quote(quoteOf(97, 300, 98, 900))), Lines{"A 200@101 left 0"});
    EXPECT_TRUE(book.open(Side::BUY).empty());
}

TEST(BackendOrderBook, TradesClientsByPriceThenTime) {
    OrderBook book;
    book.quote(quoteOf(90, 100, 120, 100));
    EXPECT_TRUE(book.place(orderOf("A", Side::SELL, 110, 100)).empty());
    EXPECT_TRUE(book.place(orderOf("B", Side::SELL, 105, 100)).empty());
    EXPECT_TRUE(book.place(orderOf("C", Side::SELL, 105, 100)).empty());
    EXPECT_EQ(shown(book.open(Side::SELL)), (Lines{"B 100@105", "C 100@105", "A 100@110"}));
    EXPECT_EQ(
        shown(book.place(orderOf("D", Side::BUY, 107, 150))),
        (Lines{"B 100@105 left 0", "D 100@105 left 50", "C 50@105 left 50", "D 50@105 left 0"}));
    EXPECT_EQ(shown(book.open(Side::SELL)), (Lines{"C 50@105", "A 100@110"}));
}

TEST(BackendOrderBook, GoesToTheMarketWhereThatIsBetterAndToClientsWhereItIsAsGood) {
    OrderBook book;
    book.quote(quoteOf(90, 100, 105, 100));
    book.place(orderOf("A", Side::SELL, 105, 100));
    book.place(orderOf("B", Side::SELL, 106, 100));
    EXPECT_EQ(shown(book.place(orderOf("C", Side::BUY, 106, 300))),
              (Lines{"A 100@105 left 0", "C 100@105 left 200", "C 100@105 left 100",
                     "B 100@106 left 0", "C 100@106 left 0"}));
}

TEST(BackendOrderBook, LetsOrdersAtTheMarketGoFirst) {
    OrderBook book;
    book.quote(quoteOf(99, 100, 101, 0));
    book.place(orderOf("A", Side::BUY, 101, 100));
    book.place(orderOf("B", Side::BUY, 0, 100));
    book.place(orderOf("C", Side::BUY, 0, 100));
    EXPECT_EQ(shown(book.open(Side::BUY)), (Lines{"B 100@0", "C 100@0", "A 100@101"}));
    // Another client who comes to an order without a price pays the market's.
    EXPECT_EQ(
        shown(book.place(orderOf("D", Side::SELL, 100, 150))),
        (Lines{"B 100@101 left 0", "D 100@101 left 50", "C 50@101 left 50", "D 50@101 left 0"}));
    EXPECT_EQ(shown(book.quote(quoteOf(99, 100, 100, 120))),
              (Lines{"C 50@100 left 0", "A 70@101 left 30"}));
}

TEST(BackendOrderBook, GivesBackWhatIsCanceled) {
    OrderBook book;
    book.quote(quoteOf(99, 100, 101, 40));
    book.place(orderOf("A", Side::BUY, 101, 100));
    auto const order = book.cancel("A");
    ASSERT_TRUE(order);
    EXPECT_EQ(order->filled, 40);
    EXPECT_EQ(order->owner, "owner of A");
    EXPECT_FALSE(book.cancel("A"));
    EXPECT_TRUE(book.quote(quoteOf(99, 100, 101, 100)).empty());
}

TEST(BackendOrderBook, AgreesWithTheBookThatLooksThroughAllOrders) {
    std::mt19937 random(11);
    auto const below = [&random](int end) {
        return static_cast<int>(random() % static_cast<unsigned int>(end));
    };
    for (int round = 0; round < 200; ++round) {
        OrderBook book;
        PlainBook plain;
        unsigned int lastId = 0;
        for (int step = 0; step < 100; ++step) {
            int const what = below(10);
            if (what < 6) {
                Order const order =
                    orderOf(numbered('A', ++lastId), below(2) == 0 ? Side::BUY : Side::SELL,
                            below(8) == 0 ? 0 : 95 + below(11), 1 + below(500));
                ASSERT_EQ(shown(book.place(order)), shown(plain.place(order)));
            } else if (what < 8) {
                Price const bid = 95 + below(8);
                Quote const quote =
                    quoteOf(bid, below(3) * 100, bid + 1 + below(2), below(3) * 100);
                ASSERT_EQ(shown(book.quote(quote)), shown(plain.quote(quote)));
            } else {
                std::string const id =
                    numbered('A', 1 + static_cast<unsigned int>(random() % (lastId + 1)));
                ASSERT_EQ(book.cancel(id).has_value(), plain.cancel(id));
            }
            ASSERT_EQ(shown(book.open(Side::BUY)), plain.open(Side::BUY));
            ASSERT_EQ(shown(book.open(Side::SELL)), plain.open(Side::SELL));
        }
    }
}

}  // namespace tvk::test
