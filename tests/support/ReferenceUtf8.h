#pragma once

#include <string>
#include <string_view>

namespace tvk::test {

// A slow decoder for comparison, by arithmetic where the library uses masks.

/// The length that a lead byte announces; 0 for one that leads nothing.
inline unsigned int sizeAnnouncedBy(char lead) {
    struct Row {
        unsigned int first, last, size;
    };
    constexpr Row ROWS[] = {{0x00, 0x7F, 1}, {0xC0, 0xDF, 2}, {0xE0, 0xEF, 3},
                            {0xF0, 0xF7, 4}, {0xF8, 0xFB, 5}, {0xFC, 0xFD, 6}};
    unsigned int const byte = static_cast<unsigned char>(lead);
    for (Row const & row : ROWS) {
        if (byte >= row.first && byte <= row.last) {
            return row.size;
        }
    }
    return 0;
}

/// The payload of a complete sequence, whatever its trail bytes are.
inline int valueOfSequence(std::string_view sequence) {
    auto const byteAt = [&](std::size_t i) {
        return static_cast<unsigned int>(static_cast<unsigned char>(sequence[i]));
    };
    unsigned int value = sequence.size() == 1 ? byteAt(0) : byteAt(0) % (128U >> sequence.size());
    for (std::size_t i = 1; i < sequence.size(); ++i) {
        value = value * 64 + byteAt(i) % 64;
    }
    return static_cast<int>(value);
}

/// The bytes of a code point from 0 on; from 0x20000 on they are more than a standard encoder gives.
inline std::string referenceEncode(int codePoint) {
    struct Row {
        int last, size, leadMark;
    };
    constexpr Row ROWS[] = {{0x7F, 1, 0x00},    {0x7FF, 2, 0xC0},     {0xFFFF, 3, 0xE0},
                            {0x1FFFF, 4, 0xF0}, {0x3FFFFFF, 5, 0xF8}, {0x7FFFFFFF, 6, 0xFC}};
    Row const * row = ROWS;
    while (codePoint > row->last) {
        ++row;
    }
    std::string bytes(static_cast<std::size_t>(row->size), '\0');
    for (std::size_t i = bytes.size() - 1; i > 0; --i) {
        bytes[i] = static_cast<char>(0x80 + codePoint % 64);
        codePoint /= 64;
    }
    bytes[0] = static_cast<char>(row->leadMark + codePoint);
    return bytes;
}

inline bool isTrailByte(char byte) {
    return static_cast<unsigned char>(byte) / 64 == 2;  // 0x80 to 0xBF
}

inline std::string nearPosition(unsigned int position) {
    return "invalid message data near position " + std::to_string(static_cast<int>(position));
}

inline std::string undecidedText(unsigned int position) {
    return nearPosition(position) + ": unable to decide UTF-8 character length";
}

inline std::string cutSequenceText(unsigned int position, unsigned int size) {
    return nearPosition(position) + ": no enough bytes(at least " + std::to_string(size) +
           " bytes expected)";
}

inline std::string badTrailText(unsigned int position, unsigned int size) {
    return nearPosition(position) + ": invalid UTF-8 " + std::to_string(size) + "-byte sequence";
}

/// A character, or a non-empty text that says why there is none. A size of 0 without a text is the
/// end of the data.
struct DecodedCharacter {
    int codePoint = 0;
    unsigned int size = 0;
    std::string failure;
};

inline bool operator==(DecodedCharacter const & one, DecodedCharacter const & other) {
    return one.codePoint == other.codePoint && one.size == other.size &&
           one.failure == other.failure;
}

enum class TrailBytes { TESTED, TAKEN_AS_THEY_COME };

inline DecodedCharacter referenceDecode(std::string_view data, unsigned int position,
                                        TrailBytes trails) {
    if (position >= data.size()) {
        return {};
    }
    unsigned int const size = sizeAnnouncedBy(data[position]);
    if (size == 0) {
        return {0, 0, undecidedText(position)};
    }
    std::string_view const sequence = data.substr(position, size);
    if (sequence.size() < size) {
        return {0, 0, cutSequenceText(position, size)};
    }
    for (char const trail : sequence.substr(1)) {
        if (trails == TrailBytes::TESTED && !isTrailByte(trail)) {
            return {0, 0, badTrailText(position, size)};
        }
    }
    return {valueOfSequence(sequence), size, {}};
}

/// Characters by their lead bytes; `size` is what the walk consumed, `codePoint` the count.
inline DecodedCharacter referenceCount(std::string_view data) {
    DecodedCharacter result;
    while (result.size < data.size()) {
        DecodedCharacter const character =
            referenceDecode(data, result.size, TrailBytes::TAKEN_AS_THEY_COME);
        if (!character.failure.empty()) {
            return character;
        }
        result.size += character.size;
        ++result.codePoint;
    }
    return result;
}

}  // namespace tvk::test
