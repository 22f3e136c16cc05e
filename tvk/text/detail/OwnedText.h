#pragma once

#include <cstring>

namespace tvk::detail {

/// A copy of `text` in an array of its own, for the thrown classes that own one; null for null.
inline char * copyOfText(char const * text) {
    if (text == nullptr) {
        return nullptr;
    }
    std::size_t const size = std::strlen(text) + 1;
    return static_cast<char *>(std::memcpy(new char[size], text, size));
}

/// Puts a copy of `text` in the place of the array at `held`, which may be null. `text` may be the
/// held one.
inline void replaceText(char *& held, char const * text) {
    char * const copy = copyOfText(text);
    delete[] held;
    held = copy;
}

}  // namespace tvk::detail
