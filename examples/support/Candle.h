#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tvk/chart/ChartHistoricalDataRec.h"
#include "tvk/chart/ChartRealDataRec.h"

/// One bar of a chart, with its texts as numbers that can be drawn.
struct Candle {
    std::string date;  ///< as in the record, such as 20260731
    std::string time;  ///< such as 093000
    double open = 0;
    double high = 0;
    double low = 0;
    double close = 0;
    double volume = 0;

    bool isRising() const { return close >= open; }
};

// Nothing where a price is not written as a number of at most 1e15, or does not lie between low and high:
// such a bar cannot be drawn. A volume that is no number is 0. The getters of the first record are not
// const.
std::optional<Candle> candleOf(tvk::ChartHistoricalDataRec & bar);
std::optional<Candle> candleOf(tvk::ChartRealDataRec const & bar);

/// Takes a real-time update into the bars: it replaces the newest one if that has the same date and time,
/// else it becomes the newest one.
void takeLiveCandle(std::vector<Candle> & candles, Candle const & live);
