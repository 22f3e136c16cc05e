#include "tests/modules/asio/support/FrameServer.h"

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/write.hpp>
#include <utility>

#include "modules/asio/FrameMessages.h"
#include "modules/asio/FrameReader.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/MappedMessage.h"

using asio::error_code;
using asio::ip::tcp;

namespace {

constexpr unsigned int LARGEST_FRAME = 64U << 20U;

std::string bigEndian(unsigned long long value, int bytes) {
    std::string text;
    for (int byte = bytes - 1; byte >= 0; --byte) {
        text += static_cast<char>((value >> (8 * byte)) & 0xffU);
    }
    return text;
}

struct SentNotice {
    unsigned long long number;
    std::string bytes;
};

}  // namespace

std::string frameBytes(int kind, int flags, unsigned long long number, std::string_view type,
                       std::string_view subject, std::string_view body) {
    std::size_t const head = type.size() + subject.size();
    std::string bytes = bigEndian(20 + head + body.size(), 4);
    bytes += static_cast<char>(kind);
    bytes += static_cast<char>(flags);
    bytes += bigEndian(type.size(), 2) + bigEndian(subject.size(), 2) + bigEndian(0, 2);
    bytes += bigEndian(head, 4) + bigEndian(number, 8);
    return bytes.append(type).append(subject).append(body);
}

std::string FrameServer::Incoming::field(char const * name) const {
    auto const value = message->getFieldValue(name);
    return value ? value->asString().GetString() : "";
}

class FrameServer::Impl {
public:
    explicit Impl(FrameServer & server)
        : server_(server),
          loop_(std::make_shared<tvk::EventLoop>(context_)),
          acceptor_(context_, {asio::ip::address_v4::loopback(), 0}),
          port_(acceptor_.local_endpoint().port()) {
        acceptNext();
    }

    struct Peer {
        explicit Peer(tcp::socket theSocket) : socket(std::move(theSocket)) {}

        tcp::socket socket;
        tvk::FrameReader reader{LARGEST_FRAME};
        std::string going;
        std::string waiting;
        bool endsBehindWords = false;
        bool reads = true;
    };
    using PeerPtr = std::shared_ptr<Peer>;

    void acceptNext() {
        acceptor_.async_accept([this](error_code const & code, tcp::socket socket) {
            if (code == asio::error::operation_aborted) {
                return;
            }
            if (!code && accepts_) {
                ++connections_;
                close(peer_);
                peer_ = std::make_shared<Peer>(std::move(socket));
                error_code ignored;
                peer_->socket.set_option(tcp::no_delay(true), ignored);
                read(peer_);
            }
            acceptNext();
        });
    }

    void read(PeerPtr const & peer) {
        if (!peer->reads) {
            return;
        }
        char * const room = peer->reader.room(65536);
        peer->socket.async_read_some(
            asio::buffer(room, peer->reader.roomSize()),
            [this, peer](error_code const & code, std::size_t size) {
                if (code) {
                    close(peer);
                    return;
                }
                peer->reader.filled(size);
                tvk::Frame frame;
                while (peer->socket.is_open() &&
                       peer->reader.next(&frame, nullptr) == tvk::FrameReader::Result::FRAME) {
                    take(frame);
                }
                if (peer->socket.is_open()) {
                    read(peer);
                }
            });
    }

    void close(PeerPtr const & peer) {
        if (peer != nullptr) {
            error_code ignored;
            peer->socket.close(ignored);
            if (peer == peer_) {
                peer_ = nullptr;
            }
        }
    }

    void say(std::string_view bytes) {
        if (peer_ != nullptr) {
            peer_->waiting.append(bytes);
            write(peer_);
        }
    }

    void write(PeerPtr const & peer) {
        if (!peer->going.empty() || !peer->socket.is_open()) {
            return;
        }
        if (peer->waiting.empty()) {
            if (peer->endsBehindWords) {
                close(peer);
            }
            return;
        }
        peer->going.swap(peer->waiting);
        asio::async_write(peer->socket, asio::buffer(peer->going),
                          [this, peer](error_code const & code, std::size_t) {
                              peer->going.clear();
                              if (code) {
                                  close(peer);
                              } else {
                                  write(peer);
                              }
                          });
    }

    void take(tvk::Frame const & frame) {
        Incoming incoming{frame.kind, frame.number, std::string(frame.type),
                          messages_.read(frame, nullptr)};
        received_.push_back(incoming);
        if (!server_.answer || !server_.answer(incoming)) {
            answerByItself(incoming);
        }
    }

    void answerByItself(Incoming const & incoming) {
        if (incoming.kind == tvk::FRAME_HELLO) {
            server_.frame(tvk::FRAME_WELCOME, 0, 0, "", "",
                          R"({"protocol":1,"time":1700000000000,"heartbeatMilliSec":)" +
                              std::to_string(server_.heartbeatMilliSec) + "}");
        } else if (incoming.kind == tvk::FRAME_HEARTBEAT) {
            server_.frame(tvk::FRAME_HEARTBEAT_ANSWER, 0, incoming.number, "", "", "");
        } else if (incoming.type == "login") {
            logIn(incoming);
        } else if (incoming.type == "echo") {
            std::string const value = incoming.field("value");
            server_.reply(incoming, "{\"value\":\"" + value + "\"}");
        } else if (incoming.type == "startRealTime" || incoming.type == "stopRealTime" ||
                   incoming.type == "subscribe" || incoming.type == "unsubscribe") {
            server_.reply(incoming, "{}");
        }
    }

    void logIn(Incoming const & incoming) {
        bool const isResumed =
            server_.remembersSession && !session_.empty() && incoming.field("session") == session_;
        if (!isResumed) {
            session_ = std::string("S").append(std::to_string(++sessions_));
            sequence_ = 0;
            sent_.clear();
        }
        server_.reply(incoming, R"({"code":"0","text":"welcome","time":1700000001000,"session":")" +
                                    session_ + R"(","resumed":)" + (isResumed ? "true" : "false") +
                                    R"(,"startup":)" + server_.startup + "}");
        if (isResumed) {
            unsigned long long const last = std::stoull(incoming.field("lastSequence"));
            for (SentNotice const & notice : sent_) {
                if (notice.number > last) {
                    say(notice.bytes);
                }
            }
        }
    }

    FrameServer & server_;
    asio::io_context context_;
    std::shared_ptr<tvk::EventLoop> const loop_;
    tcp::acceptor acceptor_;
    unsigned short const port_;
    bool accepts_ = true;
    int connections_ = 0;
    PeerPtr peer_;
    tvk::SimpleObjectCache cache_{tvk::SimpleObjectCache::defaultRawDataConverter()};
    tvk::FrameMessages messages_{&cache_};
    std::vector<Incoming> received_;

    std::string session_;
    int sessions_ = 0;
    unsigned long long sequence_ = 0;
    std::vector<SentNotice> sent_;
};

FrameServer::FrameServer() : impl_(std::make_unique<Impl>(*this)) {}

FrameServer::~FrameServer() = default;

std::shared_ptr<tvk::EventLoop> const & FrameServer::loop() const { return impl_->loop_; }

unsigned short FrameServer::port() const { return impl_->port_; }

std::size_t FrameServer::runContext() {
    impl_->context_.restart();
    return impl_->context_.poll();
}

void FrameServer::raw(std::string_view bytes) { impl_->say(bytes); }

void FrameServer::reply(Incoming const & request, std::string_view body) {
    frame(tvk::FRAME_REPLY, 0, request.number, request.type, "", body);
}

void FrameServer::fail(Incoming const & request, std::string_view body) {
    frame(tvk::FRAME_REPLY, tvk::FRAME_FAILURE, request.number, request.type, "", body);
}

void FrameServer::notice(std::string_view type, std::string_view subject, std::string_view body) {
    std::string const bytes =
        frameBytes(tvk::FRAME_NOTICE, 0, ++impl_->sequence_, type, subject, body);
    impl_->sent_.push_back({impl_->sequence_, bytes});
    raw(bytes);
}

void FrameServer::goodbye(std::string_view body) {
    frame(tvk::FRAME_GOODBYE, 0, 0, "", "", body);
    disconnect();
}

void FrameServer::disconnect() {
    if (Impl::PeerPtr const peer = impl_->peer_) {
        peer->endsBehindWords = true;
        impl_->write(peer);
    }
}

void FrameServer::readNoMore() {
    if (impl_->peer_ != nullptr) {
        impl_->peer_->reads = false;
    }
}

void FrameServer::accept(bool accepts) { impl_->accepts_ = accepts; }

bool FrameServer::isConnected() const { return impl_->peer_ != nullptr; }

int FrameServer::connections() const { return impl_->connections_; }

std::vector<FrameServer::Incoming> const & FrameServer::received() const {
    return impl_->received_;
}

std::size_t FrameServer::count(std::string_view type) const {
    return static_cast<std::size_t>(
        std::count_if(received().begin(), received().end(),
                      [&](Incoming const & incoming) { return incoming.type == type; }));
}

std::size_t FrameServer::countOfKind(int kind) const {
    return static_cast<std::size_t>(
        std::count_if(received().begin(), received().end(),
                      [&](Incoming const & incoming) { return incoming.kind == kind; }));
}

unsigned long long FrameServer::sequence() const { return impl_->sequence_; }

void FrameServer::setSequence(unsigned long long sequence) { impl_->sequence_ = sequence; }

std::size_t FrameServer::unsentBytes() const {
    return impl_->peer_ == nullptr ? 0 : impl_->peer_->going.size() + impl_->peer_->waiting.size();
}

void FrameServer::clear() { impl_->received_.clear(); }
