// Property: urlDecode and urlEncode agree with slow models, the error record included; and what was
// encoded comes back up to the first byte of 0x80 or above, where decoding fails.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/ReferenceUrl.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/text/StringUtil.h"

namespace {

using namespace tvk::test;
using tvk::CString;
using tvk::ErrorInfo;
using tvk::KestrinConstants;
using tvk::StringUtil;

std::string_view viewOf(CString const & text) {
    return {text.GetString(), static_cast<std::size_t>(text.GetLength())};
}

void checkError(ErrorInfo const & error, DecodedUrl const & expected, CString const & domain) {
    FUZZ_CHECK(error.hasError() == expected.failure.has_value());
    if (!expected.failure) {
        FUZZ_CHECK(error.getErrorMessage() == "");
        FUZZ_CHECK(error.getDomain() == domain);
        return;
    }
    FUZZ_CHECK(error.getErrorCode() == KestrinConstants::ERR_InvalidDataOfEncoding);
    FUZZ_CHECK(viewOf(error.getErrorMessage()) == expected.failure->message());
    FUZZ_CHECK(error.getDomain() ==
               (expected.failure->isCut ? domain : KestrinConstants::ErrorDomain_Kestrin));
}

void checkDecoding(std::string_view text, ExactBuffer const & data) {
    CString const domain("domain of the caller");
    DecodedUrl const expected = referenceUrlDecode(text);
    ErrorInfo error;
    error.setDomain(domain);
    FUZZ_CHECK(viewOf(StringUtil::urlDecode(data, data.length(), &error)) == expected.bytes);
    FUZZ_CHECK(viewOf(StringUtil::urlDecode(data, data.length(), nullptr)) == expected.bytes);
    checkError(error, expected, domain);
}

void checkEncoding(std::string_view bytes, ExactBuffer const & data) {
    CString const encoded = StringUtil::urlEncode(data, data.length());
    FUZZ_CHECK(viewOf(encoded) == referenceUrlEncode(bytes));

    auto const high =
        std::find_if(bytes.begin(), bytes.end(), [](char byte) { return signedValue(byte) < 0; });
    ExactBuffer const text(viewOf(encoded));
    ErrorInfo error;
    FUZZ_CHECK(viewOf(StringUtil::urlDecode(text, text.length(), &error)) ==
               std::string_view(bytes.begin(), high));
    FUZZ_CHECK(error.hasError() == (high != bytes.end()));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    std::string_view const input(reinterpret_cast<char const *>(bytes), size);
    ExactBuffer const data(input);
    checkDecoding(input, data);
    checkEncoding(input, data);
    return 0;
}
