#pragma once

namespace tvk::detail {

/// The characters of base64 in their order: letters and digits, and two that each alphabet has of its own.
/// Plain arrays, so that sources built for other processors share no code through it.
struct Base64Alphabet {
    constexpr Base64Alphabet(char beforeLast, char last) {
        put("ABCDEFGHIJKLMNOPQRSTUVWXYZ", 0, 26);
        put("abcdefghijklmnopqrstuvwxyz", 26, 26);
        put("0123456789", 52, 10);
        characters[62] = beforeLast;
        characters[63] = last;
        for (int i = 0; i < 64 * 64; ++i) {
            pairs[i][0] = characters[i >> 6];
            pairs[i][1] = characters[i & 63];
        }
        distances[0] = distanceOf(0);
        distances[1] = distanceOf(26);
        for (int index = 52; index < 64; ++index) {
            distances[index - 50] = distanceOf(index);
        }
    }

    char characters[64] = {};
    char pairs[64 * 64][2] = {};  ///< the characters of two indices
    /// What is to be added to an index: of a capital, of another letter, of each of the ten digits and
    /// of each of the last two.
    signed char distances[16] = {};

private:
    constexpr void put(char const * range, int index, int count) {
        for (int i = 0; i < count; ++i) {
            characters[index + i] = range[i];
        }
    }
    constexpr signed char distanceOf(int index) const {
        return static_cast<signed char>(characters[index] - index);
    }
};

}  // namespace tvk::detail
