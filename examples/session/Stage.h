#pragma once

#include <chrono>

#include "examples/session/Account.h"
#include "examples/session/Alerts.h"
#include "examples/session/Desktop.h"
#include "examples/session/Listener.h"
#include "examples/session/Options.h"
#include "modules/asio/TcpKestrin.h"
#include "tvk/platform/CString.h"
#include "tvk/values/KestrinMessage.h"

namespace session {

inline std::chrono::milliseconds milliSec(double seconds) {
    return std::chrono::milliseconds(static_cast<long long>(seconds * 1000));
}

/// What the scenes of a session share. All of it outlives them.
struct Stage {
    Options const & options;
    Account & account;
    Desktop & desktop;
    tvk::TcpKestrin & agent;
    Listener & listener;
    Alerts & alerts;
    CString symbol;        ///< in the code page
    CString symbolName{};  ///< empty until the back end has told it, as the two below are 0
    int unit = 0;          ///< of quantities
    double tick = 0;       ///< of prices

    /// Lets the agent work until the condition holds. False where it does not in the end.
    bool until(Desktop::Condition const & condition) const {
        return desktop.until(agent, condition, milliSec(options.patience));
    }
    /// Lets the agent work for a while.
    void work(std::chrono::milliseconds howLong) const {
        desktop.until(
            agent, [] { return false; }, howLong);
    }
};

// The scenes, in their order. Each opens a section of the account, says what it expects, and leaves
// nothing behind.

/// False where a session cannot go on behind it, as below.
bool connect(Stage & stage);
bool logIn(Stage & stage);
bool listSymbols(Stage & stage);
void watchQuotes(Stage & stage);
void takeStream(Stage & stage);
void askAndAnswer(Stage & stage);
void showErrorOnce(Stage & stage);
void trade(Stage & stage);
void breakConnection(Stage & stage);
void drawChart(Stage & stage);
void readNews(Stage & stage);
void leave(Stage & stage);

/// Asks for notices of that type, numbered from 1 on.
void askForBurst(Stage & stage, char const * type, int count);
/// A request for something to go wrong at the back end.
tvk::RefCountedPtr<tvk::KestrinMessage> fault(char const * kind);

}  // namespace session
