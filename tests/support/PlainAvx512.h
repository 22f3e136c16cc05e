#pragma once

// The instructions that Avx512Masks uses, in plain code: with the macros below, which a source
// defines before it includes that header, a test can run it on every processor.

#include <array>
#include <cstdint>
#include <cstring>

namespace tvk::test {

struct PlainVector {
    std::array<std::uint8_t, 64> bytes;
};

inline PlainVector plainLoad(void const * from) {
    PlainVector vector;
    std::memcpy(vector.bytes.data(), from, sizeof vector.bytes);
    return vector;
}

inline void plainStore(void * to, PlainVector const & vector) {
    std::memcpy(to, vector.bytes.data(), sizeof vector.bytes);
}

template <class Test>
std::uint64_t plainMask(Test test) {
    std::uint64_t mask = 0;
    for (unsigned int i = 0; i < 64; ++i) {
        mask |= std::uint64_t{test(i) ? 1u : 0u} << i;
    }
    return mask;
}

inline PlainVector plainBroadcast(char byte) {
    PlainVector vector;
    vector.bytes.fill(static_cast<std::uint8_t>(byte));
    return vector;
}

inline PlainVector plainBroadcast32(int value) {
    PlainVector vector;
    for (std::size_t i = 0; i < 64; i += sizeof value) {
        std::memcpy(vector.bytes.data() + i, &value, sizeof value);
    }
    return vector;
}

/// The same 16 bytes four times.
inline PlainVector plainRepeat(void const * sixteen) {
    PlainVector vector;
    for (std::size_t i = 0; i < 64; i += 16) {
        std::memcpy(vector.bytes.data() + i, sixteen, 16);
    }
    return vector;
}

inline PlainVector plainOr(PlainVector one, PlainVector const & other) {
    for (std::size_t i = 0; i < 64; ++i) {
        one.bytes[i] = static_cast<std::uint8_t>(one.bytes[i] | other.bytes[i]);
    }
    return one;
}

inline PlainVector plainAdd32(PlainVector one, PlainVector const & other) {
    for (std::size_t i = 0; i < 64; i += 4) {
        std::uint32_t left = 0;
        std::uint32_t right = 0;
        std::memcpy(&left, one.bytes.data() + i, 4);
        std::memcpy(&right, other.bytes.data() + i, 4);
        left += right;
        std::memcpy(one.bytes.data() + i, &left, 4);
    }
    return one;
}

/// Within 16 bytes, by the lower four bits; zero where the high bit is set.
inline PlainVector plainShuffle(PlainVector const & bytes, PlainVector const & places) {
    PlainVector vector;
    for (std::size_t i = 0; i < 64; ++i) {
        std::uint8_t const place = places.bytes[i];
        vector.bytes[i] = place >= 0x80 ? std::uint8_t{0} : bytes.bytes[i / 16 * 16 + place % 16];
    }
    return vector;
}

/// The bytes whose bits are set, one behind the other; zeros behind them.
inline PlainVector plainCompress(std::uint64_t mask, PlainVector const & bytes) {
    PlainVector vector = plainBroadcast('\0');
    std::size_t count = 0;
    for (unsigned int i = 0; i < 64; ++i) {
        if ((mask >> i & 1) != 0) {
            vector.bytes[count++] = bytes.bytes[i];
        }
    }
    return vector;
}

/// 16 bytes as 16 numbers of 32 bits.
inline PlainVector plainWiden(void const * sixteen) {
    PlainVector vector;
    for (std::size_t i = 0; i < 16; ++i) {
        std::uint32_t const wide = static_cast<std::uint8_t const *>(sixteen)[i];
        std::memcpy(vector.bytes.data() + 4 * i, &wide, 4);
    }
    return vector;
}

}  // namespace tvk::test
