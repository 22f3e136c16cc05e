#pragma once

#include <optional>
#include <string>
#include <vector>

#include "examples/backend/Quotes.h"

namespace backend {

enum class Side { BUY, SELL };

/// What a client wants of one symbol.
struct Order {
    std::string id;
    std::string owner;
    Side side = Side::BUY;
    Price price = 0;  ///< the limit; 0 for an order at the market
    long long quantity = 0;
    long long filled = 0;

    long long left() const { return quantity - filled; }
};

/// A trade, as one of its orders sees it.
struct Fill {
    Order order;  ///< as it stands behind the trade
    long long quantity = 0;
    Price price = 0;
};

/// The open orders of one symbol. They trade with each other and with the market's quote, which takes
/// what it names and no more until the next quote.
///
/// Priority: orders at the market, then the better limit; among equals whoever came first, and the
///           market's quote last.
/// Price:    that of the order that was there first. An order at the market has none: it trades at the
///           quote, its own side's when another client comes to it.
class OrderBook {
public:
    /// Returns the trades in their order, for both sides of those between clients. What is left stays.
    std::vector<Fill> place(Order order);
    /// The order as it was, if it is there.
    std::optional<Order> cancel(std::string const & id);
    /// The market moves, and takes what crosses it.
    std::vector<Fill> quote(Quote const & quote);

    std::vector<Order> const & open(Side side) const { return side == Side::BUY ? buys_ : sells_; }

private:
    /// What the market offers to one side.
    struct Offer {
        Price price = 0;
        long long quantity = 0;
    };

    std::vector<Order> & ordersOf(Side side) { return side == Side::BUY ? buys_ : sells_; }
    Offer & offerTo(Side side) { return side == Side::BUY ? ask_ : bid_; }
    Price priceOfResting(Order const & order) const;
    bool tradeOnce(Order & order, std::vector<Fill> & fills);
    void tradeWithMarket(Side side, std::vector<Fill> & fills);
    void rest(Order order);

    std::vector<Order> buys_;  // by priority
    std::vector<Order> sells_;
    Offer bid_;
    Offer ask_;
};

}  // namespace backend
