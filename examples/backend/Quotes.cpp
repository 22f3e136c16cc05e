#include "examples/backend/Quotes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace backend {

namespace {

/// In ticks. Small moves are likelier.
constexpr std::array<int, 8> MOVES = {-2, -1, -1, 0, 0, 1, 1, 2};
constexpr unsigned int LARGEST_SPREAD = 2;  // ticks
constexpr unsigned int MOST_UNITS = 10;

}  // namespace

Quotes::Quotes(unsigned int seed, std::vector<Opening> openings)
    : random_(seed), openings_(std::move(openings)), quotes_(openings_.size()) {
    for (std::size_t symbol = 0; symbol < quotes_.size(); ++symbol) {
        Opening const & opening = openings_[symbol];
        Quote & quote = quotes_[symbol];
        quote.high = std::max(opening.high, opening.last);
        quote.low = std::min(opening.low, opening.last);
        quote.volume = opening.volume;
        tell(symbol, opening.last, opening.last + SYMBOLS[symbol].tick, true);
        quote.tradedQuantity = 0;
    }
}

std::vector<std::size_t> Quotes::step() {
    std::vector<std::size_t> moved;
    for (std::size_t symbol = 0; symbol < quotes_.size(); ++symbol) {
        if (pick(2) == 0) {
            move(symbol);
            moved.push_back(symbol);
        }
    }
    return moved;
}

void Quotes::beginDay() {
    for (std::size_t symbol = 0; symbol < quotes_.size(); ++symbol) {
        Quote & quote = quotes_[symbol];
        openings_[symbol].previousClose = quote.last;
        quote.high = quote.last;
        quote.low = quote.last;
        quote.change = 0;
        quote.volume = 0;
    }
}

/// 0 to choices - 1. The distributions of the standard library differ from one to the next.
unsigned int Quotes::pick(unsigned int choices) {
    return static_cast<unsigned int>(random_() % choices);
}

void Quotes::move(std::size_t symbol) {
    Price const tick = SYMBOLS[symbol].tick;
    Price const previousClose = openings_[symbol].previousClose;
    Price const reach = previousClose * LIMIT_PERCENT / 100;
    Price const step = MOVES[pick(MOVES.size())] * tick;
    Price const room = LARGEST_SPREAD * tick;
    Price bid = quotes_[symbol].bid + step;
    if (bid < previousClose - reach || bid + room > previousClose + reach) {
        bid -= 2 * step;
    }
    Price const ask = bid + static_cast<Price>(1 + pick(LARGEST_SPREAD)) * tick;
    tell(symbol, bid, ask, pick(2) == 0);
    Quote & quote = quotes_[symbol];
    int const unit = SYMBOLS[symbol].unit;
    quote.tradedQuantity = static_cast<long long>(1 + pick(MOST_UNITS)) * unit;
    quote.volume += quote.tradedQuantity;
}

void Quotes::tell(std::size_t symbol, Price bid, Price ask, bool atBid) {
    Quote & quote = quotes_[symbol];
    int const unit = SYMBOLS[symbol].unit;
    quote.bid = bid;
    quote.ask = ask;
    quote.last = atBid ? bid : ask;
    quote.high = std::max(quote.high, quote.last);
    quote.low = std::min(quote.low, quote.last);
    quote.change = quote.last - openings_[symbol].previousClose;
    quote.bidQuantity = static_cast<long long>(1 + pick(MOST_UNITS)) * unit;
    quote.askQuantity = static_cast<long long>(1 + pick(MOST_UNITS)) * unit;
}

}  // namespace backend
