#include "tvk/values/MappedRecordData.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/Recorded.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using test::Log;
using test::Recorded;
using Record = RefCountedPtr<MappedRecordData>;
using Value = RefCountedPtr<FieldValue>;
using Names = std::vector<CString>;

static_assert(!std::is_destructible_v<MappedRecordData>);

Value number(int value) { return new NumberData(value); }

/// "name=text" of all fields, a null reading "null".
std::string contentOf(RecordData const & record) {
    std::string content;
    for (RecordData::Field const & field : record.getAllFields()) {
        EXPECT_EQ(field.record, &record);
        content += content.empty() ? "" : " ";
        content += field.name->GetString();
        content += "=";
        content += field.value == nullptr ? "null" : field.value->asString().GetString();
    }
    return content;
}

// ---- What the record, the message and the header have in common ------------------------------

template <class Class>
class MappedFieldsTest : public testing::Test {
protected:
    Log log_;  // outlives what writes into it
    RefCountedPtr<Class> const record_ = new Class;
    Value const one_ = number(1);
    Value const two_ = number(2);
};

using Classes = testing::Types<MappedRecordData, MappedMessage, MappedMessageHeader>;
TYPED_TEST_SUITE(MappedFieldsTest, Classes);

TYPED_TEST(MappedFieldsTest, StartsEmpty) {
    auto & record = *this->record_;
    EXPECT_EQ(record.getFieldCount(), 0u);
    EXPECT_EQ(record.getFieldNames(), Names{});
    EXPECT_TRUE(record.getAllFields().empty());
    EXPECT_EQ(record.getFieldType(), FLDTYPE_RECORD);
    EXPECT_EQ(record.toString(), "");
    EXPECT_EQ(&record.asRecord(), &record);
}

TYPED_TEST(MappedFieldsTest, EnumeratesInTheOrderOfTheNames) {
    auto & record = *this->record_;
    record.setFieldValue("b", this->one_);
    record.setFieldValue("a", this->two_);
    record.setFieldValue("C", this->one_);
    EXPECT_EQ(record.getFieldNames(), (Names{"C", "a", "b"}));
    EXPECT_EQ(contentOf(record), "C=1 a=2 b=1");
}

TYPED_TEST(MappedFieldsTest, NamesAreOrderedAsUnsignedBytesWithNul) {
    auto & record = *this->record_;
    Names const ordered = {"",
                           CString("\0", 1),
                           CString("\0a", 2),
                           "\x01",
                           "A",
                           "a",
                           CString("a\0", 2),
                           "aa",
                           "\x7f",
                           "\x80",
                           "\xff"};
    for (std::size_t i = ordered.size(); i-- > 0;) {
        record.setFieldValue(ordered[i], this->one_);
    }
    EXPECT_EQ(record.getFieldNames(), ordered);
    EXPECT_EQ(record.getFieldCount(), ordered.size());
}

TYPED_TEST(MappedFieldsTest, CountsItsValues) {
    auto & record = *this->record_;
    record.setFieldValue("x", this->one_);
    EXPECT_EQ(this->one_->getRefCount(), 2);
    record.setFieldValue("x", this->one_);
    EXPECT_EQ(this->one_->getRefCount(), 2);
    record.setFieldValue("y", this->one_);
    EXPECT_EQ(this->one_->getRefCount(), 3);
    record.setFieldValue("x", this->two_);
    EXPECT_EQ(this->one_->getRefCount(), 2);
    {
        Value const got = record.getFieldValue("y");
        EXPECT_EQ(this->one_->getRefCount(), 3);
    }
    auto const views = record.getAllFields();
    EXPECT_EQ(this->one_->getRefCount(), 2);
    auto const copiedViews = views;
    EXPECT_EQ(this->one_->getRefCount(), 2);
    record.removeField("y");
    EXPECT_EQ(this->one_->getRefCount(), 1);
    record.removeAllFields();
    EXPECT_EQ(this->two_->getRefCount(), 1);
}

TYPED_TEST(MappedFieldsTest, HoldsNulls) {
    auto & record = *this->record_;
    record.setFieldValue("x", Value());
    EXPECT_TRUE(record.hasField("x"));
    EXPECT_EQ(record.getFieldCount(), 1u);
    EXPECT_TRUE(record.getFieldValue("x").isNull());
    EXPECT_EQ(contentOf(record), "x=null");
    record.setFieldValue("x", this->one_);
    record.setFieldValue("x", Value());
    EXPECT_EQ(this->one_->getRefCount(), 1);
    EXPECT_EQ(contentOf(record), "x=null");
}

TYPED_TEST(MappedFieldsTest, AMissIsNullAndMakesNoField) {
    auto & record = *this->record_;
    EXPECT_TRUE(record.getFieldValue("missing").isNull());
    EXPECT_FALSE(record.hasField("missing"));
    EXPECT_EQ(record.getFieldCount(), 0u);
    record.removeField("missing");
    record.removeAllFields();
    EXPECT_EQ(record.getFieldCount(), 0u);
}

TYPED_TEST(MappedFieldsTest, ViewsPointIntoTheRecord) {
    auto & record = *this->record_;
    record.setFieldValue("x", this->one_);
    RecordData::Field const view = record.getAllFields().front();
    EXPECT_EQ(view.record, this->record_.get());
    EXPECT_EQ(*view.name, "x");
    EXPECT_EQ(view.value, this->one_.get());
    for (char const * name : {"a", "b", "y", "z"}) {
        record.setFieldValue(name, this->two_);
    }
    EXPECT_EQ(record.getAllFields()[2].name, view.name);
    EXPECT_EQ(*view.name, "x");
}

TYPED_TEST(MappedFieldsTest, ConveniencesAreReachedThroughTheClass) {
    auto & record = *this->record_;
    record.setFieldValue("x", "text");
    record.setFieldValue("y", "texture", 4);
    record.setFieldValue(CString("z"), CString("text"));
    EXPECT_TRUE(record.hasField("x"));
    EXPECT_EQ(record.getFieldValue("y")->asString(), "text");
    record.removeField("z");
    EXPECT_EQ(contentOf(record), "x=text y=text");
}

TYPED_TEST(MappedFieldsTest, AValueMayBeReplacedByWhatItAloneKeepsAlive) {
    auto & record = *this->record_;
    Log & log = this->log_;
    auto * const inner = new Recorded<MappedRecordData>(&log, "inner");
    {
        Record const outer(new Recorded<MappedRecordData>(&log, "outer"));
        outer->setFieldValue("inner", Value(inner));
        record.setFieldValue("x", outer);
    }
    record.setFieldValue("x", Value(inner));
    EXPECT_EQ(log, (Log{"end outer", "gone outer"}));
    EXPECT_EQ(inner->getRefCount(), 1);
}

TYPED_TEST(MappedFieldsTest, RandomOperationsFollowAPlainMap) {
    std::mt19937 random(1234);
    auto & record = *this->record_;
    std::map<std::string, FieldValue *> model;
    Value const values[] = {this->one_, this->two_, nullptr};
    for (int step = 0; step < 4000; ++step) {
        std::string const name(1 + random() % 2, static_cast<char>('a' + random() % 6));
        CString const key(name.c_str());
        Value const & value = values[random() % 3];
        switch (random() % 8) {
            case 0:
                record.removeField(key);
                model.erase(name);
                break;
            case 1:
                if (random() % 10 == 0) {
                    record.removeAllFields();
                    model.clear();
                }
                break;
            default:
                record.setFieldValue(key, value);
                model[name] = value.get();
        }
        ASSERT_EQ(record.getFieldCount(), model.size());
        ASSERT_EQ(record.hasField(key), model.count(name) != 0);
        ASSERT_EQ(record.getFieldValue(key), model.count(name) != 0 ? model[name] : nullptr);
        auto const views = record.getAllFields();
        auto const names = record.getFieldNames();
        std::size_t i = 0;
        int ones = 0;
        for (auto const & [modelName, modelValue] : model) {
            ASSERT_EQ(names[i], modelName.c_str());
            ASSERT_EQ(*views[i].name, modelName.c_str());
            ASSERT_EQ(views[i].value, modelValue);
            ones += modelValue == this->one_.get() ? 1 : 0;
            ++i;
        }
        ASSERT_EQ(this->one_->getRefCount(), 2 + ones);
    }
}

// ---- Copies and assignments of the record ----------------------------------------------------

Record recordOf(std::vector<std::pair<char const *, int>> const & fields) {
    Record const record(new MappedRecordData);
    for (auto const & [name, value] : fields) {
        record->setFieldValue(name, number(value));
    }
    return record;
}

TEST(MappedRecordData, ACopyIsANewMapOfTheSameValues) {
    Record const source = recordOf({{"x", 1}, {"y", 2}});
    source->setFieldValue("n", Value());
    Record const second(source);
    auto * const object = new MappedRecordData(*source);
    EXPECT_EQ(object->getRefCount(), 0);
    Record const copy(object);
    EXPECT_EQ(contentOf(*copy), "n=null x=1 y=2");
    EXPECT_EQ(copy->getFieldValue("x"), source->getFieldValue("x"));
    EXPECT_EQ(source->getAllFields()[1].value->getRefCount(), 2);
    copy->setFieldValue("x", number(3));
    copy->removeField("y");
    EXPECT_EQ(contentOf(*source), "n=null x=1 y=2");
}

TEST(MappedRecordData, ANestedRecordIsShared) {
    Record const inner = recordOf({{"x", 1}});
    Record const source(new MappedRecordData);
    source->setFieldValue("inner", inner);
    Record const copy(new MappedRecordData(*source));
    copy->getFieldValue("inner")->asRecord().setFieldValue("x", number(2));
    EXPECT_EQ(contentOf(*inner), "x=2");
}

TEST(MappedRecordData, IsBuiltFromAnyRecord) {
    RefCountedPtr<test::RecordDataDouble> const source(new test::RecordDataDouble);
    source->fields = {{"y", number(2)}, {"x", number(1)}, {"n", nullptr}};
    auto * const object = new MappedRecordData(*source);
    EXPECT_EQ(object->getRefCount(), 0);
    Record const copy(object);
    EXPECT_EQ(contentOf(*copy), "n=null x=1 y=2");
    EXPECT_EQ(source->calls,
              (std::vector<std::string>{"getFieldNames", "getFieldCount", "getFieldValue",
                                        "getFieldValue", "getFieldValue"}));
    EXPECT_EQ(copy->getFieldValue("y"), source->fields[0].second);
}

TEST(MappedRecordData, AssignmentReplaces) {
    Record const source = recordOf({{"x", 2}, {"y", 3}});
    Record const second(source);
    Record const target = recordOf({{"x", 1}, {"z", 9}});
    MappedRecordData & result = *target = *source;
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(contentOf(*target), "x=2 y=3");
    EXPECT_EQ(target->getRefCount(), 1);
    MappedRecordData & alias = *target;
    *target = alias;
    EXPECT_EQ(contentOf(*target), "x=2 y=3");
}

TEST(MappedRecordData, DeliberateAssignmentThroughTheInterfaceAdds) {
    Record const source = recordOf({{"x", 2}, {"y", 3}});
    Record const second(source);
    Record const target = recordOf({{"x", 1}, {"z", 9}});
    target->setFieldValue("y", Value());
    MappedRecordData & result = *target = static_cast<RecordData const &>(*source);
    EXPECT_EQ(&result, target.get());
    EXPECT_EQ(contentOf(*target), "x=1 y=null z=9");
    EXPECT_EQ(target->getRefCount(), 1);
    target->removeField("y");
    *target = static_cast<RecordData const &>(*source);
    EXPECT_EQ(contentOf(*target), "x=1 y=3 z=9");
    RecordData const & alias = *target;
    *target = alias;
    EXPECT_EQ(contentOf(*target), "x=1 y=3 z=9");
}

TEST(MappedRecordData, TakesTheFieldsOfItsOwnField) {
    Record inner = recordOf({{"x", 1}, {"y", 2}});
    MappedRecordData const & source = *inner;
    Record const outer(new MappedRecordData);
    outer->setFieldValue("inner", inner);
    inner = nullptr;
    *outer = source;
    EXPECT_EQ(contentOf(*outer), "x=1 y=2");
}

TEST(MappedRecordData, ReleasesItsValuesAtItsEnd) {
    Value const value = number(1);
    {
        Record const record(new MappedRecordData);
        record->setFieldValue("x", value);
        record->setFieldValue("y", value);
        EXPECT_EQ(value->getRefCount(), 3);
    }
    EXPECT_EQ(value->getRefCount(), 1);
}

TEST(MappedRecordData, AnEmptyOneAllocatesItselfAndItsMap) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    test::AllocationCounter const allocations;
    Record const record(new MappedRecordData);
    EXPECT_EQ(allocations.count(), 2);
    EXPECT_FALSE(record->hasField(CString()));
    EXPECT_TRUE(record->getAllFields().empty());
    EXPECT_EQ(allocations.count(), 2);
}

TEST(MappedRecordData, ViewsTakeOneAllocation) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    Record const record = recordOf({{"a", 1}, {"b", 2}, {"c", 3}});
    test::AllocationCounter const allocations;
    EXPECT_EQ(record->getAllFields().size(), 3u);
    EXPECT_EQ(allocations.count(), 1);
}

}  // namespace
}  // namespace tvk
