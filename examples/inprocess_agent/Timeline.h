#pragma once

#include <functional>
#include <map>

namespace inprocess {

/// Things that are to happen, on a clock that stands still until somebody advances it. Nothing here
/// waits, so a program comes out the same on every run.
///
/// An event may plan others, forget all, and advance the clock itself. One that throws has happened;
/// the exception leaves the call that advanced the clock.
class Timeline {
public:
    using Event = std::function<void()>;

    /// Milliseconds since the clock was made.
    long long now() const { return now_; }

    /// Plans an event; a time below 0 counts as 0. Events of one time happen in the order in which
    /// they were planned.
    void after(int milliSeconds, Event event);
    /// Forgets everything that is planned.
    void clear() { planned_.clear(); }

    /// Lets that much time pass, and everything happen that falls due meanwhile.
    void advance(int milliSeconds);
    /// Lets one thing after the other happen until `done`, or until nothing is planned any more.
    void advanceUntil(std::function<bool()> const & done);

private:
    void happenNext();

    long long now_ = 0;
    std::multimap<long long, Event> planned_;  // by the time when they are due
};

}  // namespace inprocess
