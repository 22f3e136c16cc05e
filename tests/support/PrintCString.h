#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <ostream>
#include <string>

#include "tvk/platform/CString.h"

/// Lets a failed expectation show a CString as its bytes, escaped. Stands beside the class, in the
/// global namespace, because that is where GoogleTest looks.
inline void PrintTo(CString const & text, std::ostream * output) {
    *output << ::testing::PrintToString(
        std::string(text.GetString(), static_cast<std::size_t>(text.GetLength())));
}
