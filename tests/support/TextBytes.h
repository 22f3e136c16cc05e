#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tvk/platform/CString.h"

namespace tvk::test {

/// A text of these bytes, NUL included, read from a block that ends with them.
inline CString textOf(std::string_view bytes) {
    ExactBuffer const block(bytes);
    return CString(block.data(), static_cast<int>(block.size()));
}

/// All bytes of a text.
inline std::string bytesOf(CString const & text) {
    return std::string(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

}  // namespace tvk::test
