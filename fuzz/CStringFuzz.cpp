// Property: a CString holds and answers what a std::string would, through any operations.
#include <cstddef>
#include <cstdint>

#include "fuzz/FuzzCheck.h"
#include "tests/support/CStringModel.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    char const * const differing = tvk::test::CStringModel(bytes, size).run();
    if (differing != nullptr) {
        std::fprintf(stderr, "differs behind %s\n", differing);
    }
    FUZZ_CHECK(differing == nullptr);
    return 0;
}
