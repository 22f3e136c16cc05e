#pragma once

#include <optional>
#include <string>

namespace backend {

/// A price in tenths of a yen, so that all ticks are whole and sums are exact.
using Price = long long;

constexpr Price YEN = 10;

/// "2540" or "845.5".
std::string textOf(Price price);

/// None where the number is negative, is no multiple of a tenth, or exceeds what prices are.
std::optional<Price> priceOf(double yen);

}  // namespace backend
