#include "modules/asio/detail/Dialer.h"

#include <utility>

#include "modules/asio/detail/EventLoopImpl.h"

namespace tvk {

Dialer::Dialer(EventLoop & loop)
    : resolver_(loop.impl().executor()), socket_(loop.impl().executor()), share_(loop) {}

void Dialer::dial(char const * host, char const * port,
                  std::chrono::steady_clock::time_point deadline, Done done) {
    deadline_ = deadline;
    done_ = std::move(done);
    step_ = "looking up the name";
    // Without the usual flag that asks for families of configured addresses alone: it hides loopback
    // addresses on a machine without a network.
    resolver_.async_resolve(
        host, port, Resolver::numeric_service,
        handler([this](asio::error_code const & code, Resolver::results_type const & found) {
            onResolved(code, found);
        }));
}

void Dialer::close() {
    end();
    done_ = nullptr;
    share_.cancel();
    resolver_.cancel();
    asio::error_code ignored;
    socket_.close(ignored);
}

void Dialer::onResolved(asio::error_code const & code, Resolver::results_type const & found) {
    if (code) {
        finish(code);
        return;
    }
    step_ = "connecting";
    addresses_ = found;
    address_ = addresses_.begin();
    left_ = addresses_.size();
    tryAddress();
}

void Dialer::tryAddress() {
    using std::chrono::milliseconds;
    auto const now = std::chrono::steady_clock::now();
    auto const time = std::chrono::duration_cast<milliseconds>(deadline_ - now).count();
    if (left_ > 1) {
        share_.startAfter(time / static_cast<long long>(left_),
                          handler([this] { onTried(asio::error::timed_out); }));
    }
    socket_.async_connect(address_->endpoint(),
                          handler([this, attempt = ++attempt_](asio::error_code const & code) {
                              if (attempt == attempt_) {
                                  onTried(code);
                              }
                          }));
}

void Dialer::onTried(asio::error_code const & code) {
    share_.cancel();
    ++attempt_;
    if (!code || left_ == 1) {
        finish(code);
        return;
    }
    asio::error_code ignored;
    socket_.close(ignored);
    ++address_;
    --left_;
    tryAddress();
}

void Dialer::finish(asio::error_code const & code) {
    Done const done = std::exchange(done_, nullptr);
    end();
    done(code, std::move(socket_));
}

}  // namespace tvk
