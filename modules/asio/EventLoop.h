#pragma once

#include <functional>
#include <memory>

#include "modules/asio/Export.h"

namespace asio {
class io_context;
}

namespace tvk {

/// Where agents run: their connections, their timers, and every callback of theirs.
///
/// Ownership: borrows the context, which must outlive the loop and all that runs on it. Agents share the
///            loop among them.
/// Threads:   one thread drives: through the agents' run and poll, through pollOne and runOne here, or
///            through the context's own run and poll, as the application likes. All that runs on the loop
///            is made, used and destroyed on that thread, or while nothing drives. post may be called
///            from any thread.
/// Failure:   what a posted function throws leaves the call that ran it, and the loop goes on behind it.
class TVK_ASIO_API EventLoop {
public:
    /// Holds a loop that is driven in several steps, so that a stop of the context between two of them
    /// is not lost, and that a step which finds nothing to wait for waits. Made and destroyed on the
    /// thread that drives; they nest.
    class TVK_ASIO_API Drive {
    public:
        explicit Drive(EventLoop & loop);
        ~Drive();

        Drive(Drive const &) = delete;
        Drive & operator=(Drive const &) = delete;

    private:
        EventLoop & loop_;
    };

    /// On a context of the application's. A context that has stopped, because it had nothing to do or
    /// because it was told to, is restarted by the next pollOne or runOne that is not called from inside
    /// it. An application that drives its context itself restarts it itself.
    explicit EventLoop(asio::io_context & context);
    virtual ~EventLoop();

    EventLoop(EventLoop const &) = delete;
    EventLoop & operator=(EventLoop const &) = delete;

    /// Enters the function to run on the thread that drives, behind what was entered before. Never runs
    /// it from inside the call.
    void post(std::function<void()> function);

    /// Runs one function that is ready; false where there is none.
    bool pollOne();
    /// Waits until a function is ready and runs it; false where the context was stopped. Both may be
    /// called from inside a function that the loop runs.
    bool runOne();

    class Impl;
    /// For what runs on the loop, inside this module.
    Impl & impl() const { return *impl_; }

protected:
    explicit EventLoop(std::unique_ptr<Impl> impl);

private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace tvk
