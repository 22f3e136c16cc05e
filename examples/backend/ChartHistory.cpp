#include "examples/backend/ChartHistory.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace backend {

namespace {

struct Period {
    std::string_view type;
    Minute minutes;
};

constexpr std::array<Period, 4> PERIODS = {
    {{"1", 1}, {"5", 5}, {"60", 60}, {"D", MINUTES_PER_DAY}}};

/// The swing of each octave of noise, in millionths of the base price: each lasts twice as long as the
/// one before and swings by the root of two more, as a random walk does.
constexpr std::array<Price, 18> SWINGS = {400,    566,    800,    1'131,  1'600,   2'263,
                                          3'200,  4'525,  6'400,  9'051,  12'800,  18'102,
                                          25'600, 36'204, 51'200, 72'408, 102'400, 144'815};
constexpr Price MILLION = 1'000'000;
constexpr Price NOISE_RANGE = 1 << 15;

constexpr unsigned int LARGEST_WICK = 3;  // ticks
constexpr unsigned int MOST_UNITS = 50;

// Kinds of noise beside the octaves.
constexpr unsigned int HIGH_WICK = 100;
constexpr unsigned int LOW_WICK = 101;
constexpr unsigned int TRADES = 102;
constexpr unsigned int KINDS = 1000;

/// Spreads the bits of a number over all others.
constexpr std::uint64_t mixed(std::uint64_t bits) {
    bits += 0x9E3779B97F4A7C15U;
    bits = (bits ^ (bits >> 30U)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27U)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31U);
}

Minute beginOf(Minute minute, Minute period) { return minute - minute % period; }

Price shiftOf(PriceKindEnum kind, Price tick) {
    return kind == PRICEKIND_BID ? -tick : kind == PRICEKIND_ASK ? tick : 0;
}

void add(Bar & bar, Bar const & later) {
    bar.high = std::max(bar.high, later.high);
    bar.low = std::min(bar.low, later.low);
    bar.close = later.close;
    bar.volume += later.volume;
}

}  // namespace

/// What a symbol did before quotes were recorded: noise of all lengths from a minute to months, in
/// whole numbers, so that it is the same on every machine. Minutes are best asked for in order.
class ChartHistory::Past {
public:
    Past(std::uint64_t seed, std::size_t symbol) : seed_(seed), symbol_(symbol) {
        places_.fill(-1);
    }

    Bar bar(Minute minute) {
        Symbol const & traded = SYMBOLS[symbol_];
        Price const open = price(minute);
        Price const close = price(minute + 1);
        auto const trades = static_cast<long long>(1 + noise(TRADES, minute) % MOST_UNITS);
        return {minute,
                open,
                std::max(open, close) + wick(HIGH_WICK, minute),
                std::min(open, close) - wick(LOW_WICK, minute),
                close,
                trades * traded.unit};
    }

private:
    Price price(Minute minute) {
        Price swing = 0;
        for (unsigned int octave = 0; octave < SWINGS.size(); ++octave) {
            Minute const length = Minute{1} << octave;
            Minute const within = minute % length;
            moveTo(octave, minute / length);
            swing += SWINGS[octave] *
                     ((from_[octave] * (length - within) + to_[octave] * within) / length);
        }
        Symbol const & traded = SYMBOLS[symbol_];
        Price const exact = traded.base + traded.base * (swing / NOISE_RANGE) / MILLION;
        return exact - exact % traded.tick;
    }

    void moveTo(unsigned int octave, Minute place) {
        if (places_[octave] != place) {
            places_[octave] = place;
            from_[octave] = level(octave, place);
            to_[octave] = level(octave, place + 1);
        }
    }

    Price level(unsigned int octave, Minute place) const {
        return static_cast<Price>(noise(octave, place) % (2 * NOISE_RANGE)) - NOISE_RANGE;
    }

    Price wick(unsigned int kind, Minute minute) const {
        return static_cast<Price>(noise(kind, minute) % LARGEST_WICK) * SYMBOLS[symbol_].tick;
    }

    std::uint64_t noise(unsigned int kind, Minute place) const {
        return mixed(mixed(seed_ + symbol_ * KINDS + kind) ^ static_cast<std::uint64_t>(place));
    }

    std::uint64_t const seed_;
    std::size_t const symbol_;
    std::array<Minute, SWINGS.size()> places_{};
    std::array<Price, SWINGS.size()> from_{};  // the levels at both ends of the place
    std::array<Price, SWINGS.size()> to_{};
};

std::vector<std::string_view> periodTypes() {
    std::vector<std::string_view> types;
    std::transform(PERIODS.begin(), PERIODS.end(), std::back_inserter(types),
                   [](Period const & period) { return period.type; });
    return types;
}

std::optional<Minute> periodOf(std::string_view periodType) {
    auto const found =
        std::find_if(PERIODS.begin(), PERIODS.end(),
                     [periodType](Period const & period) { return period.type == periodType; });
    return found == PERIODS.end() ? std::nullopt : std::optional<Minute>(found->minutes);
}

void ChartHistory::record(std::size_t symbol, Minute now, Quote const & quote) {
    Recorded & recorded = recorded_[symbol];
    Bar const tick{now, quote.last, quote.last, quote.last, quote.last, quote.tradedQuantity};
    auto const [place, isFirst] = recorded.try_emplace(now, tick);
    if (!isFirst) {
        add(place->second, tick);
    } else if (place != recorded.begin()) {
        // A bar begins where the one before has ended.
        Bar bar = tick;
        bar.open = std::prev(place)->second.close;
        bar.high = std::max(bar.high, bar.open);
        bar.low = std::min(bar.low, bar.open);
        place->second = bar;
    }
    recorded.erase(recorded.begin(), recorded.lower_bound(now - REMEMBERED));
}

ChartHistory::Past ChartHistory::past(std::size_t symbol) const { return {seed_, symbol}; }

Bar ChartHistory::current(Chart const & chart, Minute now) const {
    Past before = past(chart.symbol);
    return merged(before, chart, beginOf(now, chart.period), now);
}

std::vector<Bar> ChartHistory::last(Chart const & chart, std::size_t count, Minute now) const {
    auto const bars = static_cast<Minute>(std::min(count, MAXIMUM_BARS));
    Minute const end = beginOf(now, chart.period);
    return barsFrom(end - (bars - 1) * chart.period, end, chart, now);
}

std::vector<Bar> ChartHistory::between(Chart const & chart, Minute from, Minute to,
                                       Minute now) const {
    Minute const end = beginOf(std::min(to + MINUTES_PER_DAY - 1, now), chart.period);
    Minute const earliest = end - static_cast<Minute>(MAXIMUM_BARS - 1) * chart.period;
    return barsFrom(std::max(from, earliest), end, chart, now);
}

/// Nothing is older than 1970.
std::vector<Bar> ChartHistory::barsFrom(Minute first, Minute end, Chart const & chart,
                                        Minute now) const {
    Past before = past(chart.symbol);
    std::vector<Bar> bars;
    for (Minute minute = std::max(first, Minute{0}); minute <= end; minute += chart.period) {
        bars.push_back(merged(before, chart, minute, now));
    }
    return bars;
}

Opening ChartHistory::opening(std::size_t symbol, Minute now) const {
    Past before = past(symbol);
    Minute const today = beginOf(now, MINUTES_PER_DAY);
    Bar const day = merged(before, {symbol, PRICEKIND_LAST, MINUTES_PER_DAY}, today, now);
    return {minuteBar(before, symbol, today - 1).close, day.close, day.high, day.low, day.volume};
}

Bar ChartHistory::merged(Past & past, Chart const & chart, Minute first, Minute now) const {
    Bar bar = minuteBar(past, chart.symbol, first);
    Minute const end = std::min(first + chart.period - 1, now);
    for (Minute minute = first + 1; minute <= end; ++minute) {
        add(bar, minuteBar(past, chart.symbol, minute));
    }
    Price const shift = shiftOf(chart.kind, SYMBOLS[chart.symbol].tick);
    for (Price * const price : {&bar.open, &bar.high, &bar.low, &bar.close}) {
        *price += shift;
    }
    return bar;
}

Bar ChartHistory::minuteBar(Past & past, std::size_t symbol, Minute minute) const {
    auto const recorded = recorded_.find(symbol);
    if (recorded == recorded_.end() || minute < recorded->second.begin()->first) {
        return past.bar(minute);
    }
    Bar const & bar = std::prev(recorded->second.upper_bound(minute))->second;
    if (bar.minute == minute) {
        return bar;
    }
    return {minute, bar.close, bar.close, bar.close, bar.close, 0};
}

}  // namespace backend
