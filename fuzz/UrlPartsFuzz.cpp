// Property: a URL is cut as a slow model cuts it, also where a part is stored in the very object that
// holds the URL.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/support/TextBytes.h"
#include "tests/support/UrlPartsModel.h"

namespace {

using namespace tvk::test;
using tvk::CString;
using tvk::InetUtil;

void checkPartsInPlaceOfTheUrl(std::string_view bytes) {
    std::string const whole(bytes);
    UrlParts const expected = urlPartsWithModel(bytes, {whole, whole, 0, whole});
    CString const url = textOf(bytes);

    CString scheme = url;
    InetUtil::parseUrl(scheme, &scheme, nullptr, nullptr, nullptr);
    FUZZ_CHECK(bytesOf(scheme) == expected.scheme);
    CString host = url;
    InetUtil::parseUrl(host, nullptr, &host, nullptr, nullptr);
    FUZZ_CHECK(bytesOf(host) == expected.host);
    CString path = url;
    InetUtil::parseUrl(path, nullptr, nullptr, nullptr, &path);
    FUZZ_CHECK(bytesOf(path) == expected.path);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    std::string_view const url(reinterpret_cast<char const *>(bytes), size);
    FUZZ_CHECK(urlPartsWithLibrary(url) == urlPartsWithModel(url));
    checkPartsInPlaceOfTheUrl(url);
    return 0;
}
