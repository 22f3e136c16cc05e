#include "examples/backend/MarketTime.h"

#include <algorithm>
#include <charconv>
#include <chrono>

namespace backend {

namespace {

constexpr long long TOKYO_MILLISEC = 9LL * 60 * 60 * 1000;
constexpr long long MILLISEC_PER_SECOND = 1000;
constexpr long long SECONDS_PER_MINUTE = 60;
constexpr std::size_t DATE_LENGTH = 8;

long long floorDiv(long long value, long long by) { return value / by - (value % by < 0 ? 1 : 0); }

std::string digits(long long value, std::size_t width) {
    std::string const text = std::to_string(value);
    return std::string(width > text.size() ? width - text.size() : 0, '0') + text;
}

/// Seconds of the market's clock.
long long secondOf(long long milliSecSinceEpoch) {
    return floorDiv(milliSecSinceEpoch + TOKYO_MILLISEC, MILLISEC_PER_SECOND);
}

std::string clockText(Minute minute, long long second) {
    Minute const ofDay = minute - floorDiv(minute, MINUTES_PER_DAY) * MINUTES_PER_DAY;
    return digits(ofDay / 60, 2) + digits(ofDay % 60, 2) + digits(second, 2);
}

int numberIn(std::string_view digitsOnly) {
    int number = 0;
    std::from_chars(digitsOnly.data(), digitsOnly.data() + digitsOnly.size(), number);
    return number;
}

}  // namespace

Minute minuteOf(long long milliSecSinceEpoch) {
    return floorDiv(secondOf(milliSecSinceEpoch), SECONDS_PER_MINUTE);
}

std::string dateText(Minute minute) {
    std::chrono::sys_days const day{std::chrono::days(floorDiv(minute, MINUTES_PER_DAY))};
    std::chrono::year_month_day const date(day);
    return digits(static_cast<int>(date.year()), 4) +
           digits(static_cast<unsigned int>(date.month()), 2) +
           digits(static_cast<unsigned int>(date.day()), 2);
}

std::string timeText(Minute minute) { return clockText(minute, 0); }

std::string timeTextOf(long long milliSecSinceEpoch) {
    long long const second = secondOf(milliSecSinceEpoch);
    Minute const minute = floorDiv(second, SECONDS_PER_MINUTE);
    return clockText(minute, second - minute * SECONDS_PER_MINUTE);
}

std::string dateTimeTextOf(long long milliSecSinceEpoch) {
    return dateText(minuteOf(milliSecSinceEpoch)) + timeTextOf(milliSecSinceEpoch);
}

std::optional<Minute> minuteOfDate(std::string_view date) {
    bool const isNumber = date.size() == DATE_LENGTH &&
                          std::all_of(date.begin(), date.end(),
                                      [](char digit) { return digit >= '0' && digit <= '9'; });
    if (!isNumber) {
        return std::nullopt;
    }
    std::chrono::year_month_day const day(
        std::chrono::year(numberIn(date.substr(0, 4))),
        std::chrono::month(static_cast<unsigned int>(numberIn(date.substr(4, 2)))),
        std::chrono::day(static_cast<unsigned int>(numberIn(date.substr(6, 2)))));
    constexpr std::chrono::year FIRST(1970);
    constexpr std::chrono::year LAST(2999);
    if (!day.ok() || day.year() < FIRST || day.year() > LAST) {
        return std::nullopt;
    }
    return std::chrono::sys_days(day).time_since_epoch().count() * MINUTES_PER_DAY;
}

}  // namespace backend
