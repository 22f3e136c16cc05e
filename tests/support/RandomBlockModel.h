#pragma once

#include <cstdint>

#include "tests/support/AesBlock.h"

namespace tvk::test {

/// The pair of multiply-with-carry generators behind each encryption, a byte at a time.
class RandomBlockModel {
public:
    RandomBlockModel(std::uint32_t state0, std::uint32_t state1)
        : state0_(state0), state1_(state1) {}
    /// Seeded by a reading of the time-stamp counter.
    explicit RandomBlockModel(std::uint64_t stamp)
        : RandomBlockModel(static_cast<std::uint32_t>(stamp & 0xFFFFFFFF),
                           static_cast<std::uint32_t>(stamp >> 32)) {}

    AesBlock next() {
        AesBlock block{};
        for (unsigned char & byte : block) {
            byte = nextByte();
        }
        return block;
    }

private:
    unsigned char nextByte() {
        if (randomIndex_ == 4) {
            state0_ = 36969 * (state0_ % 65536) + state0_ / 65536;
            state1_ = 18000 * (state1_ % 65536) + state1_ / 65536;
            randomWord_ = state0_ * 65536 + state1_;
            randomIndex_ = 0;
        }
        return static_cast<unsigned char>(randomWord_ >> (8 * randomIndex_++));
    }

    std::uint32_t state0_;
    std::uint32_t state1_;
    std::uint32_t randomWord_ = 0;
    std::uint32_t randomIndex_ = 4;
};

}  // namespace tvk::test
