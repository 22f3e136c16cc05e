#include "examples/backend/Backend.h"

#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/ssl/context.hpp>
#include <asio/steady_timer.hpp>
#include <chrono>
#include <future>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

#include "examples/backend/Connection.h"
#include "examples/backend/Hub.h"

namespace backend {

using asio::ip::tcp;

namespace {

constexpr int RETRY_MILLISEC = 100;
constexpr int SWEEP_MILLISEC = 50;

}  // namespace

struct Backend::Impl {
    explicit Impl(Options given) : options(std::move(given)) {}

    void listen();
    void accept();
    void take(tcp::socket socket);
    static void after(asio::steady_timer & timer, int milliSec, std::function<void()> work);
    /// Not at all with 0.
    void every(asio::steady_timer & timer, int milliSec, std::function<void()> const & work);
    void run();
    /// Runs `work` on the thread, and waits for it. Nothing where there is no thread.
    void onThread(std::function<void()> const & work);

    Options const options;
    std::optional<asio::ssl::context> tls;
    asio::io_context loop{1};
    tcp::acceptor acceptor{loop};
    asio::steady_timer acceptTimer{loop};
    asio::steady_timer quoteTimer{loop};
    asio::steady_timer headlineTimer{loop};
    asio::steady_timer sweepTimer{loop};
    std::optional<Hub> hub;
    unsigned short port = 0;
    std::thread thread;
};

void Backend::Impl::listen() {
    if (!options.certFile.empty()) {
        tls.emplace(asio::ssl::context::tls_server);
        tls->set_options(asio::ssl::context::default_workarounds | asio::ssl::context::no_tlsv1 |
                         asio::ssl::context::no_tlsv1_1);
        tls->use_certificate_chain_file(options.certFile);
        tls->use_private_key_file(options.keyFile, asio::ssl::context::pem);
    }
    tcp::endpoint const endpoint(asio::ip::make_address(options.address), options.port);
    acceptor.open(endpoint.protocol());
    acceptor.set_option(tcp::acceptor::reuse_address(true));
    acceptor.bind(endpoint);
    acceptor.listen();
    port = acceptor.local_endpoint().port();
}

void Backend::Impl::accept() {
    acceptor.async_accept([this](std::error_code const & error, tcp::socket socket) {
        if (!acceptor.is_open()) {
            return;
        }
        if (error) {
            // Such as too many open files: some may be closed by then.
            after(acceptTimer, RETRY_MILLISEC, [this] { accept(); });
            return;
        }
        take(std::move(socket));
        accept();
    });
}

void Backend::Impl::take(tcp::socket socket) {
    if (hub->connectionCount() >= options.maximumConnections) {
        return;  // closes it
    }
    std::error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    hub->add(newChannel(std::move(socket), tls ? &*tls : nullptr));
}

void Backend::Impl::after(asio::steady_timer & timer, int milliSec, std::function<void()> work) {
    timer.expires_after(std::chrono::milliseconds(milliSec));
    timer.async_wait([work = std::move(work)](std::error_code const & error) {
        if (!error) {
            work();
        }
    });
}

void Backend::Impl::every(asio::steady_timer & timer, int milliSec,
                          std::function<void()> const & work) {
    if (milliSec > 0) {
        after(timer, milliSec, [this, &timer, milliSec, work] {
            work();
            every(timer, milliSec, work);
        });
    }
}

void Backend::Impl::run() {
    hub.emplace(loop, options);
    accept();
    every(quoteTimer, options.quoteMilliSec, [this] { hub->moveQuotes(); });
    every(headlineTimer, options.headlineMilliSec, [this] { hub->writeHeadline(); });
    every(sweepTimer, SWEEP_MILLISEC, [this] { hub->closeOverdue(); });
    loop.run();
    hub->cutAll();
    // What was cut hears of it; nothing new begins.
    loop.restart();
    loop.poll();
    hub.reset();
}

void Backend::Impl::onThread(std::function<void()> const & work) {
    if (!thread.joinable()) {
        return;
    }
    std::promise<void> done;
    asio::post(loop, [&work, &done] {
        work();
        done.set_value();
    });
    done.get_future().wait();
}

Backend::Backend(Options options) : impl_(std::make_unique<Impl>(std::move(options))) {}

Backend::~Backend() { stop(); }

bool Backend::start(std::string * problem) {
    try {
        impl_->listen();
    } catch (std::system_error const & error) {
        *problem = error.what();
        return false;
    }
    impl_->thread = std::thread([this] { impl_->run(); });
    return true;
}

void Backend::stop() {
    if (!impl_->thread.joinable()) {
        return;
    }
    asio::post(impl_->loop, [this] {
        impl_->acceptor.close();
        for (asio::steady_timer * const timer :
             {&impl_->acceptTimer, &impl_->quoteTimer, &impl_->headlineTimer, &impl_->sweepTimer}) {
            timer->cancel();
        }
        impl_->loop.stop();
    });
    impl_->thread.join();
}

unsigned short Backend::port() const { return impl_->port; }

void Backend::inject(Fault const & fault) {
    impl_->onThread([this, &fault] { impl_->hub->inject(fault); });
}

Backend::Counts Backend::counts() const {
    Counts counts;
    impl_->onThread([this, &counts] { counts = impl_->hub->counts(); });
    return counts;
}

}  // namespace backend
