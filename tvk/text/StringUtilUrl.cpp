#include <array>
#include <cstdint>
#include <cstring>

#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"
#include "tvk/text/detail/BoundedText.h"

namespace tvk {

namespace {

constexpr unsigned int BYTES = 256;

/// What urlEncode writes for one byte.
struct Encoded {
    char text[3];
    unsigned char length;
};

/// The first digit is counted from '0' by the signed value, so that -8 to -1 give '(' to '/'.
constexpr Encoded escaped(unsigned char byte) {
    return {{'%', static_cast<char>('0' + (static_cast<signed char>(byte) >> 4)),
             "0123456789ABCDEF"[byte & 15]},
            3};
}

constexpr std::array<Encoded, BYTES> encodedBytes() {
    constexpr char COPIED[] = "ABCDEFGHIJKLMNOPQRSTUVWXYabcdefghijklmnopqrstuvwxyz0123456789-_.~";
    std::array<Encoded, BYTES> bytes{};
    for (unsigned int byte = 0; byte < BYTES; ++byte) {
        bytes[byte] = escaped(static_cast<unsigned char>(byte));
    }
    for (char const * copied = COPIED; *copied != '\0'; ++copied) {
        bytes[static_cast<unsigned char>(*copied)] = {{*copied}, 1};
    }
    bytes[' '] = {{'+'}, 1};
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

[[gnu::cold, gnu::noinline]] void report(ErrorInfo & error, char const * text,
                                         unsigned int position) {
    error.setErrorCode(KestrinConstants::ERR_InvalidDataOfEncoding);
    error.setErrorMessage(StringUtil::format("%s, near position %u", text, position));
}

void reportCutSequence(ErrorInfo * error, unsigned int position) {
    if (error != nullptr) {
        report(*error, "invalid text for URL encoding(too few bytes)", position);
    }
}

void reportBadDigit(ErrorInfo * error, unsigned int position) {
    if (error != nullptr) {
        error->setDomain(KestrinConstants::ErrorDomain_Kestrin);
        report(*error, "invalid text for URL encoding", position);
    }
}

/// Returns the place behind the last byte written.
char * decode(char const * data, unsigned int size, char * out, ErrorInfo * error) {
    for (unsigned int i = 0; i < size; ++i) {
        if (data[i] != '%') {
            *out++ = data[i] == '+' ? ' ' : data[i];
            continue;
        }
        if (size - i < 3) {
            reportCutSequence(error, i);
            break;
        }
        int const first = digitValue(data[i + 1]);
        int const second = digitValue(data[i + 2]);
        if (first == NO_DIGIT || second == NO_DIGIT) {
            reportBadDigit(error, i);
            break;
        }
        *out++ = static_cast<char>(first * 16 + second);  // modulo 256
        i += 2;
    }
    return out;
}

}  // namespace

CString StringUtil::urlEncode(char const * data, unsigned int size) {
    constexpr std::uint64_t LONGEST = sizeof(Encoded::text);
    return detail::boundedText(LONGEST * size, [=](char * out) {
        for (unsigned int i = 0; i < size; ++i) {
            Encoded const & encoded = ENCODED_BYTES[static_cast<unsigned char>(data[i])];
            // Always three: the bound has the room, and nothing waits for the length but `out`.
            std::memcpy(out, encoded.text, LONGEST);
            out += encoded.length;
        }
        return out;
    });
}

CString StringUtil::urlDecode(char const * data, unsigned int size, ErrorInfo * error) {
    return detail::boundedText(size, [=](char * out) { return decode(data, size, out, error); });
}

}  // namespace tvk
