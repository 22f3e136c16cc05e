#pragma once

#include <optional>
#include <string>
#include <string_view>

// Numbers as people read them on a screen, and type them.

namespace desk {

/// Decimals that a price of this tick needs, at most 4: 0 for 1 and 5, 1 for 0.5.
int decimalsOf(double tick);

std::string priceText(double price, int decimals);   ///< "1,234.5"
std::string signedText(double value, int decimals);  ///< "+12.0", "-3.5", "0.0"
std::string percentText(double percent);             ///< "+0.54%"
std::string countText(long long count);              ///< "1,234,500"
std::string timeText(std::string_view hhmmss);  ///< "09:30:15"; as it is where it has no six digits

// What was typed: digits of full or half width, with commas and blanks between them, and for a price
// a point. Nothing where the text is anything else, or too long to be meant.
std::optional<long long> typedCount(std::string_view text);
std::optional<double> typedPrice(std::string_view text);

/// Whether the price is a whole number of ticks, but for the rounding of binary fractions.
bool isOnTick(double price, double tick);

}  // namespace desk
