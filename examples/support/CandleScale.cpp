#include "examples/support/CandleScale.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double AIR = 0.05;           // of the prices' range, above and below
constexpr double BODY_SHARE = 0.68;    // of a candle's column
constexpr double FLAT_SHARE = 0.01;    // of a price, the air where all are equal
constexpr double FINEST_SHARE = 1e-9;  // of a price, the range below which all count as equal
constexpr double ROUND_STEPS[] = {1, 2, 5, 10};

struct Step {
    double size;
    int decimals;
};

/// The smallest of 1, 2 and 5, times a power of ten, that is not below the wish.
Step roundStepNotBelow(double wish) {
    int const power = static_cast<int>(std::floor(std::log10(wish)));
    double const unit = std::pow(10.0, power);
    // The logarithm may be off by its last bit, the steps must not be.
    double const * const step =
        std::find_if(std::begin(ROUND_STEPS), std::end(ROUND_STEPS) - 1,
                     [&](double candidate) { return candidate * unit >= wish; });
    return {*step * unit, std::max(0, *step == 10 ? -power - 1 : -power)};
}

}  // namespace

CandleScale::CandleScale(std::vector<Candle> const & candles, Area const & prices,
                         Area const & volumes)
    : prices_(prices), volumes_(volumes), count_(candles.size()) {
    if (candles.empty()) {
        return;
    }
    lowest_ = candles.front().low;
    highest_ = candles.front().high;
    for (Candle const & candle : candles) {
        lowest_ = std::min(lowest_, candle.low);
        highest_ = std::max(highest_, candle.high);
        highestVolume_ = std::max(highestVolume_, candle.volume);
    }
    double const range = highest_ - lowest_;
    double const size = std::max(std::abs(highest_), 1.0);
    double const air = range > size * FINEST_SHARE ? range * AIR : size * FLAT_SHARE;
    lowest_ -= air;
    highest_ += air;
}

double CandleScale::columnWidth() const {
    return prices_.width / static_cast<double>(std::max<std::size_t>(count_, 1));
}

double CandleScale::middleOf(std::size_t index) const {
    return prices_.left + columnWidth() * (static_cast<double>(index) + 0.5);
}

double CandleScale::bodyWidth() const { return columnWidth() * BODY_SHARE; }

double CandleScale::yOf(double price) const {
    return prices_.bottom() - prices_.height * (price - lowest_) / (highest_ - lowest_);
}

double CandleScale::yOfVolume(double volume) const {
    double const share = highestVolume_ > 0 ? volume / highestVolume_ : 0;
    return volumes_.bottom() - volumes_.height * share;
}

CandleScale::PriceMarks CandleScale::priceMarks(int atMost) const {
    Step const step = roundStepNotBelow((highest_ - lowest_) / atMost);
    PriceMarks marks;
    marks.decimals = step.decimals;
    double const first = std::ceil(lowest_ / step.size);
    double const last = std::floor(highest_ / step.size);
    for (double i = first; i <= last && marks.prices.size() < static_cast<std::size_t>(atMost);
         i += 1) {
        marks.prices.push_back(i * step.size + 0.0);  // no minus before a zero
    }
    return marks;
}

std::vector<std::size_t> CandleScale::timeMarks(double distance) const {
    std::vector<std::size_t> marks;
    auto const every = static_cast<std::size_t>(std::max(1.0, std::ceil(distance / columnWidth())));
    for (std::size_t behind = 0; behind < count_; behind += every) {
        marks.push_back(count_ - 1 - behind);
    }
    std::reverse(marks.begin(), marks.end());
    return marks;
}
