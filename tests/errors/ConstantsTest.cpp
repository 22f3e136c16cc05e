// The constants of the library as the program's own static initialisers and threads see them.

#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/errors/ConstantsTable.h"
#include "tests/support/AllocationCounter.h"
#include "tests/support/PrintCString.h"
#include "tvk/text/StringUtil.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {
namespace {

/// What the static initialisers of this file saw.
struct Seen {
    std::vector<CString> texts;
    std::vector<RefCountedPtr<FieldValue>> values;
    ErrorInfo error;
    CString yes = StringUtil::toString(true);
    CString no = StringUtil::toString(false);

    Seen() {
        for (test::TextConstant const & row : test::TEXT_CONSTANTS) {
            texts.push_back(*row.constant);
        }
        for (test::ValueConstant const & row : test::NUMBER_CONSTANTS) {
            values.push_back(*row.constant);
        }
    }
};

Seen const SEEN;

TEST(Constants, ServeTheStaticInitialisersOfModules) {
    for (std::size_t i = 0; i < std::size(test::TEXT_CONSTANTS); ++i) {
        EXPECT_EQ(SEEN.texts[i], test::TEXT_CONSTANTS[i].text) << test::TEXT_CONSTANTS[i].name;
    }
    for (std::size_t i = 0; i < std::size(test::NUMBER_CONSTANTS); ++i) {
        ASSERT_FALSE(SEEN.values[i].isNull()) << test::NUMBER_CONSTANTS[i].name;
        EXPECT_EQ(SEEN.values[i]->intValue(), test::NUMBER_CONSTANTS[i].number);
        EXPECT_EQ(SEEN.values[i]->getRefCount(), 0x7fffffff);
    }
    EXPECT_EQ(SEEN.error.getDomain(), "System");
    EXPECT_EQ(SEEN.yes, "true");
    EXPECT_EQ(SEEN.no, "false");
}

TEST(Constants, CopyingATextCostsNoAllocation) {
    if (!test::AllocationCounter::available()) {
        GTEST_SKIP() << "allocations are not counted here";
    }
    test::AllocationCounter const allocations;
    for (test::TextConstant const & row : test::TEXT_CONSTANTS) {
        CString const copy(*row.constant);
        EXPECT_EQ(copy.GetString(), row.constant->GetString());
    }
    EXPECT_EQ(allocations.count(), 0);
}

TEST(Constants, AreUsedFromManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 500; ++round) {
                RefCountedPtr<RecordData> const record(new MappedRecordData);
                for (test::TextConstant const & row : test::TEXT_CONSTANTS) {
                    record->setFieldValue(*row.constant, FieldValue::TRUE_VALUE);
                }
                for (test::ValueConstant const & row : test::NUMBER_CONSTANTS) {
                    record->setFieldValue(row.name, *row.constant);
                }
                ErrorInfo error(0, KestrinConstants::ErrorDomain_Kestrin,
                                KestrinConstants::ERR_SessionError, KestrinConstants::EMPTY_STRING,
                                nullptr);
                error.setUserInfo(ErrorInfo::OrvKey_GlobalErrorHint, FieldValue::TRUE_VALUE);
                ErrorInfo const copy(error);
            }
        });
    }
    for (std::thread & thread : threads) {
        thread.join();
    }
    for (test::ValueConstant const & row : test::NUMBER_CONSTANTS) {
        EXPECT_EQ((*row.constant)->getRefCount(), 0x7fffffff) << row.name;
    }
}

}  // namespace
}  // namespace tvk
