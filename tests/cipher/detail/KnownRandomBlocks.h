#pragma once

#include <cstdint>

#include "tvk/cipher/detail/RandomBlock.h"

namespace tvk::test {

/// Puts the generator of the process where it goes on from these two numbers, without a seed.
inline void setRandomBlockState(std::uint32_t state0, std::uint32_t state1) {
    detail::randomBlockState.firstUse = 0;
    detail::randomBlockState.state0 = state0;
    detail::randomBlockState.state1 = state1;
}

}  // namespace tvk::test
