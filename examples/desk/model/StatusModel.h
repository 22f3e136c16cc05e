#pragma once

#include <array>
#include <string>

#include "examples/desk/model/Tone.h"
#include "tvk/agent/KestrinStatusEnum.h"

namespace desk {

/// The status line: the connection, who is logged in, the time of the back end, and how many notices
/// come each second.
class StatusModel {
public:
    void setConnection(KestrinStatusEnum status, bool isRealTime);
    void setReconnecting();  ///< the connection was lost and is tried anew
    void setPeer(std::string peer) { peer_ = std::move(peer); }
    void setLoginId(std::string loginId) { loginId_ = std::move(loginId); }
    /// Milliseconds since the epoch by the back end's clock; 0 while it is unknown.
    void setServerTime(long long milliSec) { serverTime_ = milliSec; }
    void countNotice(long long now);  ///< `now` as in QuoteBoardModel

    std::string connectionText() const;
    Tone connectionTone()
        const;  ///< faint before the login, a warning where the connection is lost
    std::string loginText() const;
    std::string serverTimeText() const;         ///< of Japan
    int noticesPerSecond(long long now) const;  ///< within the last second
    std::string noticesText(long long now) const;

private:
    KestrinStatusEnum status_ = KESTRINSTATUS_CREATED;
    bool isRealTime_ = false;
    bool isReconnecting_ = false;
    std::string peer_;
    std::string loginId_;
    long long serverTime_ = 0;

    // The notices of the tenths of a second that a time stands for, by its last digit.
    struct Tenth {
        long long time = -1;
        int notices = 0;
    };
    std::array<Tenth, 10> tenths_;
};

}  // namespace desk
