#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tvk::bench {

/// One of several that take turns, each in a process of its own. All but `died` is called there; what ends
/// in false, or in the end of the process, ends its turns.
class TurnTaker {
public:
    virtual ~TurnTaker() = default;
    virtual bool setUp() = 0;
    virtual bool takeTurn() = 0;
    /// After the last turn.
    virtual void end() = 0;
    /// Called in the first process: the one of this taker ended, or was ended, for this reason.
    virtual void died(std::string const & reason) = 0;
};

/// Sets up one after the other, and lets those that could be set up take their turns, each round
/// starting with another; never two at a time. A taker that is longer at one call than `patience`
/// is killed.
void takeTurns(std::vector<std::unique_ptr<TurnTaker>> const & takers, int rounds,
               std::chrono::milliseconds patience);

}  // namespace tvk::bench
