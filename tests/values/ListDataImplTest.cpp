#include "tvk/values/ListDataImpl.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <random>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/ListDataDouble.h"
#include "tests/support/PrintCString.h"
#include "tests/support/Recorded.h"
#include "tests/support/VirtualOrder.h"
#include "tests/values/ExpectTooLong.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using test::expectTooLong;
using test::Log;
using test::Recorded;
using test::slotOf;
using List = RefCountedPtr<ListDataImpl>;
using Value = RefCountedPtr<FieldValue>;
using RecordedValue = Recorded<MappedRecordData>;

static_assert(!std::is_destructible_v<ListDataImpl>);

std::vector<FieldValue *> elementsOf(ListData const & list) {
    std::vector<FieldValue *> elements;
    for (unsigned int i = 0; i < list.getCount(); ++i) {
        elements.push_back(list.getElement(i).get());
    }
    return elements;
}

std::vector<FieldValue *> pointers(std::initializer_list<Value> values) {
    std::vector<FieldValue *> all;
    for (Value const & value : values) {
        all.push_back(value.get());
    }
    return all;
}

List listOf(CString const & name, std::initializer_list<Value> values) {
    List const list(new ListDataImpl(name));
    for (Value const & value : values) {
        list->addElement(value);
    }
    return list;
}

class ListDataImplTest : public testing::Test {
protected:
    Value const a_ = new StringData("a");
    Value const b_ = new StringData("b");
    Value const c_ = new StringData("c");
    Value const null_ = nullptr;
};

TEST_F(ListDataImplTest, StartsEmptyWithItsName) {
    List const list(new ListDataImpl("Quote"));
    EXPECT_EQ(list->getCount(), 0u);
    EXPECT_EQ(list->getElementTypeName(), "Quote");
    EXPECT_EQ(list->getFieldType(), FLDTYPE_LIST);
    EXPECT_EQ(list->toString(), "");
    EXPECT_EQ(&list->asList(), list.get());
    List const reserved(new ListDataImpl(10, "Quote"));
    EXPECT_EQ(reserved->getCount(), 0u);
    EXPECT_EQ(reserved->getElementTypeName(), "Quote");
}

TEST_F(ListDataImplTest, TheNameIsALabelThatCanBeReplaced) {
    List const list = listOf("Quote", {a_});
    list->setElementTypeName("Trade");
    EXPECT_EQ(list->getElementTypeName(), "Trade");
    EXPECT_EQ(&list->getElementTypeName(), &list->getElementTypeName());
    list->addElement(new NumberData(1));
    EXPECT_EQ(list->getCount(), 2u);
}

TEST_F(ListDataImplTest, ReservedPlacesTakeOneAllocation) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const name = "Quote";
    test::AllocationCounter const allocations;
    List const list(new ListDataImpl(100, name));
    EXPECT_EQ(allocations.count(), 2);
    for (int i = 0; i < 100; ++i) {
        list->addElement(a_);
    }
    list->removeAllElements();
    for (int i = 0; i < 100; ++i) {
        list->addElement(a_);
    }
    EXPECT_EQ(allocations.count(), 2);
    List const empty(new ListDataImpl(name));
    EXPECT_EQ(allocations.count(), 3);
}

TEST_F(ListDataImplTest, AppendsCountedReferences) {
    List const list = listOf("", {a_, a_, b_});
    EXPECT_EQ(list->getCount(), 3u);
    EXPECT_EQ(a_->getRefCount(), 3);
    EXPECT_EQ(b_->getRefCount(), 2);
    {
        Value const element = list->getElement(2);
        EXPECT_EQ(element, b_);
        EXPECT_EQ(b_->getRefCount(), 3);
    }
    EXPECT_EQ(b_->getRefCount(), 2);
}

TEST_F(ListDataImplTest, HoldsNulls) {
    List const list = listOf("", {null_});
    EXPECT_EQ(list->getCount(), 1u);
    EXPECT_TRUE(list->getElement(0).isNull());
    list->setElement(0, a_);
    list->setElement(0, null_);
    EXPECT_TRUE(list->getElement(0).isNull());
    EXPECT_EQ(a_->getRefCount(), 1);
    list->insertElementAt(0, null_);
    EXPECT_EQ(list->getCount(), 2u);
    list->removeElement(0);
    list->removeAllElements();
    EXPECT_EQ(list->getCount(), 0u);
}

TEST_F(ListDataImplTest, ReplacesAnElement) {
    List const list = listOf("", {a_, b_});
    list->setElement(0, c_);
    EXPECT_EQ(elementsOf(*list), pointers({c_, b_}));
    EXPECT_EQ(a_->getRefCount(), 1);
    EXPECT_EQ(c_->getRefCount(), 2);
    list->setElement(0, c_);
    EXPECT_EQ(c_->getRefCount(), 2);
}

TEST_F(ListDataImplTest, AnElementMayBeReplacedByWhatItAloneKeepsAlive) {
    Log log;
    auto * const inner = new RecordedValue(&log, "inner");
    RefCountedPtr<RecordedValue> outer(new RecordedValue(&log, "outer"));
    outer->setFieldValue("inner", Value(inner));
    List const list = listOf("", {outer});
    outer = nullptr;
    list->setElement(0, Value(inner));
    EXPECT_EQ(log, (Log{"end outer", "gone outer"}));
    EXPECT_EQ(inner->getRefCount(), 1);
}

TEST_F(ListDataImplTest, RemovesAnElementAndMovesTheTail) {
    List const list = listOf("", {a_, b_, c_, a_});
    list->removeElement(1);
    EXPECT_EQ(elementsOf(*list), pointers({a_, c_, a_}));
    EXPECT_EQ(a_->getRefCount(), 3);
    EXPECT_EQ(b_->getRefCount(), 1);
    EXPECT_EQ(c_->getRefCount(), 2);
    list->removeElement(2);
    list->removeElement(0);
    EXPECT_EQ(elementsOf(*list), pointers({c_}));
    EXPECT_EQ(a_->getRefCount(), 1);
}

TEST_F(ListDataImplTest, InsertsBeforeAPlace) {
    List const list = listOf("", {a_});
    list->insertElementAt(1, c_);
    list->insertElementAt(1, b_);
    list->insertElementAt(0, c_);
    EXPECT_EQ(elementsOf(*list), pointers({c_, a_, b_, c_}));
    EXPECT_EQ(c_->getRefCount(), 3);
    List const empty = listOf("", {});
    empty->insertElementAt(0, a_);
    EXPECT_EQ(elementsOf(*empty), pointers({a_}));
}

TEST_F(ListDataImplTest, RandomOperationsFollowAPlainList) {
    std::mt19937 random(4711);
    Value const values[] = {a_, b_, c_, null_};
    List const list = listOf("", {});
    std::vector<FieldValue *> model;
    for (int step = 0; step < 5000; ++step) {
        Value const & value = values[random() % 4];
        auto const place = static_cast<unsigned int>(random() % (model.size() + 1));
        switch (random() % 6) {
            case 0:
                list->addElement(value);
                model.push_back(value.get());
                break;
            case 1:
            case 2:
                list->insertElementAt(place, value);
                model.insert(model.begin() + place, value.get());
                break;
            case 3:
                if (place < model.size()) {
                    list->setElement(place, value);
                    model[place] = value.get();
                }
                break;
            default:
                if (place < model.size()) {
                    list->removeElement(place);
                    model.erase(model.begin() + place);
                }
        }
        ASSERT_EQ(elementsOf(*list), model);
        for (Value const * each : {&a_, &b_, &c_}) {
            ASSERT_EQ((*each)->getRefCount(),
                      2 + std::count(model.begin(), model.end(), each->get()));
        }
    }
}

TEST_F(ListDataImplTest, RemovingEndsWhatIsHeldNowhereElse) {
    Log log;
    Value const shared(new RecordedValue(&log, "shared"));
    List const list = listOf("", {shared});
    List const other = listOf("", {shared});
    list->addElement(new RecordedValue(&log, "alone"));
    list->removeElement(0);
    EXPECT_EQ(log, Log{});
    list->removeElement(0);
    EXPECT_EQ(log, (Log{"end alone", "gone alone"}));
}

TEST_F(ListDataImplTest, ReleasesItsElementsInTheirOrder) {
    Log log;
    {
        List const list = listOf("", {});
        for (char const * name : {"1", "2", "3"}) {
            list->addElement(new RecordedValue(&log, name));
            list->addElement(null_);
        }
    }
    EXPECT_EQ(log, (Log{"end 1", "gone 1", "end 2", "gone 2", "end 3", "gone 3"}));
}

TEST_F(ListDataImplTest, ACopySharesTheElements) {
    List const source = listOf("Quote", {a_, null_, b_});
    List const second(source);
    auto * const object = new ListDataImpl(*source);
    EXPECT_EQ(object->getRefCount(), 0);
    List const copy(object);
    EXPECT_EQ(elementsOf(*copy), pointers({a_, null_, b_}));
    EXPECT_EQ(copy->getElementTypeName(), "Quote");
    EXPECT_EQ(a_->getRefCount(), 3);
    copy->removeAllElements();
    EXPECT_EQ(source->getCount(), 3u);

    auto * const converted = new ListDataImpl(static_cast<ListData const &>(*source));
    EXPECT_EQ(converted->getRefCount(), 0);
    List const conversion(converted);
    EXPECT_EQ(elementsOf(*conversion), pointers({a_, null_, b_}));
    EXPECT_EQ(conversion->getElementTypeName(), "Quote");
}

TEST_F(ListDataImplTest, IsBuiltFromAnyList) {
    RefCountedPtr<test::ListDataDouble> const source(new test::ListDataDouble);
    source->elements = {a_, b_};
    source->name = "Trade";
    List const copy(new ListDataImpl(*source));
    EXPECT_EQ(elementsOf(*copy), pointers({a_, b_}));
    EXPECT_EQ(copy->getElementTypeName(), "Trade");
}

TEST_F(ListDataImplTest, AssignmentReplaces) {
    List const source = listOf("Quote", {a_, b_});
    List const second(source);
    List const target = listOf("Trade", {c_, c_, c_});
    ListDataImpl & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(elementsOf(*target), pointers({a_, b_}));
    EXPECT_EQ(target->getElementTypeName(), "Quote");
    EXPECT_EQ(target->getRefCount(), 1);
    EXPECT_EQ(c_->getRefCount(), 1);
    EXPECT_EQ(a_->getRefCount(), 3);
    ListDataImpl & alias = *target;
    *target = alias;
    EXPECT_EQ(elementsOf(*target), pointers({a_, b_}));
}

TEST_F(ListDataImplTest, DeliberateAssignmentThroughTheInterfaceAppends) {
    List const source = listOf("Quote", {a_, null_});
    List const second(source);
    List const target = listOf("Trade", {c_});
    ListDataImpl & result = *target = static_cast<ListData const &>(*source);
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(elementsOf(*target), pointers({c_, a_, null_}));
    EXPECT_EQ(target->getElementTypeName(), "Quote");
    EXPECT_EQ(target->getRefCount(), 1);
    ListData const & alias = *target;
    *target = alias;
    EXPECT_EQ(target->getCount(), 3u);
}

TEST_F(ListDataImplTest, TakesTheElementsOfItsOwnElement) {
    List const inner = listOf("Quote", {a_, b_});
    ListDataImpl const & source = *inner;
    List const outer = listOf("Trade", {inner});
    List * const onlyOwner = const_cast<List *>(&inner);
    *onlyOwner = nullptr;
    ASSERT_EQ(source.getRefCount(), 1);
    *outer = source;
    EXPECT_EQ(elementsOf(*outer), pointers({a_, b_}));
    EXPECT_EQ(outer->getElementTypeName(), "Quote");
    EXPECT_EQ(a_->getRefCount(), 2);
}

// ---- The limit -------------------------------------------------------------------------------

TEST_F(ListDataImplTest, RefusesMorePlacesThanTheLimit) {
    for (unsigned int const places : {0x40000000u, 0x40000001u, 0x80000000u, 0xffffffffu}) {
        SCOPED_TRACE(places);
        expectTooLong([&] { List(new ListDataImpl(places, "Quote")); });
        RefCountedPtr<test::ListDataDouble> const huge(new test::ListDataDouble);
        huge->count = places;
        expectTooLong([&] { List(new ListDataImpl(*huge)); });
        List const target = listOf("Quote", {a_});
        expectTooLong([&] { *target = *huge; });
        EXPECT_EQ(target->getCount(), 1u);
        EXPECT_EQ(huge->fetched, 0);
    }
    RefCountedPtr<test::ListDataDouble> const full(new test::ListDataDouble);
    full->count = 0x3fffffff;
    List const target = listOf("Quote", {a_});
    expectTooLong([&] { *target = *full; });
}

// ---- The order of the virtual operations -----------------------------------------------------

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(16, {{"getElementTypeName", slotOf(&Class::getElementTypeName)},
                                  {"setElementTypeName", slotOf(&Class::setElementTypeName)},
                                  {"getCount", slotOf(&Class::getCount)},
                                  {"getElement", slotOf(&Class::getElement)},
                                  {"setElement", slotOf(&Class::setElement)},
                                  {"removeElement", slotOf(&Class::removeElement)},
                                  {"removeAllElements", slotOf(&Class::removeAllElements)},
                                  {"addElement", slotOf(&Class::addElement)},
                                  {"insertElementAt", slotOf(&Class::insertElementAt)}});
}

TEST(ListDataOrder, StandsBehindThatOfFieldValue) {
    expectOrder<ListData>();
    expectOrder<ListDataImpl>();
}

}  // namespace
}  // namespace tvk
