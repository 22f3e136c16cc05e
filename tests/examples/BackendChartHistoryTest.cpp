#include "examples/backend/ChartHistory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace tvk::test {

using namespace backend;

namespace {

constexpr std::size_t SYMBOL = 9;
constexpr Minute DAY = MINUTES_PER_DAY;

Minute const NOW = *minuteOfDate("20261120") + 10 * 60 + 17;

Quote tradeAt(Price price, long long quantity) {
    Quote quote;
    quote.last = price;
    quote.tradedQuantity = quantity;
    return quote;
}

Chart chartOf(Minute period, PriceKindEnum kind = PRICEKIND_LAST) { return {SYMBOL, kind, period}; }

/// One bar of many.
Bar merged(std::vector<Bar> const & bars) {
    Bar bar = bars.front();
    for (Bar const & other : bars) {
        bar.high = std::max(bar.high, other.high);
        bar.low = std::min(bar.low, other.low);
        bar.close = other.close;
    }
    bar.volume = 0;
    for (Bar const & other : bars) {
        bar.volume += other.volume;
    }
    return bar;
}

}  // namespace

TEST(BackendChartHistory, KnowsItsPeriods) {
    EXPECT_EQ(periodTypes(), (std::vector<std::string_view>{"1", "5", "60", "D"}));
    EXPECT_EQ(periodOf("1"), 1);
    EXPECT_EQ(periodOf("5"), 5);
    EXPECT_EQ(periodOf("60"), 60);
    EXPECT_EQ(periodOf("D"), DAY);
    EXPECT_FALSE(periodOf(""));
    EXPECT_FALSE(periodOf("d"));
    EXPECT_FALSE(periodOf("15"));
}

TEST(BackendChartHistory, GivesTheSamePastForTheSameSeed) {
    ChartHistory const one(5);
    ChartHistory const same(5);
    ChartHistory const other(6);
    for (Minute const period : {Minute{1}, Minute{60}, DAY}) {
        EXPECT_EQ(one.last(chartOf(period), 50, NOW), same.last(chartOf(period), 50, NOW));
        EXPECT_NE(one.last(chartOf(period), 50, NOW), other.last(chartOf(period), 50, NOW));
    }
    // Whenever it is asked, and in whatever order.
    Minute const day = *minuteOfDate("20200401");
    EXPECT_EQ(one.between(chartOf(DAY), day, day, NOW),
              one.between(chartOf(DAY), day, day, NOW + 12 * DAY));
}

TEST(BackendChartHistory, MakesSoundBars) {
    ChartHistory const charts(5);
    for (std::size_t symbol = 0; symbol < SYMBOL_COUNT; ++symbol) {
        Price const tick = SYMBOLS[symbol].tick;
        auto const bars = charts.last({symbol, PRICEKIND_LAST, 1}, 1'000, NOW);
        ASSERT_EQ(bars.size(), 1'000U);
        for (std::size_t at = 0; at < bars.size(); ++at) {
            Bar const & bar = bars[at];
            ASSERT_EQ(bar.minute, NOW - 999 + static_cast<Minute>(at));
            ASSERT_GT(bar.low, 0);
            ASSERT_LE(bar.low, std::min(bar.open, bar.close));
            ASSERT_GE(bar.high, std::max(bar.open, bar.close));
            ASSERT_GT(bar.volume, 0);
            for (Price const price : {bar.open, bar.high, bar.low, bar.close}) {
                ASSERT_EQ(price % tick, 0);
            }
            if (at > 0) {
                ASSERT_EQ(bar.open, bars[at - 1].close);
            }
        }
    }
}

TEST(BackendChartHistory, WandersAroundItsBaseForYears) {
    ChartHistory const charts(5);
    Price lowest = SYMBOLS[SYMBOL].base;
    Price highest = lowest;
    for (Minute day = *minuteOfDate("20100101"); day < NOW; day += 30 * DAY) {
        Bar const bar = charts.between(chartOf(DAY), day, day, NOW).front();
        lowest = std::min(lowest, bar.low);
        highest = std::max(highest, bar.high);
    }
    Price const base = SYMBOLS[SYMBOL].base;
    EXPECT_GT(lowest, base / 3);
    EXPECT_LT(highest, base * 5 / 3);
    EXPECT_GT(highest - lowest, base / 20);
}

TEST(BackendChartHistory, MakesLongBarsOfThoseOfAMinute) {
    ChartHistory const charts(5);
    auto const minutes = charts.last(chartOf(1), 1'000, NOW);
    for (Minute const period : {Minute{5}, Minute{60}}) {
        auto const bars = charts.last(chartOf(period), 10, NOW);
        ASSERT_EQ(bars.size(), 10U);
        for (Bar const & bar : bars) {
            EXPECT_EQ(bar.minute % period, 0);
            std::vector<Bar> within;
            std::copy_if(minutes.begin(), minutes.end(), std::back_inserter(within),
                         [&](Bar const & minute) {
                             return minute.minute >= bar.minute &&
                                    minute.minute < bar.minute + period;
                         });
            EXPECT_EQ(bar, merged(within));
        }
    }
}

TEST(BackendChartHistory, EndsWithTheBarThatIsNotFull) {
    ChartHistory const charts(5);
    Bar const hour = charts.last(chartOf(60), 1, NOW).front();
    EXPECT_EQ(hour.minute, NOW - 17);
    EXPECT_EQ(hour, merged(charts.last(chartOf(1), 18, NOW)));
    EXPECT_EQ(hour, charts.current(chartOf(60), NOW));
}

TEST(BackendChartHistory, ShiftsBidAndAskByATick) {
    ChartHistory const charts(5);
    Price const tick = SYMBOLS[SYMBOL].tick;
    Bar const last = charts.current(chartOf(60), NOW);
    Bar const bid = charts.current(chartOf(60, PRICEKIND_BID), NOW);
    Bar const ask = charts.current(chartOf(60, PRICEKIND_ASK), NOW);
    EXPECT_EQ(charts.current(chartOf(60, PRICEKIND_MID), NOW), last);
    EXPECT_EQ(bid.open, last.open - tick);
    EXPECT_EQ(bid.high, last.high - tick);
    EXPECT_EQ(ask.low, last.low + tick);
    EXPECT_EQ(ask.close, last.close + tick);
    EXPECT_EQ(ask.volume, last.volume);
}

TEST(BackendChartHistory, GivesTheBarsOfTheDaysBetween) {
    ChartHistory const charts(5);
    Minute const first = *minuteOfDate("20261101");
    Minute const last = *minuteOfDate("20261103");
    auto const hours = charts.between(chartOf(60), first, last, NOW);
    ASSERT_EQ(hours.size(), 72U);
    EXPECT_EQ(hours.front().minute, first);
    EXPECT_EQ(hours.back().minute, last + 23 * 60);
    auto const days = charts.between(chartOf(DAY), first, last, NOW);
    ASSERT_EQ(days.size(), 3U);
    EXPECT_EQ(days.back().minute, last);
    EXPECT_TRUE(charts.between(chartOf(60), last, first, NOW).empty());
    EXPECT_TRUE(charts.between(chartOf(60), NOW + DAY, NOW + 2 * DAY, NOW).empty());
    // Of the day that has begun, what there is.
    EXPECT_EQ(charts.between(chartOf(60), NOW - NOW % DAY, NOW, NOW).size(), 11U);
}

TEST(BackendChartHistory, BoundsAnAnswer) {
    ChartHistory const charts(5);
    std::size_t const most = ChartHistory::MAXIMUM_BARS;
    EXPECT_EQ(charts.last(chartOf(1), most + 1, NOW).size(), most);
    auto const bars = charts.between(chartOf(1), *minuteOfDate("19700101"), NOW, NOW);
    ASSERT_EQ(bars.size(), most);
    EXPECT_EQ(bars.back().minute, NOW);
    EXPECT_TRUE(charts.last(chartOf(1), 0, NOW).empty());
    EXPECT_EQ(charts.last(chartOf(DAY), most, 3 * DAY).size(), 4U) << "nothing before 1970";
}

TEST(BackendChartHistory, RecordsQuotes) {
    ChartHistory charts(5);
    Bar const before = charts.current(chartOf(1), NOW - 1);
    charts.record(SYMBOL, NOW, tradeAt(1'000, 10));
    charts.record(SYMBOL, NOW, tradeAt(1'200, 20));
    charts.record(SYMBOL, NOW, tradeAt(900, 30));
    charts.record(SYMBOL, NOW, tradeAt(1'100, 40));
    EXPECT_EQ(charts.current(chartOf(1), NOW), (Bar{NOW, 1'000, 1'200, 900, 1'100, 100}));
    EXPECT_EQ(charts.current(chartOf(1), NOW - 1), before) << "the past stays";
    // A bar begins where the one before has ended, also when nothing was traded in between.
    charts.record(SYMBOL, NOW + 3, tradeAt(1'300, 5));
    EXPECT_EQ(charts.last(chartOf(1), 3, NOW + 3),
              (std::vector<Bar>{{NOW + 1, 1'100, 1'100, 1'100, 1'100, 0},
                                {NOW + 2, 1'100, 1'100, 1'100, 1'100, 0},
                                {NOW + 3, 1'100, 1'300, 1'100, 1'300, 5}}));
    Bar const hour = charts.current(chartOf(60), NOW + 3);
    EXPECT_EQ(hour.close, 1'300);
    EXPECT_EQ(hour.low, 900);
}

TEST(BackendChartHistory, LetsGoOfWhatIsLongPast) {
    ChartHistory charts(5);
    Bar const past = charts.current(chartOf(1), NOW);
    charts.record(SYMBOL, NOW, tradeAt(1'000, 10));
    charts.record(SYMBOL, NOW + ChartHistory::REMEMBERED, tradeAt(1'000, 10));
    EXPECT_NE(charts.current(chartOf(1), NOW), past);
    charts.record(SYMBOL, NOW + ChartHistory::REMEMBERED + 1, tradeAt(1'000, 10));
    EXPECT_EQ(charts.current(chartOf(1), NOW), past);
}

TEST(BackendChartHistory, TellsWhereAWalkBegins) {
    ChartHistory const charts(5);
    Opening const opening = charts.opening(SYMBOL, NOW);
    Bar const day = charts.current(chartOf(DAY), NOW);
    EXPECT_EQ(opening.last, day.close);
    EXPECT_EQ(opening.high, day.high);
    EXPECT_EQ(opening.low, day.low);
    EXPECT_EQ(opening.volume, day.volume);
    EXPECT_EQ(opening.previousClose, day.open);
}

}  // namespace tvk::test
