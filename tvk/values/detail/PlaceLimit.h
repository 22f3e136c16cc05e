#pragma once

#include <cstddef>
#include <stdexcept>
#include <vector>

namespace tvk::detail {

/// The most places of a list or of a vector of sub-messages, on every platform.
constexpr std::size_t MAXIMUM_PLACES = 0x3fffffff;

inline void requirePlaces(std::size_t places) {
    if (places > MAXIMUM_PLACES) {
        throw std::length_error("vector too long");
    }
}

template <class Element>
void reservePlaces(std::vector<Element> & vector, std::size_t places) {
    requirePlaces(places);
    vector.reserve(places);
}

}  // namespace tvk::detail
