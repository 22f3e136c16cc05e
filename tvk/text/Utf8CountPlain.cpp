#include <bit>
#include <cstdint>
#include <cstring>

#include "tvk/text/detail/Utf8BatchCount.h"
#include "tvk/text/detail/Utf8Count.h"

namespace tvk::detail {

namespace {

/// Four words of 64 bits. What holds for a byte is told by its highest bit.
class PlainBatch {
public:
    static constexpr unsigned int SIZE = 32;

    explicit PlainBatch(char const * bytes) : bytes_(bytes) {}

    bool isAscii() const { return ((word(0) | word(8) | word(16) | word(24)) & HIGH_BITS) == 0; }

    bool isRegular(unsigned int * trails) const {
        std::uint64_t wrong = 0;
        for (int at = 0; at < static_cast<int>(SIZE); at += 8) {
            std::uint64_t const here = word(at);
            std::uint64_t const trail = here & ~(here << 1);
            std::uint64_t const wanted =
                leads<2>(word(at - 1)) | leads<3>(word(at - 2)) | leads<4>(word(at - 3));
            wrong |= (trail ^ wanted) | leads<5>(here);
            *trails += static_cast<unsigned int>(std::popcount(trail & HIGH_BITS));
        }
        return (wrong & HIGH_BITS) == 0;
    }

private:
    static constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;

    std::uint64_t word(int offset) const {
        std::uint64_t value;
        std::memcpy(&value, bytes_ + offset, sizeof value);
        return value;
    }

    /// Bytes that start with at least COUNT set bits, and so announce COUNT bytes or more.
    template <int COUNT>
    static std::uint64_t leads(std::uint64_t bytes) {
        std::uint64_t all = bytes;
        for (int bit = 1; bit < COUNT; ++bit) {
            all &= bytes << bit;
        }
        return all;
    }

    char const * bytes_;
};

}  // namespace

Utf8Run countRegularUtf8Plain(char const * data, unsigned int length, unsigned int position) {
    return Utf8BatchCount<PlainBatch>::count(data, length, position);
}

CountRegularUtf8 bestCountRegularUtf8() {
    static CountRegularUtf8 const best =
        countRegularUtf8WithAvx2() != nullptr ? countRegularUtf8WithAvx2() : countRegularUtf8Plain;
    return best;
}

}  // namespace tvk::detail
