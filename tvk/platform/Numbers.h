#pragma once

#include <cstdint>
#include <limits>

#include "tvk/platform/Export.h"

/// Numbers to and from text without the process's locale, and casts with one defined result.
/// Threads: any thread may call any of these.
namespace tvk::platform {

/// atoi and atol of a 32-bit platform: leading "C" white space, a sign, decimal digits. Text that
/// is no number gives 0; what follows the digits is ignored; too large a value saturates at 32
/// bits.
TVK_API int parseInt32(char const * text);

/// strtoll: clears errno, and sets ERANGE where the value saturates at 64 bits. Base 0 takes the
/// prefixes 0x and 0.
TVK_API long long parseInt64(char const * text, int base);

/// strtod: leading space, sign, decimal and hexadecimal forms, inf and nan; what follows is ignored.
/// Too large a value gives infinity, too small a one the nearest double there is. errno may change.
TVK_API double parseDouble(char const * text);

/// Truncation toward zero; NaN and what lies out of range give the smallest value of the type, as
/// the conversion instructions of x86 processors do. Callers rely on it being the same everywhere.
TVK_API int truncateToInt32(double value);
TVK_API long long truncateToInt64(double value);

/// The low 32 bits, read as a signed number: what a 32-bit platform would have stored.
constexpr int low32(long long value) noexcept {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value & 0xffffffff));
}

/// The nearest 32-bit number.
constexpr int saturate32(long long value) noexcept {
    using Limits = std::numeric_limits<std::int32_t>;
    return value < Limits::min()   ? Limits::min()
           : value > Limits::max() ? Limits::max()
                                   : static_cast<std::int32_t>(value);
}

}  // namespace tvk::platform
