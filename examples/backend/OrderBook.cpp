#include "examples/backend/OrderBook.h"

#include <algorithm>
#include <utility>

namespace backend {

namespace {

Side otherThan(Side side) { return side == Side::BUY ? Side::SELL : Side::BUY; }

/// Whether one price is better for who sells to, or buys from, that side.
bool isBetter(Side forSide, Price price, Price than) {
    return forSide == Side::BUY ? price < than : price > than;
}

bool accepts(Order const & order, Price price) {
    return order.price == 0 || price == order.price || isBetter(order.side, price, order.price);
}

/// Whether `order` trades before `other`, which is on the same side and was there first.
bool goesBefore(Order const & order, Order const & other) {
    if (order.price == 0 || other.price == 0) {
        return order.price == 0 && other.price != 0;
    }
    return isBetter(otherThan(order.side), order.price, other.price);
}

Fill fill(Order & order, long long quantity, Price price) {
    order.filled += quantity;
    return {order, quantity, price};
}

}  // namespace

std::vector<Fill> OrderBook::place(Order order) {
    std::vector<Fill> fills;
    while (order.left() > 0 && tradeOnce(order, fills)) {
    }
    if (order.left() > 0) {
        rest(std::move(order));
    }
    return fills;
}

std::optional<Order> OrderBook::cancel(std::string const & id) {
    for (Side const side : {Side::BUY, Side::SELL}) {
        std::vector<Order> & orders = ordersOf(side);
        auto const found = std::find_if(orders.begin(), orders.end(),
                                        [&id](Order const & order) { return order.id == id; });
        if (found != orders.end()) {
            Order order = std::move(*found);
            orders.erase(found);
            return order;
        }
    }
    return std::nullopt;
}

std::vector<Fill> OrderBook::quote(Quote const & quote) {
    bid_ = {quote.bid, quote.bidQuantity};
    ask_ = {quote.ask, quote.askQuantity};
    std::vector<Fill> fills;
    tradeWithMarket(Side::BUY, fills);
    tradeWithMarket(Side::SELL, fills);
    return fills;
}

/// With the best that the other side has, if `order` accepts that.
bool OrderBook::tradeOnce(Order & order, std::vector<Fill> & fills) {
    Side const other = otherThan(order.side);
    std::vector<Order> & resting = ordersOf(other);
    Offer & offer = offerTo(order.side);
    bool const hasOffer = offer.quantity > 0;
    bool const hasClient = !resting.empty();
    bool const toClient = hasClient && !(hasOffer && isBetter(order.side, offer.price,
                                                              priceOfResting(resting.front())));
    if (toClient) {
        Order & first = resting.front();
        Price const price = priceOfResting(first);
        if (!accepts(order, price)) {
            return false;
        }
        long long const quantity = std::min(order.left(), first.left());
        fills.push_back(fill(first, quantity, price));
        fills.push_back(fill(order, quantity, price));
        if (first.left() == 0) {
            resting.erase(resting.begin());
        }
        return true;
    }
    if (!hasOffer || !accepts(order, offer.price)) {
        return false;
    }
    long long const quantity = std::min(order.left(), offer.quantity);
    offer.quantity -= quantity;
    fills.push_back(fill(order, quantity, offer.price));
    return true;
}

Price OrderBook::priceOfResting(Order const & order) const {
    if (order.price != 0) {
        return order.price;
    }
    return order.side == Side::BUY ? ask_.price : bid_.price;
}

void OrderBook::tradeWithMarket(Side side, std::vector<Fill> & fills) {
    std::vector<Order> & orders = ordersOf(side);
    Offer & offer = offerTo(side);
    while (!orders.empty() && offer.quantity > 0 && accepts(orders.front(), offer.price)) {
        Order & first = orders.front();
        long long const quantity = std::min(first.left(), offer.quantity);
        offer.quantity -= quantity;
        fills.push_back(fill(first, quantity, priceOfResting(first)));
        if (first.left() == 0) {
            orders.erase(orders.begin());
        }
    }
}

void OrderBook::rest(Order order) {
    std::vector<Order> & orders = ordersOf(order.side);
    auto const place = std::find_if(orders.begin(), orders.end(), [&order](Order const & other) {
        return goesBefore(order, other);
    });
    orders.insert(place, std::move(order));
}

}  // namespace backend
