#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace tvk::detail {

/// The state of a pair of multiply-with-carry generators, one for the whole process. It starts a
/// chain of blocks where no two texts shall begin alike; nothing in it is secret, and it makes no keys.
///
/// Threads: no lock. Two threads that draw at a time may get the same block, or one mixed from both;
///          the numbers are atomic, so that nothing worse comes of it.
struct RandomBlockState {
    std::atomic<std::uint32_t> firstUse{1};  ///< 1: the seed is still to be taken
    std::atomic<std::uint32_t> state0{0};
    std::atomic<std::uint32_t> state1{0};
};

extern RandomBlockState randomBlockState;

/// The next 16 bytes, as little-endian words. The first draw takes the seed from the processor's
/// time-stamp counter.
std::array<std::uint32_t, 4> drawRandomBlock();

}  // namespace tvk::detail
