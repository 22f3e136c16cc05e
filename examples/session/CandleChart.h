#pragma once

#include <string>
#include <vector>

#include "examples/support/Candle.h"

namespace session {

/// A candlestick chart with its volumes, drawn as a picture in SVG that stands alone: no script, no style
/// sheet, no font and no picture from elsewhere.
///
/// Rising candles are red and falling ones blue, as Japanese charts have them. Texts are UTF-8; whatever
/// they hold is shown and never read as markup. A chart without candles says so.
struct CandleChart {
    std::string title;
    std::string note;             ///< smaller, under the title
    std::vector<Candle> candles;  ///< from the oldest to the newest
    bool hasLive = false;         ///< the newest candle is still moving, and is marked so

    std::string toSvg() const;
};

/// A date as 2026/07/31 and a time as 09:30, where they are digits as in the records; anything else comes
/// back as it is. A time of 000000 or none is that of a whole day, and empty.
std::string shownDate(std::string const & date);
std::string shownTime(std::string const & time);
/// A number with so many decimals and a comma between thousands: 1,764.5.
std::string shownNumber(double number, int decimals);

}  // namespace session
