#include "examples/desk/model/Figures.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "tvk/platform/CString.h"
#include "tvk/platform/Numbers.h"

namespace desk {

namespace {

bool isDigit(char character) { return character >= '0' && character <= '9'; }

std::string withDecimals(double value, int decimals) {
    CString text;
    text.Format("%.*f", decimals, value);
    return text.GetString();
}

/// Commas between each three of the digits that `text` begins with.
std::string grouped(std::string text) {
    constexpr std::size_t GROUP = 3;
    auto const end = std::find_if_not(text.begin(), text.end(), isDigit);
    auto position = static_cast<std::size_t>(end - text.begin());
    while (position > GROUP) {
        position -= GROUP;
        text.insert(position, 1, ',');
    }
    return text;
}

/// -0.0 and what rounds to it show no sign.
bool isZero(std::string const & digits) {
    return digits.find_first_not_of("0.") == std::string::npos;
}

std::string withSign(double value, std::string const & digits, bool showPlus) {
    if (isZero(digits)) {
        return digits;
    }
    return value < 0 ? "-" + digits : (showPlus ? "+" : "") + digits;
}

/// Digits and points in ASCII: full-width forms (U+FF0E, U+FF10 to U+FF19) made half-width, commas
/// (U+FF0C too) and blanks (U+3000 too) left out. Everything else stays, to be refused.
std::string normalized(std::string_view text) {
    constexpr std::size_t WIDE_SIZE = 3;
    std::string result;
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string_view const wide = text.substr(at, WIDE_SIZE);
        if (wide == "\xe3\x80\x80" || wide == "\xef\xbc\x8c") {
            at += WIDE_SIZE - 1;
        } else if (wide.size() == WIDE_SIZE && wide.substr(0, 2) == "\xef\xbc" &&
                   static_cast<unsigned char>(wide[2]) >= 0x8e &&
                   static_cast<unsigned char>(wide[2]) <= 0x99 &&
                   static_cast<unsigned char>(wide[2]) != 0x8f) {
            result += static_cast<char>('.' + (static_cast<unsigned char>(wide[2]) - 0x8e));
            at += WIDE_SIZE - 1;
        } else if (text[at] != ',' && text[at] != ' ') {
            result += text[at];
        }
    }
    return result;
}

constexpr std::size_t MOST_DIGITS = 12;

bool isDigits(std::string_view text) {
    return !text.empty() && text.size() <= MOST_DIGITS &&
           std::all_of(text.begin(), text.end(), isDigit);
}

}  // namespace

int decimalsOf(double tick) {
    constexpr int MOST = 4;
    int decimals = 0;
    for (double scaled = tick; decimals < MOST && !isOnTick(scaled, 1); scaled *= 10) {
        ++decimals;
    }
    return decimals;
}

std::string priceText(double price, int decimals) {
    return withSign(price, grouped(withDecimals(std::fabs(price), decimals)), false);
}

std::string signedText(double value, int decimals) {
    return withSign(value, grouped(withDecimals(std::fabs(value), decimals)), true);
}

std::string percentText(double percent) { return signedText(percent, 2) + "%"; }

std::string countText(long long count) { return priceText(static_cast<double>(count), 0); }

std::string timeText(std::string_view hhmmss) {
    constexpr std::size_t DIGITS = 6;
    if (hhmmss.size() != DIGITS || !isDigits(hhmmss)) {
        return std::string(hhmmss);
    }
    return std::string(hhmmss.substr(0, 2)) + ":" + std::string(hhmmss.substr(2, 2)) + ":" +
           std::string(hhmmss.substr(4, 2));
}

std::optional<long long> typedCount(std::string_view text) {
    std::string const digits = normalized(text);
    if (!isDigits(digits)) {
        return std::nullopt;
    }
    return tvk::platform::parseInt64(digits.c_str(), 10);
}

std::optional<double> typedPrice(std::string_view text) {
    std::string const number = normalized(text);
    std::size_t const point = number.find('.');
    std::string_view const whole = std::string_view(number).substr(0, point);
    bool const hasFraction = point != std::string::npos;
    if (!isDigits(whole) ||
        (hasFraction && !isDigits(std::string_view(number).substr(point + 1)))) {
        return std::nullopt;
    }
    return tvk::platform::parseDouble(number.c_str());
}

bool isOnTick(double price, double tick) {
    constexpr double ROUNDING = 1e-6;
    double const ticks = price / tick;
    return std::fabs(ticks - std::round(ticks)) < ROUNDING;
}

}  // namespace desk
