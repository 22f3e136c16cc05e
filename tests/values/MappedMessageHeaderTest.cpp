#include "tvk/values/MappedMessageHeader.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <type_traits>
#include <utility>

#include "tests/support/PrintCString.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using test::slotOf;
using Header = RefCountedPtr<MappedMessageHeader>;
using HeaderDouble = RefCountedPtr<test::MessageHeaderDouble>;
using Value = RefCountedPtr<FieldValue>;

static_assert(!std::is_destructible_v<MappedMessageHeader>);
static_assert(MSGKIND_REQUEST == 1);
static_assert(MSGKIND_REPLY == 2);
static_assert(MSGKIND_NOTICE == 3);

Header headerOf(MessageKindEnum kind, char const * type, char const * request) {
    Header const header(new MappedMessageHeader);
    header->setMessageKind(kind);
    header->setMessageTypeId(type);
    header->setRequestId(request);
    return header;
}

void expectEnvelope(KestrinMessageHeader const & header, MessageKindEnum kind, char const * type,
                    char const * request) {
    EXPECT_EQ(header.getMessageKind(), kind);
    EXPECT_EQ(header.getMessageTypeId(), type);
    EXPECT_EQ(header.getRequestId(), request);
}

TEST(MappedMessageHeader, StartsEmptyAndUnset) {
    Header const header(new MappedMessageHeader);
    expectEnvelope(*header, MessageKindEnum{}, "", "");
    EXPECT_EQ(header->getFieldCount(), 0u);
}

TEST(MappedMessageHeader, KeepsWhatIsSet) {
    Header const header = headerOf(MSGKIND_REPLY, "Quote", "17");
    expectEnvelope(*header, MSGKIND_REPLY, "Quote", "17");
    EXPECT_EQ(&header->getMessageTypeId(), &header->getMessageTypeId());
    header->setMessageKind(static_cast<MessageKindEnum>(77));
    EXPECT_EQ(header->getMessageKind(), 77);
    EXPECT_EQ(header->getFieldCount(), 0u);
}

TEST(MappedMessageHeader, ACopyTakesEverything) {
    Header const source = headerOf(MSGKIND_NOTICE, "Quote", "17");
    source->setFieldValue("x", "1");
    Header const second(source);
    for (bool const throughInterface : {false, true}) {
        auto * const object =
            throughInterface
                ? new MappedMessageHeader(static_cast<KestrinMessageHeader const &>(*source))
                : new MappedMessageHeader(*source);
        EXPECT_EQ(object->getRefCount(), 0);
        Header const copy(object);
        expectEnvelope(*copy, MSGKIND_NOTICE, "Quote", "17");
        EXPECT_EQ(copy->getFieldValue("x"), source->getFieldValue("x"));
        copy->removeField("x");
        EXPECT_TRUE(source->hasField("x"));
    }
}

TEST(MappedMessageHeader, IsBuiltFromAnyHeader) {
    HeaderDouble const source(new test::MessageHeaderDouble);
    source->kind = MSGKIND_REPLY;
    source->messageTypeId = "Quote";
    source->requestId = "17";
    source->fields = {{"x", new NumberData(1)}, {"a", nullptr}};
    Header const copy(new MappedMessageHeader(*source));
    expectEnvelope(*copy, MSGKIND_REPLY, "Quote", "17");
    EXPECT_EQ(copy->getFieldNames(), (std::vector<CString>{"a", "x"}));
    EXPECT_EQ(copy->getFieldValue("x"), source->fields[0].second);
}

TEST(MappedMessageHeader, DeliberateAssignmentKeepsTheIdentifiers) {
    Header const source = headerOf(MSGKIND_REPLY, "Quote", "17");
    source->setFieldValue("x", "1");
    Header const second(source);
    Header const target = headerOf(MSGKIND_REQUEST, "Trade", "18");
    target->setFieldValue("y", "2");
    MappedMessageHeader & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    expectEnvelope(*target, MSGKIND_REPLY, "Trade", "18");
    EXPECT_EQ(target->getFieldNames(), std::vector<CString>{"x"});
    EXPECT_EQ(target->getFieldValue("x"), source->getFieldValue("x"));
    EXPECT_EQ(target->getRefCount(), 1);
    MappedMessageHeader & alias = *target;
    *target = alias;
    EXPECT_TRUE(target->hasField("x"));
}

TEST(MappedMessageHeader, AssignmentThroughTheInterfaceTakesEverything) {
    Header const source = headerOf(MSGKIND_REPLY, "Quote", "17");
    source->setFieldValue("x", "1");
    Header const second(source);
    Header const target = headerOf(MSGKIND_REQUEST, "Trade", "18");
    target->setFieldValue("x", "old");
    target->setFieldValue("y", "2");
    MappedMessageHeader & result = *target = static_cast<KestrinMessageHeader const &>(*source);
    EXPECT_EQ(&result, target.get());
    expectEnvelope(*target, MSGKIND_REPLY, "Quote", "17");
    EXPECT_EQ(target->getFieldNames(), std::vector<CString>{"x"});
    EXPECT_EQ(target->getFieldValue("x"), source->getFieldValue("x"));
    EXPECT_EQ(target->getRefCount(), 1);
    KestrinMessageHeader const & alias = *target;
    *target = alias;
    EXPECT_TRUE(target->hasField("x"));
    expectEnvelope(*target, MSGKIND_REPLY, "Quote", "17");
}

TEST(MappedMessageHeader, TakesWhatItsOwnFieldHolds) {
    for (bool const throughInterface : {false, true}) {
        Header inner = headerOf(MSGKIND_REPLY, "Quote", "17");
        inner->setFieldValue("x", "1");
        MappedMessageHeader const & source = *inner;
        Header const outer = headerOf(MSGKIND_REQUEST, "Trade", "18");
        outer->setFieldValue("inner", inner);
        inner = nullptr;
        if (throughInterface) {
            *outer = static_cast<KestrinMessageHeader const &>(source);
        } else {
            *outer = source;
        }
        EXPECT_EQ(outer->getFieldNames(), std::vector<CString>{"x"});
        EXPECT_EQ(outer->getMessageKind(), MSGKIND_REPLY);
    }
}

// ---- Equality --------------------------------------------------------------------------------

struct Pair {
    Header left = headerOf(MSGKIND_REPLY, "Quote", "17");
    Header right = headerOf(MSGKIND_REPLY, "Quote", "17");
};

/// The same answer from both operators: on headers of this class, and through the interface.
void expectEqual(Pair const & pair, bool equal) {
    EXPECT_EQ(*pair.left == *pair.right, equal);
    EXPECT_EQ(*pair.left == static_cast<KestrinMessageHeader const &>(*pair.right), equal);
}

Value listOf(CString const & name, Value const & element) {
    RefCountedPtr<ListData> const list(new ListDataImpl(name));
    list->addElement(element);
    return list;
}

Value recordOf(char const * name, Value const & value) {
    RefCountedPtr<RecordData> const record(new MappedRecordData);
    record->setFieldValue(name, value);
    return record;
}

Value rawOf(unsigned int size, int fill) {
    RefCountedPtr<RawData> const raw(new RawDataImpl);
    raw->setSize(size, fill);
    return raw;
}

Value number(double value) { return new NumberData(value); }
Value integer(int value) { return new NumberData(value); }
Value text(char const * value) { return new StringData(value); }

TEST(MappedMessageHeader, HeadersWithoutFieldsAreEqualByTheirEnvelope) {
    std::pair<std::function<void(MappedMessageHeader &)>, bool> const changes[] = {
        {[](MappedMessageHeader &) {}, true},
        {[](MappedMessageHeader & header) { header.setMessageKind(MSGKIND_NOTICE); }, false},
        {[](MappedMessageHeader & header) { header.setMessageTypeId("quote"); }, false},
        {[](MappedMessageHeader & header) { header.setRequestId("18"); }, false},
        {[](MappedMessageHeader & header) { header.setFieldValue("x", Value()); }, false},
    };
    for (auto const & [change, equal] : changes) {
        Pair const changedRight;
        change(*changedRight.right);
        expectEqual(changedRight, equal);
        Pair const changedLeft;
        change(*changedLeft.left);
        expectEqual(changedLeft, equal);
    }
}

TEST(MappedMessageHeader, TheOrderOfSettingDoesNotCount) {
    Pair const pair;
    pair.left->setFieldValue("a", "1");
    pair.left->setFieldValue("b", "2");
    pair.right->setFieldValue("b", "2");
    pair.right->setFieldValue("a", "1");
    expectEqual(pair, true);
}

TEST(MappedMessageHeader, NamesCount) {
    Pair const pair;
    pair.left->setFieldValue("a", "1");
    pair.right->setFieldValue("b", "1");
    expectEqual(pair, false);
}

TEST(MappedMessageHeader, FieldsAreComparedDeeply) {
    double const notANumber = std::numeric_limits<double>::quiet_NaN();
    Value const same = number(notANumber);
    RefCountedPtr<MappedMessage> const message(new MappedMessage);
    message->setFieldValue("x", integer(1));
    message->header().setRequestId("17");
    message->addSubMessage(new MappedMessage);
    struct Row {
        char const * name;
        Value left;
        Value right;
        bool equal;
    };
    Row const rows[] = {
        {"equal integers", integer(5), integer(5), true},
        {"other integers", integer(5), integer(6), false},
        {"an integer and a text", integer(5), text("5"), false},
        {"an integer and a double", integer(1), number(1), false},
        {"a double and an integer", number(1), integer(1), false},
        {"zero double and zero integer: left decides", number(0), integer(0), true},
        {"zero integer and zero double: left decides", integer(0), number(0), false},
        {"not a number", number(notANumber), number(notANumber), false},
        {"the same object, even not a number", same, same, true},
        {"two nulls", nullptr, nullptr, true},
        {"a null on the left", nullptr, integer(0), false},
        {"a null on the right", integer(0), nullptr, false},
        {"equal texts", text("a"), text("a"), true},
        {"other texts", text("a"), text("A"), false},
        {"equal lists", listOf("", integer(1)), listOf("", integer(1)), true},
        {"names of lists do not count", listOf("A", integer(1)), listOf("B", integer(1)), true},
        {"other elements", listOf("", integer(1)), listOf("", integer(2)), false},
        {"equal records", recordOf("x", integer(1)), recordOf("x", integer(1)), true},
        {"other names", recordOf("x", integer(1)), recordOf("y", integer(1)), false},
        {"other values", recordOf("x", integer(1)), recordOf("x", number(1)), false},
        {"a list and a record", listOf("", integer(1)), recordOf("x", integer(1)), false},
        {"equal bytes", rawOf(3, 'a'), rawOf(3, 'a'), true},
        {"other bytes", rawOf(3, 'a'), rawOf(3, 'b'), false},
        {"other sizes", rawOf(3, 'a'), rawOf(4, 'a'), false},
        {"no bytes", rawOf(0, 'a'), rawOf(0, 'b'), true},
        {"a message by its body alone", message, recordOf("x", integer(1)), true},
        {"a header by its fields alone", headerOf(MSGKIND_REPLY, "a", "b"),
         headerOf(MSGKIND_NOTICE, "c", "d"), true},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        Pair const pair;
        pair.left->setFieldValue("field", row.left);
        pair.right->setFieldValue("field", row.right);
        expectEqual(pair, row.equal);
    }
}

TEST(MappedMessageHeader, ComparesWithAnyHeader) {
    Header const header = headerOf(MSGKIND_REPLY, "Quote", "17");
    header->setFieldValue("x", integer(1));
    HeaderDouble const other(new test::MessageHeaderDouble);
    other->kind = MSGKIND_REPLY;
    other->messageTypeId = "Quote";
    other->requestId = "17";
    other->fields = {{"x", integer(1)}};
    EXPECT_TRUE(*header == *other);
    other->fields[0].first = "y";
    EXPECT_FALSE(*header == *other);
    other->fields[0] = {"x", number(1)};
    EXPECT_FALSE(*header == *other);
    other->fields.clear();
    EXPECT_FALSE(*header == *other);
}

// ---- The order of the virtual operations -----------------------------------------------------

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(24, {{"getMessageKind", slotOf(&Class::getMessageKind)},
                                  {"setMessageKind", slotOf(&Class::setMessageKind)},
                                  {"getRequestId", slotOf(&Class::getRequestId)},
                                  {"setRequestId", slotOf(&Class::setRequestId)},
                                  {"getMessageTypeId", slotOf(&Class::getMessageTypeId)},
                                  {"setMessageTypeId", slotOf(&Class::setMessageTypeId)}});
}

TEST(KestrinMessageHeaderOrder, StandsBehindThatOfRecordData) {
    expectOrder<KestrinMessageHeader>();
    expectOrder<MappedMessageHeader>();
}

}  // namespace
}  // namespace tvk
