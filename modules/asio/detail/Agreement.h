#pragma once

#include <optional>

#include "tvk/values/KestrinMessage.h"

namespace tvk::detail {

/// Whether something is on at the back end, such as a subscription: what it was told last, and whether
/// that is known to have arrived.
class Agreement {
public:
    /// What must be told so that the back end has it as wanted; nothing where it does.
    std::optional<bool> toTell(bool wanted) const {
        bool const agrees = state_ == (wanted ? State::ON : State::OFF);
        return agrees ? std::nullopt : std::optional(wanted);
    }
    void tell(bool on, RefCountedPtr<KestrinMessage> const & request) {
        state_ = on ? State::ON : State::OFF;
        asked_ = request;
    }
    /// The answer to a request; false where it is not to the last one. What was refused is off.
    bool settle(RefCountedPtr<KestrinMessage> const & request, bool accepted) {
        if (asked_.isNull() || asked_ != request) {
            return false;
        }
        asked_ = nullptr;
        if (!accepted) {
            state_ = State::OFF;
        }
        return true;
    }
    /// No answer will come: what was asked for may have arrived or not.
    void interrupt() {
        if (!asked_.isNull()) {
            asked_ = nullptr;
            state_ = State::UNKNOWN;
        }
    }
    /// A session in which nothing was told yet.
    void reset() {
        asked_ = nullptr;
        state_ = State::OFF;
    }
    bool isOff() const { return state_ == State::OFF && asked_.isNull(); }

private:
    enum class State { OFF, ON, UNKNOWN };

    State state_ = State::OFF;
    RefCountedPtr<KestrinMessage> asked_;  // null when the last one was answered
};

}  // namespace tvk::detail
