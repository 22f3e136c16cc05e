#include "examples/backend/Channel.h"

#include <asio/buffer.hpp>
#include <asio/post.hpp>
#include <asio/ssl/context.hpp>
#include <asio/ssl/stream.hpp>
#include <asio/write.hpp>
#include <utility>

namespace backend {

namespace {

using Socket = asio::ip::tcp::socket;

/// All but the handshake is the same for both kinds of stream.
template <class Stream>
class StreamChannel : public Channel {
public:
    template <class... Arguments>
    explicit StreamChannel(Arguments &&... arguments)
        : stream_(std::forward<Arguments>(arguments)...) {}

    void read(char * room, std::size_t size, Handler handler) override {
        stream_.async_read_some(asio::buffer(room, size), std::move(handler));
    }

    void write(char const * bytes, std::size_t size, Handler handler) override {
        asio::async_write(stream_, asio::buffer(bytes, size), std::move(handler));
    }

    void endWriting() override {
        std::error_code ignored;
        stream_.lowest_layer().shutdown(Socket::shutdown_send, ignored);
    }

    void close() override {
        std::error_code ignored;
        stream_.lowest_layer().close(ignored);
    }

protected:
    Stream stream_;
};

class PlainChannel : public StreamChannel<Socket> {
public:
    using StreamChannel::StreamChannel;

    void handshake(Handler handler) override {
        asio::post(stream_.get_executor(),
                   [handler = std::move(handler)] { handler(std::error_code(), 0); });
    }
};

class TlsChannel : public StreamChannel<asio::ssl::stream<Socket>> {
public:
    using StreamChannel::StreamChannel;

    void handshake(Handler handler) override {
        stream_.async_handshake(
            asio::ssl::stream_base::server,
            [handler = std::move(handler)](std::error_code const & error) { handler(error, 0); });
    }
};

}  // namespace

std::unique_ptr<Channel> newChannel(Socket socket, asio::ssl::context * tls) {
    if (tls == nullptr) {
        return std::make_unique<PlainChannel>(std::move(socket));
    }
    return std::make_unique<TlsChannel>(std::move(socket), *tls);
}

}  // namespace backend
