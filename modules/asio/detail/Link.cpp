#include "modules/asio/detail/Link.h"

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "modules/asio/TcpOptions.h"
#include "modules/asio/detail/Dialer.h"
#include "modules/asio/detail/Errors.h"
#include "modules/asio/detail/EventLoopImpl.h"
#include "modules/asio/detail/Guarded.h"
#include "modules/asio/detail/Proxy.h"
#include "modules/asio/detail/Timer.h"
#include "modules/asio/detail/Tls.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

using asio::error_code;
using asio::ip::tcp;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// One call of the system takes in at most so much of what is for TLS or from a proxy.
constexpr std::size_t INPUT_SIZE = 32768;
/// So much may be encrypted ahead of what the system takes.
constexpr std::size_t OUTPUT_AHEAD = 65536;

/// What the system said, as the cause of an error.
ErrorInfo systemError(error_code const & code) {
    bool const isErrno = code.category() == asio::error::get_system_category();
    return {ASIO_COMPONENT_CODE,
            isErrno ? ErrorInfo::ErrorDomain_POSIX : ErrorInfo::ErrorDomain_System, code.value(),
            code.message().c_str(), nullptr};
}

}  // namespace

/// The way to an open connection leads from the dialer by the proxy and TLS, where they are wanted. Then
/// bytes go between the caller and the socket, straight or through TLS.
///
/// An event is the last thing that a handler does: it may end the Link.
class Link::Impl : public Guarded<Link::Impl> {
public:
    Impl(EventLoop & loop, TcpOptions const & options, Events events)
        : options_(options),
          events_(std::make_shared<Events const>(std::move(events))),
          dialer_(std::make_shared<Dialer>(loop)),
          socket_(loop.impl().executor()),
          limit_(loop) {}

    void open();
    void read(char * room, std::size_t size);
    void write(char const * bytes, std::size_t size);
    void close();

private:
    void dial();
    void askProxy();
    void onAskedProxy(error_code const & code);
    void onProxyAnswer(error_code const & code, std::size_t count);
    void beginTls();
    void goOnWithHandshake();
    void onHandshakeBytes(error_code const & code, std::size_t count);
    void becomeOpen();

    void onRead(error_code const & code, std::size_t count);
    void onWritten(error_code const & code, std::size_t count);
    void writePlain();

    bool decrypt();
    void receiveEncrypted();
    void tellDecrypted();
    void onEncryptedBytes(error_code const & code, std::size_t count);
    void writeEncrypted();
    void sendOutput();
    void sendSome();
    void onSent(error_code const & code, std::size_t count);
    void sendWhatFits();

    template <class Function>
    void receive(Function function) {
        socket_.async_read_some(asio::buffer(input_), handler(std::move(function)));
    }
    template <class Function>
    void later(Function function) {
        asio::post(socket_.get_executor(), handler(std::move(function)));
    }

    void tellRead(std::size_t count);
    void tellWritten();
    bool onTheWay() const { return limit_.isRunning(); }

    void failOpening(error_code const & code);
    void failOpening(CString const & text, ErrorInfo const * cause = nullptr);
    void failOpen(error_code const & code);
    void failOpen(TlsClient::Result result);
    void onWriteFailed(error_code const & code);
    void failClosedByPeer(char const * how);
    void fail(ErrorInfo const & error);
    CString at(CString const & text) const;

    TcpOptions const options_;
    std::shared_ptr<Events const> events_;
    std::shared_ptr<Dialer> dialer_;
    tcp::socket socket_;
    Timer limit_;  // of the whole way to an open connection
    Clock::time_point deadline_;
    char const * step_ = nullptr;  // of that way, behind the dialer's

    std::optional<ProxyTunnel> tunnel_;
    std::string rest_;  // came with the proxy's answer, and is the tunnel's
    std::unique_ptr<TlsClient> tls_;
    std::vector<char> input_;   // of proxy and TLS
    std::vector<char> output_;  // of TLS, while it is sent
    asio::const_buffer toSend_;
    bool sending_ = false;

    asio::mutable_buffer room_;  // of the caller, while a read is under way
    asio::const_buffer toWrite_;
    std::size_t decrypted_ = 0;  // bytes in the room
    TlsClient::Result inputResult_ = TlsClient::Result::DONE;
    bool reading_ = false;
    bool writing_ = false;
};

void Link::Impl::open() {
    limit_.startAfter(options_.connectMilliSec, handler([this] {
                          CString text;
                          text.Format("no connection within %d ms, given up while %s",
                                      options_.connectMilliSec,
                                      step_ != nullptr ? step_ : dialer_->step());
                          failOpening(text);
                      }));
    deadline_ = Clock::now() + milliseconds(options_.connectMilliSec);
    dial();
}

void Link::Impl::dial() {
    ProxyAddress address{options_.host, std::to_string(options_.port).c_str()};
    CString const proxy = options_.inet.getProxy();
    if (!proxy.IsEmpty()) {
        tunnel_.emplace(options_);
        if (!ProxyAddress::parse(proxy, &address) || tunnel_->request().empty()) {
            later([this] { failOpening("the proxy cannot be asked with such options"); });
            return;
        }
    }
    dialer_->dial(address.host, address.port, deadline_,
                  handler([this](error_code const & code, tcp::socket socket) {
                      if (code) {
                          failOpening(code);
                          return;
                      }
                      socket_ = std::move(socket);
                      error_code ignored;
                      socket_.set_option(tcp::no_delay(true), ignored);
                      tunnel_.has_value() ? askProxy() : beginTls();
                  }));
}

void Link::Impl::askProxy() {
    step_ = "asking the proxy";
    input_.resize(INPUT_SIZE);
    toSend_ = asio::buffer(tunnel_->request());
    onAskedProxy({});
}

void Link::Impl::onAskedProxy(error_code const & code) {
    if (code) {
        failOpening(code);
        return;
    }
    if (toSend_.size() > 0) {
        socket_.async_write_some(toSend_,
                                 handler([this](error_code const & failure, std::size_t count) {
                                     toSend_ += count;
                                     onAskedProxy(failure);
                                 }));
        return;
    }
    receive(
        [this](error_code const & failure, std::size_t count) { onProxyAnswer(failure, count); });
}

void Link::Impl::onProxyAnswer(error_code const & code, std::size_t count) {
    if (code == asio::error::eof) {
        failOpening("the proxy hung up without an answer");
        return;
    }
    if (code) {
        failOpening(code);
        return;
    }
    switch (tunnel_->add({input_.data(), count})) {
        case ProxyTunnel::Result::NEEDS_INPUT:
            onAskedProxy({});
            return;
        case ProxyTunnel::Result::FAILED:
            fail(tunnel_->error());
            return;
        case ProxyTunnel::Result::OPEN:
            rest_ = tunnel_->rest();
            tunnel_.reset();
            beginTls();
            return;
    }
}

void Link::Impl::beginTls() {
    if (options_.plain) {
        becomeOpen();
        return;
    }
    step_ = "agreeing on TLS";
    tls_ = std::make_unique<TlsClient>(options_);
    tls_->addInput(rest_.data(), rest_.size());
    rest_.clear();
    input_.resize(INPUT_SIZE);
    goOnWithHandshake();
}

void Link::Impl::goOnWithHandshake() {
    auto const result = tls_->handshake();
    if (result == TlsClient::Result::DONE) {
        sendOutput();
        becomeOpen();
    } else if (result == TlsClient::Result::NEEDS_INPUT) {
        sendOutput();
        receive(
            [this](error_code const & code, std::size_t count) { onHandshakeBytes(code, count); });
    } else {
        failOpening("TLS: " + tls_->error().getErrorMessage(), &tls_->error());
    }
}

void Link::Impl::onHandshakeBytes(error_code const & code, std::size_t count) {
    if (code == asio::error::eof) {
        failOpening("TLS: the other side hung up");
        return;
    }
    if (code) {
        failOpening(code);
        return;
    }
    tls_->addInput(input_.data(), count);
    goOnWithHandshake();
}

void Link::Impl::becomeOpen() {
    limit_.cancel();
    dialer_.reset();
    auto const events = events_;
    events->opened();
}

void Link::Impl::read(char * room, std::size_t size) {
    reading_ = true;
    room_ = asio::buffer(room, size);
    if (tls_ != nullptr) {
        decrypt() ? later([this] { tellDecrypted(); }) : receiveEncrypted();
    } else if (!rest_.empty()) {
        later([this] {
            std::size_t const count = asio::buffer_copy(room_, asio::buffer(rest_));
            rest_.erase(0, count);
            tellRead(count);
        });
    } else {
        socket_.async_read_some(room_, handler([this](error_code const & code, std::size_t count) {
                                    onRead(code, count);
                                }));
    }
}

void Link::Impl::onRead(error_code const & code, std::size_t count) {
    if (code) {
        failOpen(code);
        return;
    }
    tellRead(count);
}

/// Fills the room as far as it goes. False where nothing can be told before more has come.
bool Link::Impl::decrypt() {
    decrypted_ = 0;
    inputResult_ = TlsClient::Result::DONE;
    while (decrypted_ < room_.size() && inputResult_ == TlsClient::Result::DONE) {
        std::size_t count = 0;
        auto const room = room_ + decrypted_;
        inputResult_ = tls_->read(static_cast<char *>(room.data()), room.size(), &count);
        decrypted_ += count;
    }
    sendOutput();
    return decrypted_ > 0 || inputResult_ != TlsClient::Result::NEEDS_INPUT;
}

void Link::Impl::receiveEncrypted() {
    receive([this](error_code const & code, std::size_t count) { onEncryptedBytes(code, count); });
}

void Link::Impl::onEncryptedBytes(error_code const & code, std::size_t count) {
    if (code) {
        failOpen(code);
        return;
    }
    tls_->addInput(input_.data(), count);
    decrypt() ? tellDecrypted() : receiveEncrypted();
}

void Link::Impl::tellDecrypted() {
    if (decrypted_ > 0) {
        tellRead(decrypted_);  // what ended the stream stays, and comes out at the next read
    } else {
        failOpen(inputResult_);
    }
}

void Link::Impl::tellRead(std::size_t count) {
    reading_ = false;
    auto const events = events_;
    events->read(count);
}

void Link::Impl::write(char const * bytes, std::size_t size) {
    writing_ = true;
    toWrite_ = asio::buffer(bytes, size);
    tls_ != nullptr ? writeEncrypted() : writePlain();
}

void Link::Impl::writePlain() {
    socket_.async_write_some(toWrite_, handler([this](error_code const & code, std::size_t count) {
                                 onWritten(code, count);
                             }));
}

void Link::Impl::onWritten(error_code const & code, std::size_t count) {
    if (code) {
        onWriteFailed(code);
        return;
    }
    toWrite_ += count;
    if (toWrite_.size() > 0) {
        writePlain();
        return;
    }
    tellWritten();
}

void Link::Impl::writeEncrypted() {
    auto result = TlsClient::Result::DONE;
    while (toWrite_.size() > 0 && tls_->outputSize() < OUTPUT_AHEAD &&
           result == TlsClient::Result::DONE) {
        std::size_t count = 0;
        result = tls_->write(static_cast<char const *>(toWrite_.data()), toWrite_.size(), &count);
        toWrite_ += count;
    }
    if (result == TlsClient::Result::DONE) {
        sendOutput();
    } else {
        later([this, result] { failOpen(result); });
    }
}

void Link::Impl::sendOutput() {
    if (!sending_ && tls_->outputSize() > 0) {
        tls_->takeOutput(&output_);
        toSend_ = asio::buffer(output_);
        sending_ = true;
        sendSome();
    }
}

void Link::Impl::sendSome() {
    socket_.async_write_some(toSend_, handler([this](error_code const & code, std::size_t count) {
                                 onSent(code, count);
                             }));
}

void Link::Impl::onSent(error_code const & code, std::size_t count) {
    if (code) {
        onWriteFailed(code);
        return;
    }
    toSend_ += count;
    if (toSend_.size() > 0) {
        sendSome();
        return;
    }
    sending_ = false;
    if (writing_ && toWrite_.size() == 0 && tls_->outputSize() == 0) {
        tellWritten();
    } else if (writing_) {
        writeEncrypted();
    } else {
        sendOutput();
    }
}

void Link::Impl::tellWritten() {
    writing_ = false;
    auto const events = events_;
    events->written();
}

void Link::Impl::close() {
    if (hasEnded()) {
        return;
    }
    end();
    events_.reset();
    limit_.cancel();
    if (dialer_ != nullptr) {
        dialer_->close();
    }
    if (tls_ != nullptr) {
        tls_->finish();
        sendWhatFits();
    }
    error_code ignored;
    socket_.close(ignored);
}

/// The last words, an alert or the end of the stream, as far as the system takes them at once.
void Link::Impl::sendWhatFits() {
    if (sending_) {
        return;  // they would stand in the middle of what is on its way
    }
    error_code ignored;
    tls_->takeOutput(&output_);
    socket_.non_blocking(true, ignored);
    socket_.send(asio::buffer(output_), 0, ignored);
}

void Link::Impl::failOpening(error_code const & code) {
    ErrorInfo const cause = systemError(code);
    failOpening(cause.getErrorMessage(), &cause);
}

void Link::Impl::failOpening(CString const & text, ErrorInfo const * cause) {
    fail(networkFailure(KestrinConstants::ERR_FailedToCreateConnection, at(text), cause));
}

void Link::Impl::failOpen(error_code const & code) {
    if (code == asio::error::eof) {
        failClosedByPeer("the other side closed the connection");
        return;
    }
    ErrorInfo const cause = systemError(code);
    fail(networkFailure(KestrinConstants::ERR_NetworkIOError, at(cause.getErrorMessage()), &cause));
}

void Link::Impl::failOpen(TlsClient::Result result) {
    if (result == TlsClient::Result::CLOSED) {
        failClosedByPeer("the other side ended the TLS stream");
        return;
    }
    ErrorInfo const cause = tls_->error();
    fail(networkFailure(KestrinConstants::ERR_NetworkIOError, at("TLS: " + cause.getErrorMessage()),
                        &cause));
}

void Link::Impl::onWriteFailed(error_code const & code) {
    // The other side may have said why before it closed, which only reading brings to light; and
    // reading comes to its end as well on such a connection.
    if (!onTheWay() && !reading_) {
        failOpen(code);
    }
}

void Link::Impl::failClosedByPeer(char const * how) {
    fail(networkFailure(KestrinConstants::ERR_ConnectionClosedByRemotePeer, at(how)));
}

void Link::Impl::fail(ErrorInfo const & error) {
    auto const events = events_;
    close();
    events->failed(error);
}

CString Link::Impl::at(CString const & text) const {
    CString whole;
    whole.Format("%s:%u: %s", options_.host.GetString(), static_cast<unsigned int>(options_.port),
                 text.GetString());
    return whole;
}

Link::Link(EventLoop & loop, TcpOptions const & options, Events events)
    : impl_(std::make_shared<Impl>(loop, options, std::move(events))) {}

Link::~Link() { impl_->close(); }

void Link::open() { impl_->open(); }

void Link::read(char * room, std::size_t size) { impl_->read(room, size); }

void Link::write(char const * bytes, std::size_t size) { impl_->write(bytes, size); }

void Link::close() { impl_->close(); }

}  // namespace tvk
