// Property: split gives what a slow model gives; the pieces, joined, are the text again, but for a
// delimiter at its very start; no piece holds the delimiter; and find sees the first cut.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/FuzzCheck.h"
#include "tests/support/ReferenceSplit.h"
#include "tests/support/TextBytes.h"
#include "tvk/text/StringUtil.h"

namespace {

using namespace tvk::test;
using tvk::StringUtil;

std::vector<std::string> splitBytes(std::string const & text, std::string const & delimiter) {
    std::vector<std::string> pieces;
    for (CString const & piece : StringUtil::split(textOf(text), textOf(delimiter))) {
        pieces.push_back(bytesOf(piece));
    }
    return pieces;
}

void checkJoin(std::string const & text, std::string const & delimiter,
               std::vector<std::string> const & pieces) {
    bool const leads = !delimiter.empty() && text.compare(0, delimiter.size(), delimiter) == 0;
    FUZZ_CHECK((leads ? delimiter : std::string()) + joined(pieces, delimiter) == text);
}

void checkPieces(std::string const & delimiter, std::vector<std::string> const & pieces) {
    for (std::string const & piece : pieces) {
        FUZZ_CHECK(delimiter.empty() || piece.find(delimiter) == std::string::npos);
    }
}

void checkFind(std::string const & text, std::string const & delimiter) {
    std::size_t const expected = text.find(delimiter);
    unsigned int const found = StringUtil::find(textOf(text), textOf(delimiter));
    FUZZ_CHECK(found == (expected == std::string::npos ? StringUtil::npos
                                                       : static_cast<unsigned int>(expected)));
}

}  // namespace

/// The first byte is the delimiter's length, then come the delimiter and the text.
extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    std::string const rest(reinterpret_cast<char const *>(bytes) + 1, size - 1);
    std::size_t const length = std::min<std::size_t>(bytes[0] % 16, rest.size());
    std::string const delimiter = rest.substr(0, length);
    std::string const text = rest.substr(length);

    std::vector<std::string> const pieces = splitBytes(text, delimiter);
    FUZZ_CHECK(pieces == referenceSplit(text, delimiter));
    checkJoin(text, delimiter, pieces);
    checkPieces(delimiter, pieces);
    checkFind(text, delimiter);
    return 0;
}
