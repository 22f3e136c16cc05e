#include "modules/expat/ExpatXmlParser.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/modules/expat/ParsedXml.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/PrintCString.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UsingCodePage.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/xml/FastXmlUtil.h"

namespace tvk {
namespace {

using test::outlineOfXml;
using test::rootOf;
using test::UsingCodePage;
using Document = RefCountedPtr<XmlDocument>;

static_assert(std::is_base_of_v<FastXmlParser, ExpatXmlParser>);
static_assert(!std::is_copy_constructible_v<ExpatXmlParser>);
static_assert(!std::is_copy_assignable_v<ExpatXmlParser>);

struct Row {
    char const * name;
    std::string xml;
    char const * outline;
};

void expectOutlines(std::vector<Row> const & rows) {
    UsingCodePage const utf8(65001);
    for (Row const & row : rows) {
        EXPECT_EQ(outlineOfXml(row.xml), row.outline) << row.name;
    }
}

// ---- Elements --------------------------------------------------------------------------------

TEST(ExpatXmlParser, MakesATreeOfElements) {
    expectOutlines({
        {"one", "<a/>", "a\n"},
        {"start and end", "<a></a>", "a\n"},
        {"in order", "<a><b/><c><d/></c><b/></a>", "a\n  b\n  c\n    d\n  b\n"},
        {"names of their own case", "<a><B/><b/></a>", "a\n  B\n  b\n"},
        {"names beyond ASCII", "<相場><気配/></相場>", "相場\n  気配\n"},
    });
}

TEST(ExpatXmlParser, TellsNamesAndNamespacesApart) {
    RefCountedPtr<XmlElement> const root = rootOf("<p:a xmlns:p='urn:p' xmlns='urn:d'><b/></p:a>");
    EXPECT_EQ(root->elementName(), "a");
    EXPECT_EQ(root->namespaceURI(), "urn:p");
    EXPECT_EQ(root->qualifiedName(), "p:a");
    RefCountedPtr<XmlElement> const child =
        root->getFirstSubElementWithNameInNamespace("b", "urn:d");
    ASSERT_FALSE(child.isNull());
    EXPECT_EQ(child->qualifiedName(), "b");
}

TEST(ExpatXmlParser, FollowsTheScopeOfNamespaces) {
    expectOutlines({
        {"none", "<a/>", "a\n"},
        {"default", "<a xmlns='u'><b/></a>", "{u}a\n  {u}b\n"},
        {"default changed and taken back",
         "<a xmlns='u'><b xmlns='v'><c/></b><d xmlns=''><e/></d><f/></a>",
         "{u}a\n  {v}b\n    {v}c\n  d\n    e\n  {u}f\n"},
        {"prefix changed inside", "<p:a xmlns:p='u'><p:b xmlns:p='v'/><p:c/></p:a>",
         "{u}p:a\n  {v}p:b\n  {u}p:c\n"},
        {"two prefixes of one namespace", "<p:a xmlns:p='u' xmlns:q='u'><q:a/></p:a>",
         "{u}p:a\n  {u}q:a\n"},
        {"the prefix xml", "<xml:a/>", "{http://www.w3.org/XML/1998/namespace}xml:a\n"},
        {"names that hold blanks and braces", "<a xmlns=' u {v} '/>", "{ u {v} }a\n"},
        {"a namespace beyond ASCII", "<p:a xmlns:p='urn:相場'/>", "{urn:相場}p:a\n"},
    });
}

// ---- Attributes ------------------------------------------------------------------------------

TEST(ExpatXmlParser, KeepsAttributesAsTheyAreWritten) {
    expectOutlines({
        {"in the order of their bytes", "<a b='1' A=\"2\" c=''/>", "a A=2 b=1 c=\n"},
        {"with their prefixes", "<a xmlns:p='u' xmlns:q='v' p:b='1' q:b='2' b='3' xml:lang='ja'/>",
         "a b=3 p:b=1 q:b=2 xml:lang=ja\n"},
        {"declarations of namespaces are none", "<p:a xmlns='u' xmlns:p='v'/>", "{v}p:a\n"},
        {"the default namespace is not theirs", "<a xmlns='u' b='1'/>", "{u}a b=1\n"},
        {"references and white space",
         "<a b='&lt;&#65;&#x42;&amp;&quot;' c='1\n2\t3' d='1&#10;2'/>",
         "a b=<AB&\" c=1 2 3 d=1\\n2\n"},
        {"defaults of the document's own DTD",
         "<!DOCTYPE a [<!ATTLIST a b CDATA 'x' c NMTOKENS ' 1  2 '>]><a><a b='y'/></a>",
         "a b=x c=1 2\n  a b=y c=1 2\n"},
        {"entities", "<!DOCTYPE a [<!ENTITY e '1&#38;lt;2'>]><a b='&e;'/>", "a b=1<2\n"},
    });
}

// ---- Character data --------------------------------------------------------------------------

TEST(ExpatXmlParser, GathersTheCharacterDataOfAnElement) {
    expectOutlines({
        {"plain", "<a>text</a>", "a \"text\"\n"},
        {"white space is kept", "<a> \n\t<b/> </a>", "a \" \\n\t \"\n  b\n"},
        {"around sub-elements", "<a>1<b>2<c>3</c>4</b>5<b/>6</a>",
         "a \"156\"\n  b \"24\"\n    c \"3\"\n  b\n"},
        {"line ends", "<a>1\r\n2\r3&#13;4</a>", "a \"1\\n2\\n3\r4\"\n"},
        {"references", "<a>&lt;&gt;&amp;&quot;&apos;&#65;&#x3042;&#x1F600;</a>",
         "a \"<>&\"'Aあ😀\"\n"},
        {"sections", "<a>1<![CDATA[<b>&amp;]]>2<![CDATA[]]></a>", "a \"1<b>&amp;2\"\n"},
        {"comments and instructions are left out", "<a>1<!-- 2 -->3<?x 4?>5</a>", "a \"135\"\n"},
        {"entities", "<!DOCTYPE a [<!ENTITY e 'x<b>y</b>'>]><a>1&e;2</a>",
         "a \"1x2\"\n  b \"y\"\n"},
        {"nothing outside the root", "<?x?><!-- y -->\n<a/>\n<!-- z --> ", "a\n"},
    });
}

TEST(ExpatXmlParser, KeepsReferencesThatAnExternalDtdMayDeclare) {
    expectOutlines({
        {"in the text", "<!DOCTYPE a SYSTEM 'a.dtd'><a>1&nbsp;2<b/>&x.y;</a>",
         "a \"1&nbsp;2&x.y;\"\n  b\n"},
        {"lost in an attribute", "<!DOCTYPE a SYSTEM 'a.dtd'><a b='1&nbsp;2'/>", "a b=12\n"},
        {"behind a parameter entity", "<!DOCTYPE a [<!ENTITY % p SYSTEM 'p.dtd'> %p;]><a>&x;</a>",
         "a \"&x;\"\n"},
        {"declared inside all the same",
         "<!DOCTYPE a SYSTEM 'a.dtd' [<!ENTITY e 'x'>]><a>&e;&f;</a>", "a \"x&f;\"\n"},
        {"none without such a DTD", "<a>&nbsp;</a>",
         "XML parsing error at line 1, column 4: undefined entity"},
        {"none in a document that stands alone",
         "<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM 'a.dtd'><a>&nbsp;</a>",
         "XML parsing error at line 1, column 69: undefined entity"},
    });
}

// ---- Code pages and encodings ----------------------------------------------------------------

TEST(ExpatXmlParser, KeepsTextInTheCodePage) {
    std::string const xml = "<あ い:う='え' xmlns:い='お'>か&#x3099;A<い:き/>\u3099😀</あ>";
    {
        UsingCodePage const japanese(932);
        RefCountedPtr<XmlElement> const root = rootOf(xml);
        EXPECT_EQ(root->elementName(), "\x82\xA0");
        EXPECT_EQ(root->qualifiedName(), "\x82\xA0");
        EXPECT_EQ(root->getAttribute("\x82\xA2:\x82\xA4"), "\x82\xA6");
        EXPECT_EQ(root->text(), "\x82\xAA\x41\x81\x7C\x81\x7C\x81\x7C");
        EXPECT_EQ(root->subElementList().front()->namespaceURI(), "\x82\xA8");
        EXPECT_EQ(root->subElementList().front()->qualifiedName(), "\x82\xA2:\x82\xAB");
    }
    UsingCodePage const western(1252);
    RefCountedPtr<XmlElement> const root = rootOf("<é>e&#x301;€あ</é>");
    EXPECT_EQ(root->elementName(), "\xE9");
    EXPECT_EQ(root->text(), "\xE9\x80\x81");
}

TEST(ExpatXmlParser, ComposesWhatPiecesOfTextCutApart) {
    UsingCodePage const japanese(932);
    EXPECT_EQ(rootOf("<a>か<![CDATA[\u3099]]></a>")->text(), "\x82\xAA");
    EXPECT_EQ(rootOf("<a>か<b>x</b>\u3099</a>")->text(), "\x82\xAA");
    EXPECT_EQ(rootOf("<a>か<!-- -->&#x3099;</a>")->text(), "\x82\xAA");
}

std::string utf16(std::u16string const & text, bool bigEndian) {
    std::string bytes;
    for (char16_t const unit : u"\uFEFF" + text) {
        char const high = static_cast<char>(unit >> 8);
        char const low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST(ExpatXmlParser, ReadsItsEncodings) {
    std::string const japanese =
        "\x93\xFA\x96\x7B\xB1\x5C";  // in Shift_JIS, the last two one byte each
    expectOutlines({
        {"UTF-8 with a mark", "\xEF\xBB\xBF<a>日本</a>", "a \"日本\"\n"},
        {"UTF-16, low byte first", utf16(u"<a>日本😀</a>", false), "a \"日本😀\"\n"},
        {"UTF-16, high byte first", utf16(u"<a>日本😀</a>", true), "a \"日本😀\"\n"},
        {"ISO-8859-1", "<?xml version='1.0' encoding='iso-8859-1'?><a b='\xE9'>\xA5</a>",
         "a b=é \"¥\"\n"},
        {"US-ASCII", "<?xml version='1.0' encoding='US-ASCII'?><a>x</a>", "a \"x\"\n"},
        {"Shift_JIS", "<?xml version='1.0' encoding='Shift_JIS'?><a>" + japanese + "</a>",
         "a \"日本ｱ\\\\\"\n"},
        {"its names too",
         "<?xml version='1.0' encoding='x-sjis'?><" + japanese.substr(0, 4) +
             " \x83\x5C='\x83\x7E'/>",
         "日本 ソ=ミ\n"},
        {"Windows-31J", "<?xml version='1.0' encoding='windows-31j'?><a>\x87\x40\xFA\x40</a>",
         "a \"①ⅰ\"\n"},
        {"Windows-1252", "<?xml version='1.0' encoding='Windows-1252'?><a>\x80\xE9</a>",
         "a \"€é\"\n"},
    });
}

TEST(ExpatXmlParser, RefusesEncodingsThatItDoesNotHave) {
    EXPECT_EQ(outlineOfXml("<?xml version='1.0' encoding='EUC-JP'?><a/>"),
              "XML parsing error at line 1, column 31: unknown encoding");
    EXPECT_EQ(outlineOfXml("<?xml version='1.0' encoding='UTF-16'?><a/>"),
              "XML parsing error at line 1, column 31: encoding specified in XML declaration is "
              "incorrect");
    EXPECT_EQ(test::reasonOf("<?xml version='1.0' encoding='Shift_JIS'?><a>\x81</a>"),
              "not well-formed (invalid token)");
    EXPECT_EQ(test::reasonOf("<?xml version='1.0' encoding='Shift_JIS'?><a>\x82\x20</a>"),
              "not well-formed (invalid token)");
}

// ---- Documents -------------------------------------------------------------------------------

constexpr char TREE[] = "<a><b/></a>";

TEST(ExpatXmlParser, HandsOutTheDocumentOfTheLastParse) {
    ExpatXmlParser parser;
    ErrorInfo error;
    ASSERT_TRUE(parser.parseBuffer(TREE, 11, &error));
    Document const document = parser.getDocument(&error);
    ASSERT_FALSE(document.isNull());
    EXPECT_EQ(parser.getDocument(&error), document);
    EXPECT_EQ(document->text(), "");
    EXPECT_EQ(test::outlineOf(*document->getRootElement()), "a\n  b\n");
    EXPECT_EQ(document->getRootElement()->subElementList().front()->getRefCount(), 1);
    EXPECT_FALSE(error.hasError());
}

TEST(ExpatXmlParser, StartsAfreshEachTime) {
    ExpatXmlParser parser;
    ErrorInfo error;
    Document const first = parser.parse("<p:a xmlns:p='u'/>", 18, &error);
    ASSERT_FALSE(first.isNull());
    Document const second = parser.parse(TREE, 11, &error);
    ASSERT_FALSE(second.isNull());
    EXPECT_NE(first, second);
    EXPECT_EQ(test::outlineOf(*first->getRootElement()), "{u}p:a\n");
    EXPECT_EQ(test::outlineOf(*second->getRootElement()), "a\n  b\n");
    EXPECT_FALSE(error.hasError());

    EXPECT_TRUE(parser.parse("<p:a/>", 6, &error).isNull());  // no prefix is left over
    EXPECT_EQ(error.getErrorMessage(), "XML parsing error at line 1, column 1: unbound prefix");
    EXPECT_TRUE(parser.getDocument(&error).isNull());
    EXPECT_EQ(first->getRefCount(), 1);
    EXPECT_EQ(second->getRefCount(), 1);
    EXPECT_FALSE(parser.parse(TREE, 11, &error).isNull());
}

TEST(ExpatXmlParser, HasNoDocumentBeforeASuccess) {
    ExpatXmlParser parser;
    for (bool const failedBefore : {false, true}) {
        SCOPED_TRACE(failedBefore);
        ErrorInfo error(7);
        EXPECT_TRUE(parser.getDocument(&error).isNull());
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_XmlParsingError);
        EXPECT_EQ(error.getErrorMessage(), "no XML document was parsed");
        EXPECT_EQ(error.getComponentCode(), 7);
        EXPECT_TRUE(parser.getDocument(nullptr).isNull());
        EXPECT_FALSE(parser.parseBuffer("<a>", 3, nullptr));
    }
}

TEST(ExpatXmlParser, TakesNullForNoBytes) {
    ExpatXmlParser parser;
    ErrorInfo error;
    EXPECT_FALSE(parser.parseBuffer(nullptr, 0, &error));
    EXPECT_EQ(error.getErrorMessage(), "XML parsing error at line 1, column 1: no element found");
    error = ErrorInfo();
    EXPECT_FALSE(parser.parseBuffer(TREE, 0, &error));
    EXPECT_EQ(error.getErrorMessage(), "XML parsing error at line 1, column 1: no element found");
}

TEST(ExpatXmlParser, LivesOnTheHeapAsWell) {
    RefCountedPtr<FastXmlParser> parser(new ExpatXmlParser);
    ErrorInfo error;
    Document const document = parser->parse(TREE, 11, &error);
    parser = nullptr;
    EXPECT_EQ(test::outlineOf(*document->getRootElement()), "a\n  b\n");
}

TEST(ExpatXmlParser, ReadsFilesThroughTheirHelper) {
    test::TemporaryFolder const folder;
    ExpatXmlParser parser;
    ErrorInfo error;
    CString const good(folder.write("good.xml", TREE).c_str());
    Document const document = FastXmlUtil::parseXmlFile(good, &parser, &error);
    ASSERT_FALSE(document.isNull());
    EXPECT_FALSE(FastXmlUtil::getFirstSubElementWithPath(*document->getRootElement(), CString("b"))
                     .isNull());
    CString const bad(folder.write("bad.xml", "<a>\n</b>").c_str());
    EXPECT_TRUE(FastXmlUtil::parseXmlFile(bad, &parser, &error).isNull());
    EXPECT_EQ(error.getErrorMessage(), "XML parsing error at line 2, column 3: mismatched tag");
}

// ---- Errors ----------------------------------------------------------------------------------

TEST(ExpatXmlParser, TellsWhereAndWhyItFailed) {
    struct ErrorRow {
        std::string xml;
        char const * message;
    };
    ErrorRow const rows[] = {
        {"", "line 1, column 1: no element found"},
        {" \n ", "line 2, column 2: no element found"},
        {"text", "line 1, column 1: syntax error"},
        {"<a>", "line 1, column 4: no element found"},
        {"<a", "line 1, column 1: unclosed token"},
        {"<a><b></a>", "line 1, column 9: mismatched tag"},
        {"<a>\n  <b>\n</a>", "line 3, column 3: mismatched tag"},
        {"<a/><b/>", "line 1, column 5: junk after document element"},
        {"<a b='1' b='2'/>", "line 1, column 10: duplicate attribute"},
        {"<a xmlns:p='u' xmlns:q='u' p:b='' q:b=''/>", "line 1, column 1: duplicate attribute"},
        {"<p:a/>", "line 1, column 1: unbound prefix"},
        {"<a p:b=''/>", "line 1, column 1: unbound prefix"},
        {"<a xmlns:p=''/>", "line 1, column 1: must not undeclare prefix"},
        {"<a:b:c xmlns:a='u'/>", "line 1, column 5: not well-formed (invalid token)"},
        {"<a>日本&x;</a>", "line 1, column 6: undefined entity"},
        {"<a>&#0;</a>", "line 1, column 4: reference to invalid character number"},
        {"<a>\xFF</a>", "line 1, column 4: not well-formed (invalid token)"},
        {std::string("<a>\0</a>", 8), "line 1, column 4: not well-formed (invalid token)"},
        {"<a><![CDATA[</a>", "line 1, column 17: unclosed CDATA section"},
        {"<a>]]></a>", "line 1, column 6: not well-formed (invalid token)"},
        {"<?xml encoding='UTF-8'?>", "line 1, column 7: XML declaration not well-formed"},
        {" <?xml version='1.0'?><a/>",
         "line 1, column 2: XML or text declaration not at start of entity"},
    };
    for (ErrorRow const & row : rows) {
        SCOPED_TRACE(row.xml);
        test::ExactBuffer const block(row.xml);
        ExpatXmlParser parser;
        ErrorInfo error(7);
        EXPECT_FALSE(parser.parseBuffer(block.data(), block.length(), &error));
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_XmlParsingError);
        EXPECT_EQ(error.getErrorMessage(), CString("XML parsing error at ") + row.message);
        EXPECT_EQ(error.getComponentCode(), 7);
        EXPECT_EQ(error.getCause(), nullptr);
        EXPECT_FALSE(parser.parseBuffer(block.data(), block.length(), nullptr));
    }
}

TEST(ExpatXmlParser, ThrowsWhenMemoryIsOut) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations do not fail here";
    }
    UsingCodePage const japanese(932);
    std::string const xml =
        "<?xml version='1.0' encoding='Shift_JIS'?><p:a xmlns:p='u' p:b='\x82\xA0'>\x82\xA0"
        "<c>text that is longer than the room of a short one</c></p:a>";
    int failures = 0;
    for (long long allowed = 0;; ++allowed) {
        ExpatXmlParser parser;
        ErrorInfo error;
        bool succeeded = false;
        bool threw = false;
        {
            test::AllocationFailure failure(allowed);
            try {
                succeeded =
                    parser.parseBuffer(xml.data(), static_cast<unsigned int>(xml.size()), &error);
            } catch (std::bad_alloc const &) {
                threw = true;
            }
        }
        if (succeeded) {
            EXPECT_EQ(parser.getDocument(&error)->getRootElement()->text(), "\x82\xA0");
            break;
        }
        ASSERT_TRUE(threw) << allowed << ' ' << error.getErrorMessage();
        EXPECT_TRUE(parser.getDocument(nullptr).isNull());
        ++failures;
    }
    EXPECT_GT(failures, 20);
}

}  // namespace
}  // namespace tvk
