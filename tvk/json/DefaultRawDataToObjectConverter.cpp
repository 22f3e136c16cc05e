#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

#include "tvk/json/SimpleObjectCache.h"
#include "tvk/platform/CodePage.h"
#include "tvk/platform/CopyBytes.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"
#include "tvk/values/detail/OneBlock.h"

namespace tvk {

namespace {

using String = detail::OneBlock<StringData>;
using Number = detail::OneBlock<NumberData>;

constexpr unsigned int MAXIMUM_LENGTH = std::numeric_limits<int>::max();

/// The string of the first `length` bytes in the room, behind which there may be more room.
StringData * stringIn(void * block, std::size_t length) {
    if (length > MAXIMUM_LENGTH) {
        std::free(block);
        return nullptr;
    }
    return String::make(block, static_cast<unsigned int>(length));
}

/// Null, and no block, where memory is out.
void * resized(void * block, std::size_t length) {
    void * const other = std::realloc(block, String::blockSize(length));
    if (other == nullptr) {
        std::free(block);
    }
    return other;
}

/// The code page's text of bytes that are not all ASCII. `block` has room for as many bytes.
StringData * stringOfUtf8(void const * data, unsigned int size, void * block) {
    constexpr unsigned int MOST_ON_STACK = 512;
    constexpr std::size_t ROOM = platform::UTF8_TO_ANSI_ROOM;
    if (size > MOST_ON_STACK) {
        constexpr std::size_t MAXIMUM_SIZE = std::numeric_limits<std::size_t>::max() / 2 / ROOM;
        if (std::size_t{size} > MAXIMUM_SIZE) {
            std::free(block);
            return nullptr;
        }
        void * const larger = resized(block, size * ROOM);
        if (larger == nullptr) {
            return nullptr;
        }
        std::size_t const length = platform::utf8ToAnsi(data, size, String::roomIn(larger));
        void * const cut = std::realloc(larger, String::blockSize(length));
        return stringIn(cut == nullptr ? larger : cut, length);
    }
    char text[MOST_ON_STACK * ROOM];
    std::size_t const length = platform::utf8ToAnsi(data, size, text);
    void * const fitting = length > size ? resized(block, length) : block;
    if (fitting == nullptr) {
        return nullptr;
    }
    platform::copyBytes(String::roomIn(fitting), text, length);
    return stringIn(fitting, length);
}

StringData * emptyString() {
    try {
        return new StringData;
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

/// What stands nowhere reads as 0, and its text form is empty.
NumberData * emptyNumber(bool isInteger) {
    try {
        NumberData * const number = isInteger ? new NumberData(0LL) : new NumberData(0.0);
        number->setStringRep(CString());
        return number;
    } catch (std::bad_alloc const &) {
        return nullptr;
    }
}

/// Whether reading a number would tell of one out of range, through errno. Without an exponent that takes
/// many digits: 17 are below 2^63 in every base that integers are read in, and 200 below the largest
/// and above the smallest double.
bool mayBeOutOfRange(unsigned int size, bool isInteger, bool hasExponent) {
    constexpr unsigned int SAFE_INTEGER_SIZE = 17;
    constexpr unsigned int SAFE_DOUBLE_SIZE = 200;
    return hasExponent || size > (isInteger ? SAFE_INTEGER_SIZE : SAFE_DOUBLE_SIZE);
}

}  // namespace

FieldValue * SimpleObjectCache::DefaultRawDataToObjectConverter::stringFromRawData(
    void const * data, unsigned int size) {
    if (size == 0) {
        return emptyString();
    }
    void * const block = size <= MAXIMUM_LENGTH ? String::allocate(size) : nullptr;
    if (block == nullptr) {
        return nullptr;
    }
    auto const * const text = static_cast<char const *>(data);
    if (platform::areAscii(platform::copyBytes(String::roomIn(block), text, size))) {
        return String::make(block, size);
    }
    return stringOfUtf8(data, size, block);
}

FieldValue * SimpleObjectCache::DefaultRawDataToObjectConverter::numberFromRawData(
    void const * data, unsigned int size, void const * fractionStart, void const * exponentStart) {
    bool const isInteger = fractionStart == nullptr && exponentStart == nullptr;
    if (isInteger) {
        errno = 0;
    }
    if (size == 0) {
        return emptyNumber(isInteger);
    }
    void * const block = size <= MAXIMUM_LENGTH ? Number::allocate(size) : nullptr;
    if (block == nullptr) {
        return nullptr;
    }
    platform::copyBytes(Number::roomIn(block), static_cast<char const *>(data), size);
    bool const isReadAtOnce = mayBeOutOfRange(size, isInteger, exponentStart != nullptr);
    return Number::make(block, size, isInteger, isReadAtOnce);
}

SimpleObjectCache::RawDataToObjectConverter * SimpleObjectCache::defaultRawDataConverter() {
    static DefaultRawDataToObjectConverter instance;
    return &instance;
}

}  // namespace tvk
