#include "tvk/values/RecordData.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/RecordDataDouble.h"
#include "tests/support/VirtualOrder.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedMessageHeader.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"

namespace tvk {
namespace {

using test::RecordDataDouble;
using test::slotOf;
using Value = RefCountedPtr<FieldValue>;

static_assert(std::is_trivially_copyable_v<RecordData::Field>);

class RecordDataTest : public testing::Test {
protected:
    /// The one field that a convenience has set.
    FieldValue & onlyField(char const * name) {
        EXPECT_EQ(record_->fields.size(), 1u);
        EXPECT_EQ(record_->fields.front().first, name);
        return *record_->fields.front().second;
    }

    RefCountedPtr<RecordDataDouble> const record_ = new RecordDataDouble;
    RecordData & interface_ = *record_;
    CString const name_ = "x";
};

TEST_F(RecordDataTest, ConveniencesCallTheOperations) {
    Value const value(new NumberData(1));
    interface_.setFieldValue("x", value);
    EXPECT_TRUE(interface_.hasField("x"));
    EXPECT_FALSE(interface_.hasField("y"));
    EXPECT_EQ(interface_.getFieldValue("x"), value);
    interface_.removeField("x");
    EXPECT_EQ(record_->calls, (std::vector<std::string>{"setFieldValue", "hasField", "hasField",
                                                        "getFieldValue", "removeField"}));
    EXPECT_EQ(value->getRefCount(), 1);
}

TEST_F(RecordDataTest, TextsBecomeStringValues) {
    test::ExactBuffer const bytes("text and more");
    CString const text = "text";
    struct Row {
        char const * name;
        std::function<void()> set;
    };
    Row const rows[] = {
        {"CString, CString", [&] { interface_.setFieldValue(name_, text); }},
        {"char const *, CString", [&] { interface_.setFieldValue("x", text); }},
        {"char const *, char const *", [&] { interface_.setFieldValue("x", "text"); }},
        {"CString, char const *", [&] { interface_.setFieldValue(name_, "text"); }},
        {"CString, bytes", [&] { interface_.setFieldValue(name_, bytes.data(), 4); }},
        {"char const *, bytes", [&] { interface_.setFieldValue("x", bytes.data(), 4); }},
    };
    for (Row const & row : rows) {
        SCOPED_TRACE(row.name);
        record_->fields.clear();
        record_->calls.clear();
        row.set();
        EXPECT_EQ(record_->calls, std::vector<std::string>{"setFieldValue"});
        FieldValue const & value = onlyField("x");
        EXPECT_EQ(value.getFieldType(), FLDTYPE_STRING);
        EXPECT_EQ(value.asString(), "text");
        EXPECT_EQ(value.getRefCount(), 1);
    }
}

TEST_F(RecordDataTest, TextsMayHoldNul) {
    interface_.setFieldValue("x", "a\0b", 3);
    EXPECT_EQ(onlyField("x").asString(), CString("a\0b", 3));
    interface_.setFieldValue(name_, "a\0b", 2);
    EXPECT_EQ(onlyField("x").asString(), CString("a\0", 2));
    interface_.setFieldValue(name_, "", 0);
    EXPECT_EQ(onlyField("x").asString(), "");
}

template <class Class>
void expectOrder() {
    test::expectVirtualOrder(
        16, {{"hasField", slotOf<bool(CString const &) const>(&Class::hasField)},
             {"getFieldCount", slotOf(&Class::getFieldCount)},
             {"getFieldNames", slotOf(&Class::getFieldNames)},
             {"getAllFields", slotOf(&Class::getAllFields)},
             {"getFieldValue", slotOf<Value(CString const &) const>(&Class::getFieldValue)},
             {"setFieldValue", slotOf<void(CString const &, Value const &)>(&Class::setFieldValue)},
             {"removeField", slotOf<void(CString const &)>(&Class::removeField)},
             {"removeAllFields", slotOf(&Class::removeAllFields)}});
}

TEST(RecordDataOrder, StandsBehindThatOfFieldValueInEveryRecord) {
    expectOrder<RecordData>();
    expectOrder<MappedRecordData>();
    expectOrder<KestrinMessageHeader>();
    expectOrder<MappedMessageHeader>();
    expectOrder<KestrinMessage>();
    expectOrder<MappedMessage>();
}

TEST(RecordDataOrder, ConveniencesAreNotVirtual) {
    EXPECT_EQ(slotOf<bool(char const *) const>(&RecordData::hasField), std::nullopt);
    EXPECT_EQ(slotOf<Value(char const *) const>(&RecordData::getFieldValue), std::nullopt);
    EXPECT_EQ(slotOf<void(char const *)>(&RecordData::removeField), std::nullopt);
    EXPECT_EQ((slotOf<void(CString const &, CString const &)>(&RecordData::setFieldValue)),
              std::nullopt);
}

}  // namespace
}  // namespace tvk
