// Property: what is read is written as a document that reads back as the same tree, and a document
// gives the same whether Expat has it whole or in pieces. The first byte of an input chooses the code
// page and the size of the pieces; in UTF-8 alone do names and texts come back as they were. Words of
// the language are in xml.dict (-dict=).

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/FuzzCheck.h"
#include "modules/expat/detail/DocumentReader.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/XmlTree.h"
#include "tests/support/XmlWriter.h"
#include "tvk/platform/CodePage.h"

namespace {

using namespace tvk;

constexpr unsigned int CODE_PAGES[] = {65001, 932, 65001, 1252};

/// Null where the bytes are no document.
RefCountedPtr<XmlElement> treeOf(std::string_view xml, std::size_t piece) {
    test::ExactBuffer const block(xml);
    expat::DocumentReader reader(piece);
    bool const succeeds = reader.read(block.data(), block.size());
    FUZZ_CHECK(!succeeds || !reader.root().isNull());
    FUZZ_CHECK(succeeds == reader.failure().IsEmpty());
    return succeeds ? reader.root() : nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * bytes, std::size_t size) {
    // A greater input has nothing new.
    constexpr std::size_t LARGEST = 1 << 16;
    if (size == 0 || size > LARGEST) {
        return 0;
    }
    unsigned int const codePage = CODE_PAGES[bytes[0] & 3];
    // A token is looked at again with each of its pieces, so large inputs have larger ones.
    std::size_t const piece = 1 + (bytes[0] >> 2) + size / 256;
    std::string_view const xml(reinterpret_cast<char const *>(bytes) + 1, size - 1);
    platform::setAnsiCodePage(codePage);

    RefCountedPtr<XmlElement> const tree = treeOf(xml, size);
    RefCountedPtr<XmlElement> const same = treeOf(xml, piece);
    FUZZ_CHECK(tree.isNull() == same.isNull());
    if (tree.isNull()) {
        return 0;
    }
    FUZZ_CHECK(test::sameTree(*tree, *same));
    if (codePage == 65001) {
        std::string const written = test::XmlWriter::written(*tree);
        RefCountedPtr<XmlElement> const again = treeOf(written, written.size());
        FUZZ_CHECK(!again.isNull());
        FUZZ_CHECK(test::sameTree(*again, *tree));
        FUZZ_CHECK(test::XmlWriter::written(*again) == written);
    }
    return 0;
}
