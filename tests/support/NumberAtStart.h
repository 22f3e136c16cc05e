#pragma once

#include <algorithm>
#include <string_view>

namespace tvk::test {

/// A slow model of atoi, without its bounds: the number that a text starts with. One that 32 bits do not
/// hold stays such a one.
inline long long numberAtStart(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    bool const negative = text.substr(0, 1) == "-";
    if (negative || text.substr(0, 1) == "+") {
        text.remove_prefix(1);
    }
    long long number = 0;
    for (char const digit : text.substr(0, text.find_first_not_of("0123456789"))) {
        number = std::min(number * 10 + (digit - '0'), 1LL << 32);
    }
    return negative ? -number : number;
}

}  // namespace tvk::test
