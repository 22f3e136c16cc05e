// The real-time service, the subscriptions, and the notices that they bring.

#include <algorithm>
#include <utility>

#include "modules/asio/detail/Errors.h"
#include "modules/asio/detail/Requests.h"
#include "modules/asio/detail/TcpKestrinImpl.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/platform/CodePage.h"

namespace tvk {

namespace {

CString textOf(std::string_view utf8) {
    return platform::utf8ToAnsi(utf8.data(), static_cast<unsigned int>(utf8.size()));
}

}  // namespace

bool TcpKestrin::Impl::startRealTimeService(ErrorInfo * error) {
    if (!isLoggedIn()) {
        return refuse(error, KestrinConstants::ERR_SessionError, "not logged in");
    }
    isRealTimeWanted_ = true;
    agree();
    return true;
}

void TcpKestrin::Impl::stopRealTimeService() {
    RefCountedPtr<Kestrin> const alive(&agent_);
    isRealTimeWanted_ = false;
    agree();
    tellRealTimeStopped(nullptr);
}

void TcpKestrin::Impl::endRealTime(ErrorInfo const * error) {
    isRealTimeWanted_ = false;
    notice_ = {};
    auto const shared = error != nullptr ? std::make_shared<ErrorInfo const>(*error) : nullptr;
    passes_.emplace_back([this, shared] { return tellRealTimeStopped(shared.get()); });
}

bool TcpKestrin::Impl::tellRealTimeStopped(ErrorInfo const * error) {
    if (!isRealTimeTold_) {
        return false;
    }
    isRealTimeTold_ = false;
    notice_ = {};
    agent_.fireOnRealTimeServiceStopped(error);
    return true;
}

void TcpKestrin::Impl::wantTopic(CString const & type, CString const & subject, bool wanted) {
    auto const topic = topics_.try_emplace({type, subject}).first;
    topic->second.isWanted = wanted;
    if (isRealTimeWanted_) {
        agreeOn(topic->first, topic->second);
    }
    if (!wanted && topic->second.agreement.isOff()) {
        topics_.erase(topic);
    }
}

/// Tells the back end what it must know to be where the application wants it. Subscriptions stand at the
/// back end only while the service is on.
void TcpKestrin::Impl::agree() {
    if (isRealTimeWanted_) {
        agreeOnRealTime();
    }
    for (auto & topic : topics_) {
        agreeOn(topic.first, topic.second);
    }
    if (!isRealTimeWanted_) {
        agreeOnRealTime();
    }
}

void TcpKestrin::Impl::agreeOnRealTime() {
    std::optional<bool> const on = realTime_.toTell(isRealTimeWanted_);
    if (isLoggedIn() && on) {
        MessagePtr const message = detail::requestOfType(*on ? "startRealTime" : "stopRealTime");
        realTime_.tell(*on, message);
        ask(message, agent_.getTimeout(), &realTimeHandler_, nullptr, true);
    }
}

void TcpKestrin::Impl::agreeOn(Topic const & topic, Subscription & subscription) {
    std::optional<bool> const on =
        subscription.agreement.toTell(subscription.isWanted && isRealTimeWanted_);
    if (isLoggedIn() && on) {
        MessagePtr const message = detail::requestOfType(*on ? "subscribe" : "unsubscribe");
        message->setFieldValue("type", topic.first);
        message->setFieldValue("subject", topic.second);
        subscription.agreement.tell(*on, message);
        ask(message, agent_.getTimeout(), &topicHandler_, nullptr, true);
    }
}

void TcpKestrin::Impl::takeRealTimeReply(MessagePtr const & request, MessagePtr const & reply,
                                         ErrorInfo const & error) {
    if (!realTime_.settle(request, !reply.isNull()) || !isRealTimeWanted_) {
        return;
    }
    if (!reply.isNull()) {
        passes_.emplace_back([this] {
            if (!isRealTimeWanted_ || std::exchange(isRealTimeTold_, true)) {
                return false;
            }
            agent_.fireOnRealTimeServiceStarted(std::exchange(wasRealTimeOn_, true));
            return true;
        });
        return;
    }
    isRealTimeWanted_ = false;
    passes_.emplace_back([this, error] {
        isRealTimeTold_ = false;
        agent_.fireOnRealTimeServiceStopped(&error);
        return true;
    });
}

void TcpKestrin::Impl::takeTopicReply(MessagePtr const & request, MessagePtr const & reply,
                                      ErrorInfo const & error) {
    auto const topic = topics_.find({request->getFieldValue("type")->asString(),
                                     request->getFieldValue("subject")->asString()});
    if (topic == topics_.end() || !topic->second.agreement.settle(request, !reply.isNull())) {
        return;
    }
    if (reply.isNull() && isRealTimeWanted_) {
        tellError(error);
    }
    if (!topic->second.isWanted && topic->second.agreement.isOff()) {
        topics_.erase(topic);
    }
}

TcpKestrin::Impl::Step TcpKestrin::Impl::takeNotice(Frame const & frame) {
    if (!isLoggedIn() || frame.number <= lastSequence_) {
        return Step::WORK;  // of no session, or known already
    }
    if (frame.number != lastSequence_ + 1) {
        return protocolFailed("a notice is missing");
    }
    lastSequence_ = frame.number;
    if (!isRealTimeTold_) {
        return Step::WORK;
    }
    ErrorInfo error(ASIO_COMPONENT_CODE);
    MessagePtr const message = messages_.read(frame, &error);
    if (message.isNull()) {
        tellError(error);
        return Step::WORK;
    }
    detail::NoticeRoutes::Route route = routes_.find(frame.type, frame.subject);
    if (route == nullptr) {
        CString const type = textOf(frame.type);
        CString const subject = textOf(frame.subject);
        route = routes_.add({type, subject, agent_.getAllPossibleMessageHandlers(type, subject)});
    }
    notice_ = {message, std::move(route), 0, generation_};
    return hasHandlersToCall() ? callNextHandler() : Step::WORK;
}

TcpKestrin::Impl::Step TcpKestrin::Impl::callNextHandler() {
    KestrinNoticeMessageHandler * const handler = notice_.route->handlers[notice_.next++];
    // Asked again where anything has changed: a handler before this one may have removed it, and its
    // owner then may have destroyed it.
    if (notice_.generation != generation_) {
        auto const still =
            agent_.getAllPossibleMessageHandlers(notice_.route->type, notice_.route->subject);
        if (std::find(still.begin(), still.end(), handler) == still.end()) {
            return Step::WORK;
        }
    }
    // Kept here: a call from inside the handler that drives the agent goes on to the next notice.
    MessagePtr const message = notice_.message;
    handler->onNotice(&agent_, message);
    return Step::CALLBACK;
}

void TcpKestrin::Impl::handlersChanged() {
    ++generation_;
    routes_.forget();
}

}  // namespace tvk
