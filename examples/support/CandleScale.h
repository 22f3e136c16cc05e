#pragma once

#include <cstddef>
#include <vector>

#include "examples/support/Candle.h"

/// Where the candles of a chart stand: prices in one area, volumes in another below it, each candle in a
/// column of its own that both share. Lengths are of whatever unit the areas are in, y grows downward.
///
/// The prices fill their area from the lowest to the highest, with a little air; where all are equal they
/// stand in its middle. Without candles every question has an answer that can be drawn.
class CandleScale {
public:
    struct Area {
        double left = 0;
        double top = 0;
        double width = 0;
        double height = 0;

        double right() const { return left + width; }
        double bottom() const { return top + height; }
    };

    CandleScale(std::vector<Candle> const & candles, Area const & prices, Area const & volumes);

    double middleOf(std::size_t index) const;  ///< x of a candle's middle
    double bodyWidth() const;
    double yOf(double price) const;
    double yOfVolume(double volume) const;  ///< the top of its column
    double highestVolume() const { return highestVolume_; }

    struct PriceMarks {
        std::vector<double> prices;  ///< round, from low to high, all within the area
        int decimals = 0;            ///< to write them with
    };
    PriceMarks priceMarks(int atMost) const;  ///< Requires: atMost is above 0.
    /// Candles to write the time of: every n-th, counted from the newest, at least `distance` apart.
    std::vector<std::size_t> timeMarks(double distance) const;

private:
    double columnWidth() const;

    Area prices_;
    Area volumes_;
    std::size_t count_;
    double lowest_ = 0;
    double highest_ = 1;
    double highestVolume_ = 0;
};
