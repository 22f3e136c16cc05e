#pragma once

#include <cstddef>
#include <cstring>

namespace tvk::detail {

/// Zeroes bytes that nobody reads again, which a compiler would leave out of a plain memset.
inline void wipe(void * bytes, std::size_t size) {
    void * (*const volatile overwrite)(void *, int, std::size_t) = std::memset;
    overwrite(bytes, 0, size);
}

/// A value that leaves no trace on the stack: zero at first, wiped at its end.
template <class Value>
class Wiped {
public:
    Wiped() = default;
    Wiped(Wiped const &) = delete;
    Wiped & operator=(Wiped const &) = delete;
    ~Wiped() { wipe(&value_, sizeof value_); }

    Value & get() { return value_; }

private:
    Value value_{};
};

}  // namespace tvk::detail
