#pragma once

#include <array>
#include <cstdint>

namespace tvk::detail {

using BitPlacesTable = std::array<std::array<std::uint8_t, 8>, 256>;

constexpr BitPlacesTable makeBitPlaces() {
    BitPlacesTable table{};
    for (unsigned int bits = 0; bits < table.size(); ++bits) {
        unsigned int count = 0;
        for (std::uint8_t place = 0; place < 8; ++place) {
            if ((bits >> place & 1) != 0) {
                table[bits][count++] = place;
            }
        }
    }
    return table;
}

/// The places of the bits of each byte, the lowest first; behind them zeros.
constexpr BitPlacesTable BIT_PLACES = makeBitPlaces();

}  // namespace tvk::detail
