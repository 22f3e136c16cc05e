// The masks of 64 bytes, byte by byte. Those of AVX-512 run on plain renderings of its instructions
// here; the variant of the scanner that uses them is tested where the processor has it.

#include "tvk/json/detail/ScannerHeaders.h"

#if TVK_PROCESSOR_X86

#include <gtest/gtest.h>
#include <immintrin.h>

#include <random>
#include <string>
#include <vector>

#include "tests/support/PlainAvx512.h"

TVK_BEGIN_TARGET("avx2,bmi,bmi2,pclmul,popcnt")

#include "tvk/json/detail/Avx2Masks.h"

// The names of the instructions, as Avx512Masks.h calls them; some compilers have macros for two.
#undef _mm512_cmpeq_epi8_mask
#undef _mm512_cmpge_epu8_mask
#define __m512i ::tvk::test::PlainVector
#define _mm512_loadu_si512 ::tvk::test::plainLoad
#define _mm512_storeu_si512 ::tvk::test::plainStore
#define _mm512_testn_epi8_mask(one, other) \
    ::tvk::test::plainMask([&](unsigned int i) { return ((one).bytes[i] & (other).bytes[i]) == 0; })
#define _mm512_movepi8_mask(vector) \
    ::tvk::test::plainMask([&](unsigned int i) { return (vector).bytes[i] >= 0x80; })
#define _mm512_cmpeq_epi8_mask(one, other) equalBytes(one, other)
#define _mm512_cmpge_epu8_mask(one, other) notLessBytes(one, other)
#define _mm512_set1_epi8 ::tvk::test::plainBroadcast
#define _mm512_set1_epi32 ::tvk::test::plainBroadcast32
#define _mm512_or_si512 ::tvk::test::plainOr
#define _mm512_add_epi32 ::tvk::test::plainAdd32
#define _mm512_shuffle_epi8 ::tvk::test::plainShuffle
#define _mm512_maskz_compress_epi8 ::tvk::test::plainCompress
#define _mm512_maskz_broadcast_i32x4(all, sixteen) repeated(sixteen)
#define _mm512_maskz_cvtepu8_epi32(all, sixteen) widened(sixteen)

namespace tvk::detail {

namespace {

std::uint64_t equalBytes(test::PlainVector const & one, test::PlainVector const & other) {
    return test::plainMask([&](unsigned int i) { return one.bytes[i] == other.bytes[i]; });
}

std::uint64_t notLessBytes(test::PlainVector const & one, test::PlainVector const & other) {
    return test::plainMask([&](unsigned int i) { return one.bytes[i] >= other.bytes[i]; });
}

test::PlainVector repeated(__m128i sixteen) { return test::plainRepeat(&sixteen); }

test::PlainVector widened(__m128i sixteen) { return test::plainWiden(&sixteen); }

}  // namespace

}  // namespace tvk::detail

#include "tvk/json/detail/Avx512Masks.h"

namespace {

using tvk::detail::Avx2Masks;
using tvk::detail::Avx512Masks;
using tvk::test::plainMask;

constexpr char SOME[16] = {' ',  15,   15,   15, 15,   15,   15, 15,
                           '\b', '\t', '\n', 15, '\f', '\r', 15, 0};

template <class Masks>
class BlockMasks : public ::testing::Test {
protected:
    void SetUp() override {
        if (!tvk::platform::hasAvx2() || !tvk::platform::hasBitOperations()) {
            GTEST_SKIP() << "the processor has no AVX2";
        }
    }
};

using Kinds = ::testing::Types<Avx2Masks, Avx512Masks>;
TYPED_TEST_SUITE(BlockMasks, Kinds);

std::string randomBytes(std::mt19937 & random) {
    constexpr char LIKELY[] = "\"\\{}[],: \n\t\f\r\b\x80\xC3\xE0\xF0";
    std::string bytes(64, '\0');
    auto const style = random() % 3;
    for (char & byte : bytes) {
        byte = style == 0 || random() % 4 == 0 ? LIKELY[random() % (sizeof LIKELY - 1)]
               : style == 1                    ? static_cast<char>(random() % 256)
                                               : static_cast<char>('a' + random() % 26);
    }
    return bytes;
}

TYPED_TEST(BlockMasks, HaveABitForEachByte) {
    std::mt19937 random(20261);
    for (int round = 0; round < 2000; ++round) {
        std::string const bytes = randomBytes(random);
        TypeParam const masks(bytes.data());
        auto const at = [&](unsigned int i) { return static_cast<unsigned char>(bytes[i]); };
        for (int byte = 0; byte < 256; ++byte) {
            auto const wanted = static_cast<unsigned char>(byte);
            ASSERT_EQ(masks.equal(static_cast<char>(wanted)),
                      plainMask([&](unsigned int i) { return at(i) == wanted; }));
            ASSERT_EQ(masks.equalFolded(static_cast<char>(wanted)),
                      plainMask([&](unsigned int i) { return (at(i) | 0x20) == wanted; }));
            ASSERT_EQ(masks.atLeast(wanted),
                      plainMask([&](unsigned int i) { return at(i) >= wanted; }));
        }
        ASSERT_EQ(masks.isAnyOf(SOME), plainMask([&](unsigned int i) {
                      return std::string(" \b\t\n\f\r").find(bytes[i]) != std::string::npos;
                  }));
    }
}

TYPED_TEST(BlockMasks, KnowWhetherThereIsAnythingToLookAtTwice) {
    for (unsigned int place = 0; place < 64; ++place) {
        for (int byte = 0; byte < 256; ++byte) {
            std::string bytes(64, 'x');
            bytes[place] = static_cast<char>(byte);
            ASSERT_EQ(TypeParam(bytes.data()).isSimple(), byte != 0 && byte != '\\' && byte < 0x80)
                << byte << " at " << place;
        }
    }
}

TYPED_TEST(BlockMasks, SumTheBitsUpToEach) {
    std::mt19937_64 random(20262);
    for (int round = 0; round < 1000; ++round) {
        std::uint64_t const mask = random() & random();
        bool inside = false;
        ASSERT_EQ(TypeParam::prefixXor(mask), plainMask([&](unsigned int i) {
                      inside = inside != ((mask >> i & 1) != 0);
                      return inside;
                  }))
            << mask;
    }
}

TYPED_TEST(BlockMasks, WriteThePlaceOfEachBit) {
    std::mt19937_64 random(20263);
    for (int round = 0; round < 3000; ++round) {
        std::uint64_t mask = random();
        for (int thinner = round % 6; thinner > 0; --thinner) {
            mask &= random();
        }
        mask = round == 0 ? ~std::uint64_t{0} : mask;
        std::vector<std::uint32_t> expected;
        for (std::uint32_t i = 0; i < 64; ++i) {
            if ((mask >> i & 1) != 0) {
                expected.push_back(4'000'000'000 + i);
            }
        }
        std::vector<std::uint32_t> places(static_cast<std::size_t>(std::popcount(mask)) + 16);
        std::uint32_t * const end = TypeParam::append(mask, 4'000'000'000, places.data());
        places.resize(static_cast<std::size_t>(end - places.data()));
        ASSERT_EQ(places, expected) << mask;
    }
}

}  // namespace

TVK_END_TARGET

#endif
