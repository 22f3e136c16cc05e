#include "tvk/values/detail/FieldMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>

#include "tests/support/PrintCString.h"
#include "tests/support/ProbeValue.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/StringData.h"
#include "tvk/values/detail/ReadyMade.h"

// What a record does is told in the tests of its class; here stands that a record with a shape does
// the same.
namespace tvk::detail {
namespace {

using test::ProbeLog;
using test::ProbeValue;
using Value = RefCountedPtr<FieldValue>;
using Record = RefCountedPtr<MappedRecordData>;
using Content = std::vector<std::pair<CString, FieldValue const *>>;

ShapeReference shapeOf(std::vector<CString> const & arrival) {
    std::vector<CString const *> pointers;
    for (CString const & name : arrival) {
        pointers.push_back(&name);
    }
    return ShapeReference(new FieldShape(pointers));
}

/// Takes the values out of `arrival`.
std::vector<FieldValue *> counted(std::vector<Value> & arrival) {
    std::vector<FieldValue *> values;
    for (Value & value : arrival) {
        values.push_back(value.detach());
    }
    return values;
}

Record shapedRecord(ShapeReference shape, std::vector<Value> & arrival) {
    Value const record = ReadyMade::record(std::move(shape), counted(arrival).data());
    return static_cast<MappedRecordData *>(record.get());
}

Value text(char const * bytes) { return new StringData(bytes); }

Content contentOf(RecordData const & record) {
    Content content;
    for (RecordData::Field const & field : record.getAllFields()) {
        EXPECT_EQ(field.record, &record);
        content.emplace_back(*field.name, field.value);
    }
    return content;
}

class ShapedRecord : public testing::Test {
protected:
    ShapedRecord() {
        std::vector<Value> arrival = {two_, one_, nullptr};
        record_ = shapedRecord(shapeOf({"b", "a", "n"}), arrival);
        EXPECT_EQ(arrival, std::vector<Value>(3));
    }

    Value const one_ = text("1");
    Value const two_ = text("2");
    Value const three_ = text("3");
    Record record_;
};

TEST_F(ShapedRecord, HoldsTheValuesInTheOrderOfTheNames) {
    EXPECT_EQ(contentOf(*record_), (Content{{"a", one_.get()}, {"b", two_.get()}, {"n", nullptr}}));
    EXPECT_EQ(record_->getFieldNames(), (std::vector<CString>{"a", "b", "n"}));
    EXPECT_EQ(record_->getFieldCount(), 3u);
    EXPECT_EQ(one_->getRefCount(), 2);
}

TEST_F(ShapedRecord, FindsFields) {
    EXPECT_TRUE(record_->hasField("n"));
    EXPECT_FALSE(record_->hasField("c"));
    EXPECT_EQ(record_->getFieldValue("b"), two_);
    EXPECT_EQ(record_->getFieldValue("n"), nullptr);
    EXPECT_EQ(record_->getFieldValue("c"), nullptr);
}

TEST_F(ShapedRecord, TakesAnotherValueForAName) {
    record_->setFieldValue("a", three_);
    EXPECT_EQ(record_->getFieldValue("a"), three_);
    EXPECT_EQ(record_->getFieldCount(), 3u);
    EXPECT_EQ(one_->getRefCount(), 1);
}

TEST_F(ShapedRecord, TakesAnotherName) {
    record_->setFieldValue("aa", three_);
    EXPECT_EQ(
        contentOf(*record_),
        (Content{{"a", one_.get()}, {"aa", three_.get()}, {"b", two_.get()}, {"n", nullptr}}));
    EXPECT_EQ(one_->getRefCount(), 2);
}

TEST_F(ShapedRecord, LosesFields) {
    record_->removeField("a");
    record_->removeField("c");
    EXPECT_EQ(contentOf(*record_), (Content{{"b", two_.get()}, {"n", nullptr}}));
    EXPECT_EQ(one_->getRefCount(), 1);
    record_->removeAllFields();
    EXPECT_EQ(record_->getFieldCount(), 0u);
    EXPECT_EQ(two_->getRefCount(), 1);
    record_->setFieldValue("z", three_);
    EXPECT_EQ(contentOf(*record_), (Content{{"z", three_.get()}}));
}

TEST_F(ShapedRecord, KeepsTheNamesOfItsViewsWhileOtherFieldsComeAndGo) {
    std::vector<RecordData::Field> const views = record_->getAllFields();
    record_->setFieldValue("c", three_);
    record_->removeField("b");
    EXPECT_EQ(*views[0].name, "a");
    EXPECT_EQ(*views[2].name, "n");
}

TEST_F(ShapedRecord, IsCopiedAndAssigned) {
    Record const copy = new MappedRecordData(*record_);
    EXPECT_EQ(contentOf(*copy), contentOf(*record_));
    EXPECT_EQ(one_->getRefCount(), 3);
    copy->setFieldValue("a", three_);
    EXPECT_EQ(record_->getFieldValue("a"), one_);

    Record const other = new MappedRecordData;
    other->setFieldValue("z", three_);
    *other = *record_;
    EXPECT_EQ(contentOf(*other), contentOf(*record_));
    *record_ = *copy;
    EXPECT_EQ(record_->getFieldValue("a"), three_);
}

TEST_F(ShapedRecord, FillsInWhatIsMissing) {
    Record const source = new MappedRecordData;
    source->setFieldValue("a", three_);
    source->setFieldValue("c", three_);
    *record_ = static_cast<RecordData const &>(*source);
    EXPECT_EQ(contentOf(*record_),
              (Content{{"a", one_.get()}, {"b", two_.get()}, {"c", three_.get()}, {"n", nullptr}}));
}

TEST_F(ShapedRecord, OfAMessageIsItsBody) {
    std::vector<Value> arrival = {one_};
    RefCountedPtr<MappedMessage> const message = static_cast<MappedMessage *>(
        ReadyMade::message(shapeOf({"a"}), counted(arrival).data()).get());
    RefCountedPtr<MappedMessage> const copy = new MappedMessage(*message);
    EXPECT_EQ(contentOf(*copy), (Content{{"a", one_.get()}}));
    EXPECT_EQ(message->header().getFieldCount(), 0u);
}

TEST(FieldMapAdopt, LetsTheLastValueOfANameStand) {
    Value const first = text("1");
    Value const last = text("2");
    std::vector<Value> arrival = {first, text("x"), last};
    Record const record = shapedRecord(shapeOf({"b", "a", "b"}), arrival);
    EXPECT_EQ(record->getFieldCount(), 2u);
    EXPECT_EQ(record->getFieldValue("b"), last);
    EXPECT_EQ(first->getRefCount(), 1);
}

TEST(FieldMapEnd, ReleasesTheLastFieldFirst) {
    ProbeLog log;
    {
        std::vector<Value> arrival;
        for (char const * const name : {"b", "c", "a"}) {
            arrival.push_back(new ProbeValue(log, FLDTYPE_STRING, name));
        }
        Record const record = shapedRecord(shapeOf({"b", "c", "a"}), arrival);
        log.events.clear();
    }
    EXPECT_EQ(log.events, (std::vector<std::string>{"end c", "end b", "end a"}));
}

TEST(FieldMapEnd, IsFlatHoweverDeepShapedRecordsNest) {
    auto const shape = shapeOf({"a"});
    Value innermost = text("x");
    Value record = innermost;
    for (int depth = 0; depth < 1'000'000; ++depth) {
        FieldValue * const inner = record.detach();
        record = ReadyMade::record(shape, &inner);
    }
    record = nullptr;
    EXPECT_EQ(innermost->getRefCount(), 1);
}

TEST(FieldMap, AgreesWithAPlainMapWhateverIsDone) {
    std::mt19937 random(4711);
    auto const below = [&random](unsigned int limit) {
        return static_cast<unsigned int>(random() % limit);
    };
    auto const name = [&below] { return CString(static_cast<char>('a' + below(12)), 1); };
    for (int round = 0; round < 300; ++round) {
        std::map<CString, Value> model;
        std::vector<CString> names;
        std::vector<Value> arrival;
        for (unsigned int i = below(10); i > 0; --i) {
            names.push_back(name());
            arrival.push_back(below(8) == 0 ? nullptr : text("x"));
            model[names.back()] = arrival.back();
        }
        Record const record = shapedRecord(shapeOf(names), arrival);
        for (int step = 0; step < 12; ++step) {
            CString const key = name();
            switch (below(4)) {
                case 0:
                    record->removeField(key);
                    model.erase(key);
                    break;
                case 1:
                    model[key] = text("y");
                    record->setFieldValue(key, model[key]);
                    break;
                default:
                    EXPECT_EQ(record->hasField(key), model.contains(key));
                    EXPECT_EQ(record->getFieldValue(key),
                              model.contains(key) ? model[key] : Value());
            }
            Content wanted;
            for (auto const & [modelName, value] : model) {
                wanted.emplace_back(modelName, value.get());
            }
            ASSERT_EQ(contentOf(*record), wanted) << "round " << round << ", step " << step;
        }
    }
}

}  // namespace
}  // namespace tvk::detail
