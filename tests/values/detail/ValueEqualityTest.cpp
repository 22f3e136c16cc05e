#include "tvk/values/detail/ValueEquality.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "tests/support/DeepValues.h"
#include "tests/support/ListDataDouble.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/SmallStack.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/RawDataImpl.h"
#include "tvk/values/StringData.h"

namespace tvk::detail {
namespace {

using Value = RefCountedPtr<FieldValue>;

// ---- The rules, as plain recursion over the interfaces ---------------------------------------

bool modelEqual(FieldValue const & left, FieldValue const & right);

bool modelReferencesEqual(Value const & left, Value const & right) {
    if (left.get() == right.get()) {
        return true;
    }
    if (left.isNull() || right.isNull()) {
        return false;
    }
    return modelEqual(*left, *right);
}

double bitsOf(NumberData const & number) {
    return number.isInteger() ? std::bit_cast<double>(number.longlongValue())
                              : number.doubleValue();
}

bool modelNumbersEqual(NumberData const & left, NumberData const & right) {
    return left.isInteger() ? right.isInteger() && left.longlongValue() == right.longlongValue()
                            : left.doubleValue() == bitsOf(right);
}

bool modelListsEqual(ListData const & left, ListData const & right) {
    if (left.getCount() != right.getCount()) {
        return false;
    }
    for (unsigned int i = 0; i < left.getCount(); ++i) {
        if (!modelReferencesEqual(left.getElement(i), right.getElement(i))) {
            return false;
        }
    }
    return true;
}

bool modelRecordsEqual(RecordData const & left, RecordData const & right) {
    if (left.getFieldCount() != right.getFieldCount()) {
        return false;
    }
    for (CString const & name : left.getFieldNames()) {
        if (!right.hasField(name) ||
            !modelReferencesEqual(left.getFieldValue(name), right.getFieldValue(name))) {
            return false;
        }
    }
    return true;
}

bool modelEqual(FieldValue const & left, FieldValue const & right) {
    if (left.getFieldType() != right.getFieldType()) {
        return false;
    }
    switch (left.getFieldType()) {
        case FLDTYPE_STRING:
            return left.asString().Compare(right.asString()) == 0;
        case FLDTYPE_NUMBER:
            return modelNumbersEqual(dynamic_cast<NumberData const &>(left),
                                     dynamic_cast<NumberData const &>(right));
        case FLDTYPE_LIST:
            return modelListsEqual(left.asList(), right.asList());
        case FLDTYPE_RECORD:
            return modelRecordsEqual(left.asRecord(), right.asRecord());
        case FLDTYPE_RAW: {
            RawData const & leftRaw = left.asRawData();
            RawData const & rightRaw = right.asRawData();
            return leftRaw.getSize() == rightRaw.getSize() &&
                   (leftRaw.getSize() == 0 ||
                    std::memcmp(leftRaw.getBuffer(), rightRaw.getBuffer(), leftRaw.getSize()) == 0);
        }
    }
    return false;
}

// ---- Random trees ----------------------------------------------------------------------------

/// Trees of a small alphabet, so that equal ones are frequent.
class Trees {
public:
    explicit Trees(unsigned int seed) : random_(seed) {}

    Value value(int depth) {
        if (chance(12) && !made_.empty()) {
            return made_[random_() % made_.size()];
        }
        Value const fresh = make(depth);
        made_.push_back(fresh);
        return fresh;
    }

    /// The same tree anew, with a change here and there; some parts are shared.
    Value nearCopy(Value const & value, unsigned int rarity) {
        if (value.isNull() || chance(rarity * 3)) {
            return chance(rarity) ? make(0) : value;
        }
        if (chance(rarity)) {
            return make(1);
        }
        switch (value->getFieldType()) {
            case FLDTYPE_LIST: {
                RefCountedPtr<ListData> const list(new ListDataImpl(chance(2) ? "A" : "B"));
                for (unsigned int i = 0; i < value->asList().getCount(); ++i) {
                    list->addElement(nearCopy(value->asList().getElement(i), rarity));
                }
                return list;
            }
            case FLDTYPE_RECORD: {
                RefCountedPtr<RecordData> const record = emptyRecord();
                for (CString const & name : value->asRecord().getFieldNames()) {
                    record->setFieldValue(name,
                                          nearCopy(value->asRecord().getFieldValue(name), rarity));
                }
                return record;
            }
            case FLDTYPE_NUMBER:
                return new NumberData(dynamic_cast<NumberData const &>(*value));
            case FLDTYPE_STRING:
                return new StringData(value->asString());
            case FLDTYPE_RAW:
                return raw(value->asRawData().getSize());
        }
        return value;
    }

private:
    bool chance(unsigned int oneIn) { return random_() % oneIn == 0; }

    RefCountedPtr<RecordData> emptyRecord() {
        switch (random_() % 4) {
            case 0:
                return RefCountedPtr<RecordData>(new MappedMessage);
            case 1:
                return RefCountedPtr<RecordData>(new MappedMessageHeader);
            case 2:
                return RefCountedPtr<RecordData>(new test::RecordDataDouble);
            default:
                return RefCountedPtr<RecordData>(new MappedRecordData);
        }
    }

    static Value raw(unsigned int size) {
        RefCountedPtr<RawData> const raw(new RawDataImpl);
        raw->setSize(size, 'r');
        return raw;
    }

    Value make(int depth) {
        switch (random_() % (depth > 0 ? 10 : 6)) {
            case 0:
                return nullptr;
            case 1:
                return new NumberData(static_cast<int>(random_() % 2));
            case 2: {
                double const pool[] = {0.0, -0.0, 1.0, std::numeric_limits<double>::quiet_NaN()};
                return new NumberData(pool[random_() % 4]);
            }
            case 3:
                return new NumberData(std::bit_cast<long long>(1.0));
            case 4:
                return new StringData(chance(2) ? "1" : "2");
            case 5:
                return raw(static_cast<unsigned int>(random_() % 3));
            case 6:
            case 7: {
                RefCountedPtr<ListData> const list(new ListDataImpl(""));
                for (auto i = random_() % 4; i > 0; --i) {
                    list->addElement(value(depth - 1));
                }
                return list;
            }
            default: {
                RefCountedPtr<RecordData> const record = emptyRecord();
                for (auto i = random_() % 4; i > 0; --i) {
                    char const name[] = {static_cast<char>('a' + random_() % 3), '\0'};
                    record->setFieldValue(name, value(depth - 1));
                }
                return record;
            }
        }
    }

    std::mt19937 random_;
    std::vector<Value> made_;
};

TEST(ValueEquality, FollowsPlainRecursionOnRandomTrees) {
    int equal = 0;
    int different = 0;
    for (unsigned int seed = 1; seed <= 6000; ++seed) {
        Trees trees(seed);
        Value const left = trees.value(4);
        Value const right =
            seed % 4 == 0 ? trees.value(3) : trees.nearCopy(left, seed % 2 == 0 ? 9 : 60);
        ASSERT_EQ(fieldReferencesEqual(left.get(), right.get()), modelReferencesEqual(left, right))
            << "seed " << seed;
        if (left.isNull() || right.isNull()) {
            continue;
        }
        bool const expected = modelEqual(*left, *right);
        (expected ? equal : different) += 1;
        ASSERT_EQ(fieldValuesEqual(*left, *right), expected) << "seed " << seed;
        ASSERT_EQ(fieldValuesEqual(*left, *left), modelEqual(*left, *left)) << "seed " << seed;
        if (left->getFieldType() == FLDTYPE_LIST && right->getFieldType() == FLDTYPE_LIST) {
            ASSERT_EQ(listDataEqual(left->asList(), right->asList()), expected);
        }
        if (left->getFieldType() == FLDTYPE_RECORD && right->getFieldType() == FLDTYPE_RECORD) {
            ASSERT_EQ(recordDataEqual(left->asRecord(), right->asRecord()), expected);
        }
    }
    EXPECT_GT(equal, 500);
    EXPECT_GT(different, 500);
}

// ---- Single rules ----------------------------------------------------------------------------

TEST(ValueEquality, TheSameReferenceIsEqualBeforeAnythingIsLookedAt) {
    Value const notANumber(new NumberData(std::numeric_limits<double>::quiet_NaN()));
    EXPECT_TRUE(fieldReferencesEqual(notANumber.get(), notANumber.get()));
    EXPECT_FALSE(fieldValuesEqual(*notANumber, *notANumber));
    EXPECT_TRUE(fieldValuesEqual(*test::listAround(notANumber), *test::listAround(notANumber)));
    EXPECT_TRUE(fieldValuesEqual(*test::recordAround(notANumber), *test::recordAround(notANumber)));
}

TEST(ValueEquality, NullsAreEqualToNullsAlone) {
    Value const zero(new NumberData(0));
    EXPECT_TRUE(fieldReferencesEqual(nullptr, nullptr));
    EXPECT_FALSE(fieldReferencesEqual(zero.get(), nullptr));
    EXPECT_FALSE(fieldReferencesEqual(nullptr, zero.get()));
    EXPECT_TRUE(fieldValuesEqual(*test::listAround(nullptr), *test::listAround(nullptr)));
    EXPECT_FALSE(fieldValuesEqual(*test::listAround(nullptr), *test::listAround(zero)));
    EXPECT_FALSE(fieldValuesEqual(*test::listAround(zero), *test::listAround(nullptr)));
}

TEST(ValueEquality, DeliberateNamesOfListsDoNotCount) {
    RefCountedPtr<ListData> const left(new ListDataImpl("A"));
    RefCountedPtr<ListData> const right(new ListDataImpl("B"));
    EXPECT_TRUE(listDataEqual(*left, *right));
}

TEST(ValueEquality, DeliberateNumbersGoByTheLeftOne) {
    Value const integer(new NumberData(0));
    Value const real(new NumberData(0.0));
    EXPECT_TRUE(fieldValuesEqual(*real, *integer));
    EXPECT_FALSE(fieldValuesEqual(*integer, *real));
    EXPECT_TRUE(fieldValuesEqual(*test::listAround(real), *test::listAround(integer)));
    EXPECT_FALSE(fieldValuesEqual(*test::recordAround(integer), *test::recordAround(real)));
    Value const one(new NumberData(1));
    Value const realOne(new NumberData(1.0));
    EXPECT_FALSE(fieldValuesEqual(*test::recordAround(one), *test::recordAround(realOne)));
}

TEST(ValueEquality, AnyOtherKindIsEqualToNothing) {
    class OtherKind : public test::ListDataDouble {
    public:
        FieldTypeEnum getFieldType() const override { return static_cast<FieldTypeEnum>(5); }
    };
    Value const left(new OtherKind);
    Value const right(new OtherKind);
    EXPECT_FALSE(fieldValuesEqual(*left, *right));
    EXPECT_FALSE(fieldValuesEqual(*left, *left));
    EXPECT_TRUE(fieldReferencesEqual(left.get(), left.get()));
}

TEST(ValueEquality, WorksOnTheInterfacesAlone) {
    RefCountedPtr<test::ListDataDouble> const list(new test::ListDataDouble);
    list->elements = {new NumberData(1), nullptr};
    RefCountedPtr<ListData> const own(new ListDataImpl(""));
    own->addElement(new NumberData(1));
    own->addElement(nullptr);
    EXPECT_TRUE(listDataEqual(*list, *own));
    EXPECT_TRUE(listDataEqual(*own, *list));

    RefCountedPtr<test::RecordDataDouble> const record(new test::RecordDataDouble);
    record->fields = {{"b", list}, {"a", new StringData("text")}};
    RefCountedPtr<RecordData> const ownRecord(new MappedRecordData);
    ownRecord->setFieldValue("a", "text");
    ownRecord->setFieldValue("b", own);
    EXPECT_TRUE(recordDataEqual(*record, *ownRecord));
    EXPECT_TRUE(recordDataEqual(*ownRecord, *record));
}

TEST(ValueEquality, LeavesTheCountsAsTheyWere) {
    Value const left = test::deepValue(test::DeepShape::MIXED, 20);
    Value const right = test::deepValue(test::DeepShape::MIXED, 20);
    EXPECT_TRUE(fieldValuesEqual(*left, *right));
    EXPECT_EQ(left->getRefCount(), 1);
    EXPECT_EQ(right->getRefCount(), 1);
}

// ---- A million levels ------------------------------------------------------------------------

/// The depth stands where comparison does not look.
bool isBodyAlone(test::DeepShape shape) {
    return shape == test::DeepShape::SUB_MESSAGES || shape == test::DeepShape::HEADERS;
}

class DeepEquality : public testing::TestWithParam<test::DeepShape> {};

TEST_P(DeepEquality, NeedsLittleStack) {
    // Sub-messages and headers do not take part, so no depth is reached through them.
    int const levels = isBodyAlone(GetParam()) ? 1000 : test::DEEP_LEVELS;
    Value const left = test::deepValue(GetParam(), levels);
    Value const right = test::deepValue(GetParam(), levels);
    test::runOnStack(256 << 10, [&] {
        EXPECT_TRUE(fieldValuesEqual(*left, *right));
        EXPECT_TRUE(fieldValuesEqual(*left, *left));
    });
}

TEST_P(DeepEquality, SeesADifferenceAtTheBottom) {
    test::DeepShape const shape = GetParam();
    Value const left = test::deepValue(shape, 5000);
    Value const right = test::deepValue(shape, 5001);
    EXPECT_EQ(fieldValuesEqual(*left, *right), isBodyAlone(shape));
}

INSTANTIATE_TEST_SUITE_P(Shapes, DeepEquality, testing::ValuesIn(test::DEEP_SHAPES),
                         [](auto const & shape) { return std::string(test::nameOf(shape.param)); });

}  // namespace
}  // namespace tvk::detail
