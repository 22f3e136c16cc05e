#include "tvk/errors/ErrorInfo.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/support/AllocationCounter.h"
#include "tests/support/AllocationFailure.h"
#include "tests/support/ExactBuffer.h"
#include "tests/support/PrintCString.h"
#include "tests/support/Recorded.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk {
namespace {

using test::Log;
using test::Recorded;
using Keys = std::vector<CString>;
using Value = RefCountedPtr<FieldValue>;

static_assert(!std::is_polymorphic_v<ErrorInfo>);
static_assert(!std::is_base_of_v<RefCounted, ErrorInfo>);
static_assert(std::is_copy_constructible_v<ErrorInfo>);
static_assert(std::is_convertible_v<int, ErrorInfo>);
static_assert(std::is_convertible_v<ErrorInfo const *, ErrorInfo>);

void expectDefaults(ErrorInfo const & error) {
    EXPECT_EQ(error.getComponentCode(), 0);
    EXPECT_EQ(error.getDomain(), "System");
    EXPECT_EQ(error.getErrorCode(), 0);
    EXPECT_EQ(error.getErrorMessage(), "");
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(error.getCause(), nullptr);
    EXPECT_EQ(error.getAllUserInfoKeys(), Keys{});
    EXPECT_EQ(error.toString(), "0@System()");
}

/// The codes of a record and its causes, the outermost first.
std::vector<int> codesOf(ErrorInfo const & error) {
    std::vector<int> codes;
    for (ErrorInfo const * each = &error; each != nullptr; each = each->getCause()) {
        codes.push_back(each->getErrorCode());
    }
    return codes;
}

ErrorInfo chain(std::initializer_list<int> codes) {
    ErrorInfo error;
    bool first = true;
    for (auto code = std::rbegin(codes); code != std::rend(codes); ++code) {
        ErrorInfo outer(0, "domain", *code, "message", first ? nullptr : &error);
        error = outer;
        first = false;
    }
    return error;
}

// ---- Building --------------------------------------------------------------------------------

TEST(ErrorInfo, StartsWithoutAnError) {
    expectDefaults(ErrorInfo());
    expectDefaults(ErrorInfo(static_cast<ErrorInfo const *>(nullptr)));
}

TEST(ErrorInfo, MayBeBuiltFromItsCause) {
    ErrorInfo const inner(3, "domain", 4, "text", nullptr);
    ErrorInfo const error(&inner);
    EXPECT_FALSE(error.hasError());
    EXPECT_EQ(error.getDomain(), "System");
    EXPECT_EQ(error.getComponentCode(), 0);
    ASSERT_NE(error.getCause(), nullptr);
    EXPECT_NE(error.getCause(), &inner);
    EXPECT_EQ(error.getCause()->toString(), "4@domain(text)");
    EXPECT_EQ(error.getCause()->getComponentCode(), 3);
}

TEST(ErrorInfo, MayBeBuiltFromAComponent) {
    ErrorInfo error(7);
    EXPECT_EQ(error.getComponentCode(), 7);
    error.setComponentCode(0);
    expectDefaults(error);
}

TEST(ErrorInfo, MayBeBuiltFromAllItsFields) {
    ErrorInfo const error(31, "posix", -2, "no such file", nullptr);
    EXPECT_EQ(error.getComponentCode(), 31);
    EXPECT_EQ(error.getDomain(), "posix");
    EXPECT_EQ(error.getErrorCode(), -2);
    EXPECT_EQ(error.getErrorMessage(), "no such file");
    EXPECT_EQ(error.getCause(), nullptr);
    EXPECT_EQ(error.getAllUserInfoKeys(), Keys{});
    ErrorInfo const outer(1, "http", 404, "not found", &error);
    EXPECT_EQ(codesOf(outer), (std::vector<int>{404, -2}));
}

TEST(ErrorInfo, KeepsWhatIsSet) {
    ErrorInfo error;
    error.setComponentCode(5);
    error.setDomain("curl");
    error.setErrorCode(28);
    error.setErrorMessage(CString("time-out"));
    EXPECT_EQ(error.getComponentCode(), 5);
    EXPECT_EQ(error.getDomain(), "curl");
    EXPECT_EQ(error.getErrorCode(), 28);
    EXPECT_EQ(error.getErrorMessage(), "time-out");
    error.setErrorMessage("plain");
    EXPECT_EQ(error.getErrorMessage(), "plain");
    error.setErrorMessage(static_cast<char const *>(nullptr));
    EXPECT_EQ(error.getErrorMessage(), "");
}

TEST(ErrorInfo, TakesAMessageOfAGivenLength) {
    test::ExactBuffer const bytes("message");
    ErrorInfo error;
    error.setErrorMessage(bytes.data(), bytes.length());
    EXPECT_EQ(error.getErrorMessage(), "message");
    error.setErrorMessage(bytes.data(), 4);
    EXPECT_EQ(error.getErrorMessage(), "mess");
    error.setErrorMessage("a\0b", 3);
    EXPECT_EQ(error.getErrorMessage(), CString("a\0b", 3));
    error.setErrorMessage(bytes.data(), 0);
    EXPECT_EQ(error.getErrorMessage(), "");
    error.setErrorMessage(nullptr, 0);
    EXPECT_EQ(error.getErrorMessage(), "");
}

TEST(ErrorInfo, TheCodeAloneTellsAnError) {
    ErrorInfo const cause(0, "domain", 5, "text", nullptr);
    ErrorInfo error(0, "domain", 0, "message", &cause);
    EXPECT_FALSE(error.hasError());
    error.setErrorCode(-1);
    EXPECT_TRUE(error.hasError());
    error.setErrorCode(1);
    EXPECT_TRUE(error.hasError());
    error.setErrorCode(0);
    EXPECT_FALSE(error.hasError());
}

TEST(ErrorInfo, AFreshOneAllocatesNothing) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const text = "text";
    test::AllocationCounter const allocations;
    ErrorInfo const fresh;
    ErrorInfo const component(5);
    ErrorInfo const full(1, text, 2, text, nullptr);
    ErrorInfo copy(full);
    copy = fresh;
    EXPECT_FALSE(copy.hasUserInfo(text));
    EXPECT_TRUE(copy.getUserInfo(text).isNull());
    copy.removeUserInfo(text);
    copy.clearAllUserInfo();
    EXPECT_TRUE(copy.getAllUserInfoKeys().empty());
    EXPECT_EQ(allocations.count(), 0);
}

// ---- Causes ----------------------------------------------------------------------------------

TEST(ErrorInfo, CopiesItsCause) {
    ErrorInfo error;
    {
        ErrorInfo cause(0, "domain", 1, "text", nullptr);
        error.setCause(&cause);
        EXPECT_NE(error.getCause(), &cause);
        cause.setErrorCode(2);
    }
    EXPECT_EQ(codesOf(error), (std::vector<int>{0, 1}));
    error.setCause(nullptr);
    EXPECT_EQ(error.getCause(), nullptr);
    error.setCause(nullptr);
    EXPECT_EQ(error.getCause(), nullptr);
}

TEST(ErrorInfo, ACauseMayBeTheRecordItself) {
    ErrorInfo error(0, "domain", 1, "text", nullptr);
    error.setCause(&error);
    EXPECT_EQ(codesOf(error), (std::vector<int>{1, 1}));
}

TEST(ErrorInfo, ACopyTakesTheWholeChain) {
    ErrorInfo copy;
    {
        ErrorInfo const source = chain({1, 2, 3});
        copy = source;
        ErrorInfo const constructed(source);
        EXPECT_EQ(codesOf(constructed), (std::vector<int>{1, 2, 3}));
        for (ErrorInfo const *left = &source, *right = &constructed; left != nullptr;
             left = left->getCause(), right = right->getCause()) {
            EXPECT_NE(left, right);
        }
    }
    EXPECT_EQ(codesOf(copy), (std::vector<int>{1, 2, 3}));
}

TEST(ErrorInfo, TheEndOfACopyLeavesTheSource) {
    Value const hint(new NumberData(1));
    ErrorInfo source = chain({1, 2, 3});
    source.setUserInfo("hint", hint.get());
    {
        ErrorInfo const copy(source);
        EXPECT_EQ(hint->getRefCount(), 3);
    }
    EXPECT_EQ(hint->getRefCount(), 2);
    EXPECT_EQ(codesOf(source), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(source.getUserInfo("hint").get(), hint.get());
}

TEST(ErrorInfo, EachLevelHasHintsOfItsOwn) {
    Value const hint(new NumberData(1));
    ErrorInfo inner(0, "domain", 1, "text", nullptr);
    inner.setUserInfo("hint", hint.get());
    ErrorInfo const outer(0, "domain", 2, "text", &inner);
    EXPECT_EQ(hint->getRefCount(), 3);
    inner.clearAllUserInfo();
    EXPECT_EQ(hint->getRefCount(), 2);
    EXPECT_FALSE(outer.hasUserInfo("hint"));
    EXPECT_TRUE(outer.getCause()->hasUserInfo("hint"));
}

/// A hint that writes into a log when it ends.
RefCounted * recordedHint(Log & log, char const * name) {
    return new Recorded<MappedRecordData>(&log, name);
}

/// A hint that looks, at its end, how often another object is counted.
struct Watch : MappedRecordData {
    Watch(RefCounted const * watched, int * seen) : watched_(watched), seen_(seen) {}
    ~Watch() override { *seen_ = watched_->getRefCount(); }
    RefCounted const * watched_;
    int * seen_;
};

TEST(ErrorInfo, DeliberateTheHeldCauseGoesFirst) {
    // The new cause is copied after the old one has gone: its hint is counted once by then.
    Value const newHint(new NumberData(1));
    ErrorInfo newCause;
    newCause.setUserInfo("hint", newHint.get());
    int seen = 0;
    ErrorInfo error;
    {
        ErrorInfo oldCause;
        oldCause.setUserInfo("hint", new Watch(newHint.get(), &seen));
        error.setCause(&oldCause);
    }
    EXPECT_EQ(seen, 0);
    error.setCause(&newCause);
    EXPECT_EQ(seen, 2);
    EXPECT_EQ(newHint->getRefCount(), 3);
}

TEST(ErrorInfo, EndsItsCauseThenItsHints) {
    Log log;
    {
        ErrorInfo error;
        {
            ErrorInfo innermost;
            innermost.setUserInfo("a", recordedHint(log, "innermost"));
            ErrorInfo inner(&innermost);
            inner.setUserInfo("a", recordedHint(log, "inner"));
            error.setCause(&inner);
        }
        error.setUserInfo("a", recordedHint(log, "outer"));
        EXPECT_EQ(log, Log{});
    }
    EXPECT_EQ(log, (Log{"end innermost", "gone innermost", "end inner", "gone inner", "end outer",
                        "gone outer"}));
}

TEST(ErrorInfo, ACauseThatCannotBeHadIsLeftOut) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    ErrorInfo const cause(0, "domain", 1, "text", nullptr);
    ErrorInfo error = chain({5, 6});
    test::AllocationFailure failure;
    error.setCause(&cause);
    failure.end();
    EXPECT_EQ(codesOf(error), std::vector<int>{5});
    error.setCause(&cause);
    EXPECT_EQ(codesOf(error), (std::vector<int>{5, 1}));
}

TEST(ErrorInfo, ACopyThatRunsOutOfMemoryLeavesNothingBehind) {
    if (!test::AllocationFailure::available()) {
        GTEST_SKIP() << "allocations cannot be made to fail here";
    }
    Value const hint(new NumberData(1));
    ErrorInfo source = chain({1, 2});
    source.setUserInfo("hint", hint.get());
    test::AllocationFailure failure(1);  // the cause can be had, the map cannot
    bool refused = false;
    try {
        ErrorInfo const copy(source);
    } catch (std::bad_alloc const &) {
        refused = true;
    }
    failure.end();
    EXPECT_TRUE(refused);
    EXPECT_EQ(hint->getRefCount(), 2);
}

// ---- Hints -----------------------------------------------------------------------------------

TEST(ErrorInfo, HoldsHints) {
    Value const hint(new StringData("1"));
    ErrorInfo error;
    error.setUserInfo("key", hint.get());
    EXPECT_TRUE(error.hasUserInfo("key"));
    EXPECT_FALSE(error.hasUserInfo("Key"));
    EXPECT_EQ(error.getUserInfo("key").get(), hint.get());
    EXPECT_TRUE(error.getUserInfo("Key").isNull());
    EXPECT_EQ(hint->getRefCount(), 2);
    error.setUserInfo("key", hint.get());
    EXPECT_EQ(hint->getRefCount(), 2);
    error.setUserInfo("other", hint.get());
    EXPECT_EQ(hint->getRefCount(), 3);
    error.removeUserInfo("key");
    EXPECT_EQ(hint->getRefCount(), 2);
    error.setUserInfo("other", nullptr);
    EXPECT_EQ(hint->getRefCount(), 1);
    EXPECT_TRUE(error.hasUserInfo("other"));
}

TEST(ErrorInfo, ANullHintIsThereAllTheSame) {
    ErrorInfo error;
    error.setUserInfo("key", nullptr);
    EXPECT_TRUE(error.hasUserInfo("key"));
    EXPECT_TRUE(error.getUserInfo("key").isNull());
    EXPECT_EQ(error.getAllUserInfoKeys(), Keys{"key"});
    Value const hint(new NumberData(1));
    error.setUserInfo("key", hint.get());
    EXPECT_EQ(error.getUserInfo("key").get(), hint.get());
}

TEST(ErrorInfo, AHintMayBeReplacedByWhatItAloneKeepsAlive) {
    Log log;
    ErrorInfo error;
    auto * const inner = new Recorded<MappedRecordData>(&log, "inner");
    {
        RefCountedPtr<RecordData> const outer(new Recorded<MappedRecordData>(&log, "outer"));
        outer->setFieldValue("inner", Value(inner));
        error.setUserInfo("key", outer.get());
    }
    error.setUserInfo("key", inner);
    EXPECT_EQ(log, (Log{"end outer", "gone outer"}));
    EXPECT_EQ(inner->getRefCount(), 1);
    error.clearAllUserInfo();
    EXPECT_EQ(log.size(), 4u);
}

TEST(ErrorInfo, RemovingWhatIsNotThereDoesNothing) {
    ErrorInfo error;
    error.removeUserInfo("key");
    error.clearAllUserInfo();
    EXPECT_EQ(error.getAllUserInfoKeys(), Keys{});
    error.setUserInfo("a", nullptr);
    error.removeUserInfo("key");
    EXPECT_EQ(error.getAllUserInfoKeys(), Keys{"a"});
}

TEST(ErrorInfo, ClearingKeepsTheMap) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const key = "key";
    ErrorInfo error;
    test::AllocationCounter const first;
    error.setUserInfo(key, nullptr);
    EXPECT_EQ(first.count(), 2);
    error.clearAllUserInfo();
    EXPECT_EQ(error.getAllUserInfoKeys(), Keys{});
    EXPECT_FALSE(error.hasUserInfo(key));
    test::AllocationCounter const second;
    error.setUserInfo(key, nullptr);
    EXPECT_EQ(second.count(), 1);
}

TEST(ErrorInfo, KeysComeInTheOrderOfTheirBytes) {
    Keys const ordered = {"", "A", CString("A\0", 2), "AA", "a", "\x80", "\xff"};
    ErrorInfo error;
    for (std::size_t i = ordered.size(); i-- > 0;) {
        error.setUserInfo(ordered[i], nullptr);
    }
    EXPECT_EQ(error.getAllUserInfoKeys(), ordered);
}

TEST(ErrorInfo, RandomHintsFollowAPlainMap) {
    std::mt19937 random(31);
    std::vector<Value> const values = {new NumberData(1), new NumberData(2), nullptr};
    ErrorInfo error;
    std::map<std::string, FieldValue *> model;
    for (int step = 0; step < 3000; ++step) {
        std::string const name(1, static_cast<char>('a' + random() % 6));
        FieldValue * const value = values[random() % 3].get();
        switch (random() % 10) {
            case 0:
                error.clearAllUserInfo();
                model.clear();
                break;
            case 1:
                error = ErrorInfo(error);
                break;
            case 2:
            case 3:
            case 4:
                error.removeUserInfo(name.c_str());
                model.erase(name);
                break;
            default:
                error.setUserInfo(name.c_str(), value);
                model[name] = value;
        }
        Keys keys;
        int ones = 0;
        for (auto const & [modelName, modelValue] : model) {
            keys.push_back(modelName.c_str());
            ASSERT_EQ(error.getUserInfo(modelName.c_str()).get(), modelValue);
            ones += modelValue == values[0].get() ? 1 : 0;
        }
        ASSERT_EQ(error.getAllUserInfoKeys(), keys);
        ASSERT_EQ(error.hasUserInfo(name.c_str()), model.count(name) != 0);
        ASSERT_EQ(values[0]->getRefCount(), 1 + ones);
    }
}

// ---- Copies and assignments ------------------------------------------------------------------

TEST(ErrorInfo, ACopySharesTheHintValues) {
    Value const hint(new NumberData(1));
    ErrorInfo source(3, "domain", 4, "text", nullptr);
    source.setUserInfo("hint", hint.get());
    source.setUserInfo("null", nullptr);
    ErrorInfo copy(source);
    EXPECT_EQ(copy.toString(), "4@domain(text)");
    EXPECT_EQ(copy.getComponentCode(), 3);
    EXPECT_EQ(copy.getAllUserInfoKeys(), (Keys{"hint", "null"}));
    EXPECT_EQ(copy.getUserInfo("hint").get(), hint.get());
    EXPECT_EQ(hint->getRefCount(), 3);
    copy.clearAllUserInfo();
    EXPECT_EQ(source.getAllUserInfoKeys(), (Keys{"hint", "null"}));
}

TEST(ErrorInfo, AssignmentReplacesEverything) {
    Value const oldHint(new NumberData(1));
    Value const newHint(new NumberData(2));
    ErrorInfo const sourceCause(0, "inner", 9, "", nullptr);
    ErrorInfo source(3, "domain", 4, "text", &sourceCause);
    source.setUserInfo("new", newHint.get());
    ErrorInfo target = chain({1, 2, 3});
    target.setUserInfo("old", oldHint.get());
    ErrorInfo & result = target = source;
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.toString(), "4@domain(text)");
    EXPECT_EQ(target.getComponentCode(), 3);
    EXPECT_EQ(codesOf(target), (std::vector<int>{4, 9}));
    EXPECT_EQ(target.getAllUserInfoKeys(), Keys{"new"});
    EXPECT_EQ(oldHint->getRefCount(), 1);
    EXPECT_EQ(newHint->getRefCount(), 3);
}

TEST(ErrorInfo, AssigningARecordWithoutHintsLeavesNoMap) {
    CString const key = "key";
    ErrorInfo target;
    target.setUserInfo(key, nullptr);
    target = ErrorInfo();
    expectDefaults(target);
    EXPECT_FALSE(target.hasUserInfo(key));
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    test::AllocationCounter const allocations;
    target.setUserInfo(key, nullptr);
    EXPECT_EQ(allocations.count(), 2);
}

TEST(ErrorInfo, AnEmptyMapIsCopiedAsOne) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    CString const key = "key";
    ErrorInfo source;
    source.setUserInfo(key, nullptr);
    source.clearAllUserInfo();
    ErrorInfo copy(source);
    test::AllocationCounter const allocations;
    copy.setUserInfo(key, nullptr);
    EXPECT_EQ(allocations.count(), 1);
}

TEST(ErrorInfo, OldHintsGoBeforeNewOnesCome) {
    Value const newHint(new NumberData(1));
    ErrorInfo source;
    source.setUserInfo("new", newHint.get());
    int seen = 0;
    ErrorInfo target;
    target.setUserInfo("old", new Watch(newHint.get(), &seen));
    target = source;
    EXPECT_EQ(seen, 2);
    EXPECT_EQ(newHint->getRefCount(), 3);
}

TEST(ErrorInfo, AssigningItselfChangesNothing) {
    Value const hint(new NumberData(1));
    ErrorInfo error = chain({1, 2, 3});
    error.setUserInfo("hint", hint.get());
    ErrorInfo const * const cause = error.getCause();
    ErrorInfo & alias = error;
    error = alias;
    EXPECT_EQ(error.getCause(), cause);
    EXPECT_EQ(codesOf(error), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(hint->getRefCount(), 2);
}

TEST(ErrorInfo, IsThrownAndCaughtByValue) {
    ErrorInfo const original = chain({1, 2});
    try {
        throw original;
    } catch (ErrorInfo const & caught) {
        EXPECT_EQ(codesOf(caught), (std::vector<int>{1, 2}));
    }
}

// ---- Text ------------------------------------------------------------------------------------

TEST(ErrorInfo, PrintsCodeDomainAndMessage) {
    EXPECT_EQ(ErrorInfo(7, "posix", -12, "100%s", nullptr).toString(), "-12@posix(100%s)");
    EXPECT_EQ(ErrorInfo(7, "", 0x7fffffff, "", nullptr).toString(), "2147483647@()");
}

TEST(ErrorInfo, PrintsAtMost1024Bytes) {
    for (int const length : {1000, 1020, 1021, 1022, 1023, 1024, 1025, 5000}) {
        SCOPED_TRACE(length);
        CString const message('m', length);
        std::string const whole = "1@d(" + std::string(static_cast<std::size_t>(length), 'm') + ")";
        EXPECT_EQ(ErrorInfo(0, "d", 1, message, nullptr).toString(), whole.substr(0, 1024).c_str());
    }
    CString const domain('d', 3000);
    EXPECT_EQ(ErrorInfo(0, domain, 1, "", nullptr).toString().GetLength(), 1024);
}

}  // namespace
}  // namespace tvk
