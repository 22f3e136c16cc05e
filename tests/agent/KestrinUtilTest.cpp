#include "tvk/agent/KestrinUtil.h"

#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/DeepValues.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/FreshRecord.h"
#include "tests/support/ListDataDouble.h"
#include "tests/support/PathModel.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RandomValues.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/SmallStack.h"
#include "tests/support/TextBytes.h"
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
using test::textOf;
using Message = RefCountedPtr<KestrinMessage>;
using Record = RefCountedPtr<RecordData>;
using Value = RefCountedPtr<FieldValue>;

static_assert(!std::is_default_constructible_v<KestrinUtil>);

// New values

TEST(StringFieldValue, CopiesATerminatedText) {
    test::ExactBuffer const text("abc\0"sv);
    Value const value = KestrinUtil::stringFieldValue(text.data());
    EXPECT_EQ(value->getFieldType(), FLDTYPE_STRING);
    EXPECT_EQ(value->asString(), "abc");
    EXPECT_EQ(value->getRefCount(), 1);
    EXPECT_NE(dynamic_cast<StringData *>(value.get()), nullptr);
}

TEST(StringFieldValue, TakesANullTextAsAnEmptyOne) {
    EXPECT_EQ(KestrinUtil::stringFieldValue(static_cast<char const *>(nullptr))->asString(), "");
}

TEST(StringFieldValue, CopiesAsManyBytesAsItIsTold) {
    test::ExactBuffer const text("a\0b%"sv);
    EXPECT_EQ(KestrinUtil::stringFieldValue(text, 4)->asString(), textOf("a\0b%"sv));
    EXPECT_EQ(KestrinUtil::stringFieldValue(text, 2)->asString(), textOf("a\0"sv));
    EXPECT_EQ(KestrinUtil::stringFieldValue(text, 0)->asString(), "");
}

TEST(StringFieldValue, TakesAText) {
    CString const text = textOf("a\0b"sv);
    EXPECT_EQ(KestrinUtil::stringFieldValue(text)->asString(), text);
}

TEST(StringFieldValue, MakesANewValueEachTime) {
    CString const text;
    Value const first = KestrinUtil::stringFieldValue(text);
    EXPECT_NE(KestrinUtil::stringFieldValue(text), first);
    EXPECT_NE(first, FieldValue::EMPTY_STRING_VALUE);
}

TEST(RawFieldValue, MakesRoom) {
    Value const value = KestrinUtil::rawFieldValue(5);
    EXPECT_EQ(value->getFieldType(), FLDTYPE_RAW);
    EXPECT_EQ(value->getRefCount(), 1);
    EXPECT_NE(dynamic_cast<RawDataImpl *>(value.get()), nullptr);
    EXPECT_EQ(value->asRawData().getCapacity(), 8u);
    EXPECT_EQ(value->asRawData().getSize(), 0u);
    EXPECT_EQ(KestrinUtil::rawFieldValue(0)->asRawData().getBuffer(), nullptr);
}

TEST(RawFieldValue, DeliberateHoldsTheBytesAndASizeOfZero) {
    test::ExactBuffer const bytes("ab\0cd"sv);
    Value const value = KestrinUtil::rawFieldValue(bytes.data(), 5);
    EXPECT_EQ(value->getRefCount(), 1);
    EXPECT_EQ(value->asRawData().getSize(), 0u);
    EXPECT_EQ(value->asRawData().getCapacity(), 8u);
    EXPECT_NE(value->asRawData().getBuffer(), bytes.data());
    EXPECT_EQ(std::memcmp(value->asRawData().getBuffer(), bytes.data(), 5), 0);
}

TEST(RawFieldValue, NeedsNoBytesWhereThereAreNone) {
    Value const value = KestrinUtil::rawFieldValue(nullptr, 0);
    EXPECT_EQ(value->asRawData().getCapacity(), 0u);
    EXPECT_EQ(value->asRawData().getBuffer(), nullptr);
}

/// One of the operations that make a value, and how often it allocates.
struct Making {
    char const * name;
    int allocations;
    Value (*make)();
};

CString const & longText() {
    static CString const TEXT('x', 100);
    return TEXT;
}

Making const MAKINGS[] = {
    {"terminated text", 2, [] { return KestrinUtil::stringFieldValue("abc"); }},
    {"counted text", 2, [] { return KestrinUtil::stringFieldValue("abc", 2); }},
    {"CString", 1, [] { return KestrinUtil::stringFieldValue(longText()); }},
    {"room", 2, [] { return KestrinUtil::rawFieldValue(5000); }},
    {"bytes", 2, [] { return KestrinUtil::rawFieldValue(longText().GetString(), 100); }},
};

TEST(NewValues, AreNullWhereMemoryIsOut) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    longText();
    for (Making const & making : MAKINGS) {
        for (int allowed = 0; allowed <= making.allocations; ++allowed) {
            SCOPED_TRACE(making.name + " after "s + std::to_string(allowed));
            test::AllocationFailure failure(allowed);
            Value const value = making.make();
            failure.end();
            EXPECT_EQ(value.isNull(), allowed < making.allocations);
        }
    }
}

TEST(NewValues, AreNullWhereNoMemoryCouldHoldThem) {
    EXPECT_TRUE(KestrinUtil::rawFieldValue(0xffffffffu).isNull());
    EXPECT_TRUE(KestrinUtil::stringFieldValue("abc", 0x80000000u).isNull());
}

// List messages

Message messageOf(MessageKindEnum kind, char const * typeId) {
    Message const message(new MappedMessage);
    message->header().setMessageKind(kind);
    message->header().setMessageTypeId(typeId);
    return message;
}

TEST(IsListMessage, GoesByTheWholeTypeIdentifier) {
    for (char const * other : {"", "[", "[]x", " []", "x"}) {
        SCOPED_TRACE(other);
        EXPECT_FALSE(KestrinUtil::isListMessage(*messageOf(MSGKIND_REPLY, other)));
    }
    EXPECT_TRUE(KestrinUtil::isListMessage(*messageOf(MSGKIND_REPLY, "[]")));
    Message const message(new MappedMessage);
    EXPECT_FALSE(KestrinUtil::isListMessage(*message));
    message->header().setMessageTypeId(textOf("[]\0"sv));
    EXPECT_FALSE(KestrinUtil::isListMessage(*message));
    EXPECT_TRUE(KestrinUtil::isListMessage(*MappedMessage::createListMessage(0)));
}

TEST(IsListMessage, DoesNotGoBySubMessages) {
    Message const message = messageOf(MSGKIND_REPLY, "Quote");
    message->addSubMessage(messageOf(MSGKIND_REPLY, "Quote"));
    EXPECT_FALSE(KestrinUtil::isListMessage(*message));
}

TEST(ToListMessage, GivesAListMessageBack) {
    Message const message = MappedMessage::createListMessage(0);
    test::AllocationCounter const allocations;
    Message const list = KestrinUtil::toListMessage(message);
    long long const made = allocations.count();
    EXPECT_EQ(list, message);
    EXPECT_EQ(message->getRefCount(), 2);
    EXPECT_EQ(made, 0);
    EXPECT_EQ(list->getSubMessageCount(), 0u);
}

TEST(ToListMessage, WrapsAnyOtherMessage) {
    for (int const kind : {0, 1, 2, 3, 77, -1}) {
        SCOPED_TRACE(kind);
        Message const message = messageOf(static_cast<MessageKindEnum>(kind), "Quote");
        message->setFieldValue("sym", "7203");
        Message const list = KestrinUtil::toListMessage(message);
        EXPECT_EQ(list->header().getMessageKind(), kind);
        EXPECT_EQ(list->header().getMessageTypeId(), "[]");
        EXPECT_EQ(list->getRefCount(), 1);
        ASSERT_EQ(list->getSubMessageCount(), 1u);
        EXPECT_EQ(list->getSubMessage(0), message);
        EXPECT_EQ(message->getRefCount(), 2);
        EXPECT_EQ(list->getFieldCount(), 0u);
    }
}

TEST(ToListMessage, TakesOverNothingElseOfTheHeader) {
    Message const message = messageOf(MSGKIND_REPLY, "Quote");
    message->header().setRequestId("17");
    message->header().setFieldValue("h", "1");
    Message const list = KestrinUtil::toListMessage(message);
    EXPECT_EQ(list->header().getRequestId(), "");
    EXPECT_EQ(list->header().getFieldCount(), 0u);
    EXPECT_EQ(message->header().getRequestId(), "17");
    EXPECT_EQ(message->header().getMessageTypeId(), "Quote");
}

TEST(ToListMessage, TakesForeignMessages) {
    RefCountedPtr<test::MessageDouble> const message(new test::MessageDouble);
    message->ownHeader->kind = MSGKIND_NOTICE;
    message->subMessages.push_back(nullptr);
    Message const list = KestrinUtil::toListMessage(message);
    EXPECT_EQ(list->header().getMessageKind(), MSGKIND_NOTICE);
    ASSERT_EQ(list->getSubMessageCount(), 1u);
    EXPECT_EQ(list->getSubMessage(0), message);
    message->ownHeader->messageTypeId = "[]";
    EXPECT_EQ(KestrinUtil::toListMessage(message), message);
}

TEST(ToListMessage, HasRoomForFiftySubMessages) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    Message const message(new MappedMessage);
    Message const list = KestrinUtil::toListMessage(message);
    test::AllocationCounter const allocations;
    for (int i = 1; i < 50; ++i) {
        list->addSubMessage(message);
    }
    long long const upToFifty = allocations.count();
    list->addSubMessage(message);
    long long const withOneMore = allocations.count();
    EXPECT_EQ(upToFifty, 0);
    EXPECT_GT(withOneMore, 0);
}

// Paths

template <class... Elements>
Value listOf(Elements const &... elements) {
    RefCountedPtr<ListData> const list(new ListDataImpl("element"));
    (list->addElement(elements), ...);
    return list;
}

Value text(char const * content) { return new StringData(content); }

/// A record with one field.
Record recordWith(std::string_view name, Value const & value) {
    Record const record(new MappedRecordData);
    record->setFieldValue(textOf(name), value);
    return record;
}

Record sample() {
    Record const record(new MappedRecordData);
    Record const inner = recordWith("b", text("a.b"));
    inner->setFieldValue("", text("a."));
    record->setFieldValue("a", inner);
    record->setFieldValue(
        "list", listOf(recordWith("name", text("first")), recordWith("name", text("second"))));
    record->setFieldValue("texts", listOf(text("zero"), text("one")));
    record->setFieldValue("holes", listOf(Value(), text("x"), Value(new NumberData(7))));
    record->setFieldValue("matrix", listOf(listOf(recordWith("c", text("m00"))), text("m1")));
    record->setFieldValue("none", listOf());
    record->setFieldValue("text", text("t"));
    record->setFieldValue("number", new NumberData(5));
    record->setFieldValue("raw", new RawDataImpl(4));
    record->setFieldValue("null", Value());
    record->setFieldValue("]", text("closing"));
    record->setFieldValue("%s", text("percent"));
    record->setFieldValue("\x93\xfa", text("high"));
    record->setFieldValue(textOf("n\0m"sv), text("with NUL"));
    record->setFieldValue("x/y", text("slash"));
    record->setFieldValue("list[0]", text("bracket"));
    Record const nameless = recordWith("", text(". ."));
    nameless->setFieldValue("b", text(".b"));
    record->setFieldValue("", nameless);
    return record;
}

std::string contentOf(Value const & value) {
    if (value.isNull()) {
        return "null";
    }
    switch (value->getFieldType()) {
        case FLDTYPE_LIST:
            return "List(" + std::to_string(value->asList().getCount()) + ")";
        case FLDTYPE_RECORD:
            return "Record(" + std::to_string(value->asRecord().getFieldCount()) + ")";
        case FLDTYPE_RAW:
            return "Raw";
        default:
            return value->toString().GetString();
    }
}

struct Path {
    std::string_view path;
    char const * content;
};

constexpr Path PATHS[] = {
    // Names
    {"a/b", "a.b"},
    {"a", "Record(2)"},
    {"text", "t"},
    {"number", "5"},
    {"raw", "Raw"},
    {"null", "null"},
    {"unknown", "null"},
    {"]", "closing"},
    {"%s", "percent"},
    {"\x93\xfa", "high"},
    {"n\0m"sv, "with NUL"},
    {"n", "null"},
    {"x/y", "null"},
    {"A/b", "null"},
    // Ways that end
    {"text/b", "null"},
    {"number/b", "null"},
    {"raw/b", "null"},
    {"null/b", "null"},
    {"unknown/b", "null"},
    {"list/name", "null"},
    {"a/b/c", "null"},
    {"a/c", "null"},
    // Empty names
    {"", "Record(2)"},
    {"/", "Record(2)"},
    {"//", ". ."},
    {"//b", ".b"},
    {"/a/b", "a.b"},
    {"//a/b", "null"},
    {"a/", "a."},
    {"a/b/", "null"},
    {"a//b", "null"},
    {"text/", "null"},
    // Indexes
    {"list", "List(2)"},
    {"list[0]", "Record(1)"},
    {"list[0]/name", "first"},
    {"list[1]/name", "second"},
    {"list[2]", "null"},
    {"list[2]/name", "null"},
    {"none[0]", "null"},
    {"none[]", "null"},
    {"texts[1]", "one"},
    {"texts[1]/name", "null"},
    {"holes[0]", "null"},
    {"holes[0]/name", "null"},
    {"holes[1]", "x"},
    {"holes[2]/name", "null"},
    {"a[0]", "null"},
    {"text[0]", "null"},
    {"null[0]", "null"},
    {"unknown[0]", "null"},
    {"[0]", "null"},
    {"a/b[0]", "null"},
    // What is no number is 0, and what follows one does not count
    {"texts[]", "zero"},
    {"texts[x]", "zero"},
    {"texts[x1]", "zero"},
    {"texts[0x1]", "zero"},
    {"texts[- 1]", "zero"},
    {"texts[--1]", "zero"},
    {"texts[+]", "zero"},
    {"texts[-]", "zero"},
    {"texts[-0]", "zero"},
    {"texts[\x31\x81]", "one"},
    {"texts[1x]", "one"},
    {"texts[1.9]", "one"},
    {"texts[1e5]", "one"},
    {"texts[01]", "one"},
    {"texts[000000000000000000001]", "one"},
    {"texts[+1]", "one"},
    {"texts[ \t\n\v\f\r1]", "one"},
    {"texts[\b1]", "zero"},
    {"texts[\xa0"
     "1]",
     "zero"},
    {"texts[1\0"
     "9]"sv,
     "one"},
    {"texts[\0"
     "1]"sv,
     "zero"},
    {"texts[1][0]", "one"},
    {"texts[0][1]", "zero"},
    {"texts[[1]", "zero"},
    {"texts[1]]", "one"},
    {"texts[1]x]", "one"},
    {"matrix[0]", "List(1)"},
    {"matrix[0][0]", "List(1)"},
    {"matrix[0][0]/c", "null"},
    {"matrix[0]/c", "null"},
    {"matrix[1]", "m1"},
    // Out of range
    {"texts[-1]", "null"},
    {"texts[-2147483648]", "null"},
    {"texts[-99999999999]", "null"},
    {"texts[2147483647]", "null"},
    {"texts[2147483648]", "null"},
    {"texts[4294967296]", "null"},
    {"texts[4294967297]", "null"},
    {"texts[99999999999999999999999999999999]", "null"},
    // Brackets
    {"texts[1", "null"},
    {"texts[", "null"},
    {"texts]", "null"},
    {"texts[1]x", "null"},
    {"texts[1] ", "null"},
    {"texts[1]\0"sv, "null"},
    {"texts]1[", "null"},
    {"[", "null"},
    {"[]", "null"},
};

TEST(GetFieldValueWithPath, FollowsPaths) {
    Record const record = sample();
    for (Path const & row : PATHS) {
        SCOPED_TRACE(::testing::PrintToString(std::string(row.path)));
        Value const value = KestrinUtil::getFieldValueWithPath(*record, textOf(row.path));
        EXPECT_EQ(contentOf(value), row.content);
        EXPECT_EQ(value.get(), test::valueAtPath(*record, row.path));
    }
}

TEST(GetFieldValueWithPath, EntersAListWithoutAName) {
    Record const record = recordWith("", listOf(text("x"), recordWith("", text("y"))));
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, "[0]")), "x");
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, "/[1]/")), "y");
}

TEST(GetFieldValueWithPath, GivesTheValueItselfWithOneMoreReference) {
    Record const record = sample();
    Value const a = record->getFieldValue("a");
    Value const b = a->asRecord().getFieldValue("b");
    ASSERT_EQ(b->getRefCount(), 2);
    Value const found = KestrinUtil::getFieldValueWithPath(*record, "a/b");
    EXPECT_EQ(found, b);
    EXPECT_EQ(b->getRefCount(), 3);
    EXPECT_EQ(a->getRefCount(), 2);
    EXPECT_EQ(record->getRefCount(), 1);

    Value const list = record->getFieldValue("list");
    Value const first = list->asList().getElement(0);
    ASSERT_EQ(first->getRefCount(), 2);
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, "list[0]/unknown").isNull());
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, "list[9]").isNull());
    EXPECT_EQ(first->getRefCount(), 2);
    EXPECT_EQ(list->getRefCount(), 2);
}

TEST(GetFieldValueWithPath, OutlivesTheRecord) {
    Value const found = KestrinUtil::getFieldValueWithPath(*sample(), "list[1]/name");
    EXPECT_EQ(found->asString(), "second");
    EXPECT_EQ(found->getRefCount(), 1);
}

TEST(GetFieldValueWithPath, TakesThePathInPieces) {
    Record const record = sample();
    CString const pieces[] = {"list[1]", "name", "more"};
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, 1, pieces)), "Record(1)");
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, 2, pieces)), "second");
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, 3, pieces).isNull());
}

TEST(GetFieldValueWithPath, TakesASlashInAPieceForPartOfTheName) {
    Record const record = sample();
    CString const slash = "x/y";
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, 1, &slash)), "slash");
    CString const path = "a/b";
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, 1, &path).isNull());
    CString const pieces[] = {"", "a", "b"};
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, 3, pieces).isNull());
}

TEST(GetFieldValueWithPath, LooksAtNothingWithoutPieces) {
    RefCountedPtr<test::RecordDataDouble> const record(new test::RecordDataDouble);
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, 0, nullptr).isNull());
    EXPECT_TRUE(record->calls.empty());
}

TEST(GetFieldValueWithPath, CannotNameAFieldWithABracket) {
    Record const record = sample();
    ASSERT_TRUE(record->hasField("list[0]"));
    CString const piece = "list[0]";
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, 1, &piece)), "Record(1)");
}

TEST(GetFieldValueWithPath, ReadsMessagesAndHeadersAsRecords) {
    Message const message = messageOf(MSGKIND_REPLY, "Quote");
    Message const inner = messageOf(MSGKIND_REPLY, "Quote");
    inner->setFieldValue("b", "body");
    inner->addSubMessage(messageOf(MSGKIND_REPLY, "Sub"));
    message->setFieldValue("a", Value(inner));
    message->header().setFieldValue("h", Value(recordWith("x", text("header"))));
    message->addSubMessage(inner);
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*message, "a/b")), "body");
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(message->header(), "h/x")), "header");
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*message, "[0]/b").isNull());
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*message, "a[0]").isNull());
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*message, "h/x").isNull());
}

TEST(GetFieldValueWithPath, FetchesEachFieldOnce) {
    RefCountedPtr<test::RecordDataDouble> const outer(new test::RecordDataDouble);
    RefCountedPtr<test::RecordDataDouble> const inner(new test::RecordDataDouble);
    RefCountedPtr<test::ListDataDouble> const list(new test::ListDataDouble);
    list->elements = {nullptr, inner};
    outer->fields = {{"list", list}};
    inner->fields = {{"null", nullptr}, {"text", text("t")}};
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*outer, "list[1]/text")), "t");
    EXPECT_EQ(outer->calls, std::vector<std::string>{"getFieldValue"});
    EXPECT_EQ(inner->calls, std::vector<std::string>{"getFieldValue"});
    EXPECT_EQ(list->fetched, 1);
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*outer, "list[1]/null").isNull());
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*outer, "list[0]/text").isNull());
    EXPECT_EQ(list->fetched, 3);
}

TEST(GetFieldValueWithPath, FetchesNoElementBeyondTheCount) {
    RefCountedPtr<test::ListDataDouble> const list(new test::ListDataDouble);
    Record const record = recordWith("list", list);
    list->elements = {text("x"), text("y")};
    list->count = 1;
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, "list[1]").isNull());
    list->count = 0xffffffffu;
    EXPECT_TRUE(KestrinUtil::getFieldValueWithPath(*record, "list[-1]").isNull());
    EXPECT_EQ(list->fetched, 0);
    EXPECT_EQ(contentOf(KestrinUtil::getFieldValueWithPath(*record, "list[1]")), "y");
    EXPECT_EQ(list->fetched, 1);
}

TEST(GetFieldValueWithPath, KeepsAliveWhatItPassesThrough) {
    Record const record(new test::FreshRecord(3));
    Value const found = KestrinUtil::getFieldValueWithPath(*record, "a/b/a/b");
    EXPECT_EQ(contentOf(found), "b");
    EXPECT_EQ(found->getRefCount(), 1);
}

TEST(GetFieldValueWithPath, NeedsNoStackForLongPaths) {
    Value const outermost = test::deepValue(test::DeepShape::RECORDS, test::DEEP_LEVELS);
    CString const path('/', test::DEEP_LEVELS);  // the first one does not count
    test::runOnStack(64 << 10, [&] {
        Value const found = KestrinUtil::getFieldValueWithPath(outermost->asRecord(), path);
        EXPECT_EQ(contentOf(found), "1");
    });
}

/// Paths that mostly lead somewhere: they walk along what is there, and stray at times.
class RandomPath {
public:
    RandomPath(test::RandomValues & random, RecordData const & start) : random_(random) {
        RecordData const * record = &start;
        while (record != nullptr && random_.below(8) != 0) {
            record = step(*record);
        }
        if (random_.below(4) == 0) {
            path_ += ODD_ENDS[random_.below(std::size(ODD_ENDS))];
        }
        if (random_.below(8) == 0) {
            path_.insert(random_.below(static_cast<unsigned int>(path_.size()) + 1), 1,
                         "/[]1"[random_.below(4)]);
        }
    }

    std::string const & text() const { return path_; }

private:
    static constexpr std::string_view ODD_ENDS[] = {"/", "[0]", "[", "]", "[x]", "//a", "\0"sv};

    /// The record that the step leads into, or null.
    RecordData const * step(RecordData const & record) {
        path_ += random_.below(10) == 0 ? "/" : "";
        path_ += path_.empty() ? "" : "/";
        std::vector<RecordData::Field> const fields = record.getAllFields();
        if (fields.empty() || random_.below(12) == 0) {
            path_ += "a";
            return nullptr;
        }
        RecordData::Field const & field =
            fields[random_.below(static_cast<unsigned int>(fields.size()))];
        path_.append(*field.name, static_cast<std::size_t>(field.name->GetLength()));
        FieldValue * value = field.value;
        if (value != nullptr && value->getFieldType() == FLDTYPE_LIST && random_.below(8) != 0) {
            unsigned int const index = random_.below(value->asList().getCount() + 1);
            path_.append("[").append(std::to_string(index)).append("]");
            value = index < value->asList().getCount() ? value->asList().getElement(index).get()
                                                       : nullptr;
        }
        bool const further = value != nullptr && value->getFieldType() == FLDTYPE_RECORD;
        return further ? &value->asRecord() : nullptr;
    }

    test::RandomValues & random_;
    std::string path_;
};

TEST(GetFieldValueWithPath, AgreesWithAPlainModel) {
    constexpr unsigned int SEED = 45;
    SCOPED_TRACE(SEED);
    test::RandomValues random(SEED, {"a", "b", "c", "\0"s, "\x83", "]", "[1]", "/", "1"});
    int found = 0;
    int constexpr RECORDS = 400;
    int constexpr PATHS_EACH = 100;
    for (int i = 0; i < RECORDS; ++i) {
        Record const record = random.record(6);
        for (int j = 0; j < PATHS_EACH; ++j) {
            std::string const path = RandomPath(random, *record).text();
            Value const value = KestrinUtil::getFieldValueWithPath(*record, textOf(path));
            ASSERT_EQ(value.get(), test::valueAtPath(*record, path))
                << ::testing::PrintToString(path);
            found += value.isNull() ? 0 : 1;
        }
    }
    EXPECT_GT(found, RECORDS * PATHS_EACH / 10);
}

}  // namespace
}  // namespace tvk
