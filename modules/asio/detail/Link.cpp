#include "modules/asio/detail/Link.h"

#include <asio/buffer.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <chrono>
#include <string>
#include <utility>

#include "modules/asio/TcpOptions.h"
#include "modules/asio/detail/Errors.h"
#include "modules/asio/detail/EventLoopImpl.h"
#include "modules/asio/detail/Timer.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

using asio::error_code;
using asio::ip::tcp;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// What the system said, as the cause of an error.
ErrorInfo systemError(error_code const & code) {
    bool const errnoValue = code.category() == asio::error::get_system_category();
    return {ASIO_COMPONENT_CODE,
            errnoValue ? ErrorInfo::ErrorDomain_POSIX : ErrorInfo::ErrorDomain_System, code.value(),
            code.message().c_str(), nullptr};
}

}  // namespace

/// Kept alive by the handlers that are under way; what tells them that they have no say any more is that
/// the events are gone.
class Link::Impl : public std::enable_shared_from_this<Link::Impl> {
    /// A handler that keeps this object, and does nothing once it is closed.
    template <class Function>
    auto handler(Function function) {
        return [self = shared_from_this(), function = std::move(function)](auto &&... results) {
            if (self->events_ != nullptr) {
                function(std::forward<decltype(results)>(results)...);
            }
        };
    }

public:
    Impl(EventLoop & loop, TcpOptions const & options, Events events)
        : options_(options),
          events_(std::make_shared<Events const>(std::move(events))),
          executor_(loop.impl().executor()),
          resolver_(executor_),
          socket_(executor_),
          limit_(loop),
          share_(loop) {}

    void open() {
        deadline_ = Clock::now() + milliseconds(options_.connectMilliSec);
        limit_.startAfter(options_.connectMilliSec, handler([this] { failOpening(timedOut()); }));
        startResolving();
    }

    void read(char * room, std::size_t size) {
        socket_.async_read_some(
            asio::buffer(room, size),
            handler([this](error_code const & code, std::size_t count) { onRead(code, count); }));
    }

    void write(char const * bytes, std::size_t size) {
        toWrite_ = asio::buffer(bytes, size);
        writeSome();
    }

    void close() {
        if (events_ == nullptr) {
            return;
        }
        events_.reset();
        limit_.cancel();
        share_.cancel();
        resolver_.cancel();
        closeSocket();
    }

private:
    CString place() const {
        CString text;
        text.Format("%s:%u", options_.host.GetString(), static_cast<unsigned int>(options_.port));
        return text;
    }

    void startResolving() {
        step_ = "looking up the name";
        resolver_.async_resolve(
            options_.host.GetString(), std::to_string(options_.port),
            tcp::resolver::numeric_service,
            handler([this](error_code const & code, tcp::resolver::results_type const & found) {
                onResolved(code, found);
            }));
    }

    void onResolved(error_code const & code, tcp::resolver::results_type const & found) {
        if (code) {
            failOpening(code);
            return;
        }
        step_ = "connecting";
        addresses_ = found;
        address_ = addresses_.begin();
        left_ = addresses_.size();
        tryAddress();
    }

    /// Each address gets its share of the time that is left, so that one that does not answer leaves
    /// some for the next.
    void tryAddress() {
        auto const time =
            std::chrono::duration_cast<milliseconds>(deadline_ - Clock::now()).count();
        share_.startAfter(time / static_cast<long long>(left_),
                          handler([this] { tryNextAddress(asio::error::timed_out); }));
        unsigned int const attempt = ++attempt_;
        socket_.async_connect(address_->endpoint(),
                              handler([this, attempt](error_code const & code) {
                                  if (attempt == attempt_) {
                                      onConnected(code);
                                  }
                              }));
    }

    void tryNextAddress(error_code const & code) {
        if (left_ == 1) {
            failOpening(code);
            return;
        }
        closeSocket();
        ++address_;
        --left_;
        tryAddress();
    }

    void onConnected(error_code const & code) {
        share_.cancel();
        if (code) {
            tryNextAddress(code);
            return;
        }
        error_code ignored;
        socket_.set_option(tcp::no_delay(true), ignored);
        becomeOpen();
    }

    void becomeOpen() {
        if (!options_.plain) {
            failOpening("only a plain connection can be made");
            return;
        }
        limit_.cancel();
        addresses_ = {};
        auto const events = events_;
        events->opened();
    }

    void onRead(error_code const & code, std::size_t count) {
        if (code) {
            failOpen(code);
            return;
        }
        auto const events = events_;
        events->read(count);
    }

    void writeSome() {
        socket_.async_write_some(toWrite_,
                                 handler([this](error_code const & code, std::size_t count) {
                                     onWritten(code, count);
                                 }));
    }

    void onWritten(error_code const & code, std::size_t count) {
        if (code) {
            failOpen(code);
            return;
        }
        toWrite_ += count;
        if (toWrite_.size() > 0) {
            writeSome();
            return;
        }
        auto const events = events_;
        events->written();
    }

    CString timedOut() const {
        CString text;
        text.Format("no connection within %d ms, given up while %s", options_.connectMilliSec,
                    step_);
        return text;
    }

    void failOpening(error_code const & code) {
        ErrorInfo const cause = systemError(code);
        failOpening(code.message().c_str(), &cause);
    }

    void failOpening(CString const & text, ErrorInfo const * cause = nullptr) {
        fail(networkFailure(KestrinConstants::ERR_FailedToCreateConnection, place() + ": " + text,
                            cause));
    }

    void failOpen(error_code const & code) {
        if (code == asio::error::eof) {
            fail(networkFailure(KestrinConstants::ERR_ConnectionClosedByRemotePeer,
                                place() + ": the other side closed the connection"));
            return;
        }
        ErrorInfo const cause = systemError(code);
        fail(networkFailure(KestrinConstants::ERR_NetworkIOError,
                            place() + ": " + code.message().c_str(), &cause));
    }

    void fail(ErrorInfo const & error) {
        auto const events = events_;
        close();
        events->failed(error);
    }

    void closeSocket() {
        error_code ignored;
        socket_.close(ignored);
    }

    TcpOptions const options_;
    std::shared_ptr<Events const> events_;  // null when closed
    asio::any_io_executor executor_;
    tcp::resolver resolver_;
    tcp::socket socket_;
    Timer limit_;  // of the whole opening
    Timer share_;  // of one address
    Clock::time_point deadline_;
    char const * step_ = "";
    tcp::resolver::results_type addresses_;
    tcp::resolver::results_type::const_iterator address_;
    std::size_t left_ = 0;  // addresses, the one at hand included
    unsigned int attempt_ = 0;
    asio::const_buffer toWrite_;
};

Link::Link(EventLoop & loop, TcpOptions const & options, Events events)
    : impl_(std::make_shared<Impl>(loop, options, std::move(events))) {}

Link::~Link() { impl_->close(); }

void Link::open() { impl_->open(); }

void Link::read(char * room, std::size_t size) { impl_->read(room, size); }

void Link::write(char const * bytes, std::size_t size) { impl_->write(bytes, size); }

void Link::close() { impl_->close(); }

}  // namespace tvk
