#pragma once

#include <cstddef>
#include <random>
#include <vector>

#include "examples/backend/Price.h"
#include "examples/backend/Symbols.h"

namespace backend {

/// What the market says of a symbol.
struct Quote {
    Price last = 0;
    Price bid = 0;
    Price ask = 0;
    Price high = 0;
    Price low = 0;
    Price change = 0;              ///< of the last price against the previous close
    long long volume = 0;          ///< of the day
    long long bidQuantity = 0;     ///< what the market buys at its bid, and
    long long askQuantity = 0;     ///< sells at its ask, until the next quote
    long long tradedQuantity = 0;  ///< by this quote alone
};

/// Where a symbol stands when its walk begins.
struct Opening {
    Price previousClose = 0;
    Price last = 0;
    Price high = 0;
    Price low = 0;
    long long volume = 0;
};

/// The prices of all symbols as random walks: the same seed and openings give the same walks everywhere.
///
/// Prices are multiples of the tick, bid < ask, low <= last <= high, and nothing leaves the band of
/// LIMIT_PERCENT around the previous close.
class Quotes {
public:
    static constexpr int LIMIT_PERCENT = 30;

    /// `openings` are those of SYMBOLS, in that order.
    Quotes(unsigned int seed, std::vector<Opening> openings);

    Quote const & of(std::size_t symbol) const { return quotes_[symbol]; }
    /// Moves about half of the symbols, and returns which.
    std::vector<std::size_t> step();
    /// The last prices become the previous close, and high, low and volume begin anew.
    void beginDay();

private:
    unsigned int pick(unsigned int choices);
    void move(std::size_t symbol);
    void tell(std::size_t symbol, Price bid, Price ask, bool atBid);

    std::mt19937 random_;
    std::vector<Opening> openings_;
    std::vector<Quote> quotes_;
};

}  // namespace backend
