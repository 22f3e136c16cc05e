#pragma once

/// Character classes and cases of the "C" locale, whatever the process's locale is: bytes of 0x80 and
/// above belong to no class and have no case.
namespace tvk::platform {

constexpr bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

constexpr bool isUpper(char character) noexcept { return character >= 'A' && character <= 'Z'; }

constexpr bool isLower(char character) noexcept { return character >= 'a' && character <= 'z'; }

constexpr bool isAlnum(char character) noexcept {
    return isDigit(character) || isUpper(character) || isLower(character);
}

/// Blank, tab, line feed, vertical tab, form feed and carriage return.
constexpr bool isSpace(char character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

constexpr char toLower(char character) noexcept {
    return isUpper(character) ? static_cast<char>(character + ('a' - 'A')) : character;
}

constexpr char toUpper(char character) noexcept {
    return isLower(character) ? static_cast<char>(character - ('a' - 'A')) : character;
}

}  // namespace tvk::platform
