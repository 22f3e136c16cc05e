// Property: the writer of string text gives what its slow model gives, for the room that the input
// names and for ample room, and leaves the bytes behind alone. The first byte of an input chooses the
// options, the second one the room.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/support/ReferenceStringWriter.h"

namespace {

using namespace tvk::test;

void check(std::string_view text, unsigned int room, int options) {
    FUZZ_CHECK(writeWithLibrary(text, room, options) ==
               ReferenceStringWriter(text, room, options).run());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    int const options = bytes[0];
    std::string_view const text(reinterpret_cast<char const *>(bytes) + 2, size - 2);
    check(text, bytes[1], options);
    check(text, static_cast<unsigned int>(2 * text.size()) + bytes[1] % 8, options);
    return 0;
}
