#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <system_error>

#include <asio/ip/tcp.hpp>

namespace asio::ssl {
class context;
}

namespace backend {

/// The bytes of one connection, with or without TLS. At most one read and one write at a time. Each
/// handler is called once, from the loop and never from inside a call, also where the channel was
/// closed meanwhile; so whoever is captured in one stays until then.
class Channel {
public:
    using Handler = std::function<void(std::error_code const & error, std::size_t bytes)>;

    virtual ~Channel() = default;

    virtual void handshake(Handler handler) = 0;
    /// What there is, at most `size`.
    virtual void read(char * room, std::size_t size, Handler handler) = 0;
    /// All of it.
    virtual void write(char const * bytes, std::size_t size, Handler handler) = 0;
    /// Nothing will be written any more; the other side learns it behind the last byte.
    virtual void endWriting() = 0;
    virtual void close() = 0;
};

/// `tls` is null for a plain channel, and else outlives it.
std::unique_ptr<Channel> newChannel(asio::ip::tcp::socket socket, asio::ssl::context * tls);

}  // namespace backend
