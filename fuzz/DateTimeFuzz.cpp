// Property: a text is read as a time, or refused, as sscanf and mktime read or refuse it, whatever
// length it is said to have.

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/FuzzCheck.h"
#include "tests/support/DateTimeModel.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/TimeZone.h"

namespace {

using namespace tvk::test;

// One zone, so that a finding stays one; its clock has both changes.
TimeZone const ZONE("EST5EDT,M3.2.0,M11.1.0");

constexpr unsigned int MAX_LENGTH = 30;  // no shape is longer than 26 characters

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    std::string text(reinterpret_cast<char const *>(bytes), size);
    text.push_back('\0');
    ExactBuffer const terminated(text);
    for (unsigned int length = 0; length <= MAX_LENGTH; ++length) {
        ParsedTwice const both = parsedTwice(terminated, length);
        FUZZ_CHECK(both.library == both.model);
    }
    return 0;
}
