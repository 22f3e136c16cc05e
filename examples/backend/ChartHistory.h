#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

#include "examples/backend/MarketTime.h"
#include "examples/backend/Price.h"
#include "examples/backend/Quotes.h"
#include "examples/backend/Symbols.h"
#include "tvk/chart/PriceKindEnum.h"

namespace backend {

/// A candle: what prices did from its first minute on, for as long as its period.
struct Bar {
    Minute minute = 0;
    Price open = 0;
    Price high = 0;
    Price low = 0;
    Price close = 0;
    long long volume = 0;

    bool operator==(Bar const &) const = default;
};

/// What is drawn: a symbol's bars of one kind and one period.
struct Chart {
    std::size_t symbol = 0;
    PriceKindEnum kind = PRICEKIND_LAST;
    Minute period = 1;  ///< its minutes
};

/// The period types, as the wire spells them, from the shortest on.
std::vector<std::string_view> periodTypes();
std::optional<Minute> periodOf(std::string_view periodType);

/// The bars of all symbols. The market never closes, so that there is something to see at any hour.
///
/// The past is a function of seed, symbol and minute: any date may be asked for, and gives the same
/// bars on each run. From the first quote that is recorded on, the bars are those of the quotes.
/// Longer bars are always made of those of a minute. Bid and ask stand a tick below and above the last
/// price, and their middle is the last price.
class ChartHistory {
public:
    static constexpr std::size_t MAXIMUM_BARS = 1'000;  ///< in one answer
    static constexpr Minute REMEMBERED = 7 * MINUTES_PER_DAY;

    explicit ChartHistory(std::uint64_t seed) : seed_(seed) {}

    void record(std::size_t symbol, Minute now, Quote const & quote);

    /// The bar of `now`, as far as it has come.
    Bar current(Chart const & chart, Minute now) const;
    /// The last `count` bars, that of `now` included; oldest first, as below.
    std::vector<Bar> last(Chart const & chart, std::size_t count, Minute now) const;
    /// Those that begin from the day of `from` to the day of `to`, at most up to `now`; where they are
    /// too many, the later ones.
    std::vector<Bar> between(Chart const & chart, Minute from, Minute to, Minute now) const;

    /// Where a walk that begins now has to begin.
    Opening opening(std::size_t symbol, Minute now) const;

private:
    class Past;
    using Recorded = std::map<Minute, Bar>;

    Past past(std::size_t symbol) const;
    std::vector<Bar> barsFrom(Minute first, Minute end, Chart const & chart, Minute now) const;
    Bar merged(Past & past, Chart const & chart, Minute first, Minute now) const;
    Bar minuteBar(Past & past, std::size_t symbol, Minute minute) const;

    std::uint64_t const seed_;
    std::map<std::size_t, Recorded> recorded_;
};

}  // namespace backend
