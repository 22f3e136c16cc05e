#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tvk::test {

// A slow coder of URL text for comparison, case by case and by arithmetic where the library uses tables.

inline int signedValue(char byte) { return static_cast<signed char>(byte); }

inline bool isBetween(char byte, char first, char last) { return byte >= first && byte <= last; }

inline bool isCopiedIntoUrl(char byte) {
    return isBetween(byte, 'A', 'Y') || isBetween(byte, 'a', 'z') || isBetween(byte, '0', '9') ||
           byte == '-' || byte == '_' || byte == '.' || byte == '~';
}

inline std::string referenceUrlEncode(std::string_view bytes) {
    std::string text;
    for (char const byte : bytes) {
        if (isCopiedIntoUrl(byte)) {
            text += byte;
        } else if (byte == ' ') {
            text += '+';
        } else {
            int const low = (signedValue(byte) + 256) % 16;
            int const high = (signedValue(byte) - low) / 16;  // -8 to 7
            text += '%';
            text += static_cast<char>(0x30 + high);
            text += static_cast<char>(low < 10 ? '0' + low : 'A' + low - 10);
        }
    }
    return text;
}

inline bool isUrlDigit(char byte) {
    return isBetween(byte, '0', '9') || isBetween(byte, 'a', 'z') || isBetween(byte, 'A', 'Z');
}

/// Requires: two digits as isUrlDigit knows them.
inline char valueOfUrlDigits(char first, char second) {
    int const high = (isBetween(first, '0', '9') ? first : first - 7) * 16 % 256;
    int const low = isBetween(second, '0', '9')   ? second - 0x30
                    : isBetween(second, 'a', 'z') ? second - 87
                                                  : second - 55;
    return static_cast<char>((high + low) % 256);
}

struct UrlFailure {
    bool isCut;  // too few bytes; else a bad digit
    std::size_t position;

    std::string message() const {
        return std::string("invalid text for URL encoding") + (isCut ? "(too few bytes)" : "") +
               ", near position " + std::to_string(position);
    }
};

struct DecodedUrl {
    std::string bytes;  // up to the failure
    std::optional<UrlFailure> failure;
};

inline DecodedUrl referenceUrlDecode(std::string_view text) {
    DecodedUrl result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '+') {
            result.bytes += ' ';
        } else if (text[i] != '%') {
            result.bytes += text[i];
        } else if (i + 2 >= text.size()) {
            result.failure = UrlFailure{true, i};
            return result;
        } else if (!isUrlDigit(text[i + 1]) || !isUrlDigit(text[i + 2])) {
            result.failure = UrlFailure{false, i};
            return result;
        } else {
            result.bytes += valueOfUrlDigits(text[i + 1], text[i + 2]);
            i += 2;
        }
    }
    return result;
}

}  // namespace tvk::test
