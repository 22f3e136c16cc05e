#include "examples/desk/model/ErrorText.h"

#include <gtest/gtest.h>

#include "examples/desk/Text.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace {

using tvk::ErrorInfo;
using tvk::KestrinConstants;

std::string textOf(CString const & domain, int code, char const * message) {
    return desk::errorText(ErrorInfo(3, domain, code, desk::ansi(message), nullptr));
}

TEST(DeskErrorText, KeepsTheBackEndsWords) {
    EXPECT_EQ(textOf(KestrinConstants::ErrorDomain_Kestrin, 9, "本日は休場です。"),
              "本日は休場です。");
}

TEST(DeskErrorText, PutsALibrarysWordsIntoTheUsers) {
    EXPECT_EQ(textOf(KestrinConstants::ErrorDomain_Kestrin, 9, "no reply in time"),
              "時間内に応答がありませんでした。");
    EXPECT_EQ(textOf(KestrinConstants::ErrorDomain_Kestrin, 1000, ""), "通信に失敗しました。");
}

TEST(DeskErrorText, ShowsWhatItDoesNotKnow) {
    EXPECT_EQ(textOf(KestrinConstants::ErrorDomain_Kestrin, 7999, "strange"), "strange");
    EXPECT_EQ(textOf(ErrorInfo::ErrorDomain_POSIX, 9, "Bad file descriptor"),
              "Bad file descriptor");
    EXPECT_EQ(textOf(ErrorInfo::ErrorDomain_POSIX, 9, ""), "処理に失敗しました。");
}

}  // namespace
