#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "examples/backend/OrderBook.h"
#include "examples/backend/Symbols.h"

namespace backend {

/// What has become of an order, for its owner.
struct OrderEvent {
    std::string owner;
    std::string orderId;
    char const * status = "";  ///< "accepted", "partly", "filled" or "canceled"
    long long filled = 0;
    long long left = 0;
    Price price = 0;  ///< of the trade; of the order itself where there was none
};

/// What an order, or the wish to cancel one, comes to at once.
struct OrderOutcome {
    int refusal = 0;                 ///< a REFUSED_ code, with its text
    std::string_view text;           ///< UTF-8
    std::vector<OrderEvent> events;  ///< in their order, other clients' included
    std::string orderId;
    char const * status = "";
};

/// What a client asks for, as it came.
struct OrderWish {
    std::string owner;
    std::string_view code;
    std::string_view side;
    double quantity = 0;
    double price = 0;  ///< yen; 0 for the market's
};

/// Takes orders, refuses those that make no sense, and tells their owners what becomes of them.
class OrderDesk {
public:
    static constexpr std::size_t MAXIMUM_OPEN = 1'000;  ///< of one owner
    static constexpr long long MAXIMUM_QUANTITY = 1'000'000;

    OrderOutcome place(OrderWish const & wish);
    OrderOutcome cancel(std::string const & owner, std::string const & orderId);
    std::vector<OrderEvent> quote(std::size_t symbol, Quote const & quote);

private:
    struct Known {
        std::string owner;
        std::size_t symbol = 0;
    };

    std::vector<OrderEvent> eventsOf(std::vector<Fill> const & fills);
    void forget(std::string const & orderId);

    std::array<OrderBook, SYMBOL_COUNT> books_;
    std::map<std::string, Known> open_;
    std::map<std::string, std::size_t> openOf_;  // by owner
    unsigned int lastId_ = 0;
};

}  // namespace backend
