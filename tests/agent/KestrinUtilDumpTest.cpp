// The texts for logs that tvk/agent/KestrinUtil.h makes of messages, records and single values.

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/DeepValues.h"
#include "tests/support/FreshRecord.h"
#include "tests/support/ListDataDouble.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RandomValues.h"
#include "tests/support/RawDataDouble.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/SmallStack.h"
#include "tests/support/TextBytes.h"
#include "tvk/agent/KestrinUtil.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using test::bytesOf;
using test::textOf;
using Message = RefCountedPtr<KestrinMessage>;
using Record = RefCountedPtr<RecordData>;
using Value = RefCountedPtr<FieldValue>;

/// The lines, each with its end and that many levels further in.
std::string linesOf(std::vector<std::string> const & lines, int level = 0) {
    std::string const indent(static_cast<std::size_t>(level) * 4, ' ');
    std::string text;
    for (std::string const & line : lines) {
        text.append(indent).append(line).append("\r\n");
    }
    return text;
}

/// The text of a value: the first line stands behind something, and the last one stays open.
std::string openLinesOf(std::vector<std::string> const & lines, int level = 0) {
    std::string const text = linesOf(lines, level);
    std::size_t const indent = static_cast<std::size_t>(level) * 4;
    return text.substr(indent, text.size() - indent - 2);
}

std::string dumpOf(Value const & value, int level = 0) {
    return bytesOf(KestrinUtil::dumpOneField(level, *value));
}

std::string dumpOf(Record const & record, int level = 0) {
    return bytesOf(KestrinUtil::dumpRecordField(level, *record));
}

std::string dumpOf(Message const & message, int level = 0) {
    return bytesOf(KestrinUtil::dumpMessage(level, *message));
}

std::string dumpOfRaw(unsigned int size, void const * buffer) {
    char text[100];
    std::snprintf(text, sizeof text, "<%d bytes of raw data@%p>", static_cast<int>(size), buffer);
    return text;
}

// Single values

TEST(DumpOneField, ShowsTextAsItIs) {
    EXPECT_EQ(dumpOf(Value(new StringData("abc"))), "<abc>");
    EXPECT_EQ(dumpOf(Value(new StringData)), "<>");
    EXPECT_EQ(dumpOf(Value(new StringData("<a>\"\\\r\n%s%n"))), "<<a>\"\\\r\n%s%n>");
    EXPECT_EQ(dumpOf(Value(new StringData(textOf("a\0b"sv)))), "<a\0b>"s);
    EXPECT_EQ(dumpOf(Value(new StringData("\x93\xfa"))), "<\x93\xfa>");
    EXPECT_EQ(dumpOf(Value(new StringData("abc")), 3), "<abc>");
}

TEST(DumpOneField, DeliberateShowsNoNumber) {
    EXPECT_EQ(dumpOf(Value(new NumberData(17))), "<unknown>");
    EXPECT_EQ(dumpOf(Value(new NumberData(1.5))), "<unknown>");
    EXPECT_EQ(dumpOf(Value(FieldValue::TRUE_VALUE)), "<unknown>");
}

/// A value of a kind that there is not.
using UnknownValue = test::ValueDouble<FieldValue, static_cast<FieldTypeEnum>(5)>;

TEST(DumpOneField, ShowsNothingOfOtherKinds) {
    EXPECT_EQ(dumpOf(Value(new UnknownValue)), "<unknown>");
}

TEST(DumpOneField, ShowsSizeAndPlaceOfRawData) {
    RefCountedPtr<RawDataImpl> const raw(new RawDataImpl);
    EXPECT_EQ(dumpOf(Value(raw)), dumpOfRaw(0, nullptr));
    raw->setSize(5, 0);
    EXPECT_EQ(dumpOf(Value(raw), 2), dumpOfRaw(5, raw->getBuffer()));
}

TEST(DumpOneField, ShowsSizesAsSigned) {
    RefCountedPtr<test::RawDataDouble> const raw(new test::RawDataDouble("abc"));
    raw->size = 0x80000000u;
    EXPECT_EQ(dumpOf(Value(raw)), dumpOfRaw(0x80000000u, raw->getBuffer()));
    EXPECT_EQ(dumpOf(Value(raw)).substr(0, 13), "<-2147483648 ");
}

TEST(DumpOneField, ShowsLists) {
    RefCountedPtr<ListData> const list(new ListDataImpl("Quote"));
    EXPECT_EQ(dumpOf(Value(list)), "List(0)<Quote>=[\r\n]");
    list->addElement(new StringData("x"));
    list->addElement(nullptr);
    list->addElement(new NumberData(1));
    std::vector<std::string> const lines = {
        "List(3)<Quote>=[", "    [0]=<x>", "    [1]=null", "    [2]=<unknown>", "]",
    };
    for (int const level : {0, 1, 3}) {
        EXPECT_EQ(dumpOf(Value(list), level), openLinesOf(lines, level));
    }
}

TEST(DumpOneField, EndsAnElementTypeNameAtItsFirstNul) {
    EXPECT_EQ(dumpOf(Value(new ListDataImpl(textOf("a%d\0b"sv)))), "List(0)<a%d>=[\r\n]");
    EXPECT_EQ(dumpOf(Value(new ListDataImpl(CString()))), "List(0)<>=[\r\n]");
}

TEST(DumpOneField, ShowsContainersInsideEachOther) {
    Record const record(new MappedRecordData);
    RefCountedPtr<ListData> const list(new ListDataImpl("L"));
    RefCountedPtr<ListData> const inner(new ListDataImpl(""));
    inner->addElement(new StringData("deep"));
    list->addElement(new MappedRecordData);
    list->addElement(inner);
    record->setFieldValue("list", Value(list));
    record->setFieldValue("z", "last");
    std::vector<std::string> const expected = {
        "{",
        "    list=List(2)<L>=[",
        "        [0]={",
        "        }",
        "        [1]=List(1)<>=[",
        "            [0]=<deep>",
        "        ]",
        "    ]",
        "    z=<last>",
        "}",
    };
    EXPECT_EQ(dumpOf(Value(record)), openLinesOf(expected));
    EXPECT_EQ(dumpOf(record), openLinesOf(expected));
}

// Records

TEST(DumpRecordField, ShowsAnEmptyRecord) {
    EXPECT_EQ(dumpOf(Record(new MappedRecordData), 1), "{\r\n    }");
    EXPECT_EQ(dumpOf(Record(new MappedRecordData)), "{\r\n}");
}

TEST(DumpRecordField, ShowsTheFieldsInTheirOrder) {
    Record const record(new MappedRecordData);
    record->setFieldValue("b", "2");
    record->setFieldValue("a", Value());
    record->setFieldValue("", "empty");
    record->setFieldValue("%s=", "percent");
    record->setFieldValue(textOf("n\0m"sv), CString("NUL"));
    record->setFieldValue("\x93\xfa", "high");
    std::vector<std::string> const lines = {
        "{",         "    =<empty>",    "    %s==<percent>",   "    a=null",
        "    b=<2>", "    n\0m=<NUL>"s, "    \x93\xfa=<high>", "}",
    };
    for (int const level : {0, 2}) {
        EXPECT_EQ(dumpOf(record, level), openLinesOf(lines, level));
    }
}

TEST(DumpRecordField, AsksForeignRecordsForTheirNamesFirst) {
    RefCountedPtr<test::RecordDataDouble> const record(new test::RecordDataDouble);
    record->fields = {{"b", new StringData("2")}, {"a", nullptr}};
    EXPECT_EQ(dumpOf(Record(record)), openLinesOf({"{", "    b=<2>", "    a=null", "}"}));
    std::vector<std::string> const calls = {"getFieldNames", "getFieldCount", "getFieldValue",
                                            "getFieldValue"};
    EXPECT_EQ(record->calls, calls);
}

/// Counts one field more or less than it names.
class OddCount : public test::RecordDataDouble {
public:
    explicit OddCount(unsigned int count) : count_(count) {
        fields = {{"a", nullptr}, {"b", nullptr}};
    }

    unsigned int getFieldCount() const override { return count_; }

private:
    unsigned int count_;
};

TEST(DumpRecordField, StopsAtTheSmallerOfNamesAndCount) {
    EXPECT_EQ(dumpOf(Record(new OddCount(3))), openLinesOf({"{", "    a=null", "    b=null", "}"}));
    EXPECT_EQ(dumpOf(Record(new OddCount(1))), openLinesOf({"{", "    a=null", "}"}));
}

TEST(DumpRecordField, KeepsAliveWhatItIsInsideOf) {
    EXPECT_EQ(dumpOf(Record(new test::FreshRecord(1))), openLinesOf({
                                                            "{",
                                                            "    a={",
                                                            "        a=<a>",
                                                            "        b=<b>",
                                                            "    }",
                                                            "    b={",
                                                            "        a=<a>",
                                                            "        b=<b>",
                                                            "    }",
                                                            "}",
                                                        }));
}

TEST(DumpRecordField, LeavesTheCountsAsTheyWere) {
    Record const record(new MappedRecordData);
    RefCountedPtr<ListData> const list(new ListDataImpl("L"));
    Value const element(new StringData("x"));
    list->addElement(element);
    record->setFieldValue("list", Value(list));
    dumpOf(record);
    EXPECT_EQ(record->getRefCount(), 1);
    EXPECT_EQ(list->getRefCount(), 2);
    EXPECT_EQ(element->getRefCount(), 2);
}

// Levels

TEST(DumpLevels, IndentLevelsBelowZeroLikeZero) {
    Record const inner(new MappedRecordData);
    inner->setFieldValue("b", Value(new MappedRecordData));
    Record const record(new MappedRecordData);
    record->setFieldValue("a", Value(inner));
    EXPECT_EQ(dumpOf(record, -2), openLinesOf({
                                      "{",
                                      "    a={",
                                      "    b={",
                                      "}",
                                      "}",
                                      "}",
                                  }));
    EXPECT_EQ(dumpOf(record, INT_MIN), dumpOf(record, -3));
    EXPECT_EQ(dumpOf(Message(new MappedMessage), -1), dumpOf(Message(new MappedMessage)));
}

TEST(DumpLevels, ThrowWhereTheIndentationPassesAnyText) {
    EXPECT_THROW(dumpOf(Record(new MappedRecordData), INT_MAX), std::bad_alloc);
    EXPECT_THROW(dumpOf(Record(new MappedRecordData), INT_MAX / 4 + 1), std::bad_alloc);
    EXPECT_THROW(dumpOf(Message(new MappedMessage), INT_MAX), std::bad_alloc);
    EXPECT_EQ(dumpOf(Value(new StringData("x")), INT_MAX), "<x>");
}

// Messages

Message messageOf(int kind, char const * typeId) {
    Message const message(new MappedMessage);
    message->header().setMessageKind(static_cast<MessageKindEnum>(kind));
    message->header().setMessageTypeId(typeId);
    return message;
}

TEST(DumpMessage, ShowsHeaderAndBody) {
    Message const message = messageOf(MSGKIND_REPLY, "Quote");
    message->header().setRequestId("17");
    message->header().setFieldValue("h", "1");
    message->setFieldValue("sym", "7203");
    message->setFieldValue("r", Value(new MappedRecordData));
    message->addSubMessage(messageOf(MSGKIND_REPLY, "Sub"));
    std::vector<std::string> const lines = {
        "[reply]Quote=<", "header={", "    h=<1>",      "}", "body={",
        "    r={",        "    }",    "    sym=<7203>", "}", ">",
    };
    for (int const level : {0, 1, 3}) {
        EXPECT_EQ(dumpOf(message, level), linesOf(lines, level));
    }
}

TEST(DumpMessage, CallsEveryOtherKindARequest) {
    for (int const kind : {0, 1, 4, -1, INT_MAX}) {
        EXPECT_EQ(dumpOf(messageOf(kind, "T")).substr(0, 13), "[request]T=<\r") << kind;
    }
    EXPECT_EQ(dumpOf(messageOf(2, "T")).substr(0, 11), "[reply]T=<\r");
    EXPECT_EQ(dumpOf(messageOf(3, "T")).substr(0, 12), "[notice]T=<\r");
}

TEST(DumpMessage, ShowsATypeIdentifierAsItIs) {
    Message const message(new MappedMessage);
    message->header().setMessageTypeId(textOf("[]\0%s"sv));
    EXPECT_EQ(dumpOf(message),
              linesOf({"[request][]\0%s=<"s, "header={", "}", "body={", "}", ">"}));
}

TEST(DumpMessage, ShowsAnEmptyListMessage) {
    Message const message = MappedMessage::createListMessage(0);
    message->header().setMessageKind(MSGKIND_NOTICE);
    EXPECT_EQ(dumpOf(message), "[notice][](0)=[\r\n]\r\n");
    EXPECT_EQ(dumpOf(message, 1), "    [notice][](0)=[\r\n    ]\r\n");
}

TEST(DumpMessage, ShowsTheBodiesOfAListMessagesSubMessages) {
    Message const list = messageOf(MSGKIND_REPLY, "[]");
    Message const quote = messageOf(MSGKIND_NOTICE, "Quote");
    quote->setFieldValue("sym", "7203");
    quote->header().setFieldValue("h", "not shown");
    quote->addSubMessage(messageOf(MSGKIND_REPLY, "Not shown"));
    Message const inner = messageOf(MSGKIND_REPLY, "[]");
    inner->addSubMessage(quote);
    list->addSubMessage(quote);
    list->addSubMessage(nullptr);
    list->addSubMessage(inner);
    list->setFieldValue("body", "not shown");
    list->header().setFieldValue("header", "not shown");
    std::vector<std::string> const lines = {
        "[reply][](3)=[",
        "    [0]Quote={",
        "        sym=<7203>",
        "    }",
        "    [1]=null",
        "    [2][]={",
        "    }",
        "]",
    };
    for (int const level : {0, 1, 3}) {
        EXPECT_EQ(dumpOf(list, level), linesOf(lines, level));
    }
    EXPECT_EQ(quote->getRefCount(), 3);
}

TEST(DumpMessage, CountsTheSubMessagesInDecimal) {
    Message const list = messageOf(MSGKIND_REPLY, "[]");
    for (int i = 0; i < 11; ++i) {
        list->addSubMessage(nullptr);
    }
    std::string const text = dumpOf(list);
    EXPECT_EQ(text.substr(0, 16), "[reply][](11)=[\r");
    EXPECT_NE(text.find("\r\n    [10]=null\r\n]\r\n"), std::string::npos);
}

/// Claims another number of sub-messages with each look.
class ChangingCount : public test::MessageDouble {
public:
    mutable std::vector<unsigned int> counts;  // the next one last

    unsigned int getSubMessageCount() const override {
        unsigned int const count = counts.back();
        counts.pop_back();
        return count;
    }
};

TEST(DumpMessage, AsksForTheCountOfSubMessagesAtEachStep) {
    RefCountedPtr<ChangingCount> const message(new ChangingCount);
    message->ownHeader->messageTypeId = "[]";
    message->subMessages = {nullptr, nullptr};
    message->counts = {1, 2, 1, 0xffffffffu};
    EXPECT_EQ(dumpOf(Message(message)),
              linesOf({"[request][](-1)=[", "    [0]=null", "    [1]=null", "]"}));
    message->counts = {0, 7};
    EXPECT_EQ(dumpOf(Message(message)), linesOf({"[request][](7)=[", "]"}));
}

// All of it against a plain model

std::string modelIndent(int level) {
    return std::string(static_cast<std::size_t>(std::max(level, 0)) * 4, ' ');
}

std::string modelOf(int level, FieldValue const * value);

std::string modelOfRecord(int level, RecordData const & record) {
    std::string text = "{\r\n";
    for (RecordData::Field const & field : record.getAllFields()) {
        text += modelIndent(level) + "    " + bytesOf(*field.name) + "=" +
                modelOf(level + 1, field.value) + "\r\n";
    }
    return text + modelIndent(level) + "}";
}

std::string modelOfList(int level, ListData const & list) {
    unsigned int const count = list.getCount();
    std::string text =
        "List(" + std::to_string(count) + ")<" + list.getElementTypeName().GetString() + ">=[\r\n";
    for (unsigned int i = 0; i < count; ++i) {
        text += modelIndent(level) + "    [" + std::to_string(i) +
                "]=" + modelOf(level + 1, list.getElement(i).get()) + "\r\n";
    }
    return text + modelIndent(level) + "]";
}

std::string modelOf(int level, FieldValue const * value) {
    if (value == nullptr) {
        return "null";
    }
    switch (value->getFieldType()) {
        case FLDTYPE_STRING:
            return "<" + bytesOf(value->asString()) + ">";
        case FLDTYPE_LIST:
            return modelOfList(level, value->asList());
        case FLDTYPE_RECORD:
            return modelOfRecord(level, value->asRecord());
        case FLDTYPE_RAW:
            return dumpOfRaw(value->asRawData().getSize(), value->asRawData().getBuffer());
        default:
            return "<unknown>";
    }
}

std::string modelOfMessage(int level, KestrinMessage const & message) {
    int const kind = message.header().getMessageKind();
    std::string const typeId = bytesOf(message.header().getMessageTypeId());
    std::string const indent = modelIndent(level);
    std::string text = indent +
                       (kind == 3   ? "[notice]"
                        : kind == 2 ? "[reply]"
                                    : "[request]") +
                       typeId;
    if (typeId != "[]") {
        return text + "=<\r\n" + indent + "header=" + modelOfRecord(level, message.header()) +
               "\r\n" + indent + "body=" + modelOfRecord(level, message) + "\r\n" + indent +
               ">\r\n";
    }
    unsigned int const count = message.getSubMessageCount();
    text += "(" + std::to_string(count) + ")=[\r\n";
    for (unsigned int i = 0; i < count; ++i) {
        Message const subMessage = message.getSubMessage(i);
        text += indent + "    [" + std::to_string(i) + "]";
        text += subMessage.isNull() ? "=null"
                                    : bytesOf(subMessage->header().getMessageTypeId()) + "=" +
                                          modelOfRecord(level + 1, *subMessage);
        text += "\r\n";
    }
    return text + indent + "]\r\n";
}

/// Random messages, with raw data, header fields, sub-messages and nulls among them.
class RandomMessages {
public:
    explicit RandomMessages(unsigned int seed)
        : values_(seed, {"a", "%s", "%n", "\r\n", "\0"s, "\x83\x5c", "<", "]"}) {}

    int level() { return static_cast<int>(values_.below(6)) - 2; }

    Message message(int depth) {
        Message const message(new MappedMessage);
        message->header().setMessageKind(static_cast<MessageKindEnum>(values_.below(5)));
        message->header().setMessageTypeId(values_.below(2) == 0 ? CString("[]") : values_.text());
        fill(message->header());
        fill(*message);
        for (unsigned int i = depth > 0 ? values_.below(4) : 0; i > 0; --i) {
            message->addSubMessage(values_.below(4) == 0 ? Message() : this->message(depth - 1));
        }
        return message;
    }

private:
    void fill(RecordData & record) {
        for (unsigned int i = values_.below(4); i > 0; --i) {
            record.setFieldValue(values_.text(), values_.value(4));
        }
        if (values_.below(3) == 0) {
            RefCountedPtr<ListData> const list = values_.list(0);
            list->addElement(new RawDataImpl(values_.below(20)));
            record.setFieldValue(values_.text(), Value(list));
        }
    }

    test::RandomValues values_;
};

TEST(Dump, AgreesWithAPlainModel) {
    constexpr unsigned int SEED = 450;
    SCOPED_TRACE(SEED);
    RandomMessages random(SEED);
    for (int i = 0; i < 300; ++i) {
        Message const message = random.message(2);
        int const level = random.level();
        ASSERT_EQ(dumpOf(message, level), modelOfMessage(level, *message));
        ASSERT_EQ(dumpOf(Record(message), level), modelOfRecord(level, *message));
        ASSERT_EQ(dumpOf(Value(message), level), modelOfRecord(level, *message));
    }
}

// Depth

constexpr int LEVELS = 5000;
constexpr std::size_t SMALL_STACK = 64 << 10;

/// What a value that many containers deep comes to, each line being made of the parts given.
std::string deepDump(std::string const & opening, std::string const & label, char closing) {
    std::string text = opening + "\r\n";
    for (int level = 0; level < LEVELS; ++level) {
        text +=
            modelIndent(level + 1) + label + (level + 1 < LEVELS ? opening : "<unknown>") + "\r\n";
    }
    for (int level = LEVELS - 1; level >= 0; --level) {
        text += modelIndent(level) + closing + (level > 0 ? "\r\n" : "");
    }
    return text;
}

TEST(DumpDepth, NeedsNoStackForRecords) {
    Value const value = test::deepValue(test::DeepShape::RECORDS, LEVELS);
    std::string text;
    test::runOnStack(SMALL_STACK, [&] { text = dumpOf(value); });
    EXPECT_TRUE(text == deepDump("{", "=", '}'));
}

TEST(DumpDepth, NeedsNoStackForLists) {
    Value const value = test::deepValue(test::DeepShape::LISTS, LEVELS);
    std::string text;
    test::runOnStack(SMALL_STACK, [&] { text = dumpOf(value); });
    EXPECT_TRUE(text == deepDump("List(1)<>=[", "[0]=", ']'));
}

}  // namespace
}  // namespace tvk
