#include <cerrno>
#include <cstdint>
#include <cstring>
#include <new>

#include "tvk/json/SimpleObjectCache.h"
#include "tvk/platform/CodePage.h"
#include "tvk/platform/Numbers.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk {

namespace {

bool isAscii(char const * text, unsigned int size) {
    constexpr std::uint64_t HIGH_BITS = 0x8080808080808080;
    std::uint64_t seen = 0;
    for (; size >= 8; text += 8, size -= 8) {
        std::uint64_t word;
        std::memcpy(&word, text, 8);
        seen |= word;
    }
    for (; size != 0; ++text, --size) {
        seen |= static_cast<unsigned char>(*text);
    }
    return (seen & HIGH_BITS) == 0;
}

/// What base 0 reads as decimal and what cannot overflow: a minus sign or none, then up to 18 digits
/// without a leading zero.
bool parsePlainInteger(char const * text, unsigned int size, long long * value) {
    constexpr unsigned int MAXIMUM_DIGITS = 18;
    bool const negative = size != 0 && text[0] == '-';
    char const * const digits = negative ? text + 1 : text;
    unsigned int const count = negative ? size - 1 : size;
    if (count - 1 >= MAXIMUM_DIGITS || (digits[0] == '0' && count != 1)) {
        return false;
    }
    long long number = 0;
    for (unsigned int i = 0; i < count; ++i) {
        auto const digit = static_cast<unsigned char>(digits[i] - '0');
        if (digit > 9) {
            return false;
        }
        number = number * 10 + digit;
    }
    *value = negative ? -number : number;
    return true;
}

long long parseInteger(CString const & text) {
    errno = 0;
    long long value = 0;
    if (parsePlainInteger(text, static_cast<unsigned int>(text.GetLength()), &value)) {
        return value;
    }
    return platform::parseInt64(text, 0);
}

NumberData * newNumber(CString const & text, bool isInteger) {
    return isInteger ? new NumberData(parseInteger(text))
                     : new NumberData(platform::parseDouble(text));
}

}  // namespace

FieldValue * SimpleObjectCache::DefaultRawDataToObjectConverter::stringFromRawData(
    void const * data, unsigned int size) {
    try {
        auto const * const text = static_cast<char const *>(data);
        return isAscii(text, size) ? new StringData(text, size)
                                   : new StringData(platform::utf8ToAnsi(data, size));
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

FieldValue * SimpleObjectCache::DefaultRawDataToObjectConverter::numberFromRawData(
    void const * data, unsigned int size, void const * fractionStart, void const * exponentStart) {
    bool const isInteger = fractionStart == nullptr && exponentStart == nullptr;
    NumberData * number = nullptr;
    try {
        CString const text(static_cast<char const *>(data), static_cast<int>(size));
        number = newNumber(text, isInteger);
        number->setStringRep(text);
        return number;
    } catch (std::bad_alloc const &) {
        RefCountedPtr<NumberData> const endOfWhatWasMade(number);
        return nullptr;
    }
}

SimpleObjectCache::RawDataToObjectConverter * SimpleObjectCache::defaultRawDataConverter() {
    static DefaultRawDataToObjectConverter instance;
    return &instance;
}

}  // namespace tvk
