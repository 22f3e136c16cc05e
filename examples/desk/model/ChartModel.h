#pragma once

#include <string>
#include <vector>

#include "examples/desk/model/Symbol.h"
#include "examples/desk/model/Tone.h"
#include "examples/support/Candle.h"
#include "tvk/values/RefCountedPtr.h"

namespace desk {

/// The chart on the screen: one symbol and one period, the bars of the past, and the live bar behind
/// them. Texts are UTF-8.
class ChartModel {
public:
    static constexpr unsigned int BAR_COUNT = 120;  ///< kept; the oldest leave

    /// Begins anew with another chart. A null symbol stands for none.
    void show(Symbol const * symbol, std::string const & period);
    std::string const & code() const { return symbol_.code; }
    std::string const & period() const { return period_; }

    void setPeriods(std::vector<std::string> periods);
    std::vector<std::string> const & periods() const { return periods_; }
    static std::string periodText(std::string const & period);  ///< "5分足", "日足"

    void takeHistory(std::vector<tvk::RefCountedPtr<tvk::ChartHistoricalDataRec>> const & records);
    /// An update of another chart is left alone.
    void takeUpdate(tvk::ChartRealDataRec const & record);

    std::vector<Candle> const & candles() const { return candles_; }
    bool isLive() const { return isLive_; }  ///< the newest bar still moves
    int decimals() const;

    std::string title() const;    ///< the symbol and the period
    std::string caption() const;  ///< the newest bar's four prices
    Tone tone() const;            ///< of the newest bar
    std::string priceText(double price) const;
    /// What stands under the bar at `index`: a time within a day, a date where bars are days.
    std::string timeText(std::size_t index) const;

    /// Another number after each change.
    unsigned int revision() const { return revision_; }

private:
    void trim();

    Symbol symbol_;
    std::string period_;
    std::vector<std::string> periods_;
    std::vector<Candle> candles_;
    bool isLive_ = false;
    unsigned int revision_ = 0;
};

}  // namespace desk
