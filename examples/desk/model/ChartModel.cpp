#include "examples/desk/model/ChartModel.h"

#include <algorithm>
#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/model/Figures.h"

namespace desk {

void ChartModel::show(Symbol const * symbol, std::string const & period) {
    symbol_ = symbol != nullptr ? *symbol : Symbol();
    period_ = period;
    candles_.clear();
    isLive_ = false;
    ++revision_;
}

void ChartModel::setPeriods(std::vector<std::string> periods) {
    periods_ = std::move(periods);
    ++revision_;
}

std::string ChartModel::periodText(std::string const & period) {
    if (period == "D") {
        return "日足";
    }
    bool const isMinutes = typedCount(period).has_value();
    return isMinutes ? period + "分足" : period;
}

void ChartModel::takeHistory(
    std::vector<tvk::RefCountedPtr<tvk::ChartHistoricalDataRec>> const & records) {
    std::vector<Candle> candles;
    for (auto const & record : records) {
        if (auto const candle = candleOf(*record)) {
            candles.push_back(*candle);
        }
    }
    // An update may have come while the bars of the past were on their way; theirs ends with the bar
    // that was live then.
    if (isLive_ && !candles_.empty()) {
        takeLiveCandle(candles, candles_.back());
    }
    candles_ = std::move(candles);
    trim();
    ++revision_;
}

void ChartModel::takeUpdate(tvk::ChartRealDataRec const & record) {
    bool const isOurs =
        utf8(record.getSymbolCode()) == symbol_.code && utf8(record.getPeriodType()) == period_;
    auto const candle = candleOf(record);
    if (!isOurs || !candle) {
        return;
    }
    takeLiveCandle(candles_, *candle);
    isLive_ = true;
    trim();
    ++revision_;
}

int ChartModel::decimals() const { return decimalsOf(symbol_.tick); }

std::string ChartModel::title() const {
    return symbol_.code.empty() ? "銘柄を選んでください"
                                : symbol_.name + "  " + symbol_.code + "  " + periodText(period_);
}

std::string ChartModel::caption() const {
    if (candles_.empty()) {
        return {};
    }
    Candle const & newest = candles_.back();
    return "始 " + priceText(newest.open) + "  高 " + priceText(newest.high) + "  安 " +
           priceText(newest.low) + "  終 " + priceText(newest.close);
}

Tone ChartModel::tone() const {
    return candles_.empty() ? Tone::FAINT : candles_.back().isRising() ? Tone::UP : Tone::DOWN;
}

std::string ChartModel::priceText(double price) const { return desk::priceText(price, decimals()); }

std::string ChartModel::timeText(std::size_t index) const {
    Candle const & candle = candles_[index];
    std::string const & date = candle.date;
    constexpr std::size_t DATE_DIGITS = 8;
    if (period_ == "D" && date.size() == DATE_DIGITS) {
        return date.substr(4, 2) + "/" + date.substr(6, 2);
    }
    return desk::timeText(candle.time).substr(0, 5);
}

void ChartModel::trim() {
    if (candles_.size() > BAR_COUNT) {
        candles_.erase(candles_.begin(), candles_.end() - BAR_COUNT);
    }
}

}  // namespace desk
