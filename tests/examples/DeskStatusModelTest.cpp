#include "examples/desk/model/StatusModel.h"

#include <gtest/gtest.h>

#include <deque>
#include <random>

namespace {

using desk::StatusModel;
using desk::Tone;

TEST(DeskStatusModel, TellsTheConnection) {
    struct Row {
        KestrinStatusEnum status;
        bool isRealTime;
        char const * text;
        Tone tone;
    };
    Row const rows[] = {
        {KESTRINSTATUS_CREATED, false, "未接続  host:1", Tone::FAINT},
        {KESTRINSTATUS_CONNECTING, false, "接続中  host:1", Tone::FAINT},
        {KESTRINSTATUS_CONNECTED, false, "接続済  host:1", Tone::FAINT},
        {KESTRINSTATUS_LOGGED_IN, false, "ログイン済  host:1", Tone::PLAIN},
        {KESTRINSTATUS_LOGGED_IN, true, "リアルタイム配信中  host:1", Tone::PLAIN},
        {KESTRINSTATUS_STOPPED, false, "未接続  host:1", Tone::FAINT},
    };
    StatusModel model;
    model.setPeer("host:1");
    for (Row const & row : rows) {
        SCOPED_TRACE(row.text);
        model.setConnection(row.status, row.isRealTime);
        EXPECT_EQ(model.connectionText(), row.text);
        EXPECT_EQ(model.connectionTone(), row.tone);
    }
    model.setReconnecting();
    EXPECT_EQ(model.connectionText(), "再接続中  host:1");
    EXPECT_EQ(model.connectionTone(), Tone::WARNING);
}

TEST(DeskStatusModel, TellsWhoIsLoggedIn) {
    StatusModel model;
    EXPECT_EQ(model.loginText(), "ログインしていません");
    model.setLoginId("hanako");
    model.setConnection(KESTRINSTATUS_LOGGED_IN, true);
    EXPECT_EQ(model.loginText(), "利用者 hanako");
    model.setReconnecting();
    EXPECT_EQ(model.loginText(), "ログインしていません");
}

TEST(DeskStatusModel, TellsTheTimeOfJapan) {
    StatusModel model;
    EXPECT_EQ(model.serverTimeText(), "--:--:--");
    model.setServerTime(1'000'000'000'000);  // 2001-09-09 01:46:40 in UTC
    EXPECT_EQ(model.serverTimeText(), "10:46:40");
    model.setServerTime(0);
    EXPECT_EQ(model.serverTimeText(), "--:--:--");
}

TEST(DeskStatusModel, CountsTheNoticesOfTheLastSecond) {
    StatusModel model;
    EXPECT_EQ(model.noticesText(5000), "受信 0 件/秒");
    for (int count = 0; count < 1500; ++count) {
        model.countNotice(5000);
    }
    EXPECT_EQ(model.noticesText(5900), "受信 1,500 件/秒");
    EXPECT_EQ(model.noticesPerSecond(6000), 0);
}

TEST(DeskStatusModel, CountsLikeAListOfTimes) {
    std::mt19937 random(3);
    StatusModel model;
    std::deque<long long> times;
    long long now = 10'000;
    for (int round = 0; round < 5000; ++round) {
        now += random() % 4 == 0 ? static_cast<long long>(random() % 400) : 0;
        model.countNotice(now);
        times.push_back(now);
        while (times.front() / 100 <= now / 100 - 10) {
            times.pop_front();
        }
        ASSERT_EQ(model.noticesPerSecond(now), static_cast<int>(times.size()));
    }
}

}  // namespace
