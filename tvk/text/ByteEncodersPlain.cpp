#include <cstring>

#include "tvk/platform/Processor.h"
#include "tvk/text/detail/ByteEncoders.h"

namespace tvk::detail {

namespace {

void encodeBase64(unsigned char const * data, std::size_t groups, Base64Alphabet const & alphabet,
                  char * out) {
    for (; groups > 0; --groups, data += 3, out += 4) {
        unsigned int const high = data[0];
        unsigned int const middle = data[1];
        std::memcpy(out, alphabet.pairs[high << 4 | middle >> 4], 2);
        std::memcpy(out + 2, alphabet.pairs[(middle & 15) << 8 | data[2]], 2);
    }
}

struct HexPairs {
    constexpr HexPairs() {
        for (int byte = 0; byte < 256; ++byte) {
            digits[byte][0] = "0123456789ABCDEF"[byte >> 4];
            digits[byte][1] = "0123456789ABCDEF"[byte & 15];
        }
    }

    char digits[256][2] = {};
};

constexpr HexPairs HEX_PAIRS;

void encodeHex(unsigned char const * data, std::size_t size, char * out) {
    for (std::size_t i = 0; i < size; ++i) {
        std::memcpy(out + 2 * i, HEX_PAIRS.digits[data[i]], 2);
    }
}

constexpr ByteEncoders PLAIN = {encodeBase64, encodeHex};

ByteEncoders const & fastest() {
    if (ByteEncoders const * const avx2 = byteEncodersWithAvx2(); avx2 != nullptr) {
        return *avx2;
    }
    ByteEncoders const * const sse41 = byteEncodersWithSse41();
    return sse41 != nullptr ? *sse41 : PLAIN;
}

}  // namespace

#if !TVK_PROCESSOR_X86
ByteEncoders const * byteEncodersWithSse41() { return nullptr; }
ByteEncoders const * byteEncodersWithAvx2() { return nullptr; }
#endif

ByteEncoders const & plainByteEncoders() { return PLAIN; }

ByteEncoders const & bestByteEncoders() {
    static ByteEncoders const best = fastest();
    return best;
}

}  // namespace tvk::detail
