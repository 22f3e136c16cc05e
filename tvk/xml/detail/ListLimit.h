#pragma once

#include <stdexcept>

namespace tvk::detail {

template <class List>
void requireRoom(List const & list) {
    if (list.size() >= list.max_size()) {
        throw std::length_error("list too long");
    }
}

// Additions that a full list refuses, where the one of the C++ library runs out of memory instead.

template <class List>
void append(List & list, typename List::value_type const & element) {
    requireRoom(list);
    list.push_back(element);
}

template <class List>
void prepend(List & list, typename List::value_type const & element) {
    requireRoom(list);
    list.push_front(element);
}

}  // namespace tvk::detail
