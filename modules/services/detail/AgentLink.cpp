#include "modules/services/detail/AgentLink.h"

#include "modules/services/detail/Messages.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::services {

AgentLink::AgentLink(RefCountedPtr<Kestrin> const & agent, int timeoutMilliSec, int componentCode,
                     Client & client)
    : agent_(agent),
      timeoutMilliSec_(timeoutMilliSec),
      componentCode_(componentCode),
      client_(client) {}

AgentLink::~AgentLink() { leave(); }

bool AgentLink::join(ErrorInfo * error) {
    if (agent_->getStatus() != KESTRINSTATUS_LOGGED_IN) {
        if (error != nullptr) {
            *error = errorOf(componentCode_, KestrinConstants::ERR_SessionError, "not logged in");
        }
        return false;
    }
    isJoined_ = true;
    agent_->addKestrinListener(this);
    return true;
}

void AgentLink::leave() {
    if (!isJoined_) {
        return;
    }
    isJoined_ = false;
    early_.clear();
    agent_->removeKestrinListener(this);
    std::multiset<Topic> const topics = std::exchange(topics_, {});
    for (auto topic = topics.begin(); topic != topics.end(); topic = topics.upper_bound(*topic)) {
        closeAtAgent(*topic);
    }
}

// Two charts may make one subject, since the parts of a subject may hold its slash. The agent has the
// handler once all the same: a handler that is there twice hears a notice twice.

void AgentLink::open(Topic const & topic) {
    bool const isFirst = topics_.count(topic) == 0;
    topics_.insert(topic);
    if (isFirst) {
        agent_->addMessageHandler(topic.first, topic.second, this);
        agent_->subscribe(topic.first, topic.second);
    }
}

void AgentLink::close(Topic const & topic) {
    auto const entry = topics_.find(topic);
    if (entry == topics_.end()) {
        return;
    }
    topics_.erase(entry);
    if (topics_.count(topic) == 0) {
        closeAtAgent(topic);
    }
}

void AgentLink::closeAtAgent(Topic const & topic) {
    agent_->removeMessageHandler(topic.first, topic.second, this);
    agent_->unsubscribe(topic.first, topic.second);
}

RefCountedPtr<Exchange> AgentLink::ask(RefCountedPtr<KestrinMessage> const & message,
                                       Exchange::Taker taker) {
    RefCountedPtr<Exchange> exchange(
        new Exchange([this, taker = std::move(taker)](Outcome const & outcome) {
            RefCountedPtr<RefCounted const> const alive(&client_.counted());
            deliverEarlyOutcomes();
            taker(outcome);
        }));
    exchange->begin(*agent_, message, timeoutMilliSec_);
    if (exchange->hasEarlyOutcome()) {
        early_.push_back(exchange);
    }
    return exchange;
}

void AgentLink::deliverEarlyOutcomes() {
    std::vector<RefCountedPtr<Exchange>> const exchanges = std::exchange(early_, {});
    for (RefCountedPtr<Exchange> const & exchange : exchanges) {
        exchange->deliverEarlyOutcome();
    }
}

template <class Tell>
void AgentLink::enter(Tell const & tell) {
    if (!isJoined_) {
        return;
    }
    RefCountedPtr<RefCounted const> const alive(&client_.counted());
    deliverEarlyOutcomes();
    if (isJoined_) {
        tell();
    }
}

void AgentLink::onStopped(Kestrin * /*agent*/, ErrorInfo const * error) {
    enter([&] { client_.agentStopped(error); });
}

void AgentLink::onRealTimeServiceStarted(Kestrin * /*agent*/, bool restarted) {
    enter([&] {
        if (restarted) {
            client_.realTimeRestarted();
        }
    });
}

void AgentLink::onNotice(Kestrin * /*agent*/, RefCountedPtr<KestrinMessage> const & notice) {
    enter([&] { client_.noticeArrived(*notice); });
}

// What else the agent tells is of no concern to a service: it outlives a lost connection and a new
// login, and meanwhile the agent refuses its requests.

void AgentLink::onStartupCompleted(Kestrin * /*agent*/, RecordData const & /*startupData*/) {
    enter([] {});
}

void AgentLink::onLoginReply(Kestrin * /*agent*/, RefCountedPtr<KestrinMessage> const & /*reply*/,
                             bool /*succeeded*/, CString const & /*code*/,
                             CString const & /*text*/) {
    enter([] {});
}

void AgentLink::onReloginRequired(Kestrin * /*agent*/, ErrorInfo const & /*reason*/) {
    enter([] {});
}

void AgentLink::onKestrinError(Kestrin * /*agent*/, ErrorInfo const & /*error*/) {
    enter([] {});
}

void AgentLink::onConnected(Kestrin * /*agent*/) {
    enter([] {});
}

void AgentLink::onDisconnected(Kestrin * /*agent*/, ErrorInfo const * /*error*/) {
    enter([] {});
}

void AgentLink::onRealTimeServiceStopped(Kestrin * /*agent*/, ErrorInfo const * /*error*/) {
    enter([] {});
}

}  // namespace tvk::services
