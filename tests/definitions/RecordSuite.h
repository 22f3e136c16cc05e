#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "tests/definitions/Definitions.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/PrintCString.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/RefCountedPtr.h"

/// What RecordTypeDefImpl and MessageTypeDefImpl have in common.
namespace tvk::test {

template <class Record>
class RecordSuite : public testing::Test {
protected:
    using Field = RefCountedPtr<FieldDefImpl>;

    Field field(CString const & name) const {
        return new FieldDefImpl(record_.get(), name, nullptr);
    }

    std::vector<CString> names() const {
        std::vector<CString> result;
        for (FieldDef const * each : record_->getFieldDefList()) {
            result.push_back(each->getName());
        }
        return result;
    }

    /// What adding throws. No error if it throws nothing.
    ErrorInfo errorOfAdding(FieldDef const * field) const {
        try {
            record_->addFieldDef(field);
        } catch (ErrorInfo const & error) {
            return error;
        }
        return {};
    }

    Log log_;
    RefCountedPtr<Record> const record_ = new Record("Rec", "", "");
};

TYPED_TEST_SUITE_P(RecordSuite);

TYPED_TEST_P(RecordSuite, StartsEmpty) {
    RefCountedPtr<TypeParam> const record = new TypeParam;
    EXPECT_EQ(record->getName(), "");
    EXPECT_EQ(record->getNameJa(), "");
    EXPECT_EQ(record->getDescription(), "");
    EXPECT_EQ(record->getKind(), "");
    EXPECT_EQ(record->getFieldCount(), 0u);
    EXPECT_TRUE(record->getFieldDefList().empty());
    EXPECT_EQ(record->getFieldDef(""), nullptr);
    EXPECT_EQ(record->getRefCount(), 1);
}

TYPED_TEST_P(RecordSuite, TakesThreeTexts) {
    RefCountedPtr<TypeParam> const record =
        new TypeParam("name", "\x96\xBC\x91\x4F", "description");
    EXPECT_EQ(record->getName(), "name");
    EXPECT_EQ(record->getNameJa(), "\x96\xBC\x91\x4F");
    EXPECT_EQ(record->getDescription(), "description");
    EXPECT_EQ(record->getKind(), "");
    EXPECT_EQ(record->getFieldCount(), 0u);
}

TYPED_TEST_P(RecordSuite, ReadsNullTextsAsEmpty) {
    RefCountedPtr<TypeParam> const record = new TypeParam(nullptr, nullptr, nullptr);
    EXPECT_EQ(record->getName(), "");
    EXPECT_EQ(record->getNameJa(), "");
    EXPECT_EQ(record->getDescription(), "");
}

TYPED_TEST_P(RecordSuite, IsARecordTypeAlone) {
    EXPECT_FALSE(this->record_->isSimpleType());
    EXPECT_TRUE(this->record_->isRecordType());
    EXPECT_FALSE(this->record_->isListType());
}

TYPED_TEST_P(RecordSuite, StoresWhatItIsSetTo) {
    TypeParam & record = *this->record_;
    record.setName(oddText());
    record.setNameJa(oddText() + "ja");
    record.setDescription(oddText() + "description");
    record.setKind(oddText() + "kind");
    EXPECT_EQ(record.getName(), oddText());
    EXPECT_EQ(record.getNameJa(), oddText() + "ja");
    EXPECT_EQ(record.getDescription(), oddText() + "description");
    EXPECT_EQ(record.getKind(), oddText() + "kind");
}

TYPED_TEST_P(RecordSuite, ListsFieldsInTheOrderOfAddingAndFindsThemByName) {
    TypeParam & record = *this->record_;
    auto const b = this->field("b");
    auto const a = this->field("a");
    record.addFieldDef(b.get());
    record.addFieldDef(a.get());
    EXPECT_EQ(record.getFieldDefList(), (std::vector<FieldDef const *>{b.get(), a.get()}));
    EXPECT_EQ(record.getFieldCount(), 2u);
    EXPECT_EQ(record.getFieldDef("a"), a);
    EXPECT_EQ(record.getFieldDef("b"), b);
    EXPECT_EQ(record.getFieldDef("c"), nullptr);
}

TYPED_TEST_P(RecordSuite, TellsNamesApartByEveryByte) {
    TypeParam & record = *this->record_;
    std::vector<CString> const names = {"a",       "A",   "", CString("a\0", 2), CString("a\0b", 3),
                                        oddText(), "\xFF"};
    for (CString const & name : names) {
        record.addFieldDef(this->field(name).get());
    }
    EXPECT_EQ(this->names(), names);
    for (CString const & name : names) {
        ASSERT_NE(record.getFieldDef(name), nullptr);
        EXPECT_EQ(record.getFieldDef(name)->getName(), name);
    }
    EXPECT_EQ(record.getFieldDef("B"), nullptr);
    EXPECT_EQ(record.getFieldDef(CString("a\0\x8A", 3)), nullptr);
}

TYPED_TEST_P(RecordSuite, HoldsOneCountOnEachField) {
    using RecordedField = Recorded<FieldDouble>;
    auto * const field = new RecordedField(&this->log_, "field", "a");
    this->record_->addFieldDef(field);
    EXPECT_EQ(field->getRefCount(), 1);
    RefCountedPtr<TypeParam> other = new TypeParam("Other", "", "");
    other->addFieldDef(field);
    EXPECT_EQ(field->getRefCount(), 2);
    other = nullptr;
    EXPECT_EQ(field->getRefCount(), 1);
    EXPECT_EQ(this->log_, Log{});
}

TYPED_TEST_P(RecordSuite, ReleasesItsFieldsAtItsEnd) {
    using RecordedField = Recorded<FieldDouble>;
    RefCountedPtr<TypeParam> record = new TypeParam;
    record->addFieldDef(new RecordedField(&this->log_, "b", "b"));
    record->addFieldDef(new RecordedField(&this->log_, "a", "a"));
    record = nullptr;
    std::sort(this->log_.begin(), this->log_.end());
    EXPECT_EQ(this->log_, (Log{"end a", "end b", "gone a", "gone b"}));
}

TYPED_TEST_P(RecordSuite, ThrowsAnErrorForADuplicateName) {
    this->record_->addFieldDef(this->field("a").get());
    ErrorInfo const error = this->errorOfAdding(this->field("a").get());
    EXPECT_EQ(error.getComponentCode(), 0);
    EXPECT_EQ(error.getDomain(), KestrinConstants::ErrorDomain_Kestrin);
    EXPECT_EQ(error.getErrorCode(), 16);
    EXPECT_EQ(error.getErrorMessage(), "duplicated field definition: Rec.a");
    EXPECT_EQ(error.getCause(), nullptr);
    EXPECT_EQ(error.getAllUserInfoKeys(), std::vector<CString>{});
}

TYPED_TEST_P(RecordSuite, NamesTheRefusedFieldInTheError) {
    struct Row {
        char const * what;
        FieldDef * field;
        char const * qualifiedName;
    };
    RefCountedPtr<TypeParam> const elsewhere = new TypeParam("Else", "", "");
    Row const rows[] = {
        {"of no record", new FieldDefImpl("a", "", ""), "a"},
        {"of another record", new FieldDefImpl(elsewhere.get(), "a", nullptr), "Else.a"},
        {"of another class", new FieldDouble("a"), "the double's a"},
    };
    this->record_->addFieldDef(this->field("a").get());
    for (Row const & row : rows) {
        SCOPED_TRACE(row.what);
        RefCountedPtr<FieldDef> const field = row.field;
        EXPECT_EQ(this->errorOfAdding(field.get()).getErrorMessage(),
                  CString("duplicated field definition: ") + row.qualifiedName);
    }
}

TYPED_TEST_P(RecordSuite, NamesTheRefusedFieldWhateverItsBytes) {
    char const * const names[] = {"%s%n%d", "\x95\x5C", ""};
    for (CString const name : names) {
        this->record_->addFieldDef(this->field(name).get());
        EXPECT_EQ(this->errorOfAdding(this->field(name).get()).getErrorMessage(),
                  "duplicated field definition: Rec." + name);
    }
    this->record_->addFieldDef(this->field(oddText()).get());
    EXPECT_EQ(this->errorOfAdding(this->field(oddText()).get()).getErrorMessage(),
              "duplicated field definition: Rec.a");
}

TYPED_TEST_P(RecordSuite, StaysAsItWasWhenANameIsTaken) {
    TypeParam & record = *this->record_;
    auto const first = this->field("a");
    auto const second = this->field("a");
    record.addFieldDef(first.get());
    EXPECT_TRUE(this->errorOfAdding(second.get()).hasError());
    EXPECT_TRUE(this->errorOfAdding(first.get()).hasError());
    EXPECT_EQ(record.getFieldCount(), 1u);
    EXPECT_EQ(record.getFieldDefList(), std::vector<FieldDef const *>{first.get()});
    EXPECT_EQ(record.getFieldDef("a"), first);
    EXPECT_EQ(first->getRefCount(), 2);
    EXPECT_EQ(second->getRefCount(), 1);
}

TYPED_TEST_P(RecordSuite, StaysAsItWasWhenMemoryIsOut) {
    if (!AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot fail here";
    }
    TypeParam & record = *this->record_;
    auto * const field = new Recorded<FieldDouble>(&this->log_, "field", "a");
    int failures = 0;
    for (bool added = false; !added;) {
        AllocationFailure failure(failures);
        try {
            record.addFieldDef(field);
            added = true;
        } catch (std::bad_alloc const &) {
            failure.end();
            ++failures;
            EXPECT_EQ(record.getFieldCount(), 0u);
            EXPECT_EQ(record.getFieldDef("a"), nullptr);
            EXPECT_EQ(field->getRefCount(), 0);
        }
    }
    EXPECT_EQ(failures, 2);
    EXPECT_EQ(this->log_, Log{});
    EXPECT_EQ(record.getFieldDefList(), std::vector<FieldDef const *>{field});
    EXPECT_EQ(record.getFieldDef("a"), field);
    EXPECT_EQ(field->getRefCount(), 1);
}

TYPED_TEST_P(RecordSuite, DeliberateKeepsAFieldUnderTheNameOfItsAdding) {
    TypeParam & record = *this->record_;
    auto const renamed = this->field("old");
    record.addFieldDef(renamed.get());
    renamed->setName("new");
    EXPECT_EQ(record.getFieldDef("old"), renamed);
    EXPECT_EQ(record.getFieldDef("new"), nullptr);
    auto const other = this->field("new");
    record.addFieldDef(other.get());
    EXPECT_EQ(record.getFieldDef("new"), other);
    EXPECT_EQ(this->names(), (std::vector<CString>{"new", "new"}));
    EXPECT_EQ(this->errorOfAdding(this->field("old").get()).getErrorMessage(),
              "duplicated field definition: Rec.old");
}

TYPED_TEST_P(RecordSuite, AgreesWithAPlainModel) {
    TypeParam & record = *this->record_;
    std::vector<FieldDef const *> list;
    std::vector<std::string> names;
    std::mt19937 random(31);
    for (int i = 0; i < 2000; ++i) {
        std::string name(random() % 4, 'x');
        for (char & letter : name) {
            letter = "\0aA\xFF"[random() % 4];
        }
        CString const text(name.data(), static_cast<int>(name.size()));
        auto const found = std::find(names.begin(), names.end(), name);
        auto const place = static_cast<std::size_t>(found - names.begin());
        EXPECT_EQ(record.getFieldDef(text), found == names.end() ? nullptr : list[place]);

        auto const field = this->field(text);
        EXPECT_EQ(this->errorOfAdding(field.get()).hasError(), found != names.end());
        if (found == names.end()) {
            names.push_back(name);
            list.push_back(field.get());
        }
        ASSERT_EQ(record.getFieldDefList(), list);
        ASSERT_EQ(record.getFieldCount(), list.size());
    }
    EXPECT_EQ(list.size(), 1u + 4 + 16 + 64);
}

REGISTER_TYPED_TEST_SUITE_P(RecordSuite, StartsEmpty, TakesThreeTexts, ReadsNullTextsAsEmpty,
                            IsARecordTypeAlone, StoresWhatItIsSetTo,
                            ListsFieldsInTheOrderOfAddingAndFindsThemByName,
                            TellsNamesApartByEveryByte, HoldsOneCountOnEachField,
                            ReleasesItsFieldsAtItsEnd, ThrowsAnErrorForADuplicateName,
                            NamesTheRefusedFieldInTheError, NamesTheRefusedFieldWhateverItsBytes,
                            StaysAsItWasWhenANameIsTaken, StaysAsItWasWhenMemoryIsOut,
                            DeliberateKeepsAFieldUnderTheNameOfItsAdding, AgreesWithAPlainModel);

}  // namespace tvk::test
