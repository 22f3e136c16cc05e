#pragma once

/// Where an agent stands on its way to the back end. The base class keeps the value and never looks at
/// it: the concrete agent moves it.
enum KestrinStatusEnum : int {
    KESTRINSTATUS_CREATED = 0,     ///< constructed, not started
    KESTRINSTATUS_CONNECTING = 1,  ///< started, no connection yet or not again
    KESTRINSTATUS_CONNECTED = 2,   ///< connected, nobody logged in
    KESTRINSTATUS_LOGGED_IN = 3,   ///< connected and logged in
    KESTRINSTATUS_STOPPED = 4,     ///< at its end
};
