#include "tests/examples/BackendClient.h"

#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ssl/context.hpp>
#include <asio/ssl/host_name_verification.hpp>
#include <asio/ssl/stream.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <optional>
#include <system_error>
#include <utility>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/values/NumberData.h"

namespace tvk::test {

using asio::ip::tcp;

namespace {

constexpr std::size_t PREFIX_BYTES = 24;

void appendNumber(std::string & bytes, unsigned long long number, std::size_t size) {
    for (std::size_t place = size; place > 0; --place) {
        bytes += static_cast<char>(static_cast<unsigned char>(number >> (8 * (place - 1))));
    }
}

}  // namespace

/// Plain or with TLS; every operation ends in time.
struct BackendClient::Stream {
    Stream(unsigned short port, std::string const & trusted) : socket(loop) {
        socket.connect(tcp::endpoint(asio::ip::make_address("127.0.0.1"), port));
        socket.set_option(tcp::no_delay(true));
        if (!trusted.empty()) {
            context.emplace(asio::ssl::context::tls_client);
            context->load_verify_file(trusted);
            context->set_verify_mode(asio::ssl::verify_peer);
            secure.emplace(std::move(socket), *context);
            secure->set_verify_callback(asio::ssl::host_name_verification("localhost"));
            secure->handshake(asio::ssl::stream_base::client);
        }
    }

    template <class Work>
    void with(Work const & work) {
        if (secure) {
            work(*secure);
        } else {
            work(socket);
        }
    }

    tcp::socket & bottom() { return secure ? secure->next_layer() : socket; }

    asio::io_context loop;
    std::optional<asio::ssl::context> context;
    tcp::socket socket;
    std::optional<asio::ssl::stream<tcp::socket>> secure;
};

BackendClient::BackendClient(unsigned short port, std::string const & trusted)
    : stream_(std::make_unique<Stream>(port, trusted)) {}

BackendClient::~BackendClient() = default;

std::string BackendClient::frameOf(int kind, unsigned long long number, std::string_view type,
                                   std::string_view json) {
    std::string frame;
    appendNumber(frame, PREFIX_BYTES - 4 + type.size() + json.size(), 4);
    appendNumber(frame, static_cast<unsigned long long>(kind), 1);
    appendNumber(frame, 0, 1);
    appendNumber(frame, type.size(), 2);
    appendNumber(frame, 0, 2);
    appendNumber(frame, 0, 2);
    appendNumber(frame, type.size(), 4);
    appendNumber(frame, number, 8);
    frame += type;
    frame += json;
    return frame;
}

void BackendClient::send(int kind, unsigned long long number, std::string_view type,
                         std::string_view json) {
    sendBytes(frameOf(kind, number, type, json));
}

void BackendClient::sendBytes(std::string_view bytes) {
    stream_->with([bytes](auto & stream) {
        std::error_code ignored;  // the other side may have gone
        asio::write(stream, asio::buffer(bytes), ignored);
    });
}

bool BackendClient::greet() { return greet(LIMIT_MILLISEC); }

bool BackendClient::greet(int heartbeatMilliSec) {
    send(FRAME_HELLO, 0, "",
         R"({"protocol":1,"client":"test","version":"1","heartbeatMilliSec":)" +
             std::to_string(heartbeatMilliSec) + "}");
    return next().kind == FRAME_WELCOME;
}

BackendClient::Came BackendClient::ask(std::string_view type, std::string_view json) {
    unsigned long long const number = ++lastNumber_;
    send(FRAME_REQUEST, number, type, json);
    for (std::deque<Came> before = std::exchange(aside_, {});;) {
        Came came = read(LIMIT_MILLISEC);
        if (came.kind == 0 || (came.kind == FRAME_REPLY && came.number == number)) {
            aside_.swap(before);
            return came;
        }
        before.push_back(std::move(came));
    }
}

BackendClient::Came BackendClient::login(std::string const & loginId, std::string const & token,
                                         unsigned long long lastSequence) {
    Came came =
        ask("login", R"({"loginId":")" + loginId + R"(","password":"secret","session":")" + token +
                         R"(","lastSequence":)" + std::to_string(lastSequence) + "}");
    return came;
}

BackendClient::Came BackendClient::next(int milliSec) {
    if (!aside_.empty()) {
        Came came = std::move(aside_.front());
        aside_.pop_front();
        return came;
    }
    return read(milliSec);
}

BackendClient::Came BackendClient::nextOf(int kind) {
    Came came = next();
    while (came.kind != 0 && came.kind != kind) {
        came = next();
    }
    return came;
}

bool BackendClient::ends() {
    while (!hasEnded_) {
        if (next().kind == 0) {
            break;
        }
    }
    return hasEnded_;
}

std::string BackendClient::rest() {
    auto const end = Clock::now() + std::chrono::milliseconds(LIMIT_MILLISEC);
    std::string bytes;
    while (!hasEnded_) {
        char room[4096];
        std::size_t const count = readSome(room, sizeof room, end);
        if (count == 0) {
            break;
        }
        bytes.append(room, count);
    }
    return bytes;
}

void BackendClient::close() {
    std::error_code ignored;
    stream_->bottom().close(ignored);
    hasEnded_ = true;
}

BackendClient::Came BackendClient::read(int milliSec) {
    auto const end = Clock::now() + std::chrono::milliseconds(milliSec);
    for (;;) {
        Frame frame;
        switch (reader_.next(&frame, nullptr)) {
            case FrameReader::Result::BROKEN:
                return {};
            case FrameReader::Result::NEED_MORE: {
                char * const room = reader_.room(65'536);
                std::size_t const count = readSome(room, reader_.roomSize(), end);
                if (count == 0) {
                    return {};
                }
                reader_.filled(count);
                break;
            }
            case FrameReader::Result::FRAME:
                if (frame.kind == FRAME_HEARTBEAT && answers_) {
                    send(FRAME_HEARTBEAT_ANSWER, frame.number, "", "");
                } else {
                    return {frame.kind,
                            frame.flags,
                            frame.number,
                            std::string(frame.type),
                            std::string(frame.subject),
                            std::string(frame.body),
                            messages_.read(frame, nullptr)};
                }
                break;
        }
    }
}

/// 0 where nothing comes any more, or not in time.
std::size_t BackendClient::readSome(char * room, std::size_t size, Clock::time_point end) {
    std::size_t count = 0;
    bool isDone = false;
    if (hasEnded_) {
        return 0;
    }
    stream_->with([&](auto & stream) {
        stream.async_read_some(asio::buffer(room, size),
                               [&](std::error_code const & error, std::size_t read) {
                                   isDone = true;
                                   count = read;
                                   hasEnded_ = static_cast<bool>(error);
                               });
    });
    asio::io_context & loop = stream_->loop;
    loop.restart();
    loop.run_until(end);
    if (!isDone) {
        // The room goes with the call: the read must not outlive it.
        std::error_code ignored;
        stream_->bottom().cancel(ignored);
        loop.restart();
        loop.run();
        hasEnded_ = false;
    }
    return count;
}

}  // namespace tvk::test
