#pragma once

#include <set>
#include <utility>
#include <vector>

#include "modules/services/detail/Exchange.h"
#include "tvk/agent/Kestrin.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"

namespace tvk::services {

/// What a service has at its agent, and what the agent tells it: requests, subscriptions with their
/// notices, and the end of the agent. Between leave and join the agent knows nothing of the service.
///
/// Each call of the agent keeps the service alive until it returns.
class AgentLink : private KestrinListener, private KestrinNoticeMessageHandler {
public:
    /// The service. Called between join and leave alone.
    class Client {
    public:
        virtual RefCounted const & counted() const = 0;
        /// `error` is null where the agent was asked to stop.
        virtual void agentStopped(ErrorInfo const * error) = 0;
        /// Notices may have been lost.
        virtual void realTimeRestarted() = 0;
        virtual void noticeArrived(KestrinMessage const & notice) = 0;

    protected:
        ~Client() = default;
    };

    /// Type and subject.
    using Topic = std::pair<CString, CString>;

    /// Requires: `agent` is not null; `client` outlives the link.
    AgentLink(RefCountedPtr<Kestrin> const & agent, int timeoutMilliSec, int componentCode,
              Client & client);
    AgentLink(AgentLink const &) = delete;
    AgentLink & operator=(AgentLink const &) = delete;
    ~AgentLink() override;

    /// False and `*error`, when not null, where the agent is not logged in.
    bool join(ErrorInfo * error);
    /// Closes all topics. The requests that go on are their askers' to give up.
    void leave();

    /// Notices of the topic arrive from here on. A topic that is opened twice is closed twice.
    void open(Topic const & topic);
    void close(Topic const & topic);

    /// The outcome reaches `taker`, but not from inside this call.
    RefCountedPtr<Exchange> ask(RefCountedPtr<KestrinMessage> const & message,
                                Exchange::Taker taker);

    bool isAgentStopped() const { return agent_->getStatus() == KESTRINSTATUS_STOPPED; }
    int componentCode() const { return componentCode_; }

private:
    void onStartupCompleted(Kestrin * agent, RecordData const & startupData) override;
    void onLoginReply(Kestrin * agent, RefCountedPtr<KestrinMessage> const & reply, bool succeeded,
                      CString const & code, CString const & text) override;
    void onReloginRequired(Kestrin * agent, ErrorInfo const & reason) override;
    void onKestrinError(Kestrin * agent, ErrorInfo const & error) override;
    void onConnected(Kestrin * agent) override;
    void onDisconnected(Kestrin * agent, ErrorInfo const * error) override;
    void onStopped(Kestrin * agent, ErrorInfo const * error) override;
    void onRealTimeServiceStarted(Kestrin * agent, bool restarted) override;
    void onRealTimeServiceStopped(Kestrin * agent, ErrorInfo const * error) override;
    void onNotice(Kestrin * agent, RefCountedPtr<KestrinMessage> const & notice) override;

    template <class Tell>
    void enter(Tell const & tell);
    void deliverEarlyOutcomes();
    void closeAtAgent(Topic const & topic);

    RefCountedPtr<Kestrin> const agent_;
    int const timeoutMilliSec_;
    int const componentCode_;
    Client & client_;
    bool isJoined_ = false;
    std::multiset<Topic> topics_;
    std::vector<RefCountedPtr<Exchange>> early_;  // with an outcome that waits for its turn
};

}  // namespace tvk::services
