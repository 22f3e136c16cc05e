#include "tvk/cipher/detail/RandomBlock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>

#include "tests/cipher/detail/KnownRandomBlocks.h"
#include "tests/support/AesBlock.h"
#include "tests/support/RandomBlockModel.h"
#include "tvk/platform/Clock.h"

namespace tvk::test {

namespace {

/// The bytes of a drawn block in the order in which they are handed out.
AesBlock drawn() {
    auto const words = detail::drawRandomBlock();
    AesBlock block{};
    for (std::size_t i = 0; i < block.size(); ++i) {
        block[i] = static_cast<unsigned char>(words[i / 4] >> (8 * (i % 4)));
    }
    return block;
}

void expectSequence(std::uint32_t state0, std::uint32_t state1) {
    SCOPED_TRACE(testing::Message() << state0 << ' ' << state1);
    setRandomBlockState(state0, state1);
    RandomBlockModel model(state0, state1);
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(drawn(), model.next()) << i;
    }
}

}  // namespace

TEST(RandomBlock, FollowsTheTwoGenerators) {
    std::mt19937 random(1);
    for (int i = 0; i < 500; ++i) {
        expectSequence(static_cast<std::uint32_t>(random()), static_cast<std::uint32_t>(random()));
    }
    expectSequence(0, 0);
    expectSequence(0xFFFFFFFF, 0xFFFFFFFF);
}

TEST(RandomBlock, MultipliesAndCarries) {
    setRandomBlockState(0x00020001, 0x00030001);
    // 36969 * 1 + 2 and 18000 * 1 + 3; the upper half of the first falls out.
    EXPECT_EQ(detail::drawRandomBlock()[0], ((36969U + 2) << 16) + 18000U + 3);
}

TEST(RandomBlock, TakesItsSeedFromTheTimeStampOnce) {
    detail::randomBlockState.firstUse = 1;
    detail::randomBlockState.state0 = 0;
    detail::randomBlockState.state1 = 0;
    std::uint64_t const earliest = platform::timeStampCounter();
    AesBlock const first = drawn();
    std::uint64_t const latest = platform::timeStampCounter();
    EXPECT_EQ(detail::randomBlockState.firstUse, 0U);

    // One of the stamps between is the seed; the block behind it goes on from there.
    AesBlock const second = drawn();
    bool isSeeded = false;
    for (std::uint64_t stamp = earliest; stamp <= latest && !isSeeded; ++stamp) {
        RandomBlockModel model(stamp);
        isSeeded = model.next() == first && model.next() == second;
    }
    EXPECT_TRUE(isSeeded) << latest - earliest << " stamps";
}

}  // namespace tvk::test
