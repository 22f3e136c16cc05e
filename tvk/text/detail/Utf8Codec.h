#pragma once

#include <cstdarg>

#include "tvk/platform/CString.h"
#include "tvk/platform/Format.h"
#include "tvk/text/detail/ShortUtf8.h"
#include "tvk/text/detail/Utf8Count.h"

namespace tvk::detail {

/// The UTF-8 codec behind JsonUtil and StringUtil: sequences of up to 6 bytes and code points of up
/// to 31 bits. Decoders accept what the lead byte announces; no overlong form, no surrogate and
/// no value above 0x10FFFF is refused.
///
/// `Error` is what a failure throws: made from a `char const *`, which it copies. All that belongs
/// to a failure is kept out of line, so that the decoders can be inlined into loops.
template <class Error>
class Utf8Codec {
public:
    /// A `size` of 0 is the end of the data.
    using Sequence = Utf8Sequence;

    static int surrogatesPairToCodePoint(int high, int low);
    static void codePointToSurrogatesPair(int codePoint, int * high, int * low);
    static bool isHighSurrogate(int value) { return value >= 0xD800 && value < 0xDC00; }
    static bool isLowSurrogate(int value) { return value >= 0xDC00 && value < 0xE000; }

    /// Tests everything.
    static Sequence checked(char const * data, unsigned int length, unsigned int position);
    /// Requires: `position` inside the data; sequences of 2 to 4 bytes complete. Trail bytes are
    /// taken as they come.
    static Sequence trusted(char const * data, unsigned int length, unsigned int position);

    /// The two above with results in places. At the end of the data the checking one returns 0 and
    /// stores nothing. `bytes` receives the sequence as it stands, without a NUL.
    static int next(char const * data, unsigned int length, unsigned int position,
                    unsigned int * byteCount, char * bytes);
    static int next4(char const * data, unsigned int length, unsigned int position,
                     unsigned int * byteCount, char * bytes);

    /// The length that a lead byte announces; 0 for a byte that can lead nothing.
    static unsigned int sequenceSize(unsigned char lead);

    static unsigned int count(char const * data, unsigned int length, unsigned int * consumed);

    // The failures; `position` is that of the lead byte.
    [[noreturn, gnu::cold, gnu::noinline]] static void failUndecided(unsigned int position);
    [[noreturn, gnu::cold, gnu::noinline]] static void failCut(unsigned int position,
                                                               unsigned int size);
    [[noreturn, gnu::cold, gnu::noinline]] static void failTrail(unsigned int position,
                                                                 unsigned int size);

private:
    template <unsigned int SIZE>
    static Sequence checkedSequence(char const * data, unsigned int length, unsigned int position);
    template <unsigned int SIZE>
    static Sequence boundedSequence(char const * data, unsigned int length, unsigned int position);

    static int stored(Sequence sequence, char const * data, unsigned int position,
                      unsigned int * byteCount, char * bytes);

    [[noreturn]] static void fail(char const * format, ...) TVK_PRINTF_LIKE(1, 2);
};

template <class Error>
int Utf8Codec<Error>::surrogatesPairToCodePoint(int high, int low) {
    // In unsigned arithmetic: nothing is checked, so the arguments may be anything.
    auto const bits = static_cast<unsigned int>(high) - 0xD7F7U;
    return static_cast<int>((bits << 10) + static_cast<unsigned int>(low));
}

template <class Error>
void Utf8Codec<Error>::codePointToSurrogatesPair(int codePoint, int * high, int * low) {
    int const offset = static_cast<int>(static_cast<unsigned int>(codePoint) - 0x10000U);
    *high = offset / 1024 + 0xD800;
    *low = offset % 1024 + 0xDC00;
}

template <class Error>
inline typename Utf8Codec<Error>::Sequence Utf8Codec<Error>::checked(char const * data,
                                                                     unsigned int length,
                                                                     unsigned int position) {
    if (position >= length) {
        return {0, 0};
    }
    auto const lead = static_cast<unsigned char>(data[position]);
    if (lead < 0x80) {
        return {lead, 1};
    }
    if ((lead & 0xE0) == 0xC0) {
        return checkedSequence<2>(data, length, position);
    }
    if ((lead & 0xF0) == 0xE0) {
        return checkedSequence<3>(data, length, position);
    }
    if ((lead & 0xF8) == 0xF0) {
        return checkedSequence<4>(data, length, position);
    }
    if ((lead & 0xFC) == 0xF8) {
        return checkedSequence<5>(data, length, position);
    }
    if ((lead & 0xFE) == 0xFC) {
        return checkedSequence<6>(data, length, position);
    }
    failUndecided(position);
}

template <class Error>
inline typename Utf8Codec<Error>::Sequence Utf8Codec<Error>::trusted(char const * data,
                                                                     unsigned int length,
                                                                     unsigned int position) {
    auto const * const bytes = reinterpret_cast<unsigned char const *>(data) + position;
    unsigned char const lead = *bytes;
    if (lead < 0x80) {
        return {lead, 1};
    }
    if ((lead & 0xE0) == 0xC0) {
        return {assembledUtf8<2>(bytes), 2};
    }
    if ((lead & 0xF0) == 0xE0) {
        return {assembledUtf8<3>(bytes), 3};
    }
    if ((lead & 0xF8) == 0xF0) {
        return {assembledUtf8<4>(bytes), 4};
    }
    if ((lead & 0xFC) == 0xF8) {
        return boundedSequence<5>(data, length, position);
    }
    if ((lead & 0xFE) == 0xFC) {
        return boundedSequence<6>(data, length, position);
    }
    failUndecided(position);
}

template <class Error>
inline int Utf8Codec<Error>::next(char const * data, unsigned int length, unsigned int position,
                                  unsigned int * byteCount, char * bytes) {
    return stored(checked(data, length, position), data, position, byteCount, bytes);
}

template <class Error>
inline int Utf8Codec<Error>::next4(char const * data, unsigned int length, unsigned int position,
                                   unsigned int * byteCount, char * bytes) {
    return stored(trusted(data, length, position), data, position, byteCount, bytes);
}

template <class Error>
inline unsigned int Utf8Codec<Error>::sequenceSize(unsigned char lead) {
    if (lead < 0x80) {
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        return 2;
    }
    if ((lead & 0xF0) == 0xE0) {
        return 3;
    }
    if ((lead & 0xF8) == 0xF0) {
        return 4;
    }
    if ((lead & 0xFC) == 0xF8) {
        return 5;
    }
    if ((lead & 0xFE) == 0xFC) {
        return 6;
    }
    return 0;
}

template <class Error>
unsigned int Utf8Codec<Error>::count(char const * data, unsigned int length,
                                     unsigned int * consumed) {
    // Blocks need a few bytes before them, and where they do not count on, the walk must for a while.
    constexpr unsigned int FIRST_BLOCKS = 3;
    constexpr unsigned int WORTH_BLOCKS = 32;
    constexpr unsigned int WALKED_BETWEEN = 64;
    unsigned int characters = 0;
    unsigned int position = 0;
    unsigned int nextBlocks = FIRST_BLOCKS;
    while (position < length) {
        if (position >= nextBlocks && length - position >= WORTH_BLOCKS) {
            Utf8Run const run = bestCountRegularUtf8()(data, length, position);
            position += run.bytes;
            characters += run.characters;
            nextBlocks = position + WALKED_BETWEEN;
            continue;
        }
        unsigned int const size = sequenceSize(static_cast<unsigned char>(data[position]));
        if (size == 0) {
            failUndecided(position);
        }
        if (length - position < size) {
            failCut(position, size);
        }
        position += size;
        ++characters;
    }
    if (consumed != nullptr) {
        *consumed = position;
    }
    return characters;
}

template <class Error>
void Utf8Codec<Error>::failUndecided(unsigned int position) {
    fail("invalid message data near position %d: unable to decide UTF-8 character length",
         static_cast<int>(position));
}

template <class Error>
void Utf8Codec<Error>::failCut(unsigned int position, unsigned int size) {
    fail("invalid message data near position %d: no enough bytes(at least %u bytes expected)",
         static_cast<int>(position), size);
}

template <class Error>
void Utf8Codec<Error>::failTrail(unsigned int position, unsigned int size) {
    fail("invalid message data near position %d: invalid UTF-8 %u-byte sequence",
         static_cast<int>(position), size);
}

template <class Error>
template <unsigned int SIZE>
inline typename Utf8Codec<Error>::Sequence Utf8Codec<Error>::checkedSequence(
    char const * data, unsigned int length, unsigned int position) {
    Sequence const sequence = boundedSequence<SIZE>(data, length, position);
    auto const * const bytes = reinterpret_cast<unsigned char const *>(data) + position;
    bool complete = true;
    for (unsigned int i = 1; i < SIZE; ++i) {
        complete &= isTrailOfUtf8(bytes[i]);
    }
    if (!complete) {
        failTrail(position, SIZE);
    }
    return sequence;
}

template <class Error>
template <unsigned int SIZE>
inline typename Utf8Codec<Error>::Sequence Utf8Codec<Error>::boundedSequence(
    char const * data, unsigned int length, unsigned int position) {
    if (length - position < SIZE) {
        failCut(position, SIZE);
    }
    return {assembledUtf8<SIZE>(reinterpret_cast<unsigned char const *>(data) + position), SIZE};
}

template <class Error>
inline int Utf8Codec<Error>::stored(Sequence sequence, char const * data, unsigned int position,
                                    unsigned int * byteCount, char * bytes) {
    for (unsigned int i = 0; i < sequence.size; ++i) {
        bytes[i] = data[position + i];
    }
    if (sequence.size != 0) {
        *byteCount = sequence.size;
    }
    return sequence.codePoint;
}

template <class Error>
void Utf8Codec<Error>::fail(char const * format, ...) {
    char message[256];
    va_list arguments;
    va_start(arguments, format);
    platform::formatInto(message, sizeof message, format, arguments);
    va_end(arguments);
    throw Error(message);
}

}  // namespace tvk::detail
