#include "tvk/xml/FastXmlParser.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/RecordingXmlParser.h"
#include "tests/support/VirtualOrder.h"

namespace tvk {
namespace {

using test::RecordingXmlParser;
using Calls = std::vector<std::string>;

static_assert(std::is_base_of_v<RefCounted, FastXmlParser>);
static_assert(std::is_abstract_v<FastXmlParser>);
static_assert(std::is_destructible_v<FastXmlParser>);
static_assert(std::has_virtual_destructor_v<FastXmlParser>);
static_assert(sizeof(FastXmlParser) == sizeof(RefCounted));

constexpr char CONTENT[] = "<a/>";

TEST(FastXmlParser, AddsTwoOperationsInTheirOrder) {
    test::expectVirtualOrder(3, {{"parseBuffer", test::slotOf(&FastXmlParser::parseBuffer)},
                                 {"getDocument", test::slotOf(&FastXmlParser::getDocument)}});
    EXPECT_EQ(test::slotOf(&FastXmlParser::parse), std::nullopt);
}

TEST(FastXmlParser, HandsOutTheDocumentBehindASuccess) {
    RefCountedPtr<XmlDocument> const document(new XmlDocument);
    RecordingXmlParser parser(true, document);
    ErrorInfo error;
    EXPECT_EQ(parser.parse(CONTENT, 4, &error), document);
    EXPECT_EQ(parser.calls, (Calls{"parseBuffer", "getDocument"}));
    EXPECT_EQ(parser.content, "<a/>");
    EXPECT_EQ(parser.seenError, &error);
    EXPECT_FALSE(error.hasError());
}

TEST(FastXmlParser, AsksForNoDocumentBehindAFailure) {
    RecordingXmlParser parser(false, new XmlDocument);
    ErrorInfo error;
    EXPECT_TRUE(parser.parse(CONTENT, 4, &error).isNull());
    EXPECT_EQ(parser.calls, Calls{"parseBuffer"});
    EXPECT_EQ(parser.seenError, &error);
}

TEST(FastXmlParser, HandsOnWhatItIsGiven) {
    RecordingXmlParser parser(true, nullptr);
    void const * seenData = CONTENT;
    unsigned int seenSize = 1;
    parser.onParse = [&](void const * data, unsigned int size) {
        seenData = data;
        seenSize = size;
    };
    EXPECT_TRUE(parser.parse(nullptr, 0, nullptr).isNull());
    EXPECT_EQ(seenData, nullptr);
    EXPECT_EQ(seenSize, 0u);
    EXPECT_EQ(parser.seenError, nullptr);
    EXPECT_EQ(parser.calls, (Calls{"parseBuffer", "getDocument"}));

    ErrorInfo error;
    char const byte = 0;
    parser.onParse = [&](void const *, unsigned int size) { seenSize = size; };
    parser.parse(&byte, 0, &error);
    EXPECT_EQ(seenSize, 0u);
    EXPECT_EQ(parser.seenError, &error);
}

TEST(FastXmlParser, EndsThroughItsCountOrInItsPlace) {
    struct Ending : RecordingXmlParser {
        explicit Ending(int * count) : ended(count) {}
        ~Ending() override { ++*ended; }
        int * ended;
    };
    int ended = 0;
    RefCountedPtr<FastXmlParser> counted(new Ending(&ended));
    counted = nullptr;
    EXPECT_EQ(ended, 1);
    { Ending const local(&ended); }
    EXPECT_EQ(ended, 2);
    FastXmlParser const * const owned = new Ending(&ended);
    delete owned;
    EXPECT_EQ(ended, 3);
}

}  // namespace
}  // namespace tvk
