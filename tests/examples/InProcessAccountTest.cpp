#include "examples/inprocess_agent/Account.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tvk/agent/KestrinContainer.h"
#include "tvk/errors/KestrinErrorManagerImpl.h"
#include "tvk/values/ListDataImpl.h"
#include "tvk/values/MappedRecordData.h"
#include "tvk/values/NumberData.h"
#include "tvk/values/StringData.h"

namespace tvk::test {

namespace {

using inprocess::Account;
using inprocess::fieldsOf;

class InProcessAccount : public testing::Test {
protected:
    void SetUp() override {
        KestrinContainer::instance()->setErrorManager(new KestrinErrorManagerImpl);
    }
    void TearDown() override { KestrinContainer::instance()->setErrorManager(nullptr); }

    std::ostringstream out_;
    Account account_{out_, [] { return 42; }};
};

}  // namespace

TEST_F(InProcessAccount, SaysALineBehindTheTime) {
    account_.say("a line");
    EXPECT_EQ(out_.str(), "    42  a line\n");
}

TEST_F(InProcessAccount, ShowsAnErrorOnceUntilItIsDismissed) {
    ErrorInfo const error(5, "d", 7, "text", nullptr);
    account_.dismissAlert();
    account_.report(error);
    account_.report(error);
    account_.dismissAlert();
    account_.dismissAlert();
    account_.report(error);
    EXPECT_EQ(out_.str(),
              "    42  ALERT 7@d(text)\n"
              "    42  no second alert\n"
              "    42  alert dismissed\n"
              "    42  ALERT 7@d(text)\n");
}

TEST_F(InProcessAccount, TellsNetworkFailuresApart) {
    ErrorInfo error(5, "d", 7, "text", nullptr);
    error.setUserInfo(ErrorInfo::OrvKey_ErrorTypeHint,
                      new StringData(ErrorInfo::ErrorType_NetworkFailure));
    account_.report(error);
    EXPECT_EQ(out_.str(), "    42  ALERT network: 7@d(text)\n");
}

TEST(InProcessFieldsOf, NamesEachFieldWithItsValue) {
    RefCountedPtr<MappedRecordData> const record(new MappedRecordData);
    EXPECT_EQ(fieldsOf(*record), "");
    record->setFieldValue("text", "\x82\xA0\x1B");  // HIRAGANA A in the code page, ESC
    record->setFieldValue("number", new NumberData(1.5));
    record->setFieldValue("truth", FieldValue::TRUE_VALUE);
    record->setFieldValue("null", RefCountedPtr<FieldValue>());
    record->setFieldValue("list", new ListDataImpl("x"));
    record->setFieldValue("record", new MappedRecordData(*record));
    EXPECT_EQ(fieldsOf(*record),
              "list=list of 0, null=null, number=1.500000, record=record of 5, "
              "text=\xE3\x81\x82\\x1B, truth=1");
}

}  // namespace tvk::test
