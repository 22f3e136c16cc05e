// Property: the scanner makes the callbacks of a slow model, with the same hashes, and stops at the
// same position or fails with the same text; so does each code that this processor can run. The
// first byte of an input chooses the options, and with its upper bits the entry. Words of the
// grammar are in scanner.dict (-dict=).

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "tests/json/ScannerCodes.h"
#include "tests/support/EventRecorder.h"
#include "tests/support/LibraryScan.h"
#include "tests/support/ReferenceScanner.h"
#include "tvk/json/detail/Scan.h"

namespace {

using namespace tvk::test;
namespace detail = tvk::detail;

constexpr int OPTION_BITS = 31;

// The model recurses and would overflow the stack; the scanner does not, and takes any depth. No
// higher, since the engine makes its inputs as long as the longest seed, which is to go beyond.
constexpr auto DEEPEST_FOR_THE_MODEL = 500;

constexpr ScanMode MODES[] = {ScanMode::VALUE, ScanMode::OBJECT, ScanMode::ARRAY, ScanMode::FIELDS};

bool isShallow(std::string_view input) {
    return std::count(input.begin(), input.end(), '[') +
               std::count(input.begin(), input.end(), '{') <=
           DEEPEST_FOR_THE_MODEL;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    int const options = bytes[0] & OPTION_BITS;
    ScanMode const mode = MODES[bytes[0] >> 5 & 3];
    std::string_view const input(reinterpret_cast<char const *>(bytes) + 1, size - 1);

    ScanOutcome const outcome = scanWithLibrary(mode, input, options);
    FUZZ_CHECK(outcome.position <= input.size());
    for (detail::ScanVariant const * const variant : scanVariants()) {
        FUZZ_CHECK(scanBy(*variant, mode, input, options) == outcome);
    }
    if (isShallow(input)) {
        FUZZ_CHECK(ReferenceScanner::scan(mode, input, options) == outcome);
    }
    return 0;
}
