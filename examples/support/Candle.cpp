#include "examples/support/Candle.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <system_error>

#include "examples/support/Printable.h"

namespace {

constexpr double LARGEST_NUMBER = 1e15;  // beyond it neighbours in a double are far apart

/// The number that the whole text is, if there is one that can be drawn.
std::optional<double> numberOf(CString const & text) {
    std::string_view const bytes = bytesOf(text);
    char const * const last = bytes.data() + bytes.size();
    double number = 0;
    auto const [end, error] = std::from_chars(bytes.data(), last, number);
    if (error != std::errc() || end != last || !(std::abs(number) <= LARGEST_NUMBER)) {
        return std::nullopt;
    }
    return number;
}

template <class Record>
std::optional<Candle> candleOfRecord(Record & bar) {
    auto const open = numberOf(bar.getOpenPrice());
    auto const high = numberOf(bar.getHighPrice());
    auto const low = numberOf(bar.getLowPrice());
    auto const close = numberOf(bar.getClosePrice());
    if (!open || !high || !low || !close) {
        return std::nullopt;
    }
    bool const isInside = *low <= *open && *low <= *close && *open <= *high && *close <= *high;
    if (!isInside) {
        return std::nullopt;
    }
    double const volume = numberOf(bar.getVolume()).value_or(0);
    return Candle{std::string(bytesOf(bar.getDataDate())),
                  std::string(bytesOf(bar.getDataTime())),
                  *open,
                  *high,
                  *low,
                  *close,
                  volume < 0 ? 0 : volume};
}

}  // namespace

std::optional<Candle> candleOf(tvk::ChartHistoricalDataRec & bar) { return candleOfRecord(bar); }

std::optional<Candle> candleOf(tvk::ChartRealDataRec const & bar) { return candleOfRecord(bar); }

void takeLiveCandle(std::vector<Candle> & candles, Candle const & live) {
    bool const isNewest =
        !candles.empty() && candles.back().date == live.date && candles.back().time == live.time;
    if (isNewest) {
        candles.back() = live;
    } else {
        candles.push_back(live);
    }
}
