#include <array>
#include <cstring>

#include "tvk/platform/Processor.h"
#include "tvk/text/detail/PercentAlphabet.h"
#include "tvk/text/detail/PercentCoders.h"

namespace tvk::detail {

namespace {

constexpr unsigned int BYTES = 256;

/// What a byte is written as.
struct Encoded {
    char text[3];
    unsigned char length;
};

constexpr Encoded encodedByte(unsigned int byte) {
    if (byte == ' ') {
        return {{'+'}, 1};
    }
    if (isCopiedByPercentCoding(byte)) {
        return {{static_cast<char>(byte)}, 1};
    }
    return {{'%', FIRST_PERCENT_DIGITS[byte >> 4], SECOND_PERCENT_DIGITS[byte & 15]}, 3};
}

constexpr std::array<Encoded, BYTES> encodedBytes() {
    std::array<Encoded, BYTES> bytes{};
    for (unsigned int byte = 0; byte < BYTES; ++byte) {
        bytes[byte] = encodedByte(byte);
    }
    return bytes;
}

constexpr signed char NO_DIGIT = -1;

/// Digits of base 36, in either case: the letters go on counting behind 'f'.
constexpr std::array<signed char, BYTES> digitValues() {
    std::array<signed char, BYTES> values{};
    values.fill(NO_DIGIT);
    for (unsigned char i = 0; i < 10; ++i) {
        values['0' + i] = static_cast<signed char>(i);
    }
    for (unsigned char i = 0; i < 26; ++i) {
        values['a' + i] = values['A' + i] = static_cast<signed char>(10 + i);
    }
    return values;
}

constexpr std::array<Encoded, BYTES> ENCODED_BYTES = encodedBytes();
constexpr std::array<signed char, BYTES> DIGIT_VALUES = digitValues();

int digitValue(char digit) { return DIGIT_VALUES[static_cast<unsigned char>(digit)]; }

char * encode(char const * data, std::size_t size, char * out) {
    for (std::size_t i = 0; i < size; ++i) {
        Encoded const & encoded = ENCODED_BYTES[static_cast<unsigned char>(data[i])];
        // Always three: there is the room, and nothing waits for the length but `out`.
        std::memcpy(out, encoded.text, sizeof encoded.text);
        out += encoded.length;
    }
    return out;
}

PercentDecoded decode(char const * data, std::size_t size, char * out) {
    std::size_t i = 0;
    for (; i < size; ++i) {
        if (data[i] != '%') {
            *out++ = data[i] == '+' ? ' ' : data[i];
            continue;
        }
        if (size - i < 3) {
            break;
        }
        int const first = digitValue(data[i + 1]);
        int const second = digitValue(data[i + 2]);
        if (first == NO_DIGIT || second == NO_DIGIT) {
            break;
        }
        *out++ = static_cast<char>(first * 16 + second);  // modulo 256
        i += 2;
    }
    return {i, out};
}

constexpr PercentCoders PLAIN = {encode, decode};

}  // namespace

#if !TVK_PROCESSOR_X86
PercentCoders const * percentCodersWithAvx2() { return nullptr; }
#endif

PercentCoders const & plainPercentCoders() { return PLAIN; }

PercentCoders const & bestPercentCoders() {
    static PercentCoders const & best =
        percentCodersWithAvx2() != nullptr ? *percentCodersWithAvx2() : PLAIN;
    return best;
}

}  // namespace tvk::detail
