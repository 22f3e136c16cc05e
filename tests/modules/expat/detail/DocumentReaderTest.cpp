#include "modules/expat/detail/DocumentReader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/UsingCodePage.h"
#include "tests/support/XmlTree.h"

namespace tvk::expat {
namespace {

/// The tree as lines, or the failure, of a document that Expat is given in pieces.
std::string outcomeOf(std::string const & xml, std::size_t largestPiece) {
    test::ExactBuffer const block(xml);
    DocumentReader reader(largestPiece);
    return reader.read(block.data(), block.size()) ? test::outlineOf(*reader.root())
                                                   : test::bytesOf(reader.failure());
}

TEST(DocumentReader, ReadsTheSameInPieces) {
    test::UsingCodePage const japanese(932);
    std::string const documents[] = {
        "<?xml version='1.0' encoding='UTF-8'?>\n<!DOCTYPE a [<!ENTITY e 'x&#38;lt;<b/>'>]>\n"
        "<a xmlns='urn:相場' b='1&e;\r\n' xmlns:p='u'>か\u3099&e;<p:c/><![CDATA[]] >]]></a>\n",
        "\xEF\xBB\xBF<a>日本\r\n\r😀</a>",
        "<?xml version='1.0' encoding='Shift_JIS'?><a>\x93\xFA\x96\x7B\xB1</a>",
        "<a>\n<b></a>",
        "<a>日本",
        "",
    };
    for (std::string const & xml : documents) {
        SCOPED_TRACE(xml);
        // A bad encoding is found at another place if it ends a piece; none of these has one.
        std::string const whole = outcomeOf(xml, xml.size() + 1);
        for (std::size_t piece = 1; piece <= xml.size(); ++piece) {
            ASSERT_EQ(outcomeOf(xml, piece), whole) << piece;
        }
    }
}

TEST(DocumentReader, CutsLargeDocumentsIntoPieces) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "takes too long and too much memory under a sanitizer";
    }
    std::string const root = "<a b='日本'>日本<c/></a>";
    // The end of the first piece in the midst of the root, and the rest a small second one.
    std::string xml(DocumentReader::LARGEST_PIECE - root.size() / 2, ' ');
    xml += root;
    test::UsingCodePage const utf8(65001);
    DocumentReader reader;
    ASSERT_TRUE(reader.read(xml.data(), xml.size())) << reader.failure();
    EXPECT_EQ(test::outlineOf(*reader.root()), "a b=日本 \"日本\"\n  c\n");
}

}  // namespace
}  // namespace tvk::expat
