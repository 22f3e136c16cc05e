#pragma once

/// What urlEncode and urlDecode make of a byte, reckoned by the compiler for tables.
namespace tvk::detail {

constexpr char SECOND_PERCENT_DIGITS[] = "0123456789ABCDEF";

/// By the high half of the byte: counted from '0' by its signed value, -8 to 7.
constexpr char FIRST_PERCENT_DIGITS[] = "01234567()*+,-./";

/// 'Z' is not among them: see StringUtil::urlEncode.
constexpr char COPIED_BY_PERCENT_CODING[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYabcdefghijklmnopqrstuvwxyz0123456789-_.~";

constexpr bool isCopiedByPercentCoding(unsigned int byte) {
    for (char const * copied = COPIED_BY_PERCENT_CODING; *copied != '\0'; ++copied) {
        if (static_cast<unsigned char>(*copied) == byte) {
            return true;
        }
    }
    return false;
}

}  // namespace tvk::detail
