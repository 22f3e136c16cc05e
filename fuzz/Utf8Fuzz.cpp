// Property: the checking decoder agrees with a slow model at every place; where it accepts a
// character, the trusting one, the other class's twins and the encoder agree, and so does the
// reporting one up to 4 bytes. Counting agrees with the model's walk.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceUtf8.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/JsonUtil.h"
#include "tvk/text/StringUtil.h"

namespace {

using namespace tvk::test;
using tvk::ErrorInfo;
using tvk::JsonUtil;
using tvk::StringUtil;

// How far characters are decoded at each byte: most bytes of an input throw, which is slow, and only
// counting depends on more than a few bytes.
constexpr unsigned int DECODED = 64;

template <class Util>
DecodedCharacter decoded(ExactBuffer const & data, unsigned int position) {
    try {
        unsigned int size = 0;
        int const codePoint = Util::nextUtf8Char(data, data.length(), position, &size);
        return {codePoint, size, {}};
    } catch (typename Util::XParsingError const & error) {
        return {0, 0, error.getErrorMessage()};
    }
}

template <class Util>
void checkTrusting(ExactBuffer const & data, unsigned int position,
                   DecodedCharacter const & character) {
    unsigned int size = 0;
    FUZZ_CHECK(Util::nextUtf8Char4(data, data.length(), position, &size) == character.codePoint);
    FUZZ_CHECK(size == character.size);
}

void checkReporting(ExactBuffer const & data, unsigned int position,
                    DecodedCharacter const & character) {
    unsigned int codePoint = 0;
    ErrorInfo error;
    int const size =
        StringUtil::nextUtf8Char(data + position, data.length() - position, &codePoint, &error);
    FUZZ_CHECK(error.hasError() == (size == -1));
    if (character.size > 4) {
        FUZZ_CHECK(size == -1);
    } else if (character.size != 0) {
        FUZZ_CHECK(size == static_cast<int>(character.size));
        FUZZ_CHECK(codePoint == static_cast<unsigned int>(character.codePoint));
    }
}

void checkEncoding(int codePoint) {
    char bytes[6];
    int const size = JsonUtil::utf8Encode(bytes, sizeof bytes, codePoint);
    ExactBuffer const data(bytes, static_cast<std::size_t>(size));
    FUZZ_CHECK(decoded<JsonUtil>(data, 0) ==
               (DecodedCharacter{codePoint, static_cast<unsigned int>(size), {}}));
}

void checkCount(std::string_view text, ExactBuffer const & data) {
    DecodedCharacter result;
    try {
        result.codePoint =
            static_cast<int>(StringUtil::countUtf8Char(data, data.length(), &result.size));
    } catch (StringUtil::XParsingError const & error) {
        result = {0, 0, error.getErrorMessage()};
    }
    FUZZ_CHECK(result == referenceCount(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    std::string_view const text(reinterpret_cast<char const *>(bytes), size);
    ExactBuffer const data(text);
    for (unsigned int position = 0; position <= std::min(data.length(), DECODED); ++position) {
        DecodedCharacter const character = decoded<JsonUtil>(data, position);
        FUZZ_CHECK(character == referenceDecode(text, position, TrailBytes::TESTED));
        FUZZ_CHECK(character == decoded<StringUtil>(data, position));
        checkReporting(data, position, character);
        if (character.size != 0) {
            checkTrusting<JsonUtil>(data, position, character);
            checkTrusting<StringUtil>(data, position, character);
            checkEncoding(character.codePoint);
        }
    }
    checkCount(text, data);
    return 0;
}
