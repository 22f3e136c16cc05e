#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace tvk::test {

/// A block of AES.
using AesBlock = std::array<unsigned char, 16>;

/// The first 16 of these bytes.
inline AesBlock blockOf(std::string_view bytes) {
    AesBlock block{};
    std::copy_n(bytes.begin(), block.size(), block.begin());
    return block;
}

inline std::string bytesOf(AesBlock const & block) {
    return std::string(block.begin(), block.end());
}

inline AesBlock operator^(AesBlock const & a, AesBlock const & b) {
    AesBlock sum{};
    for (std::size_t i = 0; i < sum.size(); ++i) {
        sum[i] = static_cast<unsigned char>(a[i] ^ b[i]);
    }
    return sum;
}

inline unsigned char const * unsignedBytes(std::string_view bytes) {
    return reinterpret_cast<unsigned char const *>(bytes.data());
}

}  // namespace tvk::test
