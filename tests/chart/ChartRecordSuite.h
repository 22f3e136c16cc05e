#pragma once

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tvk/chart/PriceKindEnum.h"
#include "tvk/values/RefCountedPtr.h"

/// What both chart records do. A test file names its classes in a structure
///
///     Record   the abstract record
///     Impl     the record of the library
///     Own      a record of somebody else, see ChartRecordDoubles.h
///     texts()  the text fields with their accessors, in the order of storage
///
/// and instantiates the suite with it.
namespace tvk::test {

/// A text field. The getter is const in one record and not in the other.
template <class Record>
struct TextField {
    char const * name;
    decltype(&Record::getSymbolCode) get;
    void (Record::*set)(CString);
};

/// Those that both records have.
template <class Record>
std::vector<TextField<Record>> textsOfBar() {
    return {{"symbolCode", &Record::getSymbolCode, &Record::setSymbolCode},
            {"periodType", &Record::getPeriodType, &Record::setPeriodType},
            {"dataDate", &Record::getDataDate, &Record::setDataDate},
            {"dataTime", &Record::getDataTime, &Record::setDataTime},
            {"openPrice", &Record::getOpenPrice, &Record::setOpenPrice},
            {"closePrice", &Record::getClosePrice, &Record::setClosePrice},
            {"highPrice", &Record::getHighPrice, &Record::setHighPrice},
            {"lowPrice", &Record::getLowPrice, &Record::setLowPrice},
            {"ask", &Record::getAsk, &Record::setAsk},
            {"askVolume", &Record::getAskVolume, &Record::setAskVolume},
            {"bid", &Record::getBid, &Record::setBid},
            {"bidVolume", &Record::getBidVolume, &Record::setBidVolume},
            {"volume", &Record::getVolume, &Record::setVolume},
            {"currVolume", &Record::getCurrVolume, &Record::setCurrVolume}};
}

/// Names for the bag: case, prefixes, NUL and bytes of 0x80 and above make a difference.
inline std::vector<CString> const & bagNames() {
    static std::vector<CString> const names = {"",
                                               "a",
                                               "A",
                                               "ab",
                                               "b",
                                               "x",
                                               "y",
                                               "z",
                                               CString("a\0", 2),
                                               CString("a\0b", 3),
                                               CString("\0", 1),
                                               "\x7f",
                                               "\x80",
                                               "\xff",
                                               "a\xff",
                                               "\x83\x41",
                                               "symbolCode",
                                               "SYMBOLCODE",
                                               "tradeDate"};
    return names;
}

/// All that a record tells: its texts in the order of storage, its kind, and its bag as far as
/// bagNames() goes.
struct RecordState {
    std::vector<CString> texts;
    int priceKind = 0;
    std::map<CString, CString> bag;

    friend bool operator==(RecordState const & left, RecordState const & right) {
        return left.texts == right.texts && left.priceKind == right.priceKind &&
               left.bag == right.bag;
    }
    friend void PrintTo(RecordState const & state, std::ostream * output) {
        *output << ::testing::PrintToString(state.texts) << ", kind " << state.priceKind << ", bag "
                << ::testing::PrintToString(state.bag);
    }
};

template <class Records>
using RecordPtr = RefCountedPtr<typename Records::Record>;

template <class Records>
RecordState stateOf(typename Records::Record & record) {
    RecordState state;
    for (auto const & field : Records::texts()) {
        state.texts.push_back((record.*field.get)());
    }
    state.priceKind = record.getPriceKind();
    for (CString const & name : bagNames()) {
        if (record.hasField(name)) {
            state.bag[name] = record.getField(name);
        } else {
            EXPECT_EQ(record.getField(name), "");
        }
    }
    return state;
}

inline RecordState withoutBag(RecordState state) {
    state.bag.clear();
    return state;
}

/// Fills all that a record can hold, told from other contents by `mark`.
template <class Records>
void fill(typename Records::Record & record, char const * mark) {
    for (auto const & field : Records::texts()) {
        (record.*field.set)(CString(field.name) + mark);
    }
    record.setPriceKind(static_cast<PriceKindEnum>(100 + mark[0]));
    record.setField("a", mark);
    record.setField(CString("a\0", 2), CString("NUL") + mark);
    record.setField(mark, "");
}

template <class Records>
RecordPtr<Records> filled(char const * mark) {
    RecordPtr<Records> record(new typename Records::Impl);
    fill<Records>(*record, mark);
    return record;
}

template <class Records>
void setCount(typename Records::Record & record, int count) {
    typename Records::Own source;
    if (count == RefCounted::CONSTANT_REF_COUNT) {
        source.setConstantRefCount();
    }
    while (source.getRefCount() < count) {
        source.addRef();
    }
    static_cast<RefCounted &>(record) = source;
}

// An Own holds what the abstract class stores and answers nothing: it is filled and read by way of
// an Impl.

template <class Records>
void fillOwn(typename Records::Own & own, char const * mark) {
    static_cast<typename Records::Record &>(own) = *filled<Records>(mark);
    setCount<Records>(own, 0);
}

template <class Records>
RecordState stateOfOwn(typename Records::Own const & own) {
    RecordPtr<Records> const record(new typename Records::Impl);
    *record = static_cast<typename Records::Record const &>(own);
    setCount<Records>(*record, 1);
    return stateOf<Records>(*record);
}

/// What the compiler knows of the classes.
template <class Record, class Impl, class Own>
constexpr bool haveTheirShape() {
    static_assert(std::is_base_of_v<Record, Impl>);
    static_assert(sizeof(Impl) == sizeof(Record), "it adds no data");
    static_assert(!std::is_destructible_v<Impl>);
    static_assert(std::is_abstract_v<Record>);
    static_assert(std::is_destructible_v<Record>);
    static_assert(std::has_virtual_destructor_v<Record>);
    static_assert(std::is_copy_assignable_v<Record>);
    static_assert(std::is_move_assignable_v<Record>);
    static_assert(std::is_copy_constructible_v<Own>);
    static_assert(std::is_move_constructible_v<Own>);
    static_assert(std::is_same_v<decltype(&Record::setPriceKind), void (Record::*)(PriceKindEnum)>);
    static_assert(std::is_same_v<decltype(&Record::setField), void (Record::*)(CString, CString)>);
    return true;
}

template <class Records>
class ChartRecord : public ::testing::Test {
    static_assert(
        haveTheirShape<typename Records::Record, typename Records::Impl, typename Records::Own>());
};

TYPED_TEST_SUITE_P(ChartRecord);

TYPED_TEST_P(ChartRecord, StartsEmptyAndUnset) {
    using Own = typename TypeParam::Own;
    alignas(Own) unsigned char dirty[sizeof(Own)];
    std::memset(dirty, 0xab, sizeof dirty);
    std::unique_ptr<Own, void (*)(Own *)> const own(new (dirty) Own,
                                                    [](Own * end) { end->~Own(); });
    EXPECT_EQ(own->getRefCount(), 0);
    RecordState unset;
    unset.texts.resize(TypeParam::texts().size());
    unset.priceKind = PRICEKIND_NONE;
    EXPECT_EQ(stateOfOwn<TypeParam>(*own), unset);

    auto * const object = new typename TypeParam::Impl;
    EXPECT_EQ(object->getRefCount(), 0);
    RecordPtr<TypeParam> const record(object);
    EXPECT_EQ(stateOf<TypeParam>(*record), unset);
}

TYPED_TEST_P(ChartRecord, EachSetterWritesItsFieldAlone) {
    for (std::size_t i = 0; i < TypeParam::texts().size(); ++i) {
        SCOPED_TRACE(TypeParam::texts()[i].name);
        RecordPtr<TypeParam> const record = filled<TypeParam>("x");
        RecordState expected = stateOf<TypeParam>(*record);
        ((*record).*TypeParam::texts()[i].set)("changed");
        expected.texts[i] = "changed";
        EXPECT_EQ(stateOf<TypeParam>(*record), expected);
    }
}

TYPED_TEST_P(ChartRecord, KeepsTextsAsTheyCame) {
    std::string const longText(5000, '9');
    RecordPtr<TypeParam> const record(new typename TypeParam::Impl);
    for (auto const & field : TypeParam::texts()) {
        SCOPED_TRACE(field.name);
        for (std::string const & text :
             {std::string("101.250"), std::string(" +1e3 "), std::string("not a price"),
              std::string("\0x\0", 3), std::string("\x80\xff\x83\x41"), longText, std::string()}) {
            ExactBuffer const bytes(text);
            CString const value(bytes.data(), static_cast<int>(bytes.size()));
            ((*record).*field.set)(value);
            EXPECT_EQ(((*record).*field.get)(), value);
        }
    }
}

TYPED_TEST_P(ChartRecord, KeepsAnyPriceKind) {
    RecordPtr<TypeParam> const record = filled<TypeParam>("x");
    RecordState expected = stateOf<TypeParam>(*record);
    for (int const kind : {0, 1, 2, 3, 4, 5, 77, -1, INT_MAX, INT_MIN}) {
        record->setPriceKind(static_cast<PriceKindEnum>(kind));
        expected.priceKind = kind;
        EXPECT_EQ(stateOf<TypeParam>(*record), expected);
    }
}

TYPED_TEST_P(ChartRecord, FixedFieldsAreNotInTheBag) {
    RecordPtr<TypeParam> const record(new typename TypeParam::Impl);
    record->setPriceKind(PRICEKIND_BID);
    EXPECT_FALSE(record->hasField("priceKind"));
    for (auto const & field : TypeParam::texts()) {
        SCOPED_TRACE(field.name);
        ((*record).*field.set)("fixed");
        EXPECT_FALSE(record->hasField(field.name));
        EXPECT_EQ(record->getField(field.name), "");
    }
    record->setField("priceKind", "1");
    EXPECT_EQ(record->getPriceKind(), PRICEKIND_BID);
    for (auto const & field : TypeParam::texts()) {
        SCOPED_TRACE(field.name);
        record->setField(field.name, "named");
        EXPECT_EQ(((*record).*field.get)(), "fixed");
        ((*record).*field.set)("fixed again");
        EXPECT_EQ(record->getField(field.name), "named");
    }
}

TYPED_TEST_P(ChartRecord, AMissIsAnEmptyTextAndStaysAMiss) {
    RecordPtr<TypeParam> const record(new typename TypeParam::Impl);
    for (CString const & name : bagNames()) {
        EXPECT_EQ(record->getField(name), "");
        EXPECT_FALSE(record->hasField(name));
    }
}

TYPED_TEST_P(ChartRecord, TheBagAddsAndReplaces) {
    RecordPtr<TypeParam> const record(new typename TypeParam::Impl);
    record->setField("yield", "1.5");
    EXPECT_EQ(record->getField("yield"), "1.5");
    record->setField("yield", CString("\0\x80", 2));
    EXPECT_EQ(record->getField("yield"), CString("\0\x80", 2));
    record->setField("yield", "");
    EXPECT_EQ(record->getField("yield"), "");
    EXPECT_TRUE(record->hasField("yield"));
    record->setField("empty", "");
    EXPECT_EQ(record->getField("empty"), "");
    EXPECT_TRUE(record->hasField("empty"));
    EXPECT_FALSE(record->hasField("YIELD"));
    EXPECT_FALSE(record->hasField("yiel"));
}

TYPED_TEST_P(ChartRecord, BagNamesMatchByAllTheirBytes) {
    RecordPtr<TypeParam> const record(new typename TypeParam::Impl);
    std::map<CString, CString> expected;
    for (CString const & name : bagNames()) {
        EXPECT_FALSE(record->hasField(name));
        expected[name] = std::to_string(expected.size()).c_str();
        record->setField(name, expected[name]);
        EXPECT_EQ(stateOf<TypeParam>(*record).bag, expected);
    }
}

TYPED_TEST_P(ChartRecord, ACopyIsUnownedAndHasItsOwnBag) {
    RecordPtr<TypeParam> const source = filled<TypeParam>("x");
    RecordPtr<TypeParam> const second(source);
    RecordState const before = stateOf<TypeParam>(*source);
    auto * const object =
        new typename TypeParam::Impl(static_cast<typename TypeParam::Impl const &>(*source));
    EXPECT_EQ(object->getRefCount(), 0);
    RecordPtr<TypeParam> const copy(object);
    EXPECT_EQ(stateOf<TypeParam>(*copy), before);
    fill<TypeParam>(*copy, "y");
    EXPECT_EQ(stateOf<TypeParam>(*source), before);
    EXPECT_EQ(source->getRefCount(), 2);

    typename TypeParam::Own own;
    fillOwn<TypeParam>(own, "z");
    setCount<TypeParam>(own, 5);
    typename TypeParam::Own const ownCopy(own);
    EXPECT_EQ(ownCopy.getRefCount(), 0);
    EXPECT_EQ(stateOfOwn<TypeParam>(ownCopy), stateOfOwn<TypeParam>(own));
    EXPECT_EQ(own.getRefCount(), 5);
}

TYPED_TEST_P(ChartRecord, ACopyOfAConstantIsNone) {
    typename TypeParam::Own source;
    source.setConstantRefCount();
    EXPECT_EQ(typename TypeParam::Own(source).getRefCount(), 0);
    EXPECT_EQ(typename TypeParam::Own(std::move(source)).getRefCount(), 0);
}

TYPED_TEST_P(ChartRecord, DeliberateAMoveLeavesTheSourceItsTexts) {
    typename TypeParam::Own source;
    fillOwn<TypeParam>(source, "x");
    setCount<TypeParam>(source, 3);
    RecordState const before = stateOfOwn<TypeParam>(source);
    ASSERT_FALSE(before.bag.empty());
    typename TypeParam::Own const moved(std::move(source));
    EXPECT_EQ(moved.getRefCount(), 0);
    EXPECT_EQ(stateOfOwn<TypeParam>(moved), before);
    EXPECT_EQ(source.getRefCount(), 3);
    EXPECT_EQ(stateOfOwn<TypeParam>(source), withoutBag(before));

    typename TypeParam::Own target;
    fillOwn<TypeParam>(target, "y");
    fillOwn<TypeParam>(source, "z");
    RecordState const second = stateOfOwn<TypeParam>(source);
    typename TypeParam::Own & result = target = std::move(source);
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(stateOfOwn<TypeParam>(target), second);
    EXPECT_EQ(stateOfOwn<TypeParam>(source), withoutBag(second));
}

TYPED_TEST_P(ChartRecord, AnEmptiedBagStaysUsable) {
    using Record = typename TypeParam::Record;
    RecordPtr<TypeParam> const source = filled<TypeParam>("x");
    RecordPtr<TypeParam> const target = filled<TypeParam>("y");
    Record & result = *target = std::move(*source);
    EXPECT_EQ(&result, target.get());
    EXPECT_TRUE(target->hasField("x"));
    EXPECT_FALSE(target->hasField("y"));
    EXPECT_EQ(stateOf<TypeParam>(*source).bag, (std::map<CString, CString>{}));
    source->setField("b", "1");
    EXPECT_EQ(source->getField("b"), "1");
    EXPECT_FALSE(target->hasField("b"));
    // And back again, into the bag that was emptied.
    *source = std::move(*target);
    EXPECT_TRUE(source->hasField("x"));
    EXPECT_FALSE(source->hasField("b"));
    EXPECT_EQ(stateOf<TypeParam>(*target).bag, (std::map<CString, CString>{}));
}

TYPED_TEST_P(ChartRecord, AMoveTakesTheBagAsItIs) {
    if (!AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    typename TypeParam::Own source;
    fillOwn<TypeParam>(source, "x");
    AllocationCounter allocations;
    typename TypeParam::Own moved(std::move(source));
    typename TypeParam::Own target;
    target = std::move(moved);
    EXPECT_EQ(allocations.count(), 0);
    EXPECT_EQ(stateOfOwn<TypeParam>(target).bag.size(), 3u);
}

TYPED_TEST_P(ChartRecord, CopyAssignmentReplacesAll) {
    using Impl = typename TypeParam::Impl;
    for (bool const throughInterface : {false, true}) {
        RecordPtr<TypeParam> const source = filled<TypeParam>("x");
        RecordPtr<TypeParam> const target = filled<TypeParam>("y");
        RecordState const before = stateOf<TypeParam>(*source);
        if (throughInterface) {
            EXPECT_EQ(&(*target = *source), target.get());
        } else {
            Impl & impl = static_cast<Impl &>(*target);
            EXPECT_EQ(&(impl = static_cast<Impl const &>(*source)), &impl);
        }
        EXPECT_EQ(stateOf<TypeParam>(*target), before);
        EXPECT_FALSE(target->hasField("y"));
        target->setField("b", "1");
        EXPECT_EQ(stateOf<TypeParam>(*source), before);
        EXPECT_FALSE(source->hasField("b"));
    }
}

TYPED_TEST_P(ChartRecord, SelfAssignmentChangesNothing) {
    using Record = typename TypeParam::Record;
    using Impl = typename TypeParam::Impl;
    RecordPtr<TypeParam> const record = filled<TypeParam>("x");
    RecordState const before = stateOf<TypeParam>(*record);
    Record & alias = *record;
    *record = alias;
    EXPECT_EQ(stateOf<TypeParam>(*record), before);
    *record = std::move(alias);
    EXPECT_EQ(stateOf<TypeParam>(*record), before);
    static_cast<Impl &>(*record) = static_cast<Impl &>(alias);
    EXPECT_EQ(stateOf<TypeParam>(*record), before);
    EXPECT_EQ(record->getRefCount(), 1);
}

TYPED_TEST_P(ChartRecord, AnImplIsCopiedWhereItWouldBeMoved) {
    using Impl = typename TypeParam::Impl;
    RecordPtr<TypeParam> const source = filled<TypeParam>("x");
    RecordPtr<TypeParam> const second(source);
    RecordState const before = stateOf<TypeParam>(*source);
    Impl & impl = static_cast<Impl &>(*source);

    auto * const object = new Impl(std::move(impl));
    EXPECT_EQ(object->getRefCount(), 0);
    RecordPtr<TypeParam> const made(object);
    EXPECT_EQ(stateOf<TypeParam>(*made), before);
    EXPECT_EQ(stateOf<TypeParam>(*source), before);

    RecordPtr<TypeParam> const target = filled<TypeParam>("y");
    static_cast<Impl &>(*target) = std::move(impl);
    EXPECT_EQ(target->getRefCount(), 2);
    EXPECT_EQ(stateOf<TypeParam>(*target), before);
    EXPECT_EQ(stateOf<TypeParam>(*source), before);
    target->removeRef();
}

TYPED_TEST_P(ChartRecord, DeliberateAssignmentTakesOverTheCount) {
    using Own = typename TypeParam::Own;
    int const counts[] = {0, 1, 2, 7, RefCounted::CONSTANT_REF_COUNT};
    for (int const sourceCount : counts) {
        for (int const targetCount : counts) {
            SCOPED_TRACE(std::to_string(targetCount) + " = " + std::to_string(sourceCount));
            Own source;
            Own copied;
            Own moved;
            setCount<TypeParam>(source, sourceCount);
            setCount<TypeParam>(copied, targetCount);
            setCount<TypeParam>(moved, targetCount);
            copied = source;
            EXPECT_EQ(copied.getRefCount(), sourceCount);
            EXPECT_EQ(source.getRefCount(), sourceCount);
            moved = std::move(source);
            EXPECT_EQ(moved.getRefCount(), sourceCount);
            EXPECT_EQ(source.getRefCount(), sourceCount);
        }
    }
}

TYPED_TEST_P(ChartRecord, DeliberateAssignmentOfAnImplTakesOverTheCountToo) {
    using Impl = typename TypeParam::Impl;
    RecordPtr<TypeParam> const source = filled<TypeParam>("x");
    RecordPtr<TypeParam> const target = filled<TypeParam>("y");
    setCount<TypeParam>(*source, RefCounted::CONSTANT_REF_COUNT);
    static_cast<Impl &>(*target) = static_cast<Impl const &>(*source);
    EXPECT_EQ(target->getRefCount(), RefCounted::CONSTANT_REF_COUNT);
    setCount<TypeParam>(*source, 1);
    static_cast<Impl &>(*target) = static_cast<Impl const &>(*source);
    EXPECT_EQ(target->getRefCount(), 1);
}

TYPED_TEST_P(ChartRecord, EndsWithItsLastReferenceOrByDelete) {
    using Own = typename TypeParam::Own;
    int ends = 0;
    {
        RecordPtr<TypeParam> const record(new Own(&ends));
        RecordPtr<TypeParam> const second(record);
    }
    EXPECT_EQ(ends, 1);
    std::unique_ptr<typename TypeParam::Record>(new Own(&ends)).reset();
    EXPECT_EQ(ends, 2);
}

TYPED_TEST_P(ChartRecord, ExhaustedMemoryPassesOn) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations do not fail here";
    }
    typename TypeParam::Own source;
    fillOwn<TypeParam>(source, "x");
    for (int allowed = 0; allowed < 3; ++allowed) {
        AllocationFailure failure(allowed);
        bool failed = false;
        try {
            typename TypeParam::Own const copy(source);
        } catch (std::bad_alloc const &) {
            failed = true;
        }
        failure.end();
        EXPECT_TRUE(failed) << allowed;
    }

    RecordPtr<TypeParam> const record = filled<TypeParam>("x");
    RecordState const before = stateOf<TypeParam>(*record);
    CString const name("b");
    AllocationFailure failure;
    bool failed = false;
    try {
        record->setField(name, name);
    } catch (std::bad_alloc const &) {
        failed = true;
    }
    failure.end();
    EXPECT_TRUE(failed);
    EXPECT_FALSE(record->hasField("b"));
    EXPECT_EQ(stateOf<TypeParam>(*record), before);
}

TYPED_TEST_P(ChartRecord, RandomOperationsFollowPlainMaps) {
    using Record = typename TypeParam::Record;
    using Impl = typename TypeParam::Impl;
    std::mt19937 random(61);
    auto const below = [&random](std::size_t limit) { return random() % limit; };
    std::vector<RecordPtr<TypeParam>> records;
    std::vector<RecordState> models;
    for (int i = 0; i < 3; ++i) {
        records.emplace_back(new Impl);
        models.push_back(stateOf<TypeParam>(*records.back()));
    }
    for (int step = 0; step < 5000; ++step) {
        std::size_t const to = below(records.size());
        std::size_t const from = below(records.size());
        CString const name = bagNames()[below(bagNames().size())];
        CString const value(static_cast<char>(random()), static_cast<int>(below(4)));
        auto const operation = below(20);
        if (operation < 10) {
            records[to]->setField(name, value);
            models[to].bag[name] = value;
        } else if (operation < 14) {
            std::size_t const field = below(TypeParam::texts().size());
            ((*records[to]).*TypeParam::texts()[field].set)(value);
            models[to].texts[field] = value;
        } else if (operation < 16) {
            int const kind = static_cast<int>(below(5));
            records[to]->setPriceKind(static_cast<PriceKindEnum>(kind));
            models[to].priceKind = kind;
        } else if (operation == 16) {
            records[to] = new Impl(static_cast<Impl const &>(*records[from]));
            models[to] = RecordState(models[from]);
        } else if (operation == 17) {
            Record & target = *records[to];
            target = *records[from];
            models[to] = RecordState(models[from]);
        } else {
            Record & target = *records[to];
            target = std::move(*records[from]);
            RecordState const moved = models[from];
            models[from].bag.clear();
            models[to] = moved;
        }
        for (std::size_t i = 0; i < records.size(); ++i) {
            ASSERT_EQ(stateOf<TypeParam>(*records[i]), models[i]) << "step " << step;
            ASSERT_EQ(records[i]->getRefCount(), 1);
        }
    }
}

REGISTER_TYPED_TEST_SUITE_P(
    ChartRecord, StartsEmptyAndUnset, EachSetterWritesItsFieldAlone, KeepsTextsAsTheyCame,
    KeepsAnyPriceKind, FixedFieldsAreNotInTheBag, AMissIsAnEmptyTextAndStaysAMiss,
    TheBagAddsAndReplaces, BagNamesMatchByAllTheirBytes, ACopyIsUnownedAndHasItsOwnBag,
    ACopyOfAConstantIsNone, DeliberateAMoveLeavesTheSourceItsTexts, AnEmptiedBagStaysUsable,
    AMoveTakesTheBagAsItIs, CopyAssignmentReplacesAll, SelfAssignmentChangesNothing,
    AnImplIsCopiedWhereItWouldBeMoved, DeliberateAssignmentTakesOverTheCount,
    DeliberateAssignmentOfAnImplTakesOverTheCountToo, EndsWithItsLastReferenceOrByDelete,
    ExhaustedMemoryPassesOn, RandomOperationsFollowPlainMaps);

}  // namespace tvk::test
