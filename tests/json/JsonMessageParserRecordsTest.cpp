#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/values/ListData.h"
#include "tvk/values/MappedRecordData.h"

// How records come to their fields, whichever way the parser builds them: as if each field had been
// set when its value came.
namespace tvk {
namespace {

class JsonMessageParserRecords : public testing::Test {
protected:
    RefCountedPtr<KestrinMessage> parse(std::string const & json) {
        test::ExactBuffer const bytes(json);
        ErrorInfo error;
        auto const message = parser_.parseJsonMessage(bytes.data(), bytes.length(), 0, &error);
        EXPECT_FALSE(message.isNull()) << error.getErrorMessage().GetString() << "\n" << json;
        return message;
    }

    SimpleObjectCache cache_{SimpleObjectCache::defaultRawDataConverter()};
    JsonMessageParser parser_{&cache_};
};

/// Random text of objects with the record that must come of each.
class RandomObjects {
public:
    explicit RandomObjects(unsigned int seed) : random_(seed) {}

    unsigned int below(unsigned int limit) { return static_cast<unsigned int>(random_() % limit); }

    /// Sets the fields into `record` as they are written.
    std::string write(RecordData & record, SimpleObjectCache & cache, int depth) {
        std::string json = "{";
        for (unsigned int i = fieldCount(); i > 0; --i) {
            std::string const name = fieldName();
            json += (json.size() > 1 ? ",\"" : "\"") + name + "\":";
            json += writeValue(record, name.c_str(), cache, depth);
        }
        return json + "}";
    }

private:
    unsigned int fieldCount() { return below(40) == 0 ? 120 + below(20) : below(7); }

    /// Mostly few names, so that sequences and names come again; some that are not kept.
    std::string fieldName() {
        switch (below(30)) {
            case 0:
                return std::string(60 + below(10), 'n');
            case 1:
                return std::to_string(random_());
            default:
                return std::string(1, static_cast<char>('a' + below(5)));
        }
    }

    std::string writeValue(RecordData & record, char const * name, SimpleObjectCache & cache,
                           int depth) {
        switch (below(depth > 3 ? 4 : 6)) {
            case 0:
                return "null";
            case 1:
                record.setFieldValue(name, FieldValue::TRUE_VALUE);
                return "true";
            case 2:
            case 3: {
                std::string const text = std::to_string(below(1000));
                record.setFieldValue(
                    name,
                    cache.cachedString(SimpleObjectCache::hashCode(
                                           text.data(), static_cast<unsigned int>(text.size())),
                                       text.data(), static_cast<unsigned int>(text.size())));
                return '"' + text + '"';
            }
            default: {
                RefCountedPtr<MappedRecordData> const inner = new MappedRecordData;
                std::string json = write(*inner, cache, depth + 1);
                record.setFieldValue(name, inner);
                return json;
            }
        }
    }

    std::mt19937 random_;
};

void expectSame(RecordData const & record, RecordData const & wanted) {
    std::vector<RecordData::Field> const fields = record.getAllFields();
    std::vector<RecordData::Field> const wantedFields = wanted.getAllFields();
    ASSERT_EQ(fields.size(), wantedFields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        ASSERT_EQ(*fields[i].name, *wantedFields[i].name);
        ASSERT_EQ(fields[i].value->getFieldType(), wantedFields[i].value->getFieldType());
        if (fields[i].value->getFieldType() == FLDTYPE_RECORD) {
            expectSame(fields[i].value->asRecord(), wantedFields[i].value->asRecord());
        } else {
            ASSERT_EQ(fields[i].value->asString(), wantedFields[i].value->asString());
        }
    }
}

TEST_F(JsonMessageParserRecords, HoldWhatSettingEachFieldGives) {
    RandomObjects objects(20140102);
    for (int round = 0; round < 2000; ++round) {
        RefCountedPtr<MappedRecordData> const wanted = new MappedRecordData;
        std::string const json = objects.write(*wanted, cache_, 0);
        auto const message = parse(json);
        ASSERT_FALSE(message.isNull());
        expectSame(*message, *wanted);
        ASSERT_FALSE(HasFailure()) << json;
    }
}

TEST_F(JsonMessageParserRecords, OfAKnownKindCostNothingByTheField) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    auto const allocationsOf = [this](std::string const & json) {
        parse(json);
        test::ExactBuffer const bytes(json);
        test::AllocationCounter allocations;
        parser_.parseJsonMessage(bytes.data(), bytes.length(), 0, nullptr);
        return allocations.count();
    };
    EXPECT_EQ(allocationsOf(R"({"a":1,"b":2,"c":3,"d":4,"e":5,"f":6,"g":7,"h":8})"),
              allocationsOf(R"({"a":1})"));
}

TEST_F(JsonMessageParserRecords, OfOneKindShareTheirNames) {
    auto const first = parse(R"({"b":1,"a":2})");
    auto const second = parse(R"({"b":"x","a":true})");
    ASSERT_EQ(first->getFieldCount(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(first->getAllFields()[i].name, second->getAllFields()[i].name);
    }
}

TEST_F(JsonMessageParserRecords, LackTheFieldsThatAreNull) {
    for (int round = 0; round < 3; ++round) {
        for (auto const & [json, names] :
             {std::pair{R"({"a":1,"b":2,"c":3})", std::vector<CString>{"a", "b", "c"}},
              {R"({"a":1,"b":null,"c":3})", {"a", "c"}},
              {R"({"a":null,"b":null,"c":3,"d":null})", {"c"}},
              {R"({"a":null})", {}},
              {R"({"a":null,"a":1,"b":[null],"c":null})", {"a", "b"}}}) {
            EXPECT_EQ(parse(json)->getFieldNames(), names) << json;
        }
    }
}

/// `count` fields of one letter and a number, the value of each being its number.
std::string fieldsOf(char letter, int count) {
    std::string json;
    for (int i = 0; i < count; ++i) {
        json += (i == 0 ? "\"" : ",\"") + (letter + std::to_string(i)) + "\":" + std::to_string(i);
    }
    return json;
}

TEST_F(JsonMessageParserRecords, OfManyNamesAreLikeOthers) {
    std::string const many = fieldsOf('a', 300);
    std::string const json =
        "{" + many + R"(,"x":null,"list":[1],"record":{)" + many + R"(},"a7":"again","y":null})";
    for (int round = 0; round < 2; ++round) {
        auto const message = parse(json);
        ASSERT_EQ(message->getFieldCount(), 302u);
        EXPECT_EQ(message->getFieldValue("a7")->asString(), "again");
        EXPECT_EQ(message->getFieldValue("a299")->intValue(), 299);
        EXPECT_EQ(message->getFieldValue("list")->asList().getElementTypeName(), "list");
        EXPECT_EQ(message->getFieldValue("record")->asRecord().getFieldCount(), 300u);
        EXPECT_FALSE(message->hasField("x"));
    }
}

TEST_F(JsonMessageParserRecords, OfManyNamesThatAreCutLeaveNothingBehind) {
    std::string json = "{";
    json += fieldsOf('a', 200) + R"(,"r":{)" + fieldsOf('b', 200) + ",!";
    test::ExactBuffer const bytes(json);
    EXPECT_EQ(parser_.parseJsonMessage(bytes.data(), bytes.length(), 0, nullptr), nullptr);
    EXPECT_EQ(parse(R"({"b":[1]})")->getFieldNames(), (std::vector<CString>{"b"}));
}

TEST_F(JsonMessageParserRecords, StayWholeWhenTheParserForgets) {
    auto const first = parse(R"({"b":1,"a":{"d":2,"c":3}})");
    for (int i = 0; i < 3000; ++i) {
        std::string const name = std::to_string(i % 30);
        std::string const other = std::to_string(i);
        parse("{\"" + name + "\":{\"" + name + "\":1,\"" + other + "\":2}}");
    }
    EXPECT_EQ(first->getFieldNames(), (std::vector<CString>{"a", "b"}));
    EXPECT_EQ(first->getFieldValue("a")->asRecord().getFieldNames(),
              (std::vector<CString>{"c", "d"}));
}

TEST_F(JsonMessageParserRecords, OutliveTheParser) {
    RefCountedPtr<KestrinMessage> message;
    {
        SimpleObjectCache cache(SimpleObjectCache::defaultRawDataConverter());
        JsonMessageParser parser(&cache);
        message = parser.parseJsonMessage("{\"b\":\"x\",\"a\":1}", 15, 0, nullptr);
    }
    EXPECT_EQ(message->getFieldNames(), (std::vector<CString>{"a", "b"}));
    EXPECT_EQ(message->getFieldValue("b")->asString(), "x");
}

TEST_F(JsonMessageParserRecords, BegunBeforeAFailureLeaveNothingBehind) {
    for (std::string const json :
         {R"({"a":1,"b":{"c":2,"d":[{"e":3,)", R"({"a":1,"b":)", R"({"a":{"b":{"c":"x"},"d":!)"}) {
        test::ExactBuffer const bytes(json);
        EXPECT_EQ(parser_.parseJsonMessage(bytes.data(), bytes.length(), 0, nullptr), nullptr);
        auto const message = parse(R"({"b":1})");
        EXPECT_EQ(message->getFieldNames(), (std::vector<CString>{"b"}));
    }
}

}  // namespace
}  // namespace tvk
