#include "modules/expat/detail/Encodings.h"

#include <algorithm>
#include <iterator>

#include "tvk/platform/CString.h"
#include "tvk/platform/CodePage.h"

namespace tvk::expat {

namespace {

constexpr unsigned int WINDOWS_31J = 932;
constexpr unsigned int WINDOWS_1252 = 1252;

struct EncodingName {
    char const * name;
    unsigned int codePage;
};

constexpr EncodingName ENCODING_NAMES[] = {
    {"Shift_JIS", WINDOWS_31J},   {"Shift-JIS", WINDOWS_31J},     {"SJIS", WINDOWS_31J},
    {"x-sjis", WINDOWS_31J},      {"MS_Kanji", WINDOWS_31J},      {"csShiftJIS", WINDOWS_31J},
    {"Windows-31J", WINDOWS_31J}, {"csWindows31J", WINDOWS_31J},  {"MS932", WINDOWS_31J},
    {"CP932", WINDOWS_31J},       {"Windows-1252", WINDOWS_1252}, {"CP1252", WINDOWS_1252}};

// What Expat wants to know of a byte that is no character of its own.
constexpr int NO_CHARACTER = -1;
constexpr int STARTS_A_PAIR = -2;

bool startsAPair(unsigned int codePage, unsigned char lead) {
    for (int trail = 0; trail < 256; ++trail) {
        unsigned char const pair[] = {lead, static_cast<unsigned char>(trail)};
        if (platform::characterInCodePage(codePage, pair, 2) >= 0) {
            return true;
        }
    }
    return false;
}

int meaningOf(unsigned int codePage, unsigned char byte) {
    int const character = platform::characterInCodePage(codePage, &byte, 1);
    if (character >= 0) {
        return character;
    }
    return startsAPair(codePage, byte) ? STARTS_A_PAIR : NO_CHARACTER;
}

/// Of 932 alone: the other code page has no pairs.
int XMLCALL characterOfPair(void *, char const * pair) {
    return platform::characterInCodePage(WINDOWS_31J, pair, 2);
}

}  // namespace

int XMLCALL findEncoding(void *, XML_Char const * name, XML_Encoding * encoding) {
    auto const * const found = std::find_if(
        std::begin(ENCODING_NAMES), std::end(ENCODING_NAMES),
        [name](EncodingName const & row) { return CString(row.name).CompareNoCase(name) == 0; });
    if (found == std::end(ENCODING_NAMES)) {
        return XML_STATUS_ERROR;
    }
    for (int byte = 0; byte < 256; ++byte) {
        encoding->map[byte] = meaningOf(found->codePage, static_cast<unsigned char>(byte));
    }
    encoding->data = nullptr;
    encoding->convert = characterOfPair;
    encoding->release = nullptr;
    return XML_STATUS_OK;
}

}  // namespace tvk::expat
