// Values nested a million deep: parsed, compared, written and released on small stacks.

#include <gtest/gtest.h>

#include <string>

#include "tests/support/SameValue.h"
#include "tests/support/SmallStack.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"

namespace {

using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::JsonMessageParser;
using tvk::JsonMessageSerializer;
using tvk::KestrinMessage;
using tvk::RefCountedPtr;
using tvk::SimpleObjectCache;
using tvk::test::runOnStack;
using tvk::test::sameValue;

constexpr int DEPTH = 1000000;
constexpr std::size_t ORDINARY_STACK = 8 << 20;
constexpr std::size_t SMALL_STACK = 512 << 10;

/// `opening` and `closing` in turn around a number, a million levels in all.
struct Shape {
    std::string opening;
    std::string closing;
    int levels;  // of one turn
};

Shape const ARRAYS = {"[\"a\",[", ",true]]", 2};
Shape const OBJECTS = {"{\"a\":\"x\",\"b\":", ",\"c\":2}", 1};
Shape const BOTH = {"{\"a\":[[{\"b\":", "}]]}", 4};

std::string nested(Shape const & shape) {
    std::string text;
    int const turns = DEPTH / shape.levels;
    for (int i = 0; i < turns; ++i) {
        text += shape.opening;
    }
    text += "7";
    for (int i = 0; i < turns; ++i) {
        text += shape.closing;
    }
    return text;
}

class Depth : public ::testing::Test {
protected:
    RefCountedPtr<FieldValue> parse(std::string const & text, ErrorInfo * error = nullptr) {
        return parser.parseOneJsonValue(text.data(), static_cast<unsigned int>(text.size()), 0,
                                        error);
    }
    std::string write(FieldValue const & value) {
        unsigned int const size =
            value.getFieldType() == FLDTYPE_LIST
                ? serializer.listDataToJson(nullptr, 0, value.asList(), 0)
                : serializer.recordDataToJson(nullptr, 0, value.asRecord(), 0);
        return std::string(static_cast<char const *>(serializer.getResultsBuffer()), size);
    }

    /// Parses twice, compares, writes and releases.
    void takeThrough(Shape const & shape, std::size_t stack) {
        std::string const text = nested(shape);
        runOnStack(stack, [&] {
            RefCountedPtr<FieldValue> const first = parse(text);
            ASSERT_FALSE(first.isNull());
            RefCountedPtr<FieldValue> const second = parse(text);
            EXPECT_TRUE(sameValue(first, second));
            EXPECT_TRUE(write(*second) == text);
            parse("");
        });
    }

    SimpleObjectCache cache{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser{&cache};
    JsonMessageSerializer serializer;
};

TEST_F(Depth, HasNoLimitOnAnOrdinaryStack) { takeThrough(BOTH, ORDINARY_STACK); }

TEST_F(Depth, HasNoLimitForArrays) { takeThrough(ARRAYS, SMALL_STACK); }

TEST_F(Depth, HasNoLimitForObjects) { takeThrough(OBJECTS, SMALL_STACK); }

TEST_F(Depth, HasNoLimitForBoth) { takeThrough(BOTH, SMALL_STACK); }

TEST_F(Depth, HasNoLimitForMessages) {
    std::string const text = nested(OBJECTS);
    runOnStack(SMALL_STACK, [&] {
        RefCountedPtr<KestrinMessage> const message = parser.parseJsonMessage(
            text.data(), static_cast<unsigned int>(text.size()), 0, nullptr);
        ASSERT_FALSE(message.isNull());
        unsigned int const size = serializer.messageToJson(nullptr, 0, *message, 0);
        EXPECT_EQ(size, text.size());
        parse("");
    });
}

TEST_F(Depth, TellsADifferenceAtTheBottom) {
    std::string text = nested(BOTH);
    runOnStack(SMALL_STACK, [&] {
        RefCountedPtr<FieldValue> const first = parse(text);
        text[text.find('7')] = '8';
        EXPECT_FALSE(sameValue(first, parse(text)));
        parse("");
    });
}

TEST_F(Depth, CleansUpAfterAFailure) {
    std::string const text = nested(BOTH);
    std::string const cut = text.substr(0, text.find('7') + 1);
    runOnStack(SMALL_STACK, [&] {
        ErrorInfo error;
        EXPECT_TRUE(parse(cut, &error).isNull());
        EXPECT_TRUE(error.hasError());
        EXPECT_EQ(parse("[1]")->asList().getCount(), 1u);
        JsonMessageParser shortLived(&cache);
        EXPECT_TRUE(
            shortLived
                .parseOneJsonValue(cut.data(), static_cast<unsigned int>(cut.size()), 0, nullptr)
                .isNull());
    });
}

TEST_F(Depth, LetsAnInnerPartOutliveTheOuterOnes) {
    std::string const text = nested(ARRAYS);
    runOnStack(SMALL_STACK, [&] {
        RefCountedPtr<FieldValue> part = parse(text);
        for (int i = 0; i < 500; ++i) {
            part = part->asList().getElement(1)->asList().getElement(0);
        }
        parse("");
        EXPECT_LT(write(*part).size(), text.size());
    });
}

}  // namespace
