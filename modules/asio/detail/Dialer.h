#pragma once

#include <asio/ip/tcp.hpp>
#include <chrono>
#include <functional>
#include <memory>

#include "modules/asio/detail/Guarded.h"
#include "modules/asio/detail/Timer.h"

namespace tvk {

/// Looks up a name and tries its addresses, one after the other, until one takes a connection.
class Dialer : public Guarded<Dialer> {
public:
    using Socket = asio::ip::tcp::socket;
    using Done = std::function<void(asio::error_code const &, Socket)>;

    /// The loop must outlive the dialer.
    explicit Dialer(EventLoop & loop);

    /// Each address gets its share of the time that is left up to `deadline`, so that one that does not
    /// answer leaves some for the next; the deadline itself is the caller's to watch. `done` is called
    /// once, never from inside a call, and not behind close; without an error the socket is connected.
    void dial(char const * host, char const * port, std::chrono::steady_clock::time_point deadline,
              Done done);
    void close();

    /// What it is at, for an error's text.
    char const * step() const { return step_; }

private:
    using Resolver = asio::ip::tcp::resolver;

    void onResolved(asio::error_code const & code, Resolver::results_type const & found);
    void tryAddress();
    void onTried(asio::error_code const & code);
    void finish(asio::error_code const & code);

    Resolver resolver_;
    Socket socket_;
    Timer share_;
    Done done_;
    std::chrono::steady_clock::time_point deadline_;
    char const * step_ = "";
    Resolver::results_type addresses_;
    Resolver::results_type::const_iterator address_;
    std::size_t left_ = 0;  // addresses, the one at hand included
    unsigned int attempt_ = 0;
};

}  // namespace tvk
