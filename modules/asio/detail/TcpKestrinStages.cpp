// The stages of a connection: made, welcome, lost, made again, given up.

#include <random>
#include <utility>

#include "modules/asio/detail/Errors.h"
#include "modules/asio/detail/Fields.h"
#include "modules/asio/detail/FirstException.h"
#include "modules/asio/detail/TcpKestrinImpl.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/NumberData.h"

namespace tvk {

namespace {

constexpr int PROTOCOL = 1;

/// A handler that asks again from inside each outcome hears of no more than this once the agent ends.
constexpr int LAST_ROUNDS = 1000;

long long millisecondsSinceEpoch() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

unsigned int seedFor(TcpOptions const & options) {
    return options.jitterSeed != 0 ? options.jitterSeed : std::random_device()();
}

}  // namespace

TcpKestrin::Impl::Impl(TcpKestrin & agent, std::shared_ptr<EventLoop> loop,
                       TcpOptions const & options)
    : agent_(agent),
      loop_(std::move(loop)),
      options_(options),
      me_(std::make_shared<Impl *>(this)),
      cache_(SimpleObjectCache::defaultRawDataConverter()),
      messages_(&cache_),
      backOff_(options.backOffFirstMilliSec, options.backOffMaximumMilliSec, options.backOffFactor,
               options.jitter, seedFor(options)),
      reconnection_(*loop_),
      loginHandler_([this](MessagePtr const & request, MessagePtr const & reply,
                           ErrorInfo const & error) { takeLoginReply(request, reply, error); }),
      realTimeHandler_(
          [this](MessagePtr const & request, MessagePtr const & reply, ErrorInfo const & error) {
              takeRealTimeReply(request, reply, error);
          }),
      topicHandler_([this](MessagePtr const & request, MessagePtr const & reply,
                           ErrorInfo const & error) { takeTopicReply(request, reply, error); }),
      timeouts_(*loop_) {}

TcpKestrin::Impl::~Impl() { *me_ = nullptr; }

bool TcpKestrin::Impl::isConnected() const {
    return status() == KESTRINSTATUS_CONNECTED || status() == KESTRINSTATUS_LOGGED_IN;
}

bool TcpKestrin::Impl::start(ErrorInfo * error) {
    if (agent_.getConfig().isNull() || status() != KESTRINSTATUS_CREATED) {
        return refuse(error, KestrinConstants::ERR_FailedToCreateConnection,
                      "the agent is not initialized or was started before");
    }
    ErrorInfo wrong;
    if (!options_.check(&wrong)) {
        return refuse(error, wrong.getErrorCode(), wrong.getErrorMessage());
    }
    status() = KESTRINSTATUS_CONNECTING;
    connect();
    return true;
}

void TcpKestrin::Impl::connect() {
    connection_ =
        std::make_unique<detail::Connection>(*loop_, options_, writer_, [this] { announce(); });
    connection_->open();
}

void TcpKestrin::Impl::sendHello() {
    MessagePtr const hello(new MappedMessage);
    hello->setFieldValue("protocol", new NumberData(PROTOCOL));
    hello->setFieldValue("client", options_.inet.getUserAgent());
    hello->setFieldValue("version", agent_.getConfig()->getVersionNum());
    hello->setFieldValue("heartbeatMilliSec", new NumberData(options_.heartbeatMilliSec));
    connection_->send(
        writer_.write(FRAME_HELLO, 0, 0, CString(), *hello, nullptr, options_.maximumFrameSize));
}

TcpKestrin::Impl::Step TcpKestrin::Impl::takeWelcome(Frame const & frame) {
    MessagePtr const welcome = messages_.read(frame, nullptr);
    if (isConnected() || welcome.isNull() ||
        detail::numberField(*welcome, "protocol") != PROTOCOL) {
        return protocolFailed("the welcome is out of place, or not of this protocol");
    }
    setServerTime(*welcome);
    connection_->established(detail::numberField(*welcome, "heartbeatMilliSec"));
    attempts_ = 0;
    status() = KESTRINSTATUS_CONNECTED;
    passes_.emplace_back([this] {
        bool const tells = isConnected();
        if (tells) {
            agent_.fireConnected();
        }
        return tells;
    });
    // Behind the listeners, one of which may log in itself.
    passes_.emplace_back([this] {
        if (status() == KESTRINSTATUS_CONNECTED && isLoginKept_ && loginRequest_.isNull()) {
            sendLogin(true);
        }
        return false;
    });
    return Step::WORK;
}

TcpKestrin::Impl::Step TcpKestrin::Impl::takeGoodbye(Frame const & frame) {
    ErrorInfo error = networkFailure(KestrinConstants::ERR_ConnectionClosedByRemotePeer,
                                     "the back end said goodbye");
    bool mayReturn = true;
    MessagePtr const goodbye = messages_.read(frame, nullptr);
    if (!goodbye.isNull()) {
        auto const code = static_cast<int>(detail::numberField(*goodbye, "code"));
        if (code != ErrorInfo::ERR_OK) {
            error.setErrorCode(code);
            error.setErrorMessage(detail::textField(*goodbye, "text"));
        }
        mayReturn = detail::numberField(*goodbye, "retry") != 0;
    }
    lost(error, mayReturn);
    return Step::WORK;
}

TcpKestrin::Impl::Step TcpKestrin::Impl::protocolFailed(char const * text) {
    lost(networkFailure(KestrinConstants::ERR_ProtocolFailure, text));
    return Step::WORK;
}

/// The connection is no more, or must not be used any more. What was under way on it fails.
void TcpKestrin::Impl::lost(ErrorInfo const & error, bool mayReturn) {
    bool const wasConnected = isConnected();
    // A connection that breaks sooner than it took to wait for it does not make the next wait short.
    if (wasConnected && connection_->age() >= std::chrono::milliseconds(backOff_.last())) {
        backOff_.reset();
    }
    connection_.reset();
    lastLoss_ = error;
    status() = KESTRINSTATUS_CONNECTING;
    realTime_.interrupt();
    for (auto & topic : topics_) {
        topic.second.agreement.interrupt();
    }
    if (!wasConnected || !mayReturn) {
        tellError(error);
    }
    if (wasConnected) {
        passes_.emplace_back([this, error] {
            fireDisconnected(&error);
            return true;
        });
    }
    giveUpLogin(error);
    decideAll(Verdict::FAILED, std::make_shared<ErrorInfo const>(error));
    if (!mayReturn || !options_.reconnect) {
        end(&error);
        return;
    }
    if (!wasConnected && ++attempts_ == options_.maximumAttempts) {
        ErrorInfo const retryOut =
            networkFailure(KestrinConstants::ERR_RealServiceRetryOut,
                           "no connection after as many attempts as are allowed", &error);
        tellError(retryOut);
        end(&retryOut);
        return;
    }
    reconnection_.startAfter(backOff_.next(), [this] { connect(); });
}

void TcpKestrin::Impl::stop() {
    if (status() != KESTRINSTATUS_STOPPED) {
        RefCountedPtr<Kestrin> const alive(&agent_);
        end(nullptr);
        drain();
    }
}

/// Puts the agent at its end: what a callback asks for from here on fails. The rest is to be told.
void TcpKestrin::Impl::end(ErrorInfo const * error) {
    bool const wasConnected = isConnected();
    auto const shared = error != nullptr ? std::make_shared<ErrorInfo const>(*error) : nullptr;
    status() = KESTRINSTATUS_STOPPED;
    connection_.reset();
    reconnection_.cancel();
    timeouts_.cancel();
    notice_ = {};
    isLoginKept_ = false;
    isRealTimeWanted_ = false;
    passes_.emplace_back([this, shared] { return tellRealTimeStopped(shared.get()); });
    giveUpLogin(error != nullptr ? *error
                                 : agentError(KestrinConstants::ERR_RequestCanceled, "cancelled"));
    decideAll(error != nullptr ? Verdict::FAILED : Verdict::CANCELED, shared);
    if (wasConnected) {
        lastPasses_.emplace_back([this, shared] {
            fireDisconnected(shared.get());
            return true;
        });
    }
    lastPasses_.emplace_back([this, shared] {
        agent_.fireOnStopped(shared.get());
        return true;
    });
    announce();
}

/// Nobody is left to be told but the handlers of what is open.
void TcpKestrin::Impl::endOfAgent() {
    status() = KESTRINSTATUS_STOPPED;
    connection_.reset();
    reconnection_.cancel();
    timeouts_.cancel();
    passes_.clear();
    lastPasses_.clear();
    loginRequest_ = nullptr;
    notice_ = {};
    detail::FirstException ignored;
    for (int round = 0; round < LAST_ROUNDS && !open_.isEmpty(); ++round) {
        decideAll(Verdict::CANCELED, nullptr);
        for (std::size_t left = outcomes_.size(); left > 0 && !outcomes_.empty(); --left) {
            ignored.of([this] { deliverOutcome(); });
        }
    }
    for (OperationPtr const & operation : open_.inOrder()) {
        close(*operation, true);
    }
}

void TcpKestrin::Impl::fireDisconnected(ErrorInfo const * error) {
    // The base class has no such operation; the rule is that of its others.
    for (KestrinListener * const listener : agent_.getKestrinListeners()) {
        if (agent_.hasKestrinListener(listener)) {
            listener->onDisconnected(&agent_, error);
        }
    }
}

void TcpKestrin::Impl::tellError(ErrorInfo const & error) {
    passes_.emplace_back([this, error] {
        agent_.fireKestrinError(error);
        return true;
    });
}

void TcpKestrin::Impl::heartbeat() {
    if (isConnected() && connection_ != nullptr) {
        connection_->sendHeartbeat();
    }
}

void TcpKestrin::Impl::setServerTime(RecordData const & fields) {
    long long const time = detail::numberField(fields, "time");
    if (time > 0) {
        serverTime_ = time;
        serverTimeSet_ = Clock::now();
    }
}

long long TcpKestrin::Impl::serverTimeMilliSec() const {
    if (!serverTimeSet_) {
        return millisecondsSinceEpoch();
    }
    return serverTime_ +
           std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - *serverTimeSet_)
               .count();
}

}  // namespace tvk
