#pragma once

#include <algorithm>
#include <cstddef>

namespace tvk::platform {

/// A text of so many bytes has more room behind it than a shorter one.
constexpr std::size_t LONGER_TEXT = 4;

/// How many bytes can be read from the start of every CString of `length` bytes, the NUL and what
/// stands behind it included, so that readers inside the library take sixteen bytes of a longer text,
/// or four of a shorter one, at a time. The steps in which allocators deal give it for nothing.
constexpr std::size_t textRoom(std::size_t length) {
    return std::max<std::size_t>(length + 1, length < LONGER_TEXT ? 4 : 20);
}

}  // namespace tvk::platform
