#include "tvk/text/StringUtil.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string_view>

#include "tvk/platform/CharacterClass.h"
#include "tvk/platform/Format.h"
#include "tvk/platform/Numbers.h"

namespace tvk {

namespace {

template <class Number>
CString decimal(Number number) {
    char digits[std::numeric_limits<Number>::digits10 + 2];  // one more digit, and a sign
    char const * const end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    return CString(digits, static_cast<int>(end - digits));
}

bool isWordInAnyCase(std::string_view text, std::string_view lowerCaseWord) {
    return std::equal(
        text.begin(), text.end(), lowerCaseWord.begin(), lowerCaseWord.end(),
        [](char character, char lower) { return platform::toLower(character) == lower; });
}

std::string_view viewOf(CString const & text) {
    return std::string_view(text.GetString(), static_cast<std::size_t>(text.GetLength()));
}

bool endsWithBytes(CString const & text, char const * suffix, std::size_t length) {
    auto const textLength = static_cast<std::size_t>(text.GetLength());
    return length <= textLength &&
           std::strncmp(text.GetString() + (textLength - length), suffix, length) == 0;
}

}  // namespace

CString StringUtil::stringByRepeating(char character, unsigned int count) {
    if (count > static_cast<unsigned int>(std::numeric_limits<int>::max())) {
        throw std::bad_alloc();  // as every text that would pass the longest one
    }
    return CString(character, static_cast<int>(count));
}

CString StringUtil::format(char const * format, ...) {
    va_list arguments;
    va_start(arguments, format);
    CString result = platform::formatted(format, arguments);
    va_end(arguments);
    return result;
}

CString StringUtil::vformat(char const * format, va_list arguments) {
    return platform::formatted(format, arguments);
}

CString StringUtil::toString(int number) { return decimal(number); }

CString StringUtil::toString(long number) { return decimal(platform::low32(number)); }

CString StringUtil::toString(unsigned int number) { return decimal(number); }

CString StringUtil::toString(unsigned long number) {
    return decimal(static_cast<std::uint32_t>(number));
}

CString StringUtil::toString(long long number) { return decimal(number); }

CString StringUtil::toString(unsigned long long number) { return decimal(number); }

CString const & StringUtil::toString(bool value) { return value ? TRUE_TEXT : FALSE_TEXT; }

int StringUtil::parseInt(CString const & text) { return platform::parseInt32(text); }

long StringUtil::parseLong(CString const & text) { return platform::parseInt32(text); }

long long StringUtil::parseLongLong(CString const & text, int base) {
    return platform::parseInt64(text, base);
}

double StringUtil::parseDouble(CString const & text) { return platform::parseDouble(text); }

bool StringUtil::parseBooleanValue(char const * text) {
    std::string_view const word(text);
    return word == "1" || isWordInAnyCase(word, "true") || isWordInAnyCase(word, "t") ||
           isWordInAnyCase(word, "yes") || isWordInAnyCase(word, "y");
}

bool StringUtil::isEmpty(CString const & text) { return text.IsEmpty(); }

CString & StringUtil::trim(CString & text) { return text.Trim(); }

bool StringUtil::startsWith(CString const & text, CString const & other) {
    return text.Find(other, 0) >= 0;
}

bool StringUtil::startsWith(CString const & text, char const * prefix) {
    return std::strncmp(text, prefix, std::strlen(prefix)) == 0;
}

bool StringUtil::startsWith(CString const & text, char const * prefix, unsigned int length) {
    return std::strncmp(text, prefix, length) == 0;
}

bool StringUtil::endsWith(CString const & text, char const * suffix) {
    return endsWithBytes(text, suffix, std::strlen(suffix));
}

bool StringUtil::endsWith(CString const & text, char const * suffix, unsigned int length) {
    return endsWithBytes(text, suffix, length);
}

unsigned int StringUtil::find(CString const & text, CString const & what) {
    return find(text, 0, what);
}

unsigned int StringUtil::find(CString const & text, unsigned int start, CString const & what) {
    static_assert(npos == static_cast<unsigned int>(-1), "Find's -1 is npos");
    // A start beyond all ints turns negative, which Find refuses as it does one beyond the length.
    return static_cast<unsigned int>(text.Find(what, static_cast<int>(start)));
}

CString StringUtil::subString(CString const & text, unsigned int start, unsigned int count) {
    auto const first = static_cast<int>(start);
    return count == npos ? text.Mid(first) : text.Mid(first, static_cast<int>(count));
}

std::vector<CString> StringUtil::split(CString const & text, CString const & delimiter) {
    if (delimiter.IsEmpty()) {
        return {text};
    }
    std::string_view const whole = viewOf(text);
    std::string_view const mark = viewOf(delimiter);
    auto const next = [whole, mark](std::size_t position) {
        return mark.size() == 1 ? whole.find(mark.front(), position) : whole.find(mark, position);
    };
    std::vector<CString> pieces;
    pieces.reserve(8);  // most texts have fewer pieces: paths, dates, cookies
    std::size_t position = 0;
    for (std::size_t match; (match = next(position)) != std::string_view::npos;
         position = match + mark.size()) {
        if (match > 0) {
            pieces.emplace_back(whole.data() + position, static_cast<int>(match - position));
        }
    }
    pieces.push_back(text.Mid(static_cast<int>(position)));
    return pieces;
}

}  // namespace tvk
