#include "modules/asio/EventLoop.h"

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <asio/post.hpp>
#include <optional>
#include <utility>

#include "modules/asio/detail/EventLoopImpl.h"

namespace tvk {

namespace {

/// On a context of somebody else.
class ContextLoop final : public EventLoop::Impl {
public:
    explicit ContextLoop(asio::io_context & context) : context_(context) {}

    asio::any_io_executor executor() override { return context_.get_executor(); }

    void post(std::function<void()> function) override {
        asio::post(context_, std::move(function));
    }

    bool pollOne() override {
        restartUnlessDriven();
        return context_.poll_one() > 0;
    }

    bool runOne() override {
        OneStep const step(*this);
        // Looked at first: what the function around this call has entered may stand in a list of its
        // thread, which only polling moves to where a nested call finds it.
        return context_.poll_one() > 0 || context_.run_one() > 0;
    }

    void beginDrive() override {
        restartUnlessDriven();
        if (drives_++ == 0) {
            work_.emplace(context_.get_executor());
        }
    }

    void endDrive() override {
        if (--drives_ == 0) {
            work_.reset();
        }
    }

private:
    /// runOne is a drive of one step.
    class OneStep {
    public:
        explicit OneStep(ContextLoop & loop) : loop_(loop) { loop_.beginDrive(); }
        ~OneStep() { loop_.endDrive(); }

        OneStep(OneStep const &) = delete;
        OneStep & operator=(OneStep const &) = delete;

    private:
        ContextLoop & loop_;
    };

    /// Inside a drive or a handler the context stands still only where it was told to.
    void restartUnlessDriven() {
        if (drives_ == 0 && context_.stopped() &&
            !context_.get_executor().running_in_this_thread()) {
            context_.restart();
        }
    }

    asio::io_context & context_;
    int drives_ = 0;
    std::optional<asio::executor_work_guard<asio::io_context::executor_type>> work_;
};

}  // namespace

EventLoop::Drive::Drive(EventLoop & loop) : loop_(loop) { loop_.impl_->beginDrive(); }

EventLoop::Drive::~Drive() { loop_.impl_->endDrive(); }

EventLoop::EventLoop(asio::io_context & context)
    : EventLoop(std::make_unique<ContextLoop>(context)) {}

EventLoop::EventLoop(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

EventLoop::~EventLoop() = default;

void EventLoop::post(std::function<void()> function) { impl_->post(std::move(function)); }

bool EventLoop::pollOne() { return impl_->pollOne(); }

bool EventLoop::runOne() { return impl_->runOne(); }

}  // namespace tvk
