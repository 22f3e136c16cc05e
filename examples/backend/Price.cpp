#include "examples/backend/Price.h"

#include <cmath>

namespace backend {

namespace {

constexpr double HIGHEST = 1e8;
constexpr double CLOSE_ENOUGH = 1e-6;

}  // namespace

std::string textOf(Price price) {
    Price const size = price < 0 ? -price : price;
    std::string text = price < 0 ? "-" : "";
    text += std::to_string(size / YEN);
    if (size % YEN != 0) {
        text += '.';
        text += std::to_string(size % YEN);
    }
    return text;
}

std::optional<Price> priceOf(double yen) {
    if (!(yen >= 0.0 && yen <= HIGHEST)) {
        return std::nullopt;
    }
    double const tenths = yen * static_cast<double>(YEN);
    double const nearest = std::round(tenths);
    if (std::fabs(tenths - nearest) > CLOSE_ENOUGH) {
        return std::nullopt;
    }
    return static_cast<Price>(nearest);
}

}  // namespace backend
