#pragma once

#include <memory>
#include <utility>

namespace tvk {

/// Base of what waits for handlers of Asio's or of a Timer: they keep it alive, and do nothing once it has
/// ended. Held by a shared pointer.
template <class Derived>
class Guarded : public std::enable_shared_from_this<Derived> {
protected:
    template <class Function>
    auto handler(Function function) {
        return [self = this->shared_from_this(),
                function = std::move(function)](auto &&... results) mutable {
            if (!self->ended_) {
                function(std::forward<decltype(results)>(results)...);
            }
        };
    }

    bool hasEnded() const { return ended_; }
    void end() { ended_ = true; }

private:
    bool ended_ = false;
};

}  // namespace tvk
