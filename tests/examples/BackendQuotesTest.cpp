#include "examples/backend/Quotes.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace tvk::test {

using namespace backend;

namespace {

constexpr int STEPS = 20'000;

std::vector<Opening> openings() {
    std::vector<Opening> openings;
    for (Symbol const & symbol : SYMBOLS) {
        Price const last = symbol.base - symbol.base % symbol.tick;
        openings.push_back({last, last, last + symbol.tick, last - symbol.tick, 1'000});
    }
    return openings;
}

}  // namespace

TEST(BackendSymbols, HaveCodesOfFourDigitsAndAreFoundByThem) {
    std::set<std::string_view> codes;
    for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
        std::string_view const code = SYMBOLS[symbol].code;
        EXPECT_EQ(code.size(), 4U);
        EXPECT_EQ(code.find_first_not_of("0123456789"), std::string_view::npos);
        EXPECT_EQ(findSymbol(code), symbol);
        EXPECT_EQ(SYMBOLS[symbol].base % SYMBOLS[symbol].tick, 0);
        codes.insert(code);
    }
    EXPECT_EQ(codes.size(), SYMBOL_COUNT);
    EXPECT_FALSE(findSymbol(""));
    EXPECT_FALSE(findSymbol("0000"));
    EXPECT_FALSE(findSymbol("72030"));
}

TEST(BackendQuotes, BeginWhereTheyAreTold) {
    Quotes const quotes(1, openings());
    for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
        Opening const opening = openings()[symbol];
        Quote const & quote = quotes.of(symbol);
        EXPECT_EQ(quote.last, opening.last);
        EXPECT_EQ(quote.high, opening.high);
        EXPECT_EQ(quote.low, opening.low);
        EXPECT_EQ(quote.volume, opening.volume);
        EXPECT_EQ(quote.change, 0);
    }
}

TEST(BackendQuotes, WalkTheSameWayFromTheSameSeed) {
    Quotes one(7, openings());
    Quotes same(7, openings());
    Quotes other(8, openings());
    bool differs = false;
    for (int step = 0; step < 100; ++step) {
        EXPECT_EQ(one.step(), same.step());
        other.step();
        for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
            EXPECT_EQ(one.of(symbol).last, same.of(symbol).last);
            differs = differs || one.of(symbol).last != other.of(symbol).last;
        }
    }
    EXPECT_TRUE(differs);
}

TEST(BackendQuotes, KeepWhatTheyPromise) {
    Quotes quotes(3, openings());
    std::size_t moves = 0;
    for (int step = 0; step < STEPS; ++step) {
        std::vector<long long> volumes;
        for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
            volumes.push_back(quotes.of(symbol).volume);
        }
        for (std::size_t const symbol : quotes.step()) {
            ++moves;
            Quote const & quote = quotes.of(symbol);
            Price const tick = SYMBOLS[symbol].tick;
            Price const close = openings()[symbol].previousClose;
            ASSERT_EQ(quote.bid % tick, 0);
            ASSERT_EQ(quote.ask % tick, 0);
            ASSERT_LT(quote.bid, quote.ask);
            ASSERT_LE(quote.ask - quote.bid, 2 * tick);
            ASSERT_TRUE(quote.last == quote.bid || quote.last == quote.ask);
            ASSERT_LE(quote.low, quote.last);
            ASSERT_LE(quote.last, quote.high);
            ASSERT_EQ(quote.change, quote.last - close);
            ASSERT_LE(quote.ask, close + close * Quotes::LIMIT_PERCENT / 100);
            ASSERT_GE(quote.bid, close - close * Quotes::LIMIT_PERCENT / 100);
            ASSERT_EQ(quote.volume, volumes[symbol] + quote.tradedQuantity);
            for (long long const quantity :
                 {quote.bidQuantity, quote.askQuantity, quote.tradedQuantity}) {
                ASSERT_GT(quantity, 0);
                ASSERT_EQ(quantity % SYMBOLS[symbol].unit, 0);
            }
        }
    }
    std::size_t const all = STEPS * SYMBOL_COUNT;
    EXPECT_GT(moves, all / 2 - all / 20);
    EXPECT_LT(moves, all / 2 + all / 20);
}

TEST(BackendQuotes, BeginADayAtTheLastPrice) {
    Quotes quotes(3, openings());
    for (int step = 0; step < 100; ++step) {
        quotes.step();
    }
    quotes.beginDay();
    for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
        Quote const & quote = quotes.of(symbol);
        EXPECT_EQ(quote.high, quote.last);
        EXPECT_EQ(quote.low, quote.last);
        EXPECT_EQ(quote.volume, 0);
        EXPECT_EQ(quote.change, 0);
    }
    Price const close = quotes.of(0).last;
    while (quotes.of(0).last == close) {
        quotes.step();
    }
    EXPECT_EQ(quotes.of(0).change, quotes.of(0).last - close);
}

}  // namespace tvk::test
