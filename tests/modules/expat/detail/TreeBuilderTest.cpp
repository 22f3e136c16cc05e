#include "modules/expat/detail/TreeBuilder.h"

#include <gtest/gtest.h>

#include "tests/support/PrintCString.h"
#include "tests/support/UsingCodePage.h"
#include "tests/support/XmlTree.h"

namespace tvk::expat {
namespace {

TEST(TreeBuilder, HasNoRootAtFirst) { EXPECT_TRUE(TreeBuilder().root().isNull()); }

TEST(TreeBuilder, BuildsWhatItMeets) {
    TreeBuilder tree;
    tree.startElement({"urn:a", "a", "p"});
    tree.addAttribute({"", "b", ""}, "1");
    tree.addAttribute({"urn:q", "b", "q"}, "2");
    tree.startElement({"", "c", ""});
    tree.endElement();
    tree.startElement({"urn:a", "c", "p"});
    tree.endElement();
    tree.endElement();
    EXPECT_EQ(test::outlineOf(*tree.root()), "{urn:a}p:a b=1 q:b=2\n  c\n  {urn:a}p:c\n");
}

TEST(TreeBuilder, GivesEachElementItsOwnText) {
    TreeBuilder tree;
    tree.startElement({"", "a", ""});
    tree.addText("1");
    tree.startElement({"", "b", ""});
    tree.addText("2");
    tree.startElement({"", "c", ""});
    tree.endElement();
    tree.addText("3");
    tree.endElement();
    tree.addText("");
    tree.addText("4");
    tree.endElement();
    EXPECT_EQ(test::outlineOf(*tree.root()), "a \"14\"\n  b \"23\"\n    c\n");
}

TEST(TreeBuilder, ConvertsATextInOneGo) {
    test::UsingCodePage const japanese(932);
    TreeBuilder tree;
    tree.startElement({"", "a", ""});
    for (char const * piece : {"\xE3\x81", "\x8B", "\xE3", "\x82\x99"}) {
        tree.addText(piece);
    }
    tree.endElement();
    EXPECT_EQ(tree.root()->text(), "\x82\xAA");
}

TEST(TreeBuilder, SharesTheTextsOfEqualNames) {
    TreeBuilder tree;
    tree.startElement({"urn:a", "a", "p"});
    for (int i = 0; i < 2; ++i) {
        tree.startElement({"urn:a", "a", "p"});
        tree.addAttribute({"", "a", ""}, "x");
        tree.endElement();
    }
    tree.endElement();
    XmlElement const & first = *tree.root()->subElementList().front();
    XmlElement const & second = *tree.root()->subElementList().back();
    EXPECT_EQ(first.elementName().GetString(), second.elementName().GetString());
    EXPECT_EQ(first.qualifiedName().GetString(), second.qualifiedName().GetString());
    EXPECT_EQ(first.namespaceURI().GetString(), second.namespaceURI().GetString());
    EXPECT_EQ(first.getAttributeNames().front().GetString(), first.elementName().GetString());
}

}  // namespace
}  // namespace tvk::expat
