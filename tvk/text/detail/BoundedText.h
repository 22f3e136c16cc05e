#pragma once

#include <cstdint>
#include <limits>
#include <new>

#include "tvk/platform/CString.h"

namespace tvk::detail {

/// A text of at most `bound` bytes in one allocation; none when `bound` is 0. `write` gets the place of
/// the first byte and returns the place behind the last one it wrote. A bound that no CString holds
/// throws std::bad_alloc before anything is written.
template <class Write>
CString boundedText(std::uint64_t bound, Write write) {
    if (bound > static_cast<std::uint64_t>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();
    }
    CString text;
    if (bound > 0) {
        char * const first = text.GetBuffer(static_cast<int>(bound));
        text.ReleaseBuffer(static_cast<int>(write(first) - first));
    }
    return text;
}

}  // namespace tvk::detail
