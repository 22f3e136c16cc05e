// Documents as applications meet them, in tests/data/xml, and the trees that they must give, as lines
// in UTF-8.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/modules/expat/ParsedXml.h"
#include "tests/support/PrintCString.h"
#include "tests/support/UsingCodePage.h"
#include "tests/support/XmlWriter.h"
#include "tvk/xml/FastXmlUtil.h"

namespace tvk {
namespace {

using test::dataOf;
using test::rootOf;
using test::UsingCodePage;
using Element = RefCountedPtr<XmlElement>;

Element at(Element const & root, char const * path) {
    Element const found = FastXmlUtil::getFirstSubElementWithPath(*root, CString(path));
    EXPECT_FALSE(found.isNull()) << path;
    return found.isNull() ? Element(new XmlElement) : found;
}

struct RealDocumentRow {
    char const * document;
    char const * tree;
};

class RealDocument : public ::testing::TestWithParam<RealDocumentRow> {};

TEST_P(RealDocument, GivesItsTree) {
    UsingCodePage const utf8(65001);
    EXPECT_EQ(test::outlineOf(*rootOf(dataOf(GetParam().document))), dataOf(GetParam().tree));
}

TEST_P(RealDocument, ReadsBackAsItIsWritten) {
    for (unsigned int const codePage : {65001U, 932U}) {
        SCOPED_TRACE(codePage);
        UsingCodePage const inUse(codePage);
        Element const root = rootOf(dataOf(GetParam().document));
        EXPECT_TRUE(test::sameTree(*rootOf(test::XmlWriter::written(*root)), *root));
    }
}

INSTANTIATE_TEST_SUITE_P(Files, RealDocument,
                         ::testing::Values(RealDocumentRow{"feed.rss", "feed-rss.tree"},
                                           RealDocumentRow{"feed.atom", "feed-atom.tree"},
                                           RealDocumentRow{"page.xhtml", "page.tree"},
                                           RealDocumentRow{"reply.soap", "reply.tree"},
                                           RealDocumentRow{"order.fixml", "order.tree"},
                                           RealDocumentRow{"order-shift-jis.fixml", "order.tree"},
                                           RealDocumentRow{"order-utf-16.fixml", "order.tree"}),
                         [](auto const & row) {
                             std::string name = row.param.document;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](char byte) { return byte == '.' || byte == '-'; }, '_');
                             return name;
                         });

TEST(RealDocuments, AnRssFeedIsReadByPaths) {
    Element const feed = rootOf(dataOf("feed.rss"));
    EXPECT_EQ(at(feed, "channel/title")->text(), "Market headlines");
    EXPECT_EQ(at(feed, "channel/description")->text(), "Rates & shares, twice a day");
    EXPECT_EQ(at(feed, "channel/item/title")->text(), "Rates <unchanged>");
    EXPECT_EQ(at(feed, "channel/item/category")->text(), "Shares");  // of the second item
    EXPECT_EQ(at(feed, "channel")
                  ->getFirstSubElementWithNameInNamespace("link", "http://www.w3.org/2005/Atom")
                  ->getAttribute("rel"),
              "self");
    EXPECT_EQ(at(feed, "channel")->getSubElementsWithName("link").size(), 2u);
}

TEST(RealDocuments, AnOrderIsTheSameInEachEncoding) {
    UsingCodePage const japanese(932);
    Element const order = rootOf(dataOf("order.fixml"));
    EXPECT_TRUE(test::sameTree(*rootOf(dataOf("order-shift-jis.fixml")), *order));
    EXPECT_TRUE(test::sameTree(*rootOf(dataOf("order-utf-16.fixml")), *order));
    EXPECT_EQ(at(order, "ExecRpt/Instrmt")->getAttribute("Desc"),
              "\x83\x67\x83\x88\x83\x5E\x8E\xA9\x93\xAE\x8E\xD4");
    EXPECT_EQ(at(order, "ExecRpt/Pty")->getAttribute("ID"), "\xC3\xBD\xC4");
}

TEST(RealDocuments, EveryCutDocumentIsRefused) {
    for (char const * name :
         {"feed.atom", "page.xhtml", "order-shift-jis.fixml", "order-utf-16.fixml"}) {
        SCOPED_TRACE(name);
        std::string const whole = dataOf(name);
        // Behind the root only white space is left to cut.
        std::size_t const end = whole.rfind('>');
        for (std::size_t size = 0; size < end; ++size) {
            ASSERT_NE(test::reasonOf(whole.substr(0, size)), "") << size;
        }
        EXPECT_FALSE(
            rootOf(whole.substr(0, whole.find_last_not_of("\n\r", whole.size()) + 1)).isNull());
    }
}

}  // namespace
}  // namespace tvk
