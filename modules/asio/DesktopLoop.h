#pragma once

#include <functional>

#include "modules/asio/EventLoop.h"

namespace tvk {

/// A loop for an application that has one of its own, such as that of a window system. Sockets and timers
/// wait on a thread of the loop; every function that is to run goes into a queue, and runs on the
/// application's thread inside pollOne, runOne, or an agent's poll.
///
/// Wake-up:   `wake` is called when a function enters the queue and the queue was found empty since the
///            last call of `wake`; found empty means that pollOne gave false. So each wake-up is answered
///            by polling until there is nothing left, or by coming back to it without being woken again.
///            It is called on the thread that enters the function, the loop's own or that of a post, and
///            should only send the application's loop a message: it must not call the loop, nor throw.
/// Threads:   as EventLoop, the application's thread being the one that drives.
/// Ownership: what runs on the loop ends before it. Functions that have not run by then never do; they are
///            destroyed on the thread that destroys the loop. `wake` is not called behind that.
class TVK_ASIO_API DesktopLoop : public EventLoop {
public:
    explicit DesktopLoop(std::function<void()> wake);
    ~DesktopLoop() override;
};

}  // namespace tvk
