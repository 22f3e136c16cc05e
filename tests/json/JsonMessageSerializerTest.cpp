#include "tvk/json/JsonMessageSerializer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ProbeValue.h"
#include "tests/support/RandomValues.h"
#include "tests/support/ReferenceSerializer.h"
#include "tests/support/UsingCodePage.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace {

using tvk::CString;
using tvk::FieldValue;
using tvk::JSON_ESCAPE_SLASH;
using tvk::JSON_UNQUOTED_NAMES;
using tvk::JsonMessageSerializer;
using tvk::ListData;
using tvk::ListDataImpl;
using tvk::MappedMessage;
using tvk::MappedRecordData;
using tvk::NumberData;
using tvk::RawDataImpl;
using tvk::RecordData;
using tvk::RefCountedPtr;
using tvk::StringData;
using tvk::test::AllocationCounter;
using tvk::test::AllocationFailure;
using tvk::test::ProbeLog;
using tvk::test::ProbeValue;
using tvk::test::RandomValues;
using tvk::test::ReferenceSerializer;
using tvk::test::TextAccessors;
using tvk::test::UsingCodePage;

CString bytesOf(std::string_view text) {
    return CString(text.data(), static_cast<int>(text.size()));
}

class SerializerTest : public ::testing::Test {
protected:
    std::string write(RecordData const & fields, int options = 0) {
        return result(serializer.recordDataToJson(nullptr, 0, fields, options));
    }
    std::string write(ListData const & elements, int options = 0) {
        return result(serializer.listDataToJson(nullptr, 0, elements, options));
    }
    /// A list of this one element, without its brackets.
    std::string writeValue(RefCountedPtr<FieldValue> const & value, int options = 0) {
        list->removeAllElements();
        list->addElement(value);
        std::string const text = write(*list, options);
        return text.substr(1, text.size() - 2);
    }
    std::string writeText(std::string_view text, int options = 0) {
        return writeValue(new StringData(bytesOf(text)), options);
    }
    std::string result(unsigned int size) const { return result(serializer, size); }
    static std::string result(JsonMessageSerializer const & writer, unsigned int size) {
        return std::string(static_cast<char const *>(writer.getResultsBuffer()), size);
    }

    JsonMessageSerializer serializer;
    RefCountedPtr<RecordData> record{new MappedRecordData};
    RefCountedPtr<ListData> list{new ListDataImpl(CString())};
};

TEST_F(SerializerTest, StartsWith8192Bytes) {
    EXPECT_EQ(serializer.capacity(), 8192u);
    EXPECT_NE(serializer.getResultsBuffer(), nullptr);
}

TEST_F(SerializerTest, WritesEmptyContainers) {
    EXPECT_EQ(write(*record), "{}");
    EXPECT_EQ(write(*list), "[]");
    MappedMessage * const message = new MappedMessage;
    RefCountedPtr<tvk::KestrinMessage> const held(message);
    EXPECT_EQ(result(serializer.messageToJson(nullptr, 0, *message, 0)), "{}");
}

TEST_F(SerializerTest, WritesFieldsInTheOrderOfTheirNames) {
    record->setFieldValue("b", new NumberData(2));
    record->setFieldValue("a", new NumberData(1));
    record->setFieldValue("B", new NumberData(3));
    EXPECT_EQ(write(*record), R"({"B":3,"a":1,"b":2})");
}

TEST_F(SerializerTest, WritesAMessageAsItsFields) {
    RefCountedPtr<tvk::KestrinMessage> const message(new MappedMessage);
    message->setFieldValue("a", "b", 1);
    message->header().setRequestId("7");
    message->header().setFieldValue("h", "x", 1);
    message->addSubMessage(new MappedMessage);
    EXPECT_EQ(result(serializer.messageToJson(nullptr, 0, *message, 0)), R"({"a":"b"})");
    EXPECT_EQ(write(*message), R"({"a":"b"})");
}

TEST_F(SerializerTest, WritesEveryKindOfValue) {
    EXPECT_EQ(writeValue(nullptr), "null");
    EXPECT_EQ(writeValue(FieldValue::TRUE_VALUE), "true");
    EXPECT_EQ(writeValue(FieldValue::FALSE_VALUE), "false");
    EXPECT_EQ(writeValue(FieldValue::ONE_NUMBER_VALUE), "true");
    EXPECT_EQ(writeValue(FieldValue::ZERO_NUMBER_VALUE), "false");
    EXPECT_EQ(writeValue(FieldValue::TWO_NUMBER_VALUE), "2");
    EXPECT_EQ(writeValue(FieldValue::EMPTY_STRING_VALUE), "\"\"");
    EXPECT_EQ(writeValue(new NumberData(1)), "1");
    EXPECT_EQ(writeValue(new NumberData(0)), "0");
    EXPECT_EQ(writeValue(new NumberData(-5LL)), "-5");
    EXPECT_EQ(writeValue(new NumberData(1.5)), "1.500000");
    EXPECT_EQ(writeValue(new StringData("text")), "\"text\"");
    EXPECT_EQ(writeValue(new ListDataImpl(CString())), "[]");
    EXPECT_EQ(writeValue(new MappedRecordData), "{}");
}

TEST_F(SerializerTest, WritesANumberInItsTextForm) {
    RefCountedPtr<NumberData> const number(new NumberData(1.5));
    number->setStringRep("1.50");
    EXPECT_EQ(writeValue(number), "1.50");
    number->setStringRep("a\"b");
    EXPECT_EQ(writeValue(number), "a\\\"b") << "the text is escaped, not quoted";
}

TEST_F(SerializerTest, WritesNestedContainers) {
    RefCountedPtr<RecordData> const inner(new MappedRecordData);
    inner->setFieldValue("x", RefCountedPtr<FieldValue>());
    list->addElement(inner);
    list->addElement(new ListDataImpl(CString()));
    list->addElement(nullptr);
    record->setFieldValue("a", list);
    record->setFieldValue("b", inner);
    record->setFieldValue("c", FieldValue::TRUE_VALUE);
    EXPECT_EQ(write(*record), R"({"a":[{"x":null},[],null],"b":{"x":null},"c":true})");
    EXPECT_EQ(write(*list), R"([{"x":null},[],null])");
}

TEST_F(SerializerTest, EscapesTexts) {
    EXPECT_EQ(writeText("\t\"\\"), R"("\t\"\\")");
    EXPECT_EQ(writeText("\n\r\f\b"), R"("\n\r\f\b")");
    EXPECT_EQ(writeText("a/b"), R"("a/b")");
    EXPECT_EQ(writeText("a/b", JSON_ESCAPE_SLASH), R"("a\/b")");
    EXPECT_EQ(writeText("\x01\x7F"), "\"\x01\x7F\"");
    EXPECT_EQ(writeText(std::string_view("ab\0cd", 5)), R"("ab")");
    EXPECT_EQ(writeText(std::string_view("\0", 1)), R"("")");
}

TEST_F(SerializerTest, WritesNamesAsTexts) {
    record->setFieldValue("a\"b/c", FieldValue::TRUE_VALUE);
    record->setFieldValue("", FieldValue::TRUE_VALUE);
    EXPECT_EQ(write(*record), R"({"":true,"a\"b/c":true})");
    EXPECT_EQ(write(*record, JSON_ESCAPE_SLASH), R"({"":true,"a\"b\/c":true})");
    EXPECT_EQ(write(*record, JSON_UNQUOTED_NAMES), R"({:true,a\"b/c:true})");
    EXPECT_EQ(write(*record, JSON_UNQUOTED_NAMES | JSON_ESCAPE_SLASH), R"({:true,a\"b\/c:true})");
}

TEST_F(SerializerTest, WritesNamesWithoutQuotes) {
    record->setFieldValue("a", new NumberData(1));
    record->setFieldValue("b", "t", 1);
    EXPECT_EQ(write(*record, JSON_UNQUOTED_NAMES), R"({a:1,b:"t"})");
}

TEST_F(SerializerTest, IgnoresOtherOptions) {
    record->setFieldValue("a", "/", 1);
    EXPECT_EQ(write(*record, ~(JSON_ESCAPE_SLASH | JSON_UNQUOTED_NAMES)), R"({"a":"/"})");
}

TEST_F(SerializerTest, BringsTextsAndNamesFromTheCodePageToUtf8) {
    constexpr char const * UTF8 = "\xE6\x97\xA5\xE6\x9C\xAC";
    {
        UsingCodePage const japanese(932);
        record->setFieldValue("\x93\xFA\x96\x7B", "\x93\xFA\x96\x7B/\xB1", 6);
        EXPECT_EQ(write(*record), std::string("{\"") + UTF8 + "\":\"" + UTF8 + "/\xEF\xBD\xB1\"}");
        EXPECT_EQ(write(*record, JSON_ESCAPE_SLASH),
                  std::string("{\"") + UTF8 + "\":\"" + UTF8 + "\\/\xEF\xBD\xB1\"}");
        EXPECT_EQ(writeText("\x83\x5C"), "\"\xE3\x82\xBD\"")
            << "a backslash as a second byte is none";
        EXPECT_EQ(writeText(std::string_view("\xB1\0\xB1", 3)), "\"\xEF\xBD\xB1\"");
    }
    {
        UsingCodePage const utf8(65001);
        EXPECT_EQ(writeText(UTF8), std::string("\"") + UTF8 + '"');
        EXPECT_EQ(writeText("a\xFFz"), "\"a\xEF\xBF\xBDz\"");
        EXPECT_EQ(writeText("\xF0\x9F\x98\x80"), "\"\xF0\x9F\x98\x80\"");
    }
}

TEST_F(SerializerTest, BringsLongTextsToUtf8) {
    UsingCodePage const japanese(932);
    std::string shorts;
    std::string expected;
    for (int i = 0; i < 5000; ++i) {
        shorts += "\x93\xFA";
        expected += "\xE6\x97\xA5";
    }
    EXPECT_EQ(writeText(shorts), '"' + expected + '"');
}

TEST_F(SerializerTest, ThrowsForRawData) {
    record->setFieldValue("raw", new RawDataImpl("abc", 3));
    try {
        write(*record);
        FAIL();
    } catch (char * text) {
        try {
            static_cast<FieldValue &>(*record->getFieldValue("raw")).asString();
        } catch (char * own) {
            EXPECT_STREQ(text, own);
        }
    }
    record->removeField("raw");
    EXPECT_EQ(write(*record), "{}");
}

TEST_F(SerializerTest, WritesOtherKindsAsTexts) {
    ProbeLog log;
    EXPECT_EQ(writeValue(new ProbeValue(log, FLDTYPE_RAW, "raw")), "\"raw\"");
    EXPECT_EQ(writeValue(new ProbeValue(log, static_cast<FieldTypeEnum>(77), "77")), "\"77\"");
    list->removeAllElements();
}

// Prefixes and growth.

TEST_F(SerializerTest, PutsThePrefixInFront) {
    EXPECT_EQ(serializer.recordDataToJson("HEAD", 4, *record, 0), 6u);
    EXPECT_EQ(result(6), "HEAD{}");
    EXPECT_EQ(serializer.listDataToJson("12", 2, *list, 0), 4u);
    EXPECT_EQ(result(4), "12[]");
    EXPECT_EQ(serializer.recordDataToJson("HEAD", 0, *record, 0), 2u);
    EXPECT_EQ(serializer.capacity(), 8192u);
}

TEST_F(SerializerTest, GrowsForALongPrefixToExactlyItsNeed) {
    std::string const fits(8192 - 2048, 'p');
    EXPECT_EQ(serializer.recordDataToJson(fits.data(), 6144, *record, 0), 6146u);
    EXPECT_EQ(serializer.capacity(), 8192u);
    std::string const prefix(10000, 'p');
    EXPECT_EQ(serializer.recordDataToJson(prefix.data(), 10000, *record, 0), 10002u);
    EXPECT_EQ(serializer.capacity(), 12048u);
    EXPECT_EQ(result(10002), prefix + "{}");
}

TEST_F(SerializerTest, RefusesAPrefixThatPassesTheSizes) {
    EXPECT_THROW(serializer.recordDataToJson("", 0xFFFFFFFF - 2047, *record, 0), std::bad_alloc);
    EXPECT_THROW(serializer.recordDataToJson("", 0xFFFFFFFF, *record, 0), std::bad_alloc);
    EXPECT_EQ(write(*record), "{}");
}

TEST_F(SerializerTest, GrowsToTheNeedOrTwiceTheCapacity) {
    // `["` and twice the text.
    for (auto const & [length, capacity] :
         {std::pair(4095, 8192), std::pair(4096, 16384), std::pair(8191, 16384),
          std::pair(8192, 16386), std::pair(20000, 40002)}) {
        SCOPED_TRACE(length);
        JsonMessageSerializer fresh;
        void const * const before = fresh.getResultsBuffer();
        list->removeAllElements();
        list->addElement(new StringData(static_cast<unsigned int>(length), 'x'));
        EXPECT_EQ(fresh.listDataToJson(nullptr, 0, *list, 0),
                  static_cast<unsigned int>(length) + 4);
        EXPECT_EQ(fresh.capacity(), static_cast<unsigned int>(capacity));
        if (capacity > 16384) {
            EXPECT_NE(fresh.getResultsBuffer(), before);
        }
    }
}

TEST_F(SerializerTest, NeverShrinks) {
    writeText(std::string(9000, 'x'));
    unsigned int const grown = serializer.capacity();
    EXPECT_GT(grown, 8192u);
    EXPECT_EQ(writeText("a"), "\"a\"");
    EXPECT_EQ(serializer.capacity(), grown);
}

TEST_F(SerializerTest, DeliberatelyLosesTheLastEscapeInRoomOfTwiceTheLength) {
    // 8192 = 2 + 2 * 4095, so the buffer fits the wish exactly.
    std::string const text(4095, '"');
    std::string expected = "\"";
    for (int i = 0; i < 4094; ++i) {
        expected += "\\\"";
    }
    EXPECT_EQ(writeText(text), expected + '"');
    EXPECT_EQ(serializer.capacity(), 8192u) << "the quote behind the text has the place";
}

TEST_F(SerializerTest, DeliberatelySharesTheBufferWhenAssigned) {
    // Only one of the two may end: the other one stands in a block that is given back by itself.
    alignas(JsonMessageSerializer) unsigned char place[sizeof(JsonMessageSerializer)];
    JsonMessageSerializer * const other = new (place) JsonMessageSerializer;
    std::free(other->getResultsBuffer());
    *other = serializer;
    EXPECT_EQ(other->getResultsBuffer(), serializer.getResultsBuffer());
    EXPECT_EQ(other->capacity(), serializer.capacity());
}

// Foreign containers.

/// A list that makes its elements up when they are asked for and keeps none.
class CountingList : public TextAccessors<ListData> {
public:
    CountingList(ProbeLog & log, unsigned int count) : log_(log), count_(count) {}

    FieldTypeEnum getFieldType() const override { return FLDTYPE_LIST; }
    ListData & asList() override { return *this; }
    ListData const & asList() const override { return *this; }

    unsigned int getCount() const override { return count_; }
    RefCountedPtr<FieldValue> getElement(unsigned int index) const override {
        if (index != 1) {
            return new ProbeValue(log_, FLDTYPE_STRING, std::to_string(index));
        }
        RefCountedPtr<ListData> inner(new ListDataImpl(CString()));
        inner->addElement(new ProbeValue(log_, FLDTYPE_STRING, "inner"));
        return inner;
    }

    CString const & getElementTypeName() const override { return asString(); }
    void setElementTypeName(CString const &) override { refuse(); }
    void setElement(unsigned int, RefCountedPtr<FieldValue> const &) override { refuse(); }
    void removeElement(unsigned int) override { refuse(); }
    void removeAllElements() override { refuse(); }
    void addElement(RefCountedPtr<FieldValue> const &) override { refuse(); }
    void insertElementAt(unsigned int, RefCountedPtr<FieldValue> const &) override { refuse(); }

private:
    ~CountingList() override = default;

    ProbeLog & log_;
    unsigned int count_;
};

/// A record that gives its fields twice, in an order of its own.
class DoublingRecord : public MappedRecordData {
public:
    std::vector<Field> getAllFields() const override {
        std::vector<Field> fields = MappedRecordData::getAllFields();
        std::vector<Field> const again(fields.rbegin(), fields.rend());
        fields.insert(fields.end(), again.begin(), again.end());
        return fields;
    }

protected:
    ~DoublingRecord() override = default;
};

/// A record that differs from the library's by its class alone.
class DerivedRecord : public MappedRecordData {
protected:
    ~DerivedRecord() override = default;
};

TEST_F(SerializerTest, WalksForeignListsThroughTheirInterface) {
    ProbeLog log;
    {
        RefCountedPtr<ListData> const foreign(new CountingList(log, 3));
        EXPECT_EQ(write(*foreign), R"(["0",["inner"],"2"])");
        EXPECT_EQ(writeValue(foreign), R"(["0",["inner"],"2"])");
        list->removeAllElements();
    }
    EXPECT_EQ(log.alive, 0);
}

TEST_F(SerializerTest, WalksForeignRecordsThroughTheirInterface) {
    RefCountedPtr<RecordData> const foreign(new DoublingRecord);
    foreign->setFieldValue("a", "1", 1);
    foreign->setFieldValue("b", "2", 1);
    EXPECT_EQ(write(*foreign), R"({"a":"1","b":"2","b":"2","a":"1"})");
}

TEST_F(SerializerTest, ReleasesWhatItHoldsWhenItThrows) {
    ProbeLog log;
    {
        RefCountedPtr<ListData> const foreign(new CountingList(log, 2));
        RefCountedPtr<ListData> const outer(new ListDataImpl(CString()));
        outer->addElement(foreign);
        outer->addElement(new RawDataImpl);
        EXPECT_THROW(write(*outer), char *);
    }
    EXPECT_EQ(log.alive, 0);
}

TEST_F(SerializerTest, StandsWhenMemoryIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail in this build";
    }
    UsingCodePage const japanese(932);
    std::string longText;
    for (int i = 0; i < 4000; ++i) {
        longText += "\x93\xFA";
    }
    record->setFieldValue("a", CString('x', 20000));
    record->setFieldValue("b", bytesOf(longText));
    std::string const expected = write(*record);
    RefCountedPtr<RecordData> const empty(new MappedRecordData);
    for (int allowed = 0;; ++allowed) {
        JsonMessageSerializer fresh;
        AllocationFailure failure(allowed);
        unsigned int size = 0;
        bool isOut = false;
        try {
            size = fresh.recordDataToJson(nullptr, 0, *record, 0);
        } catch (std::bad_alloc const &) {
            isOut = true;
        }
        failure.end();
        if (!isOut) {
            EXPECT_EQ(result(fresh, size), expected);
            EXPECT_GE(allowed, 3);
            break;
        }
        EXPECT_EQ(fresh.recordDataToJson("ab", 2, *empty, 0), 4u);
    }
}

TEST_F(SerializerTest, AllocatesNothingForAsciiThatFits) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    RefCountedPtr<ListData> inner(new ListDataImpl(CString()));
    for (int i = 0; i < 20; ++i) {
        inner->addElement(new StringData("with \"quotes\" and a/b"));
        inner->addElement(new NumberData(i + 100));
    }
    RefCountedPtr<ListData> deep(new ListDataImpl(CString()));
    for (int depth = 0; depth < 29; ++depth) {
        RefCountedPtr<ListData> around(new ListDataImpl(CString()));
        around->addElement(deep);
        deep = around;
    }
    RefCountedPtr<RecordData> part(new MappedRecordData);
    part->setFieldValue("x", inner);
    record->setFieldValue("deep", deep);
    record->setFieldValue("part", part);
    record->setFieldValue("text", "text", 4);
    write(*record);  // builds the text forms of the numbers
    AllocationCounter const allocations;
    serializer.recordDataToJson(nullptr, 0, *record, JSON_ESCAPE_SLASH);
    EXPECT_EQ(allocations.count(), 0);
}

TEST_F(SerializerTest, AllocatesTheVectorsOfFieldsAloneForForeignRecords) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    RefCountedPtr<RecordData> const part(new DerivedRecord);
    part->setFieldValue("x", "text", 4);
    list->addElement(part);
    list->addElement(part);
    AllocationCounter const allocations;
    serializer.listDataToJson(nullptr, 0, *list, 0);
    EXPECT_EQ(allocations.count(), 2);
}

TEST_F(SerializerTest, AgreesWithTheModelOnRandomTrees) {
    constexpr unsigned int SEED = 31;
    SCOPED_TRACE("seed " + std::to_string(SEED));
    UsingCodePage const japanese(932);
    RandomValues random(SEED, {"a", "name", "\"", "\\", "/", "\n", "\x01", std::string(1, '\0'),
                               "\x93\xFA", "\x83\x5C", "\xB1", "0123456789abcdef", ""});
    std::unique_ptr<JsonMessageSerializer> renewed;
    for (int round = 0; round < 3000; ++round) {
        if (round % 20 == 0) {
            renewed = std::make_unique<JsonMessageSerializer>();
        }
        int const options = static_cast<int>(random.below(16));
        std::string const prefix(random.below(10) == 0 ? random.below(9000) : 0, 'p');
        auto const prefixSize = static_cast<unsigned int>(prefix.size());
        unsigned int start = renewed->capacity();
        if (prefixSize != 0 && prefixSize + 2048 > start) {
            start = prefixSize + 2048;
        }
        ReferenceSerializer model(start, options);
        model.text = prefix;
        unsigned int size = 0;
        if (random.below(2) == 0) {
            RefCountedPtr<ListData> const value = random.list(4);
            size = renewed->listDataToJson(prefix.data(), prefixSize, *value, options);
            model.write(value.get());
        } else {
            RefCountedPtr<RecordData> const value = random.record(4);
            size = renewed->recordDataToJson(prefix.data(), prefixSize, *value, options);
            model.write(value.get());
        }
        ASSERT_EQ(result(*renewed, size), model.text) << "round " << round;
        ASSERT_EQ(renewed->capacity(), model.capacity()) << "round " << round;
    }
}

}  // namespace
