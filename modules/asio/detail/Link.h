#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "modules/asio/EventLoop.h"

namespace tvk {

class ErrorInfo;
struct TcpOptions;

/// One attempt at a connection, and what it becomes: a stream of bytes, over TLS unless the options say
/// plain, through the proxy where they name one.
///
/// Events:  all on the thread of the loop, never from inside a call of the Link, none behind close or the
///          destructor, also where one was on its way. opened and failed come once at most, and nothing
///          behind failed. Each may close or destroy the Link.
/// Buffers: the caller's, who leaves them alone until the event, failed, close or the destructor.
/// Failure: failed tells what happened, a network failure with one of these codes:
///          ERR_FailedToCreateConnection before opened: name, connection, time-out, TLS, certificate;
///          ERR_HTTPStatusError with the status line before opened: the proxy refused;
///          ERR_ConnectionClosedByRemotePeer: the other side closed the connection in order;
///          ERR_NetworkIOError: anything else that happens to an open connection.
class Link {
public:
    struct Events {
        std::function<void()> opened;
        std::function<void(std::size_t)> read;  ///< that many bytes, 1 at least, stand in the room
        std::function<void()> written;          ///< all of it
        std::function<void(ErrorInfo const &)> failed;
    };

    /// The loop must outlive the Link; the options are copied. All events must be there.
    Link(EventLoop & loop, TcpOptions const & options, Events events);
    ~Link();

    Link(Link const &) = delete;
    Link & operator=(Link const &) = delete;

    void open();  ///< Once.
    /// Both behind opened, one of each at a time, with a size above 0.
    void read(char * room, std::size_t size);
    void write(char const * bytes, std::size_t size);
    void close();

private:
    class Impl;

    std::shared_ptr<Impl> impl_;
};

}  // namespace tvk
