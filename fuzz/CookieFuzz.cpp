// Property: a Set-Cookie text is read as a slow model reads it, whatever length it is said to have; no
// position passes the NUL that ends the text; and without a failure the next call goes on further on.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/support/CookieModel.h"
#include "tests/support/ExactBuffer.h"

namespace {

using namespace tvk::test;

/// Reads what the block holds from `start` on, up to its last byte, which is a NUL.
ReadCookie checkedRead(ExactBuffer const & block, std::size_t start, std::size_t length,
                       CookieFields const & before) {
    std::string_view const text(block.data() + start, block.size() - 1 - start);
    ReadCookie const read = readWithLibrary(text.data(), static_cast<unsigned int>(length), before);
    FUZZ_CHECK(read == readWithModel(text, length, before));
    FUZZ_CHECK(read.position >= 0);
    FUZZ_CHECK(read.position <= static_cast<long long>(text.size()));
    return read;
}

/// One cookie after the other into one object, as a client walks through a header.
void checkWalk(ExactBuffer const & block) {
    ReadCookie read{freshCookieFields()};
    for (std::size_t start = 0, size = block.size() - 1; start < size;) {
        read = checkedRead(block, start, size - start, read.fields);
        if (read.error != NO_FAILURE) {
            return;
        }
        FUZZ_CHECK(read.position > 0);
        start += static_cast<std::size_t>(read.position);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    // The model copies what is left of the text for each cookie, and there may be one in two bytes.
    constexpr std::size_t LARGEST = 4096;
    // Each length costs two readings, and "Set-Cookie:a=;Max-Age=" has all that a length can cut.
    constexpr std::size_t LONGEST_CUT = 24;
    if (size > LARGEST) {
        return 0;
    }
    std::string text(reinterpret_cast<char const *>(bytes), size);
    text.push_back('\0');
    ExactBuffer const block(text);
    CookieFields const before = freshCookieFields();
    for (std::size_t length = 0; length <= std::min(size, LONGEST_CUT); ++length) {
        checkedRead(block, 0, length, before);
    }
    checkWalk(block);
    return 0;
}
