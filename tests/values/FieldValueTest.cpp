#include "tvk/values/FieldValue.h"

#include <cxxabi.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <typeinfo>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/PrintCString.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/RefCountedPtr.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using test::slotOf;
using Value = RefCountedPtr<FieldValue>;

static_assert(FLDTYPE_STRING == 0);
static_assert(FLDTYPE_NUMBER == 1);
static_assert(FLDTYPE_LIST == 2);
static_assert(FLDTYPE_RECORD == 3);
static_assert(FLDTYPE_RAW == 4);

// ---- The answers of the wrong accessors ------------------------------------------------------

struct Accessor {
    char const * name;
    std::function<void(FieldValue &)> call;
    int text;  // which of the texts of a class
};

Accessor const ACCESSORS[] = {
    {"intValue", [](FieldValue & value) { value.intValue(); }, 0},
    {"longValue", [](FieldValue & value) { value.longValue(); }, 1},
    {"longlongValue", [](FieldValue & value) { value.longlongValue(); }, 2},
    {"doubleValue", [](FieldValue & value) { value.doubleValue(); }, 3},
    {"asString", [](FieldValue & value) { value.asString(); }, 4},
    {"asList", [](FieldValue & value) { value.asList(); }, 5},
    {"asList const", [](FieldValue & value) { std::as_const(value).asList(); }, 5},
    {"asRecord", [](FieldValue & value) { value.asRecord(); }, 6},
    {"asRecord const", [](FieldValue & value) { std::as_const(value).asRecord(); }, 6},
    {"asRawData", [](FieldValue & value) { value.asRawData(); }, 7},
    {"asRawData const", [](FieldValue & value) { std::as_const(value).asRawData(); }, 7},
};

/// Null where the accessor fits.
struct Class {
    char const * name;
    Value value;
    FieldTypeEnum type;
    char const * texts[8];
};

std::vector<Class> classes() {
    constexpr char const * INT = "not a integer value";
    constexpr char const * LONG = "not a long integer value";
    constexpr char const * LONG_LONG = "not a long long integer value";
    constexpr char const * DOUBLE = "not a double value";
    constexpr char const * STRING = "not a string field";
    constexpr char const * LIST = "not a list field";
    constexpr char const * RAW = "not a raw data field";
    return {
        {"StringData",
         new StringData("1"),
         FLDTYPE_STRING,
         {nullptr, nullptr, nullptr, nullptr, nullptr, "not a list data field",
          "not a record data field", "not a raw data field"}},
        {"NumberData",
         new NumberData(1),
         FLDTYPE_NUMBER,
         {nullptr, nullptr, nullptr, nullptr, nullptr, "not a list data value",
          "not a record data value", "not a raw data value"}},
        {"ListDataImpl",
         new ListDataImpl("name"),
         FLDTYPE_LIST,
         {INT, LONG, LONG_LONG, DOUBLE, STRING, nullptr, "not a record field", RAW}},
        {"MappedRecordData",
         new MappedRecordData,
         FLDTYPE_RECORD,
         {INT, LONG, LONG_LONG, DOUBLE, STRING, LIST, nullptr, RAW}},
        {"MappedMessage",
         new MappedMessage,
         FLDTYPE_RECORD,
         {INT, LONG, LONG_LONG, DOUBLE, STRING, LIST, nullptr, RAW}},
        {"MappedMessageHeader",
         new MappedMessageHeader,
         FLDTYPE_RECORD,
         {INT, LONG, LONG_LONG, DOUBLE, STRING, LIST, nullptr, RAW}},
        {"RawDataImpl",
         new RawDataImpl,
         FLDTYPE_RAW,
         {INT, LONG, LONG_LONG, DOUBLE, "not a string data field", "not a list data field",
          "not a record data field", nullptr}},
    };
}

/// The text thrown, or null; anything but a `char *` passes on.
char const * thrownText(Accessor const & accessor, FieldValue & value) {
    try {
        accessor.call(value);
        return nullptr;
    } catch (char * text) {
        EXPECT_TRUE(*abi::__cxa_current_exception_type() == typeid(char *));
        return text;
    }
}

char const * caughtAsConst(Accessor const & accessor, FieldValue & value) {
    try {
        accessor.call(value);
        return nullptr;
    } catch (char const * text) {
        return text;
    }
}

void const * caughtAsVoid(Accessor const & accessor, FieldValue & value) {
    try {
        accessor.call(value);
        return nullptr;
    } catch (void * text) {
        return text;
    }
}

TEST(FieldValue, DeliberateWrongAccessorsThrowPlainTexts) {
    for (Class const & row : classes()) {
        for (Accessor const & accessor : ACCESSORS) {
            SCOPED_TRACE(std::string(row.name) + "::" + accessor.name);
            char const * const expected = row.texts[accessor.text];
            char const * const text = thrownText(accessor, *row.value);
            if (expected == nullptr) {
                EXPECT_EQ(text, nullptr);
                continue;
            }
            ASSERT_NE(text, nullptr);
            EXPECT_STREQ(text, expected);
            // A static text: the same one each time, and it outlives the value.
            EXPECT_EQ(static_cast<void const *>(caughtAsConst(accessor, *row.value)), text);
            EXPECT_EQ(caughtAsVoid(accessor, *row.value), text);
        }
        EXPECT_EQ(row.value->getRefCount(), 1) << row.name;
    }
}

TEST(FieldValue, KnowsItsKind) {
    for (Class const & row : classes()) {
        EXPECT_EQ(row.value->getFieldType(), row.type) << row.name;
    }
}

TEST(FieldValue, FittingAccessorsGiveTheObjectItself) {
    for (Class const & row : classes()) {
        SCOPED_TRACE(row.name);
        FieldValue & value = *row.value;
        FieldValue const & constant = value;
        if (row.type == FLDTYPE_LIST) {
            EXPECT_EQ(&value.asList(), &value);
            EXPECT_EQ(&constant.asList(), &value);
        } else if (row.type == FLDTYPE_RECORD) {
            EXPECT_EQ(&value.asRecord(), &value);
            EXPECT_EQ(&constant.asRecord(), &value);
        } else if (row.type == FLDTYPE_RAW) {
            EXPECT_EQ(&value.asRawData(), &value);
            EXPECT_EQ(&constant.asRawData(), &value);
        }
    }
}

TEST(FieldValue, ListsAndRecordsPrintAsNothing) {
    for (Class const & row : classes()) {
        if (row.type == FLDTYPE_LIST || row.type == FLDTYPE_RECORD) {
            EXPECT_EQ(row.value->toString(), "") << row.name;
        }
    }
}

// ---- The order of the virtual operations -----------------------------------------------------

/// The operations of FieldValue as a class sees them.
template <class Class>
void expectFieldValueOrder() {
    test::expectVirtualOrder(
        3, {{"getFieldType", slotOf<FieldTypeEnum() const>(&Class::getFieldType)},
            {"intValue", slotOf<int() const>(&Class::intValue)},
            {"longValue", slotOf<long() const>(&Class::longValue)},
            {"longlongValue", slotOf<long long() const>(&Class::longlongValue)},
            {"doubleValue", slotOf<double() const>(&Class::doubleValue)},
            {"asString", slotOf<CString const &() const>(&Class::asString)},
            {"asList", slotOf<ListData &()>(&Class::asList)},
            {"asList const", slotOf<ListData const &() const>(&Class::asList)},
            {"asRecord", slotOf<RecordData &()>(&Class::asRecord)},
            {"asRecord const", slotOf<RecordData const &() const>(&Class::asRecord)},
            {"asRawData", slotOf<RawData &()>(&Class::asRawData)},
            {"asRawData const", slotOf<RawData const &() const>(&Class::asRawData)},
            {"toString", slotOf<CString() const>(&Class::toString)}});
}

template <class Class>
class FieldValueOrder : public testing::Test {};

using Classes = testing::Types<FieldValue, StringData, NumberData, RawData, RawDataImpl, ListData,
                               ListDataImpl, RecordData, MappedRecordData, KestrinMessageHeader,
                               MappedMessageHeader, KestrinMessage, MappedMessage>;
TYPED_TEST_SUITE(FieldValueOrder, Classes);

TYPED_TEST(FieldValueOrder, IsTheSameInEveryClass) { expectFieldValueOrder<TypeParam>(); }

/// One operation more, behind all that a class has.
template <class Base>
class OneMore : public Base {
public:
    virtual void oneMore() {}
};

TEST(FieldValueOrder, NoClassHasOperationsOfItsOwn) {
    EXPECT_EQ(slotOf(&OneMore<FieldValue>::oneMore), 16u);
    EXPECT_EQ(slotOf(&OneMore<RawData>::oneMore), 22u);
    EXPECT_EQ(slotOf(&OneMore<ListData>::oneMore), 25u);
    EXPECT_EQ(slotOf(&OneMore<RecordData>::oneMore), 24u);
    EXPECT_EQ(slotOf(&OneMore<MappedRecordData>::oneMore), 24u);
    EXPECT_EQ(slotOf(&OneMore<KestrinMessageHeader>::oneMore), 30u);
    EXPECT_EQ(slotOf(&OneMore<KestrinMessage>::oneMore), 34u);
    EXPECT_EQ(slotOf(&OneMore<MappedMessage>::oneMore), 34u);
}

/// What stands at a place of an object's table.
void const * entryOf(FieldValue const & value, std::size_t slot) {
    void const * const * table = nullptr;
    std::memcpy(&table, static_cast<void const *>(&value), sizeof table);
    return table[slot];
}

TEST(FieldValueOrder, NoClassEndsInAWayOfItsOwn) {
    std::vector<Class> const all = classes();
    for (Class const & row : all) {
        EXPECT_EQ(entryOf(*row.value, 2), entryOf(*all.front().value, 2)) << row.name;
    }
}

// ---- A value of somebody else's --------------------------------------------------------------

/// Every operation of the interface, each answering in its own way.
class OwnValue : public FieldValue {
public:
    ~OwnValue() override = default;
    FieldTypeEnum getFieldType() const override { return static_cast<FieldTypeEnum>(77); }
    int intValue() const override { return 1; }
    long longValue() const override { return 2; }
    long long longlongValue() const override { return 3; }
    double doubleValue() const override { return 4; }
    CString const & asString() const override { return text_; }
    ListData & asList() override { throw 5; }
    ListData const & asList() const override { throw 6; }
    RecordData & asRecord() override { throw 7; }
    RecordData const & asRecord() const override { throw 8; }
    RawData & asRawData() override { throw 9; }
    RawData const & asRawData() const override { throw 10; }
    CString toString() const override { return "eleven"; }

private:
    CString text_ = "five";
};

TEST(FieldValue, CanBeImplementedElsewhere) {
    Value const value(new OwnValue);
    FieldValue const & constant = *value;
    EXPECT_EQ(value->getFieldType(), 77);
    EXPECT_EQ(value->intValue(), 1);
    EXPECT_EQ(value->longValue(), 2);
    EXPECT_EQ(value->longlongValue(), 3);
    EXPECT_EQ(value->doubleValue(), 4);
    EXPECT_EQ(value->asString(), "five");
    EXPECT_THROW(value->asList(), int);
    EXPECT_THROW(constant.asList(), int);
    EXPECT_THROW(value->asRecord(), int);
    EXPECT_THROW(constant.asRecord(), int);
    EXPECT_THROW(value->asRawData(), int);
    EXPECT_THROW(constant.asRawData(), int);
    EXPECT_EQ(value->toString(), "eleven");
    OwnValue const copy(static_cast<OwnValue const &>(constant));
    EXPECT_EQ(copy.getRefCount(), 0);
}

TEST(FieldValue, MayBeDeletedThroughItsInterface) {
    FieldValue * const value = new StringData("text");
    delete value;
}

// ---- The constants ---------------------------------------------------------------------------

struct NumberConstant {
    FieldValue * value;
    int number;
    char const * text;
};

std::vector<NumberConstant> numberConstants() {
    return {
        {FieldValue::ZERO_NUMBER_VALUE, 0, "0"},
        {FieldValue::ONE_NUMBER_VALUE, 1, "1"},
        {FieldValue::TWO_NUMBER_VALUE, 2, "2"},
        {FieldValue::THREE_NUMBER_VALUE, 3, "3"},
        {FieldValue::FOUR_NUMBER_VALUE, 4, "4"},
        {FieldValue::FIVE_NUMBER_VALUE, 5, "5"},
        {FieldValue::SIX_NUMBER_VALUE, 6, "6"},
        {FieldValue::SEVEN_NUMBER_VALUE, 7, "7"},
        {FieldValue::EIGHT_NUMBER_VALUE, 8, "8"},
        {FieldValue::NINE_NUMBER_VALUE, 9, "9"},
        {FieldValue::NEGATIVE_ONE_NUMBER_VALUE, -1, "-1"},
    };
}

std::vector<FieldValue *> allConstants() {
    std::vector<FieldValue *> all;
    for (NumberConstant const & row : numberConstants()) {
        all.push_back(row.value);
    }
    all.push_back(FieldValue::EMPTY_STRING_VALUE);
    all.push_back(FieldValue::TRUE_VALUE);
    all.push_back(FieldValue::FALSE_VALUE);
    return all;
}

TEST(FieldValueConstants, HoldTheirNumbers) {
    for (NumberConstant const & row : numberConstants()) {
        ASSERT_NE(row.value, nullptr);
        EXPECT_EQ(row.value->getRefCount(), 0x7fffffff);
        EXPECT_EQ(row.value->getFieldType(), FLDTYPE_NUMBER);
        EXPECT_EQ(row.value->intValue(), row.number);
        EXPECT_EQ(row.value->asString(), row.text);
        auto const * const number = dynamic_cast<NumberData const *>(row.value);
        ASSERT_NE(number, nullptr);
        EXPECT_TRUE(number->isInteger());
        EXPECT_EQ(row.value->getRefCount(), 0x7fffffff);
    }
}

TEST(FieldValueConstants, HoldTheEmptyText) {
    ASSERT_NE(dynamic_cast<StringData const *>(FieldValue::EMPTY_STRING_VALUE), nullptr);
    EXPECT_EQ(FieldValue::EMPTY_STRING_VALUE->asString(), "");
    EXPECT_EQ(FieldValue::EMPTY_STRING_VALUE->getRefCount(), 0x7fffffff);
}

TEST(FieldValueConstants, DeliberateBooleansAreTheNumbersOneAndZero) {
    EXPECT_EQ(FieldValue::TRUE_VALUE, FieldValue::ONE_NUMBER_VALUE);
    EXPECT_EQ(FieldValue::FALSE_VALUE, FieldValue::ZERO_NUMBER_VALUE);
}

TEST(FieldValueConstants, AreObjectsOfTheirOwn) {
    std::vector<FieldValue *> all = allConstants();
    all.resize(12);
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::unique(all.begin(), all.end()), all.end());
}

TEST(FieldValueConstants, AreNeverCounted) {
    for (FieldValue * const constant : allConstants()) {
        {
            Value const first(constant);
            Value const second(first);
            EXPECT_EQ(constant->getRefCount(), 0x7fffffff);
        }
        constant->removeRef();
        EXPECT_EQ(constant->getRefCount(), 0x7fffffff);
    }
}

TEST(FieldValueConstants, CostNoAllocation) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    test::AllocationCounter const allocations;
    {
        Value first(FieldValue::FOUR_NUMBER_VALUE);
        Value const second(first);
        first = FieldValue::EMPTY_STRING_VALUE;
        first = FieldValue::TRUE_VALUE;
    }
    EXPECT_EQ(allocations.count(), 0);
}

TEST(FieldValueConstants, AreReferencedFromManyThreadsAtOnce) {
    std::vector<FieldValue *> const all = allConstants();
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&all] {
            RefCountedPtr<ListData> const list(new ListDataImpl("constants"));
            for (int round = 0; round < 2000; ++round) {
                for (FieldValue * const constant : all) {
                    Value const first(constant);
                    Value second;
                    second = first;
                    list->addElement(second);
                }
                list->removeAllElements();
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    for (FieldValue * const constant : all) {
        EXPECT_EQ(constant->getRefCount(), 0x7fffffff);
    }
}

}  // namespace
}  // namespace tvk
