#pragma once

#include <optional>
#include <string>
#include <string_view>

/// The market's clock: Tokyo, nine hours ahead of UTC all year.
namespace backend {

/// Minutes of that clock since the beginning of 1970.
using Minute = long long;

constexpr Minute MINUTES_PER_DAY = 24 * 60;

Minute minuteOf(long long milliSecSinceEpoch);

std::string dateText(Minute minute);                   ///< "YYYYMMDD"
std::string timeText(Minute minute);                   ///< "HHMM00"
std::string timeTextOf(long long milliSecSinceEpoch);  ///< "HHMMSS"
std::string dateTimeTextOf(long long milliSecSinceEpoch);

/// The first minute of a date "YYYYMMDD"; none where it is no date from 1970 to 2999.
std::optional<Minute> minuteOfDate(std::string_view date);

}  // namespace backend
