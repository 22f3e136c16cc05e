// Documents that want more of the parser than they are worth.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <random>
#include <string>

#include "tests/modules/expat/ParsedXml.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/PrintCString.h"
#include "tests/support/SmallStack.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/UsingCodePage.h"
#include "tests/support/XmlWriter.h"
#include "tvk/xml/FastXmlUtil.h"

namespace tvk {
namespace {

using test::dataOf;
using test::reasonOf;
using test::rootOf;
using Element = RefCountedPtr<XmlElement>;

constexpr char TOO_MUCH_BY_ENTITIES[] =
    "limit on input amplification factor (from DTD and entities) breached";
constexpr std::size_t SMALL_STACK = std::size_t{256} << 10;

std::string repeated(std::string const & text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

/// What the process has taken at most so far, in MB.
double megabytesTaken() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

// ---- Entities --------------------------------------------------------------------------------

TEST(HostileEntities, OfEntitiesByTensAreRefused) {
    EXPECT_EQ(reasonOf(dataOf("billion-laughs.xml")), TOO_MUCH_BY_ENTITIES);
}

TEST(HostileEntities, ThatAreLongAndOftenNamedAreRefused) {
    std::string const declared = "<!DOCTYPE a [<!ENTITY e '" + std::string(50000, 'x') + "'>]><a";
    EXPECT_EQ(reasonOf(declared + ">" + repeated("&e;", 50000) + "</a>"), TOO_MUCH_BY_ENTITIES);
    EXPECT_EQ(reasonOf(declared + " b='" + repeated("&e;", 50000) + "'/>"), TOO_MUCH_BY_ENTITIES);
}

TEST(HostileEntities, ThatHoldElementsAreRefused) {
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ENTITY e '" + repeated("<b/>", 10000) + "'>]><a>" +
                       repeated("&e;", 10000) + "</a>"),
              TOO_MUCH_BY_ENTITIES);
}

TEST(HostileEntities, ThatHoldThemselvesAreRefused) {
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a>&e;</a>"),
              "recursive entity reference");
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]><a b='&e;'/>"),
              "recursive entity reference");
}

/// `length` entities, each of which refers to the one before.
std::string chainOfEntities(int length) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 'x'>";
    for (int i = 1; i <= length; ++i) {
        xml += "<!ENTITY e" + std::to_string(i) + " '&e" + std::to_string(i - 1) + ";'>";
    }
    return xml + "]>";
}

TEST(HostileEntities, InLongChainsAreRefused) {
    std::string const last = "&e256;";
    std::string const used = "<a b='" + last + "'>" + last + "</a>";
    test::runOnStack(SMALL_STACK, [&used] {
        Element const root = rootOf(chainOfEntities(256) + used);
        EXPECT_EQ(root->text(), "x");
        EXPECT_EQ(root->getAttribute("b"), "x");
        EXPECT_EQ(reasonOf(chainOfEntities(257) + used), "too many entities that refer to others");
        EXPECT_EQ(reasonOf(chainOfEntities(100000) + used),
                  "too many entities that refer to others");
    });
}

TEST(HostileEntities, ManyThatReferToNoOtherAreFine) {
    std::string xml = "<!DOCTYPE a [";
    for (int i = 0; i < 5000; ++i) {
        xml += "<!ENTITY e" + std::to_string(i) + " '" + std::to_string(i) + "'>";
    }
    EXPECT_EQ(rootOf(xml + "]><a>&e0;&e4999;</a>")->text(), "04999");
}

TEST(HostileEntities, OrdinaryUseIsFine) {
    std::string const name(200, 'x');
    EXPECT_EQ(
        rootOf("<!DOCTYPE a [<!ENTITY e '" + name + "'>]><a>" + repeated("&e;", 4000) + "</a>")
            ->text(),
        CString(repeated(name, 4000).c_str()));
}

// ---- What stands elsewhere -------------------------------------------------------------------

TEST(HostileEntities, OutsideTheDocumentAreNeverRead) {
    test::TemporaryFolder const folder;
    std::string const secret = folder.write("secret", "<!ENTITY e 'SECRET'>").string();
    EXPECT_EQ(reasonOf(dataOf("external-entity.xml")),
              "error in processing external entity reference");
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ENTITY e SYSTEM '" + secret + "'>]><a>&e;</a>"),
              "error in processing external entity reference");
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ENTITY e PUBLIC 'x' 'file://" + secret + "'>]><a>&e;</a>"),
              "error in processing external entity reference");
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ENTITY e SYSTEM 'file://" + secret + "'>]><a b='&e;'/>"),
              "reference to external entity in attribute");
    // What could come of these is kept as a reference, unread.
    EXPECT_EQ(rootOf("<!DOCTYPE a SYSTEM '" + secret + "'><a>&e;</a>")->text(), "&e;");
    EXPECT_EQ(rootOf("<!DOCTYPE a [<!ENTITY % p SYSTEM '" + secret + "'> %p;]><a>&e;</a>")->text(),
              "&e;");
    EXPECT_EQ(rootOf("<!DOCTYPE a [<!ENTITY e SYSTEM '" + secret + "'>]><a/>")->text(), "");
}

// ---- Attributes and namespaces ---------------------------------------------------------------

TEST(HostileDefaults, OfManyElementsAreRefused) {
    std::string const many = repeated("<b/>", 100000);
    EXPECT_EQ(reasonOf("<!DOCTYPE a [<!ATTLIST b x CDATA '" + std::string(100000, 'x') + "'>]><a>" +
                       many + "</a>"),
              "too much by default values of attributes");
    std::string declarations;
    for (int i = 0; i < 10000; ++i) {
        declarations += "<!ATTLIST b x" + std::to_string(i) + " CDATA ''>";
    }
    EXPECT_EQ(reasonOf("<!DOCTYPE a [" + declarations + "]><a>" + many + "</a>"),
              "too much by default values of attributes");
}

TEST(HostileDefaults, OrdinaryUseIsFine) {
    Element const root = rootOf(
        "<!DOCTYPE a [<!ATTLIST b align CDATA 'left' valign CDATA 'middle' rows CDATA '1'>]><a>" +
        repeated("<b/>", 200000) + "</a>");
    EXPECT_EQ(root->getSubElementCount(), 200000u);
    EXPECT_EQ(root->subElementList().back()->getAttribute("valign"), "middle");
}

TEST(HostileNamespaces, ThatAreLongAreRefused) {
    std::string const longest(1024, 'u');
    EXPECT_EQ(rootOf("<a xmlns='" + longest + "'/>")->namespaceURI(), CString(longest.c_str()));
    EXPECT_EQ(reasonOf("<a xmlns='" + longest + "u'/>"), "too long a namespace");
    EXPECT_EQ(reasonOf("<a><b><p:c xmlns:p='" + longest + "u'><d/></p:c></b></a>"),
              "too long a namespace");
}

TEST(HostileNamespaces, AreHeldOnceForAllThatStandInThem) {
    std::string const uri(1024, 'u');
    Element const root = rootOf("<a xmlns='" + uri + "'>" + repeated("<b/>", 200000) + "</a>");
    EXPECT_EQ(root->subElementList().back()->namespaceURI().GetString(),
              root->namespaceURI().GetString());
    EXPECT_EQ(root->subElementList().back()->elementName().GetString(),
              root->subElementList().front()->qualifiedName().GetString());
}

TEST(HostileAttributes, OfOneElementMayBeMany) {
    constexpr int COUNT = 100000;
    std::string xml = "<a xmlns:p='urn:p'";
    for (int i = 0; i < COUNT; ++i) {
        xml += " p:x" + std::to_string(i) + "=''";
    }
    EXPECT_EQ(rootOf(xml + "/>")->getAttributeCount(), static_cast<unsigned int>(COUNT));
}

// ---- Depth -----------------------------------------------------------------------------------

TEST(HostileDepth, AMillionLevelsNeedLittleStack) {
    constexpr std::size_t LEVELS = 1000000;
    std::string const xml = repeated("<a>", LEVELS) + "x" + repeated("</a>", LEVELS);
    std::string const cut = xml.substr(0, LEVELS * 5 + 1);  // half of it closed
    test::runOnStack(SMALL_STACK, [&] {
        Element root = rootOf(xml);
        std::size_t levels = 0;
        for (XmlElement const * at = root.get(); at != nullptr;
             at = at->getSubElementCount() == 0 ? nullptr : at->subElementList().front().get()) {
            ++levels;
        }
        EXPECT_EQ(levels, LEVELS);
        root = nullptr;
        EXPECT_EQ(reasonOf(cut), "no element found");
        EXPECT_EQ(reasonOf(repeated("<a>", LEVELS)), "no element found");
    });
}

TEST(HostileDepth, ContentModelsNeedLittleStack) {
    std::string const model = repeated("(", 100000) + "b" + repeated(")", 100000);
    test::runOnStack(SMALL_STACK, [&model] {
        EXPECT_EQ(rootOf("<!DOCTYPE a [<!ELEMENT a " + model + ">]><a>x</a>")->text(), "x");
    });
}

// ---- Bytes -----------------------------------------------------------------------------------

TEST(HostileBytes, BadUtf8IsRefusedEverywhere) {
    for (char const * bad :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC3", "\xC3\x28", "\xE0\x80\x80", "\xE2\x82",
          "\xED\xA0\x80", "\xEF\xBF\xBE", "\xF0\x80\x80\x80", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xF0\x9F\x98", "\xFE", "\xFF"}) {
        std::string const bytes = bad;
        SCOPED_TRACE(::testing::PrintToString(bytes));
        for (std::string const & xml :
             {"<a>" + bytes + "</a>", "<a>x" + bytes, "<a b='" + bytes + "'/>", "<a" + bytes + "/>",
              "<!--" + bytes + "--><a/>", "<a><![CDATA[" + bytes + "]]></a>", "<a/>" + bytes}) {
            EXPECT_NE(reasonOf(xml), "");
        }
    }
}

TEST(HostileBytes, ChangedDocumentsAreReadOrRefused) {
    std::string const whole = dataOf("reply.soap");
    std::mt19937 random(20240105);
    int read = 0;
    for (int i = 0; i < 5000; ++i) {
        std::string changed = whole;
        for (unsigned int count = 1 + static_cast<unsigned int>(random()) % 3; count != 0;
             --count) {
            changed[random() % changed.size()] = static_cast<char>(random());
        }
        test::ExactBuffer const block(changed);
        ExpatXmlParser parser;
        ErrorInfo error;
        RefCountedPtr<XmlDocument> const document =
            parser.parse(block.data(), block.length(), &error);
        ASSERT_EQ(document.isNull(), error.hasError());
        read += document.isNull() ? 0 : 1;
    }
    EXPECT_GT(read, 100);
}

// ---- Size ------------------------------------------------------------------------------------

TEST(LargeDocument, OfFiftyMegabytesIsReadFromItsFile) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "takes too long and too much memory under a sanitizer";
    }
    constexpr std::size_t SIZE = std::size_t{50} << 20;
    std::string xml =
        "<?xml version='1.0' encoding='UTF-8'?>\n<quotes xmlns='urn:example:quotes'>\n";
    unsigned int count = 0;
    for (; xml.size() < SIZE; ++count) {
        std::string const number = std::to_string(count);
        xml += "  <quote code='" + number + "' market='T'><name>トヨタ自動車" + number +
               "</name><last>1764.5</last><volume>" + number + "00</volume></quote>\n";
    }
    xml += "</quotes>\n";
    test::TemporaryFolder const folder;
    CString const path(folder.write("quotes.xml", xml).c_str());

    double const before = megabytesTaken();
    auto const start = std::chrono::steady_clock::now();
    ExpatXmlParser parser;
    ErrorInfo error;
    RefCountedPtr<XmlDocument> const document = FastXmlUtil::parseXmlFile(path, &parser, &error);
    std::chrono::duration<double> const seconds = std::chrono::steady_clock::now() - start;
    std::printf("%u elements in %.2f s, %.0f MB more\n", count * 4 + 1, seconds.count(),
                megabytesTaken() - before);

    ASSERT_FALSE(document.isNull()) << error.getErrorMessage();
    Element const root = document->getRootElement();
    EXPECT_EQ(root->getSubElementCount(), count);
    Element const last = root->subElementList().back();
    EXPECT_EQ(last->getAttribute("code"), CString(std::to_string(count - 1).c_str()));
    EXPECT_EQ(FastXmlUtil::getFirstSubElementWithPath(*last, CString("last"))->text(), "1764.5");
}

}  // namespace
}  // namespace tvk
