#include "examples/desk/model/AlertModel.h"

#include <gtest/gtest.h>

#include "examples/desk/Text.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/errors/KestrinErrorManagerImpl.h"
#include "tvk/values/StringData.h"

namespace {

using desk::AlertModel;
using tvk::ErrorInfo;
using tvk::KestrinConstants;

ErrorInfo errorOf(int code, char const * text) {
    return {3, KestrinConstants::ErrorDomain_Kestrin, code, desk::ansi(text), nullptr};
}

class DeskAlertModel : public testing::Test {
protected:
    int show(ErrorInfo const & error) { return manager->showError(&model, error, nullptr); }

    tvk::RefCountedPtr<tvk::KestrinErrorManager> manager{new tvk::KestrinErrorManagerImpl};
    AlertModel model;
};

TEST_F(DeskAlertModel, ShowsAnErrorOnceUntilItIsDismissed) {
    EXPECT_EQ(show(errorOf(9, "応答がありません")), AlertModel::SHOWN);
    EXPECT_EQ(show(errorOf(9, "応答がありません")), 0);
    EXPECT_EQ(model.count(), 1U);
    model.dismiss();
    EXPECT_TRUE(model.isEmpty());
    EXPECT_EQ(show(errorOf(9, "応答がありません")), AlertModel::SHOWN);
}

TEST_F(DeskAlertModel, KeepsTheOrderOfErrors) {
    show(errorOf(9, "一"));
    show(errorOf(10, "二"));
    EXPECT_EQ(model.count(), 2U);
    EXPECT_EQ(model.text(), "一");
    EXPECT_EQ(model.title(), "エラー");
    EXPECT_EQ(model.detail(), "orvane.ErrorDomain.Kestrin 9  一");
    unsigned int const before = model.revision();
    model.dismiss();
    EXPECT_EQ(model.text(), "二");
    EXPECT_NE(model.revision(), before);
    model.dismiss();
    model.dismiss();
    EXPECT_TRUE(model.isEmpty());
}

TEST_F(DeskAlertModel, TellsANetworkFailureApart) {
    ErrorInfo error = errorOf(10, "");
    error.setUserInfo(ErrorInfo::OrvKey_ErrorTypeHint,
                      new tvk::StringData(ErrorInfo::ErrorType_NetworkFailure));
    show(error);
    EXPECT_EQ(model.title(), "通信エラー");
    EXPECT_EQ(model.text(), "サーバーとの接続が切れました。");
}

TEST_F(DeskAlertModel, KeepsTheManagerThatAsked) {
    show(errorOf(9, "x"));
    manager = nullptr;
    model.dismiss();
    EXPECT_TRUE(model.isEmpty());
}

}  // namespace
