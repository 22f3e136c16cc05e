#pragma once

#include <chrono>

namespace desk {

/// Milliseconds of a clock that does not go back.
inline long long nowMilliSec() {
    using std::chrono::milliseconds;
    auto const now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(now).count();
}

}  // namespace desk
