// What is written is read again: the same values, but for the differences that belong to the format.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RandomValues.h"
#include "tests/support/SameValue.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/platform/CodePage.h"
#include "tvk/values/MappedMessage.h"

namespace {

using ::testing::ElementsAre;
using tvk::CString;
using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::JsonMessageParser;
using tvk::JsonMessageSerializer;
using tvk::KestrinMessage;
using tvk::MappedMessage;
using tvk::NumberData;
using tvk::RecordData;
using tvk::RefCountedPtr;
using tvk::SimpleObjectCache;
using tvk::StringData;
using tvk::test::ExactBuffer;
using tvk::test::RandomValues;
using tvk::test::sameValue;
using tvk::test::UsingCodePage;

class RoundTrip : public ::testing::Test {
protected:
    std::string write(RecordData const & record, int options = 0) {
        unsigned int const size = serializer.recordDataToJson(nullptr, 0, record, options);
        return std::string(static_cast<char const *>(serializer.getResultsBuffer()), size);
    }
    RefCountedPtr<KestrinMessage> read(std::string_view text, int options = 0) {
        ExactBuffer const data(text);
        ErrorInfo error;
        RefCountedPtr<KestrinMessage> const result =
            parser.parseJsonMessage(data.data(), data.length(), options, &error);
        EXPECT_STREQ(error.getErrorMessage(), "");
        return result;
    }
    std::string rewritten(std::string_view text) { return write(*read(text)); }

    SimpleObjectCache cache{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser{&cache};
    JsonMessageSerializer serializer;
    RefCountedPtr<KestrinMessage> message{new MappedMessage};
};

TEST_F(RoundTrip, KeepsTextInNameOrder) {
    for (char const * text :
         {"{}", R"({"a":1})", R"({"a":-0,"b":1.50,"c":1e5,"d":123456789012345678901234567890})",
          R"({"a":"","b":"x y","c":"\"\\\n\r\t\f\b"})", R"({"a":true,"b":false})",
          R"({"a":[],"b":{},"c":[[],{}],"d":{"e":[1,"2",{"f":3}]}})"}) {
        EXPECT_EQ(rewritten(text), text);
    }
}

TEST_F(RoundTrip, GivesEveryRandomTreeBack) {
    struct Run {
        unsigned int codePage;
        std::vector<std::string> pieces;
    };
    Run const runs[] = {
        {932, {"a", "name", "\"", "\\", "/", "\n", "\x01", "\x7F", "{[,:]}", "0123456789abcdef"}},
        {65001,
         {"a", "\"", "/", "\xE6\x97\xA5", "\xC3\xA9", "\xF0\x9F\x98\x80", "\xF0\xA0\x80\x80"}},
    };
    for (Run const & run : runs) {
        UsingCodePage const codePage(run.codePage);
        cache.clear();
        RandomValues random(11, run.pieces);
        random.leaveNullsOut();
        for (int round = 0; round < 500; ++round) {
            RefCountedPtr<RecordData> const record = random.record(5);
            std::string const text = write(*record);
            RefCountedPtr<KestrinMessage> const back = read(text);
            ASSERT_FALSE(back.isNull()) << text;
            ASSERT_TRUE(sameValue(record, back)) << text << ", seed 11, round " << round;
            ASSERT_EQ(write(*back), text);
            std::string const escaped = write(*record, tvk::JSON_ESCAPE_SLASH);
            ASSERT_TRUE(sameValue(record, read(escaped))) << escaped;
        }
    }
}

TEST_F(RoundTrip, BringsJapaneseThroughTheCodePages) {
    constexpr char const * UTF8 = "{\"a\":\"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\"}";
    for (unsigned int const codePage : {932u, 65001u}) {
        SCOPED_TRACE(codePage);
        UsingCodePage const using_(codePage);
        cache.clear();
        EXPECT_EQ(rewritten(UTF8), UTF8);
    }
    UsingCodePage const japanese(932);
    message->setFieldValue("a", "\x93\xFA\x96\x7B\xB1", 5);
    EXPECT_EQ(read(write(*message))->getFieldValue("a")->asString(), "\x93\xFA\x96\x7B\xB1");
}

// The differences.

TEST_F(RoundTrip, DropsNulls) {
    EXPECT_EQ(rewritten(R"({"a":null,"b":[null,1,null]})"), R"({"b":[1]})");
    message->setFieldValue("a", RefCountedPtr<FieldValue>());
    EXPECT_EQ(write(*message), R"({"a":null})");
    EXPECT_FALSE(read(write(*message))->hasField("a"));
}

TEST_F(RoundTrip, LosesHeaderAndSubMessages) {
    message->header().setRequestId("7");
    message->addSubMessage(new MappedMessage);
    message->setFieldValue("a", "b", 1);
    RefCountedPtr<KestrinMessage> const back = read(write(*message));
    EXPECT_TRUE(back->header().getRequestId().IsEmpty());
    EXPECT_EQ(back->getSubMessageCount(), 0u);
    EXPECT_EQ(back->getFieldValue("a")->asString(), "b");
}

TEST_F(RoundTrip, LosesWhatTheCodePageLacks) {
    UsingCodePage const japanese(932);
    // 81 7C is the full-width minus of the code page.
    EXPECT_EQ(rewritten("{\"a\":\"caf\xC3\xA9\"}"), "{\"a\":\"caf\xEF\xBC\x8D\"}");
}

TEST_F(RoundTrip, ConvertsNamesOnTheWayOutAlone) {
    UsingCodePage const japanese(932);
    std::string const name = "\xE6\x97\xA5";
    RefCountedPtr<KestrinMessage> const back = read("{\"" + name + "\":1}");
    EXPECT_THAT(back->getFieldNames(), ElementsAre(name.c_str()));
    CString const twice = tvk::platform::ansiToUtf8(name.data(), 3);
    EXPECT_NE(twice, name.c_str());
    EXPECT_EQ(write(*back), std::string("{\"") + twice.GetString() + "\":1}");
}

TEST_F(RoundTrip, SortsFields) { EXPECT_EQ(rewritten(R"({"b":1,"a":2})"), R"({"a":2,"b":1})"); }

TEST_F(RoundTrip, CutsTextAtNul) {
    RefCountedPtr<KestrinMessage> const back = read(R"({"a":"x\u0000y","b":1})");
    EXPECT_EQ(back->getFieldValue("a")->asString().GetLength(), 3);
    EXPECT_EQ(write(*back), R"({"a":"x","b":1})");
}

TEST_F(RoundTrip, WritesFourBytesBeyondTheBasicPlane) {
    UsingCodePage const utf8(65001);
    EXPECT_EQ(rewritten(R"({"a":"\ud83d\ude00"})"), "{\"a\":\"\xF0\x9F\x98\x80\"}");
    EXPECT_EQ(rewritten("{\"a\":\"\xF0\xA0\x80\x80\"}"), "{\"a\":\"\xF0\xA0\x80\x80\"}");
    // An escape of U+20000 has 5 bytes, which are no UTF-8 to the code page.
    CString const replaced = tvk::platform::utf8ToAnsi("\xF8\x80\xA0\x80\x80", 5);
    EXPECT_EQ(read(R"({"a":"\ud840\udc00"})")->getFieldValue("a")->asString(), replaced);
}

TEST_F(RoundTrip, ReadsUnquotedNamesThatNeedNoQuotes) {
    message->setFieldValue("a b", "x", 1);
    std::string const plain = write(*message, tvk::JSON_UNQUOTED_NAMES);
    EXPECT_EQ(plain, R"({a b:"x"})");
    EXPECT_TRUE(sameValue(message, read(plain, tvk::JSON_ALLOW_UNQUOTED_NAME)));
    message->setFieldValue("c\"d", "y", 1);
    std::string const escaped = write(*message, tvk::JSON_UNQUOTED_NAMES);
    EXPECT_EQ(escaped, R"({a b:"x",c\"d:"y"})");
    EXPECT_TRUE(parser
                    .parseJsonMessage(escaped.data(), static_cast<unsigned int>(escaped.size()),
                                      tvk::JSON_ALLOW_UNQUOTED_NAME, nullptr)
                    .isNull());
}

TEST_F(RoundTrip, DeliberatelyGivesTheOptionFourTwoMeanings) {
    EXPECT_EQ(tvk::JSON_ESCAPE_SLASH, tvk::JSON_ALLOW_HASH_COMMENT);
    EXPECT_EQ(tvk::JSON_UNQUOTED_NAMES, tvk::JSON_ALLOW_UNQUOTED_NAME);
    message->setFieldValue("a", "#/", 2);
    EXPECT_EQ(write(*message, 4), R"({"a":"#\/"})");
    EXPECT_TRUE(sameValue(message, read("# comment\n" + write(*message, 4), 4)));
}

TEST_F(RoundTrip, GivesADoubleTheTextItWasWrittenWith) {
    message->setFieldValue("a", new NumberData(1.5));
    RefCountedPtr<FieldValue> const back = read(write(*message))->getFieldValue("a");
    EXPECT_EQ(back->asString(), "1.500000");
    EXPECT_EQ(back->doubleValue(), 1.5);
    message->setFieldValue("a", FieldValue::ONE_NUMBER_VALUE);
    EXPECT_EQ(read(write(*message))->getFieldValue("a"), FieldValue::TRUE_VALUE);
}

}  // namespace
