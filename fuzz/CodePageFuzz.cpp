// Property: both conversions agree with the plain model, on every code page and within their room,
// and what was converted once comes back the same from every further round trip.
//
// The first byte picks the code page; the rest is the text, read as UTF-8 and as code page text.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "tests/support/CodePageModel.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/platform/CodePage.h"

namespace {

using tvk::platform::ansiToUtf8;
using tvk::platform::utf8ToAnsi;
using tvk::test::CodePageModel;
using tvk::test::ExactBuffer;
using tvk::test::UsingCodePage;

std::string converted(std::string const & text, std::size_t roomOfByte,
                      std::size_t (*conversion)(void const *, std::size_t, char *)) {
    ExactBuffer const input(text);
    std::string const zeros(text.size() * roomOfByte, '\0');
    ExactBuffer output(zeros);
    std::size_t const size = conversion(input.data(), input.size(), output.data());
    FUZZ_CHECK(size <= output.size());
    return std::string(output.data(), size);
}

std::string toAnsi(std::string const & text) {
    return converted(text, tvk::platform::UTF8_TO_ANSI_ROOM, utf8ToAnsi);
}

std::string toUtf8(std::string const & text) {
    return converted(text, tvk::platform::ANSI_TO_UTF8_ROOM, ansiToUtf8);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    static CodePageModel const MODELS[] = {CodePageModel(932), CodePageModel(1252),
                                           CodePageModel(28591), CodePageModel(65001)};
    if (size == 0) {
        return 0;
    }
    CodePageModel const & model = MODELS[bytes[0] % std::size(MODELS)];
    UsingCodePage const use(model.codePage());
    std::string const text(reinterpret_cast<char const *>(bytes) + 1, size - 1);

    std::string const code = toAnsi(text);
    FUZZ_CHECK(code == model.fromUtf8(text));
    FUZZ_CHECK(toAnsi(toUtf8(code)) == code);

    std::string const utf8 = toUtf8(text);
    FUZZ_CHECK(utf8 == model.toUtf8(text));
    FUZZ_CHECK(toUtf8(toAnsi(utf8)) == utf8);
    return 0;
}
