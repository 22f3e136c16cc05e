#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace tvk::test {

/// The bytes that pairs of hexadecimal digits stand for; blanks between pairs are for the reader.
inline std::string hexBytes(std::string_view digits) {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    auto const value = [DIGITS](char digit) {
        std::size_t const place = DIGITS.find(digit);
        if (place == std::string_view::npos) {
            throw std::invalid_argument("no hexadecimal digit in lower case");
        }
        return place;
    };
    std::string bytes;
    while (!digits.empty()) {
        if (digits.front() == ' ') {
            digits.remove_prefix(1);
            continue;
        }
        bytes += static_cast<char>(value(digits.at(0)) * 16 + value(digits.at(1)));
        digits.remove_prefix(2);
    }
    return bytes;
}

}  // namespace tvk::test
