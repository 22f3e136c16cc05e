#pragma once

#include <string>

namespace backend {

/// An identifier such as "A0001": a letter, and the number with four digits at least.
inline std::string numbered(char letter, unsigned int number) {
    constexpr std::size_t WIDTH = 4;
    std::string const digits = std::to_string(number);
    return letter + std::string(digits.size() < WIDTH ? WIDTH - digits.size() : 0, '0') + digits;
}

}  // namespace backend
