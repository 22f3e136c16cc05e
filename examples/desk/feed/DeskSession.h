#pragma once

#include <string>

#include "examples/desk/feed/ChartFeed.h"
#include "examples/desk/feed/MarketFeed.h"
#include "examples/desk/feed/NewsFeed.h"
#include "examples/desk/feed/OrderFeed.h"
#include "examples/desk/model/Models.h"
#include "tvk/agent/KestrinListener.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"

namespace desk {

/// A session of the desk: what the user wants goes through it to the agent and the services in the
/// container, and what they tell goes to the models.
///
/// Order:     start; logIn, as often as it takes; the rest; stop. The container is filled before, and is
///            cleaned up behind the session's end.
/// Threads:   the agent's.
class DeskSession : public tvk::KestrinListener, public tvk::KestrinNoticeMessageHandler {
public:
    explicit DeskSession(Models & models);
    ~DeskSession() override;
    DeskSession(DeskSession const &) = delete;
    DeskSession & operator=(DeskSession const &) = delete;

    /// Begins to connect.
    void start();
    /// Logs out and stops the agent; isStopped tells when that has come to its end.
    void stop();
    bool isStopped() const { return isStopped_; }

    /// At once, or as soon as there is a connection.
    void logIn(std::string const & loginId, std::string const & password);
    OrderFeed & orders() { return orders_; }
    NewsFeed & news() { return news_; }
    void showChart(std::string const & code, std::string const & period);
    /// To be called now and then: what the agent is asked for instead of telling it.
    void refreshStatus();

private:
    void sendLogin();
    void startFeeds();
    void stopFeeds();
    void setConnection();

    void onStartupCompleted(tvk::Kestrin * agent, tvk::RecordData const & startupData) override;
    void onLoginReply(tvk::Kestrin * agent, tvk::RefCountedPtr<tvk::KestrinMessage> const & reply,
                      bool succeeded, CString const & code, CString const & text) override;
    void onReloginRequired(tvk::Kestrin * agent, tvk::ErrorInfo const & reason) override;
    void onKestrinError(tvk::Kestrin * agent, tvk::ErrorInfo const & error) override;
    void onConnected(tvk::Kestrin * agent) override;
    void onDisconnected(tvk::Kestrin * agent, tvk::ErrorInfo const * error) override;
    void onStopped(tvk::Kestrin * agent, tvk::ErrorInfo const * error) override;
    void onRealTimeServiceStarted(tvk::Kestrin * agent, bool restarted) override;
    void onRealTimeServiceStopped(tvk::Kestrin * agent, tvk::ErrorInfo const * error) override;
    void onNotice(tvk::Kestrin * agent,
                  tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override;

    Models & models_;
    MarketFeed market_;
    OrderFeed orders_;
    ChartFeed chart_;
    NewsFeed news_;

    std::string loginId_;
    std::string password_;
    bool wantsLogin_ = false;  // the user asked for it, and it has not been sent
    bool isRegistered_ = false;
    bool hasFeeds_ = false;
    bool isRealTime_ = false;
    bool isStopping_ = false;
    bool isStopped_ = false;
};

}  // namespace desk
