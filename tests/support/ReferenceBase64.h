#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tvk::test {

inline std::string bitsOf(std::string_view bytes) {
    std::string bits;
    for (char const byte : bytes) {
        for (unsigned int mask = 0x80; mask != 0; mask /= 2) {
            bits += (static_cast<unsigned char>(byte) & mask) != 0 ? '1' : '0';
        }
    }
    return bits;
}

inline char base64CharacterOf(int index, std::string_view lastTwo) {
    return static_cast<char>(index < 26    ? 'A' + index
                             : index < 52  ? 'a' + (index - 26)
                             : index < 62  ? '0' + (index - 52)
                             : index == 62 ? lastTwo[0]
                                           : lastTwo[1]);
}

/// The base64 of bytes by a plain model: takes six bits after the other from the whole row of them.
/// `lastTwo` ends the alphabet.
inline std::string referenceBase64(std::string_view bytes, std::string_view lastTwo) {
    std::string bits = bitsOf(bytes);
    while (bits.size() % 6 != 0) {
        bits += '0';
    }
    std::string text;
    for (std::size_t at = 0; at < bits.size(); at += 6) {
        int index = 0;
        for (char const bit : bits.substr(at, 6)) {
            index = index * 2 + (bit == '1' ? 1 : 0);
        }
        text += base64CharacterOf(index, lastTwo);
    }
    while (text.size() % 4 != 0) {
        text += '=';
    }
    return text;
}

}  // namespace tvk::test
