#include "tvk/json/JsonMessageParser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/ProbeValue.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace {

using ::testing::ElementsAre;
using tvk::CString;
using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::JsonMessageParser;
using tvk::KestrinConstants;
using tvk::KestrinMessage;
using tvk::ListData;
using tvk::NumberData;
using tvk::RecordData;
using tvk::RefCountedPtr;
using tvk::SimpleObjectCache;
using tvk::test::AllocationCounter;
using tvk::test::AllocationFailure;
using tvk::test::ExactBuffer;
using tvk::test::ProbeLog;
using tvk::test::ProbeValue;
using tvk::test::UsingCodePage;

class ParserTest : public ::testing::Test {
protected:
    RefCountedPtr<KestrinMessage> message(std::string_view text, int options = 0) {
        ExactBuffer const data(text);
        return parser.parseJsonMessage(data.data(), data.length(), options, &error);
    }
    RefCountedPtr<FieldValue> value(std::string_view text, int options = 0) {
        ExactBuffer const data(text);
        return parser.parseOneJsonValue(data.data(), data.length(), options, &error);
    }
    /// The error's text, after its other fields were looked at; empty without an error.
    std::string failure() {
        if (!error.hasError()) {
            return "";
        }
        EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
        EXPECT_EQ(error.getErrorCode(), KestrinConstants::ERR_InvalidMessageData);
        EXPECT_EQ(error.getErrorCode(), 7);
        return error.getErrorMessage().GetString();
    }

    SimpleObjectCache cache{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser{&cache};
    ErrorInfo error;
};

TEST_F(ParserTest, KnowsItsCache) { EXPECT_EQ(parser.cache(), &cache); }

TEST_F(ParserTest, MakesAMessageOfAnObject) {
    RefCountedPtr<KestrinMessage> const result =
        message(R"({"sym":"4346","last":170,"chg":-3.50,"open":true,"halt":false})");
    ASSERT_FALSE(result.isNull());
    EXPECT_NE(dynamic_cast<tvk::MappedMessage *>(result.get()), nullptr);
    EXPECT_THAT(result->getFieldNames(), ElementsAre("chg", "halt", "last", "open", "sym"));
    EXPECT_EQ(result->getFieldValue("sym")->getFieldType(), FLDTYPE_STRING);
    EXPECT_EQ(result->getFieldValue("sym")->asString(), "4346");
    EXPECT_EQ(result->getFieldValue("last")->longlongValue(), 170);
    EXPECT_EQ(result->getFieldValue("chg")->doubleValue(), -3.5);
    EXPECT_EQ(failure(), "");
}

TEST_F(ParserTest, LeavesHeaderAndSubMessagesFresh) {
    RefCountedPtr<KestrinMessage> const result = message(R"({"kind":1,"__raw__body__":"x"})");
    EXPECT_EQ(static_cast<int>(result->header().getMessageKind()), 0);
    EXPECT_TRUE(result->header().getRequestId().IsEmpty());
    EXPECT_TRUE(result->header().getMessageTypeId().IsEmpty());
    EXPECT_EQ(result->header().getFieldCount(), 0u);
    EXPECT_EQ(result->getSubMessageCount(), 0u);
    EXPECT_EQ(result->getFieldValue(KestrinConstants::FLDNAME_RAW_BODY)->asString(), "x");
}

TEST_F(ParserTest, MakesEmptyContainers) {
    EXPECT_EQ(message("{}")->getFieldCount(), 0u);
    EXPECT_EQ(value("{}")->asRecord().getFieldCount(), 0u);
    EXPECT_EQ(value("[]")->asList().getCount(), 0u);
    EXPECT_NE(dynamic_cast<tvk::MappedRecordData *>(value("{}").get()), nullptr);
    EXPECT_NE(dynamic_cast<tvk::ListDataImpl *>(value("[]").get()), nullptr);
}

TEST_F(ParserTest, DropsNull) {
    RefCountedPtr<KestrinMessage> const result = message(R"({"a":null,"b":1})");
    EXPECT_FALSE(result->hasField("a"));
    EXPECT_TRUE(result->hasField("b"));
    RefCountedPtr<FieldValue> const list = value("[null,1,null]");
    ASSERT_EQ(list->asList().getCount(), 1u);
    EXPECT_EQ(list->asList().getElement(0)->intValue(), 1);
}

TEST_F(ParserTest, LetsARepeatedNameOverwrite) {
    EXPECT_EQ(message(R"({"a":1,"a":"b"})")->getFieldValue("a")->asString(), "b");
    EXPECT_EQ(message(R"({"a":1,"a":null})")->getFieldValue("a")->intValue(), 1);
    EXPECT_EQ(message(R"({"a":{"x":1},"a":{"y":2}})")->getFieldValue("a")->asRecord().hasField("x"),
              false);
}

TEST_F(ParserTest, NamesTheElementTypeOfAListAfterItsField) {
    auto const name = [](ListData const & list) { return list.getElementTypeName(); };
    RefCountedPtr<FieldValue> const top = value("[1,[2]]");
    EXPECT_EQ(name(top->asList()), "");
    EXPECT_EQ(name(top->asList().getElement(1)->asList()), "");
    RefCountedPtr<KestrinMessage> const named = message(R"({"x":[1],"y":[[1]]})");
    EXPECT_EQ(name(named->getFieldValue("x")->asList()), "x");
    EXPECT_EQ(name(named->getFieldValue("y")->asList()), "y");
    EXPECT_EQ(name(named->getFieldValue("y")->asList().getElement(0)->asList()), "");
    RefCountedPtr<FieldValue> const records = value(R"([{"x":[1]},[2]])");
    EXPECT_EQ(name(records->asList().getElement(0)->asRecord().getFieldValue("x")->asList()), "x");
    EXPECT_EQ(name(records->asList().getElement(1)->asList()), "");
}

TEST_F(ParserTest, KeepsTheNameOfAContainerOverNestedNames) {
    RefCountedPtr<KestrinMessage> const result =
        message(R"({"outer":{"inner":{"leaf":1},"list":[{"leaf":2}]}})");
    RecordData & outer = result->getFieldValue("outer")->asRecord();
    EXPECT_EQ(outer.getFieldValue("inner")->asRecord().getFieldValue("leaf")->intValue(), 1);
    EXPECT_EQ(outer.getFieldValue("list")->asList().getCount(), 1u);
}

TEST_F(ParserTest, KeepsTheOrderOfElements) {
    RefCountedPtr<FieldValue> const result = value(R"([1,[2],{"a":3},"4",true])");
    ListData & list = result->asList();
    ASSERT_EQ(list.getCount(), 5u);
    EXPECT_EQ(list.getElement(0)->intValue(), 1);
    EXPECT_EQ(list.getElement(1)->asList().getElement(0)->intValue(), 2);
    EXPECT_EQ(list.getElement(2)->asRecord().getFieldValue("a")->intValue(), 3);
    EXPECT_EQ(list.getElement(3)->asString(), "4");
    EXPECT_EQ(list.getElement(4), FieldValue::TRUE_VALUE);
}

struct Number {
    char const * text;
    bool isInteger;
};

TEST_F(ParserTest, TellsIntegersFromDoublesAndKeepsTheirText) {
    constexpr Number NUMBERS[] = {{"1", true},     {"-0", true},   {"9223372036854775808", true},
                                  {"1.50", false}, {"1e3", false}, {"-1.5E-3", false},
                                  {"0.0", false}};
    for (Number const & row : NUMBERS) {
        SCOPED_TRACE(row.text);
        RefCountedPtr<KestrinMessage> const result =
            message(std::string("{\"p\":") + row.text + "}");
        RefCountedPtr<FieldValue> const number = result->getFieldValue("p");
        EXPECT_EQ(static_cast<NumberData &>(*number).isInteger(), row.isInteger);
        EXPECT_EQ(number->asString(), row.text);
    }
}

TEST_F(ParserTest, GivesTheTwoConstantsForBooleans) {
    RefCountedPtr<KestrinMessage> const result = message(R"({"a":true,"b":false,"c":[true]})");
    EXPECT_EQ(result->getFieldValue("a"), FieldValue::TRUE_VALUE);
    EXPECT_EQ(result->getFieldValue("b"), FieldValue::FALSE_VALUE);
    EXPECT_EQ(result->getFieldValue("c")->asList().getElement(0), FieldValue::TRUE_VALUE);
    EXPECT_EQ(FieldValue::TRUE_VALUE->getRefCount(), FieldValue::CONSTANT_REF_COUNT);
    EXPECT_EQ(cache.size(), 0u);
}

TEST_F(ParserTest, SharesRepeatedValues) {
    RefCountedPtr<KestrinMessage> const first = message(R"({"a":"text","b":170,"c":170})");
    RefCountedPtr<KestrinMessage> const second = message(R"({"x":"text","y":170})");
    EXPECT_EQ(first->getFieldValue("a"), second->getFieldValue("x"));
    EXPECT_EQ(first->getFieldValue("b"), second->getFieldValue("y"));
    EXPECT_EQ(first->getFieldValue("b"), first->getFieldValue("c"));
    EXPECT_EQ(cache.fastHitCount(), 3u);
}

TEST_F(ParserTest, AsksTheCacheWithTheHashOfTheScanner) {
    message("{\"a\":\"caf\xC3\xA9\",\"b\":\"plain\"}");
    ASSERT_EQ(cache.size(), 2u);
    auto const hits = [&](char const * text, unsigned int size) {
        unsigned long const before = cache.fastHitCount();
        cache.cachedString(SimpleObjectCache::hashCode(text, size), text, size);
        return cache.fastHitCount() - before;
    };
    EXPECT_EQ(hits("plain", 5), 1u);
    EXPECT_EQ(hits("caf\xC3\xA9", 5), 0u)
        << "bytes are signed to the one and unsigned to the other";
}

TEST_F(ParserTest, BringsValuesToTheCodePageAndLeavesNamesInUtf8) {
    constexpr char const * NIHON_UTF8 = "\xE6\x97\xA5\xE6\x9C\xAC";
    std::string const text = std::string("{\"") + NIHON_UTF8 + "\":\"" + NIHON_UTF8 + "\"}";
    {
        UsingCodePage const japanese(932);
        RefCountedPtr<KestrinMessage> const result = message(text);
        EXPECT_THAT(result->getFieldNames(), ElementsAre(NIHON_UTF8));
        EXPECT_EQ(result->getFieldValue(NIHON_UTF8)->asString(), "\x93\xFA\x96\x7B");
    }
    cache.clear();
    {
        UsingCodePage const utf8(65001);
        EXPECT_EQ(message(text)->getFieldValue(NIHON_UTF8)->asString(), NIHON_UTF8);
    }
}

TEST_F(ParserTest, DecodesNames) {
    RefCountedPtr<KestrinMessage> const result =
        message(R"({"":1,"a\u0000b":2,"\"q\"":3,"\ud83d\ude00":4})");
    EXPECT_EQ(result->getFieldValue("")->intValue(), 1);
    EXPECT_EQ(result->getFieldValue(CString("a\0b", 3))->intValue(), 2);
    EXPECT_EQ(result->getFieldValue("\"q\"")->intValue(), 3);
    EXPECT_EQ(result->getFieldValue("\xF0\x9F\x98\x80")->intValue(), 4);
}

TEST_F(ParserTest, TakesNamesOfEveryLengthAndManyOfThem) {
    std::string text = "{";
    for (int i = 0; i < 2000; ++i) {
        text += (i == 0 ? "\"" : ",\"") + std::string(static_cast<std::size_t>(i % 150), 'n') +
                std::to_string(i) + "\":" + std::to_string(i);
    }
    text += "}";
    for (int round = 0; round < 2; ++round) {
        RefCountedPtr<KestrinMessage> const result = message(text);
        ASSERT_EQ(result->getFieldCount(), 2000u);
        for (int i = 0; i < 2000; ++i) {
            std::string const name =
                std::string(static_cast<std::size_t>(i % 150), 'n') + std::to_string(i);
            ASSERT_EQ(result->getFieldValue(name.c_str())->intValue(), i);
        }
    }
}

TEST_F(ParserTest, KeepsNothingOfTheInput) {
    std::string text = R"({"name":"value","n":12.5})";
    RefCountedPtr<KestrinMessage> const result =
        parser.parseJsonMessage(text.data(), static_cast<unsigned int>(text.size()), 0, nullptr);
    text.assign(text.size(), '?');
    EXPECT_EQ(result->getFieldValue("name")->asString(), "value");
    EXPECT_EQ(result->getFieldValue("n")->asString(), "12.5");
}

TEST_F(ParserTest, IgnoresWhatFollowsTheValue) {
    EXPECT_EQ(message(R"({"a":1} trailing)")->getFieldCount(), 1u);
    EXPECT_EQ(value("[1]]]")->asList().getCount(), 1u);
    EXPECT_EQ(failure(), "");
}

TEST_F(ParserTest, HandsTheOptionsToTheScanner) {
    EXPECT_TRUE(message("# c\n// c\n{a:1,}").isNull());
    RefCountedPtr<KestrinMessage> const result = message(
        "# c\n// c\n{a:1,}", tvk::JSON_ALLOW_SLASH_COMMENT | tvk::JSON_ALLOW_HASH_COMMENT |
                                 tvk::JSON_ALLOW_UNQUOTED_NAME | tvk::JSON_ALLOW_TRAILING_COMMA);
    ASSERT_FALSE(result.isNull());
    EXPECT_EQ(result->getFieldValue("a")->intValue(), 1);
}

TEST_F(ParserTest, GivesNullAndNoErrorForNoValue) {
    for (char const * text : {"", " ", "\n\t"}) {
        EXPECT_TRUE(value(text).isNull());
        EXPECT_EQ(failure(), "");
    }
    EXPECT_TRUE(value("# all of it", tvk::JSON_ALLOW_HASH_COMMENT).isNull());
    EXPECT_EQ(failure(), "");
    EXPECT_TRUE(parser.parseOneJsonValue(nullptr, 0, 0, nullptr).isNull());
}

TEST_F(ParserTest, LeavesTheErrorAloneOnSuccess) {
    error.setDomain("domain");
    error.setErrorCode(99);
    error.setErrorMessage("before");
    EXPECT_FALSE(message("{}").isNull());
    EXPECT_TRUE(value("").isNull());
    EXPECT_EQ(error.getErrorCode(), 99);
    EXPECT_EQ(error.getErrorMessage(), "before");
    EXPECT_EQ(error.getDomain(), "domain");
}

TEST_F(ParserTest, ReportsTheTextOfTheScanner) {
    EXPECT_TRUE(message("[1]").isNull());
    EXPECT_EQ(failure(),
              "invalid message data near position 0: tag '{' is expected, but was <[1]>...");
    EXPECT_TRUE(message(R"({"a":)").isNull());
    EXPECT_EQ(failure(),
              "invalid message data near position 5: tag '}' is expected, but was <>...");
    EXPECT_TRUE(message("").isNull());
    EXPECT_EQ(failure(),
              "invalid message data near position 0: tag '{' is expected, but was <>...");
    EXPECT_TRUE(value("[1,]").isNull());
    EXPECT_EQ(failure(), "invalid message data near position 3: invalid number value, data=<]>...");
    EXPECT_TRUE(message("\"\xFF\"").isNull());
}

TEST_F(ParserTest, TakesANullPlaceForTheError) {
    EXPECT_TRUE(parser.parseJsonMessage("[", 1, 0, nullptr).isNull());
    EXPECT_TRUE(parser.parseOneJsonValue("[", 1, 0, nullptr).isNull());
    EXPECT_TRUE(parser.parseOneJsonValue("1 ", 2, 0, nullptr).isNull());
}

struct Scalar {
    char const * name;
    std::string_view text;
    int position;
    int options = 0;
};

TEST_F(ParserTest, RefusesBareScalarsWithTheirPosition) {
    constexpr Scalar SCALARS[] = {
        {"number", "1", 0},
        {"double", "-1.5e3 ", 0},
        {"text", "\"text\"", 0},
        {"true", "true ", 0},
        {"false", "false ", 0},
        {"null", "null ", 0},
        {"behind space", " \t\r\n\b\f1", 6},
        {"text behind space", "  \"a\"", 2},
        {"null behind space", "   null,", 3},
        {"behind a hash comment", "# x\n null ", 5, tvk::JSON_ALLOW_HASH_COMMENT},
        {"behind a slash comment", "// x\n// y\n true ", 11, tvk::JSON_ALLOW_SLASH_COMMENT},
        {"behind both", "#a\n//b\n\"c\"", 7,
         tvk::JSON_ALLOW_HASH_COMMENT | tvk::JSON_ALLOW_SLASH_COMMENT},
    };
    for (Scalar const & row : SCALARS) {
        SCOPED_TRACE(row.name);
        error = ErrorInfo();
        EXPECT_TRUE(value(row.text, row.options).isNull());
        EXPECT_EQ(failure(), "invalid message data near position " + std::to_string(row.position) +
                                 ": an object or an array is expected");
    }
    EXPECT_EQ(value("[1]")->asList().getCount(), 1u);
}

TEST_F(ParserTest, PrefersTheErrorOfTheScannerToThatOfTheScalar) {
    EXPECT_TRUE(value("true").isNull());
    EXPECT_EQ(failure(),
              "invalid message data near position 0: boolean value 'true' is expected, but was "
              "<true>...");
    EXPECT_TRUE(value("-").isNull());
    EXPECT_EQ(
        failure(),
        "invalid message data near position 0: invalid number value(end of data encountered)");
}

TEST_F(ParserTest, WorksOnAfterAFailure) {
    for (char const * bad : {"{\"a\":", "{\"a\":{\"b\":[1,{\"c\":2", "[[[[", "{\"a\":[}", "x"}) {
        SCOPED_TRACE(bad);
        EXPECT_TRUE(message(bad).isNull());
        EXPECT_EQ(message(R"({"a":1})")->getFieldValue("a")->intValue(), 1);
        EXPECT_TRUE(value(bad).isNull());
        EXPECT_EQ(value("[[1]]")->asList().getCount(), 1u);
    }
}

TEST_F(ParserTest, NeverHandsOutAPartialResult) {
    EXPECT_TRUE(value("[1,2").isNull());
    EXPECT_TRUE(value("").isNull()) << "the list of the failed call is gone";
}

// What lives how long.

class ProbeConverter : public SimpleObjectCache::RawDataToObjectConverter {
public:
    FieldValue * stringFromRawData(void const * data, unsigned int size) override {
        std::string const text(static_cast<char const *>(data), size);
        if (text == "throw") {
            throw std::runtime_error(text);
        }
        return new ProbeValue(log, FLDTYPE_STRING, text);
    }
    FieldValue * numberFromRawData(void const * data, unsigned int size, void const *,
                                   void const *) override {
        return stringFromRawData(data, size);
    }

    ProbeLog log;
};

/// A cache of one slot whose slot is taken, so that each probe lives in its container alone.
class LifetimeTest : public ::testing::Test {
protected:
    void parse(std::string_view text) {
        ExactBuffer const data(text);
        parser->parseOneJsonValue(data.data(), data.length(), 0, nullptr);
        cache.clear();
    }

    ProbeConverter converter;
    SimpleObjectCache cache{&converter, 1};
    std::unique_ptr<JsonMessageParser> parser = std::make_unique<JsonMessageParser>(&cache);
};

TEST_F(LifetimeTest, RefersToTheLastResultUntilTheNextCall) {
    parse(R"(["a",["b"]])");
    EXPECT_EQ(converter.log.alive, 2);
    parse("");
    EXPECT_EQ(converter.log.alive, 0);
    parse(R"(["a"])");
    EXPECT_EQ(converter.log.alive, 1);
    parser.reset();
    EXPECT_EQ(converter.log.alive, 0);
}

TEST_F(LifetimeTest, KeepsThePartsOfAFailureUntilTheNextCall) {
    char const * const cut = R"(["a",["b",{"c":"c","d":["d"],"e":[["e")";
    parse(cut);
    EXPECT_EQ(converter.log.alive, 5);
    parse("");
    EXPECT_EQ(converter.log.alive, 0);
    parse(cut);
    EXPECT_EQ(converter.log.alive, 5);
    parser.reset();
    EXPECT_EQ(converter.log.alive, 0);
}

TEST_F(LifetimeTest, ReleasesTheRootBeforeTheOpenPartsFromTheOutsideIn) {
    parse(R"(["a",["b",["c",["d"],)");
    converter.log.events.clear();
    parse("");
    EXPECT_THAT(converter.log.events, ElementsAre("end a", "end b", "end c", "end d"));
}

TEST_F(LifetimeTest, LetsAnotherExceptionThroughAndCleansUpAfterIt) {
    std::string_view const text = R"({"a":"a","b":{"c":"c","d":["throw"]}})";
    ErrorInfo error;
    EXPECT_THROW(
        parser->parseJsonMessage(text.data(), static_cast<unsigned int>(text.size()), 0, &error),
        std::runtime_error);
    EXPECT_FALSE(error.hasError());
    cache.clear();
    EXPECT_EQ(converter.log.alive, 2);
    EXPECT_FALSE(parser->parseJsonMessage("{}", 2, 0, nullptr).isNull());
    EXPECT_EQ(converter.log.alive, 0);
}

TEST_F(ParserTest, LetsTheResultLiveOn) {
    RefCountedPtr<KestrinMessage> const first = message(R"({"a":"x"})");
    EXPECT_EQ(first->getRefCount(), 2);
    message("{}");
    EXPECT_EQ(first->getRefCount(), 1);
    EXPECT_EQ(first->getFieldValue("a")->asString(), "x");
}

TEST_F(ParserTest, SurvivesMemoryThatIsOutAtEveryPlace) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    std::string_view const text = R"({"a":"x","b":{"c":[1,{"d":2.5}],"e":[["f"]]},"g":true})";
    int failures = 0;
    for (int allowed = 0;; ++allowed) {
        cache.clear();
        RefCountedPtr<KestrinMessage> result;
        AllocationFailure failing(allowed);
        bool isOut = false;
        try {
            result = parser.parseJsonMessage(text.data(), static_cast<unsigned int>(text.size()), 0,
                                             &error);
        } catch (std::bad_alloc const &) {
            isOut = true;
        }
        failing.end();
        if (!isOut) {
            ASSERT_FALSE(result.isNull());
            EXPECT_EQ(result->getFieldCount(), 3u);
            break;
        }
        ++failures;
        ASSERT_EQ(message("{\"a\":[[]]}")->getFieldCount(), 1u) << allowed;
    }
    EXPECT_GT(failures, 10);
    EXPECT_EQ(failure(), "");
}

TEST_F(ParserTest, AllocatesWhatTheResultNeedsAndOneScratchBuffer) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    auto const allocationsOf = [&](std::string_view text) {
        message(text);  // the values and the names are known then
        AllocationCounter const allocations;
        parser.parseJsonMessage(text.data(), static_cast<unsigned int>(text.size()), 0, &error);
        return allocations.count();
    };
    EXPECT_EQ(allocationsOf("{}"), 2) << "a message and the scratch buffer";
    EXPECT_EQ(allocationsOf(R"({"sym":"4346","last":170,"chg":-37,"open":true,"x":null})"), 2);
    EXPECT_EQ(allocationsOf(R"({"a":{"b":1,"c":2},"d":{"b":1,"c":2}})"), 4) << "and two records";
    EXPECT_EQ(allocationsOf(R"({"a":[1,2,3,4,5,6,7,8,9,10]})"), 4) << "and a list with its array";
}

TEST_F(ParserTest, KeepsRoomFor32LevelsWithoutAllocation) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    auto const nested = [](std::size_t depth) {
        return std::string(depth, '[') + std::string(depth, ']');
    };
    JsonMessageParser fresh(&cache);
    auto const allocationsOf = [&](std::string const & text) {
        AllocationCounter const allocations;
        fresh.parseOneJsonValue(text.data(), static_cast<unsigned int>(text.size()), 0, nullptr);
        return allocations.count();
    };
    // A list and the place of its one element each; the innermost has no element.
    EXPECT_EQ(allocationsOf(nested(32)), 2 * 32);
    EXPECT_GT(allocationsOf(nested(33)), 2 * 33);
}

}  // namespace
