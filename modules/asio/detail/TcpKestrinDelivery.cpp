// How what has happened reaches the application.

#include <algorithm>

#include "modules/asio/detail/FirstException.h"
#include "modules/asio/detail/TcpKestrinImpl.h"

namespace tvk {

namespace {

/// So much is done between two looks into the loop, and in one function that is entered there: timers
/// and the other users of the loop wait for no more than this.
constexpr std::size_t SLICE = 64;

}  // namespace

/// A look into the loop, by somebody who then delivers what it has brought.
class TcpKestrin::Impl::Looking {
public:
    explicit Looking(Impl & impl) : impl_(impl), before_(std::exchange(impl.isLooking_, true)) {}
    ~Looking() { impl_.isLooking_ = before_; }

    Looking(Looking const &) = delete;
    Looking & operator=(Looking const &) = delete;

private:
    Impl & impl_;
    bool const before_;
};

/// Enters a slice at the end, also that of an exception, where something may be left to deliver.
class TcpKestrin::Impl::Unfinished {
public:
    explicit Unfinished(Impl & impl) : impl_(impl) {}
    ~Unfinished() {
        if (impl_.mayHaveWork_) {
            impl_.enterSlice();
        }
    }

    Unfinished(Unfinished const &) = delete;
    Unfinished & operator=(Unfinished const &) = delete;

private:
    Impl & impl_;
};

/// Around all that drives the loop: agent and loop stay until its end.
class TcpKestrin::Impl::Driving {
public:
    explicit Driving(Impl & impl)
        : alive_(&impl.agent_), loop_(impl.loop_), drive_(*loop_), unfinished_(impl) {}

private:
    RefCountedPtr<Kestrin> const alive_;
    std::shared_ptr<EventLoop> const loop_;
    EventLoop::Drive const drive_;
    Unfinished const unfinished_;
};

std::size_t TcpKestrin::Impl::run() {
    Driving const driving(*this);
    std::size_t called = 0;
    for (;;) {
        if (deliver(SLICE, &called)) {
            pollLoop();
        } else if (status() == KESTRINSTATUS_CREATED || status() == KESTRINSTATUS_STOPPED ||
                   !runLoop()) {
            return called;
        }
    }
}

std::size_t TcpKestrin::Impl::poll(std::size_t maximum) {
    Driving const driving(*this);
    std::size_t called = 0;
    for (;;) {
        bool const ran = pollLoop();
        bool const delivered = deliver(std::min(SLICE, maximum - called), &called);
        if (called == maximum || (!ran && !delivered)) {
            return called;
        }
    }
}

TcpKestrin::Impl::MessagePtr TcpKestrin::Impl::request(MessagePtr const & message,
                                                       int timeoutMilliSec, ErrorInfo * error) {
    Driving const driving(*this);
    MessagePtr reply;
    bool isDone = false;
    detail::ReplyOrError handler([&](MessagePtr const & /*request*/, MessagePtr const & theReply,
                                     ErrorInfo const & failure) {
        reply = theReply;
        isDone = true;
        if (theReply.isNull() && error != nullptr) {
            *error = failure;
        }
    });
    OperationPtr const operation = asyncRequest(message, timeoutMilliSec, &handler, nullptr);
    try {
        std::size_t steps = 0;
        while (!isDone) {
            if (step() == Step::NOTHING) {
                mayHaveWork_ = false;
                if (!isDone && !runLoop()) {
                    operation->cancel();
                }
            } else if (++steps % SLICE == 0) {
                pollLoop();
            }
        }
    } catch (...) {
        // Thrown by the callback of somebody else, which came meanwhile: the handler goes now.
        operation->cancel();
        throw;
    }
    return reply;
}

/// Something is there for step, or may be.
void TcpKestrin::Impl::announce() {
    mayHaveWork_ = true;
    if (!isLooking_) {
        enterSlice();
    }
}

void TcpKestrin::Impl::enterSlice() {
    if (isSliceEntered_) {
        return;
    }
    isSliceEntered_ = true;
    loop_->post([me = me_] {
        if (*me != nullptr) {
            (*me)->slice();
        }
    });
}

void TcpKestrin::Impl::slice() {
    isSliceEntered_ = false;
    if (isLooking_) {
        return;  // who looks delivers
    }
    RefCountedPtr<Kestrin> const alive(&agent_);
    Unfinished const unfinished(*this);
    std::size_t called = 0;
    deliver(SLICE, &called);
}

bool TcpKestrin::Impl::pollLoop() {
    Looking const looking(*this);
    std::size_t ran = 0;
    while (ran < SLICE && loop_->pollOne()) {
        ++ran;
    }
    return ran > 0;
}

bool TcpKestrin::Impl::runLoop() {
    Looking const looking(*this);
    return loop_->runOne();
}

/// At most `maximum` callbacks. Whether anything was done.
bool TcpKestrin::Impl::deliver(std::size_t maximum, std::size_t * called) {
    std::size_t const limit = *called + maximum;
    for (std::size_t steps = 0; steps < SLICE && *called < limit; ++steps) {
        switch (step()) {
            case Step::NOTHING:
                mayHaveWork_ = false;
                return steps > 0;
            case Step::WORK:
                break;
            case Step::CALLBACK:
                ++*called;
                break;
        }
    }
    return maximum > 0;
}

TcpKestrin::Impl::Step TcpKestrin::Impl::step() {
    if (hasHandlersToCall()) {
        return callNextHandler();
    }
    if (!passes_.empty()) {
        return runPass(passes_);
    }
    isTurnOfFrames_ = !isTurnOfFrames_;
    if (isTurnOfFrames_ || outcomes_.empty()) {
        Step const taken = takeFrame();
        if (taken != Step::NOTHING) {
            return taken;
        }
    }
    if (!outcomes_.empty()) {
        return deliverOutcome();
    }
    return lastPasses_.empty() ? Step::NOTHING : runPass(lastPasses_);
}

TcpKestrin::Impl::Step TcpKestrin::Impl::takeFrame() {
    if (connection_ == nullptr) {
        return Step::NOTHING;
    }
    Frame frame;
    ErrorInfo loss;
    switch (connection_->next(&frame, &loss)) {
        case detail::Connection::Came::NOTHING:
            return Step::NOTHING;
        case detail::Connection::Came::OPENED:
            sendHello();
            return Step::WORK;
        case detail::Connection::Came::LOSS:
            lost(loss);
            return Step::WORK;
        case detail::Connection::Came::FRAME:
            break;
    }
    if (frame.kind == FRAME_GOODBYE) {
        return takeGoodbye(frame);
    }
    if (frame.kind == FRAME_WELCOME) {
        return takeWelcome(frame);
    }
    if (!isConnected()) {
        return protocolFailed("the back end spoke before its welcome");
    }
    if (frame.kind == FRAME_REPLY) {
        return takeReply(frame);
    }
    if (frame.kind == FRAME_NOTICE) {
        return takeNotice(frame);
    }
    return protocolFailed("a frame came that only a client sends");
}

TcpKestrin::Impl::Step TcpKestrin::Impl::runPass(std::deque<Pass> & passes) {
    // Taken out first: one that throws was told.
    Pass const pass = std::move(passes.front());
    passes.pop_front();
    return pass() ? Step::CALLBACK : Step::WORK;
}

/// What is to be told now, but for frames. What throws does not keep the rest from being told; the first
/// exception leaves in the end. Outcomes that are decided meanwhile stay for later, so that a handler may
/// ask again each time.
void TcpKestrin::Impl::drain() {
    detail::FirstException first;
    auto const runPasses = [&](std::deque<Pass> & passes) {
        while (!passes.empty()) {
            first.of([&] { runPass(passes); });
        }
    };
    runPasses(passes_);
    for (std::size_t left = outcomes_.size(); left > 0 && !outcomes_.empty(); --left) {
        first.of([this] { deliverOutcome(); });
        runPasses(passes_);
    }
    runPasses(lastPasses_);
    first.rethrow();
}

}  // namespace tvk
