#include "examples/desk/model/StatusModel.h"

#include "examples/desk/model/Figures.h"
#include "tvk/platform/CString.h"

namespace desk {

namespace {

constexpr long long SECOND = 1000;
constexpr long long TENTH = SECOND / 10;

}  // namespace

void StatusModel::setConnection(KestrinStatusEnum status, bool isRealTime) {
    status_ = status;
    isRealTime_ = isRealTime;
    isReconnecting_ = false;
}

void StatusModel::setReconnecting() {
    isReconnecting_ = true;
    isRealTime_ = false;
}

void StatusModel::countNotice(long long now) {
    long long const time = now / TENTH;
    Tenth & tenth = tenths_[static_cast<std::size_t>(time) % tenths_.size()];
    if (tenth.time != time) {
        tenth = {time, 0};
    }
    ++tenth.notices;
}

std::string StatusModel::connectionText() const {
    std::string const behind = peer_.empty() ? "" : "  " + peer_;
    if (isReconnecting_) {
        return "再接続中" + behind;
    }
    switch (status_) {
        case KESTRINSTATUS_CONNECTING:
            return "接続中" + behind;
        case KESTRINSTATUS_CONNECTED:
            return "接続済" + behind;
        case KESTRINSTATUS_LOGGED_IN:
            return (isRealTime_ ? "リアルタイム配信中" : "ログイン済") + behind;
        default:
            return "未接続" + behind;
    }
}

Tone StatusModel::connectionTone() const {
    if (isReconnecting_) {
        return Tone::WARNING;
    }
    return status_ == KESTRINSTATUS_LOGGED_IN ? Tone::PLAIN : Tone::FAINT;
}

std::string StatusModel::loginText() const {
    bool const isLoggedIn = status_ == KESTRINSTATUS_LOGGED_IN && !isReconnecting_;
    return isLoggedIn ? "利用者 " + loginId_ : "ログインしていません";
}

std::string StatusModel::serverTimeText() const {
    if (serverTime_ <= 0) {
        return "--:--:--";
    }
    constexpr long long JAPAN = 9 * 3600;
    long long const seconds = (serverTime_ / SECOND + JAPAN) % (24 * 3600);
    CString text;
    text.Format("%02lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60, seconds % 60);
    return text.GetString();
}

int StatusModel::noticesPerSecond(long long now) const {
    long long const oldest = now / TENTH - static_cast<long long>(tenths_.size());
    int notices = 0;
    for (Tenth const & tenth : tenths_) {
        notices += tenth.time > oldest ? tenth.notices : 0;
    }
    return notices;
}

std::string StatusModel::noticesText(long long now) const {
    return "受信 " + countText(noticesPerSecond(now)) + " 件/秒";
}

}  // namespace desk
