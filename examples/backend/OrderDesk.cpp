#include "examples/backend/OrderDesk.h"

#include <cmath>
#include <optional>
#include <utility>

#include "examples/backend/Names.h"
#include "examples/backend/Numbered.h"

namespace backend {

namespace {

constexpr char ACCEPTED[] = "accepted";
constexpr char PARTLY[] = "partly";
constexpr char FILLED[] = "filled";
constexpr char CANCELED[] = "canceled";

OrderOutcome refused(int code, std::string_view text) { return {code, text, {}, {}, ""}; }

OrderEvent eventOf(Order const & order, char const * status, Price price) {
    return {order.owner, order.id, status, order.filled, order.left(), price};
}

std::optional<Side> sideOf(std::string_view text) {
    if (text == "buy") {
        return Side::BUY;
    }
    return text == "sell" ? std::optional<Side>(Side::SELL) : std::nullopt;
}

/// None where it is no positive multiple of the unit, or too much.
std::optional<long long> quantityOf(double wished, int unit) {
    bool const isInRange =
        wished >= 1.0 && wished <= static_cast<double>(OrderDesk::MAXIMUM_QUANTITY);
    if (!isInRange || wished != std::floor(wished)) {
        return std::nullopt;
    }
    auto const quantity = static_cast<long long>(wished);
    return quantity % unit == 0 ? std::optional<long long>(quantity) : std::nullopt;
}

}  // namespace

OrderOutcome OrderDesk::place(OrderWish const & wish) {
    auto const symbol = findSymbol(wish.code);
    if (!symbol) {
        return refused(REFUSED_SYMBOL, "銘柄コードが見つかりません");
    }
    auto const side = sideOf(wish.side);
    if (!side) {
        return refused(REFUSED_SIDE, "売買区分が正しくありません");
    }
    auto const quantity = quantityOf(wish.quantity, SYMBOLS[*symbol].unit);
    if (!quantity) {
        return refused(REFUSED_QUANTITY, "数量が売買単位の倍数ではありません");
    }
    auto const price = priceOf(wish.price);
    if (!price || *price % SYMBOLS[*symbol].tick != 0) {
        return refused(REFUSED_PRICE, "値段が呼値の単位に合いません");
    }
    if (openOf_[wish.owner] >= MAXIMUM_OPEN) {
        return refused(REFUSED_TOO_MANY, "未約定の注文が多すぎます");
    }

    Order const order{numbered('A', ++lastId_), wish.owner, *side, *price, *quantity, 0};
    open_[order.id] = {order.owner, *symbol};
    ++openOf_[order.owner];
    OrderOutcome outcome;
    outcome.orderId = order.id;
    outcome.events.push_back(eventOf(order, ACCEPTED, order.price));
    auto const fills = eventsOf(books_[*symbol].place(order));
    outcome.events.insert(outcome.events.end(), fills.begin(), fills.end());
    for (OrderEvent const & event : outcome.events) {
        if (event.orderId == order.id) {
            outcome.status = event.status;
        }
    }
    return outcome;
}

OrderOutcome OrderDesk::cancel(std::string const & owner, std::string const & orderId) {
    auto const known = open_.find(orderId);
    if (known == open_.end() || known->second.owner != owner) {
        return refused(REFUSED_ORDER_ID, "取り消せる注文が見つかりません");
    }
    auto const order = books_[known->second.symbol].cancel(orderId);
    forget(orderId);
    return {0, {}, {eventOf(*order, CANCELED, order->price)}, orderId, CANCELED};
}

std::vector<OrderEvent> OrderDesk::quote(std::size_t symbol, Quote const & quote) {
    return eventsOf(books_[symbol].quote(quote));
}

std::vector<OrderEvent> OrderDesk::eventsOf(std::vector<Fill> const & fills) {
    std::vector<OrderEvent> events;
    for (Fill const & fill : fills) {
        bool const isDone = fill.order.left() == 0;
        events.push_back(eventOf(fill.order, isDone ? FILLED : PARTLY, fill.price));
        if (isDone) {
            forget(fill.order.id);
        }
    }
    return events;
}

void OrderDesk::forget(std::string const & orderId) {
    auto const known = open_.find(orderId);
    auto const count = openOf_.find(known->second.owner);
    if (--count->second == 0) {
        openOf_.erase(count);
    }
    open_.erase(known);
}

}  // namespace backend
