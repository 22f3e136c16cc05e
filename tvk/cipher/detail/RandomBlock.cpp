#include "tvk/cipher/detail/RandomBlock.h"

#include "tvk/platform/Clock.h"

namespace tvk::detail {

namespace {

constexpr auto RELAXED = std::memory_order_relaxed;

void seed(RandomBlockState & generator) {
    generator.firstUse.store(0, RELAXED);
    unsigned long long const stamp = platform::timeStampCounter();
    generator.state0.store(static_cast<std::uint32_t>(stamp), RELAXED);
    generator.state1.store(static_cast<std::uint32_t>(stamp >> 32), RELAXED);
}

constexpr std::uint32_t multiplyWithCarry(std::uint32_t factor, std::uint32_t state) {
    return factor * (state & 0xFFFF) + (state >> 16);
}

}  // namespace

constinit RandomBlockState randomBlockState;

std::array<std::uint32_t, 4> drawRandomBlock() {
    if (randomBlockState.firstUse.load(RELAXED) != 0) {
        seed(randomBlockState);
    }
    std::uint32_t state0 = randomBlockState.state0.load(RELAXED);
    std::uint32_t state1 = randomBlockState.state1.load(RELAXED);
    std::array<std::uint32_t, 4> block{};
    for (std::uint32_t & word : block) {
        state0 = multiplyWithCarry(36969, state0);
        state1 = multiplyWithCarry(18000, state1);
        word = (state0 << 16) + state1;
    }
    randomBlockState.state0.store(state0, RELAXED);
    randomBlockState.state1.store(state1, RELAXED);
    return block;
}

}  // namespace tvk::detail
