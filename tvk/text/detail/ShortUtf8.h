#pragma once

#include "tvk/platform/Export.h"

/// Tells the compiler which way to lay out without a jump. A function would lose that when inlined.
#if defined(__GNUC__)
#define TVK_LIKELY(condition) __builtin_expect(condition, true)
#else
#define TVK_LIKELY(condition) (condition)
#endif

namespace tvk::detail {

// What the codecs of JsonUtil and StringUtil do for most characters, to be inlined where they are
// called; Utf8Codec does the rest behind a call.

/// A decoded character; a `size` of 0 stands for none.
struct Utf8Sequence {
    int codePoint;
    unsigned int size;
};

inline bool isTrailOfUtf8(unsigned char byte) { return static_cast<signed char>(byte) < -64; }

/// The value of SIZE bytes, trail bytes taken as they come.
template <unsigned int SIZE>
inline int assembledUtf8(unsigned char const * bytes) {
    unsigned int value = bytes[0] & (0x7FU >> SIZE);
    for (unsigned int i = 1; i < SIZE; ++i) {
        value = value << 6 | (bytes[i] & 0x3FU);
    }
    return static_cast<int>(value);
}

/// The same for bytes that are known to be a lead of SIZE bytes and its trail bytes. Their marks are
/// taken off at once.
template <unsigned int SIZE>
inline int sumOfUtf8(unsigned char const * bytes) {
    unsigned int value = bytes[0];
    unsigned int marks = 0xFFU & ~(0xFFU >> SIZE);
    for (unsigned int i = 1; i < SIZE; ++i) {
        value = (value << 6) + bytes[i];
        marks = (marks << 6) + 0x80U;
    }
    return static_cast<int>(value - marks);
}

/// Writes `codePoint` as SIZE bytes, of which there are at least 2.
template <unsigned int SIZE>
inline void putUtf8(char * buffer, unsigned int codePoint) {
    constexpr unsigned int LEAD_MARK = 0xFFU & ~(0xFFU >> SIZE);
    constexpr unsigned int LEAD_BITS = 0x7FU >> SIZE;
    unsigned int shift = 6 * (SIZE - 1);
    *buffer++ = static_cast<char>(LEAD_MARK | (codePoint >> shift & LEAD_BITS));
    while (shift != 0) {
        shift -= 6;
        *buffer++ = static_cast<char>(0x80U | (codePoint >> shift & 0x3FU));
    }
}

/// The character of up to 3 bytes at `position`, if all of them are there and are what the lead
/// announces; none in any other case, the end of the data included.
inline Utf8Sequence shortUtf8(char const * data, unsigned int length, unsigned int position) {
    if (TVK_LIKELY(position < length)) {
        auto const * const bytes = reinterpret_cast<unsigned char const *>(data) + position;
        if (TVK_LIKELY(*bytes < 0x80)) {
            return {*bytes, 1};
        }
        unsigned int const left = length - position;
        if (TVK_LIKELY((*bytes & 0xF0) == 0xE0)) {
            if (TVK_LIKELY(left >= 3) && TVK_LIKELY(isTrailOfUtf8(bytes[1])) &&
                TVK_LIKELY(isTrailOfUtf8(bytes[2]))) {
                return {sumOfUtf8<3>(bytes), 3};
            }
        } else if ((*bytes & 0xE0) == 0xC0) {
            if (TVK_LIKELY(left >= 2) && TVK_LIKELY(isTrailOfUtf8(bytes[1]))) {
                return {sumOfUtf8<2>(bytes), 2};
            }
        }
    }
    return {0, 0};
}

/// The character of up to 4 bytes that the byte at `position` announces, none where that is another.
/// Requires: that many bytes there.
inline Utf8Sequence trustedShortUtf8(char const * data, unsigned int position) {
    auto const * const bytes = reinterpret_cast<unsigned char const *>(data) + position;
    if (TVK_LIKELY(*bytes < 0x80)) {
        return {*bytes, 1};
    }
    if ((*bytes & 0xF0) == 0xE0) {
        return {assembledUtf8<3>(bytes), 3};
    }
    if ((*bytes & 0xE0) == 0xC0) {
        return {assembledUtf8<2>(bytes), 2};
    }
    if ((*bytes & 0xF8) == 0xF0) {
        return {assembledUtf8<4>(bytes), 4};
    }
    return {0, 0};
}

using Utf8Encoder = int (*)(char *, unsigned int, int);
using Utf8Decoder = int (*)(char const *, unsigned int, unsigned int, unsigned int *);
using CopyingUtf8Decoder = int (*)(char const *, unsigned int, unsigned int, unsigned int *,
                                   char *);

/// The result of a decoder: the short character if there is one, else what `decode` gives, the decoder
/// that copies the bytes as well.
inline int nextUtf8(Utf8Sequence character, unsigned int * byteCount, CopyingUtf8Decoder decode,
                    char const * data, unsigned int length, unsigned int position) {
    if (character.size != 0) {
        *byteCount = character.size;
        return character.codePoint;
    }
    // A place of its own, so that the caller's may stay in a register.
    unsigned int size = 0;
    char bytes[6];
    int const codePoint = decode(data, length, position, &size, bytes);
    if (size != 0) {
        *byteCount = size;
    }
    return codePoint;
}

/// Writes a code point of 0x10000 and above, as JsonUtil::utf8Encode tells.
TVK_API int encodeLongUtf8(char * buffer, unsigned int bufferSize, int codePoint);

/// JsonUtil::utf8Encode.
inline int encodeUtf8(char * buffer, unsigned int bufferSize, int codePoint) {
    auto const bits = static_cast<unsigned int>(codePoint);
    if (TVK_LIKELY(codePoint < 0x80)) {
        if (TVK_LIKELY(bufferSize >= 1)) {
            *buffer = static_cast<char>(bits & 0xFF);
            return 1;
        }
        return 0;
    }
    if (codePoint < 0x800) {
        if (TVK_LIKELY(bufferSize >= 2)) {
            putUtf8<2>(buffer, bits);
            return 2;
        }
        return 0;
    }
    if (codePoint < 0x10000) {
        if (TVK_LIKELY(bufferSize >= 3)) {
            putUtf8<3>(buffer, bits);
            return 3;
        }
        return 0;
    }
    return encodeLongUtf8(buffer, bufferSize, codePoint);
}

}  // namespace tvk::detail
