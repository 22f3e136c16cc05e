#pragma once

#include <array>
#include <cstdint>

namespace tvk::detail {

/// The scanner's hash folds a byte as hash * 33 + byte modulo 2^32.
constexpr std::uint32_t HASH_FACTOR = 33;

/// 33 is odd, so it has an inverse modulo 2^32 (found by Newton's iteration, which doubles the
/// correct bits at each step).
constexpr std::uint32_t inverseOf(std::uint32_t odd) {
    std::uint32_t inverse = odd;
    for (int step = 0; step < 5; ++step) {
        inverse *= 2 - odd * inverse;
    }
    return inverse;
}

/// base to the powers 0 to COUNT - 1, modulo 2^32.
template <std::size_t COUNT>
constexpr std::array<std::uint32_t, COUNT> powersOf(std::uint32_t base) {
    std::array<std::uint32_t, COUNT> powers{};
    std::uint32_t power = 1;
    for (std::uint32_t & place : powers) {
        place = power;
        power *= base;
    }
    return powers;
}

static_assert(inverseOf(HASH_FACTOR) * HASH_FACTOR == 1);

}  // namespace tvk::detail
