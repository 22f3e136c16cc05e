#pragma once

#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/read_until.hpp>
#include <asio/write.hpp>
#include <functional>
#include <string>
#include <thread>
#include <utility>

/// A server on a loopback port whose script serves one connection after the other, on a thread of its own
/// and with calls that wait. A script returns at the latest when its connection is closed, so what
/// connects must end before the server does.
class ScriptServer {
public:
    using Socket = asio::ip::tcp::socket;
    using Script = std::function<void(Socket &)>;

    explicit ScriptServer(Script script)
        : script_(std::move(script)),
          acceptor_(context_, {asio::ip::address_v4::loopback(), 0}),
          port_(acceptor_.local_endpoint().port()) {
        accept();
        thread_ = std::thread([this] { context_.run(); });
    }
    ~ScriptServer() {
        context_.stop();
        thread_.join();
    }

    ScriptServer(ScriptServer const &) = delete;
    ScriptServer & operator=(ScriptServer const &) = delete;

    unsigned short port() const { return port_; }

private:
    void accept() {
        acceptor_.async_accept([this](asio::error_code const & code, Socket socket) {
            if (!code) {
                script_(socket);
            }
            accept();
        });
    }

    Script script_;
    asio::io_context context_;
    asio::ip::tcp::acceptor acceptor_;
    unsigned short port_;
    std::thread thread_;
};

/// Gives back what comes, until the stream ends.
template <class Stream>
void echo(Stream & stream) {
    char room[20000];
    asio::error_code code;
    while (!code) {
        std::size_t const count = stream.read_some(asio::buffer(room), code);
        if (!code) {
            asio::write(stream, asio::buffer(room, count), code);
        }
    }
}

/// What comes up to the end of a text, and with it. Shorter where the stream ends.
template <class Stream>
std::string readUntil(Stream & stream, std::string const & end) {
    std::string text;
    asio::error_code code;
    while (!code && text.find(end) == std::string::npos) {
        char byte = 0;
        if (stream.read_some(asio::buffer(&byte, 1), code) == 1) {
            text += byte;
        }
    }
    return text;
}

template <class Stream>
void say(Stream & stream, std::string const & text) {
    asio::error_code ignored;
    asio::write(stream, asio::buffer(text), ignored);
}

/// Until the other side closes the connection.
inline void waitForEnd(asio::ip::tcp::socket & socket) {
    readUntil(socket, "there is no such text");
}
