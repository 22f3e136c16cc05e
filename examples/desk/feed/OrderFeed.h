#pragma once

#include <string>

#include "examples/desk/feed/Asker.h"
#include "examples/desk/model/Models.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"

namespace desk {

/// Sends orders and cancellations, and brings what becomes of them to the models.
class OrderFeed : public tvk::KestrinNoticeMessageHandler {
public:
    explicit OrderFeed(Models & models) : models_(models) {}
    ~OrderFeed() override;
    OrderFeed(OrderFeed const &) = delete;
    OrderFeed & operator=(OrderFeed const &) = delete;

    void start(std::string const & loginId);
    void stop();

    /// Sends it if it can be sent, else the ticket says why not.
    void place(OrderInput const & input);
    void cancel(std::string const & orderId);

private:
    void send(Order const & order);
    void onNotice(tvk::Kestrin * agent,
                  tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override;

    Models & models_;
    Asker asker_;
    CString subject_;  // empty while it does not run
};

}  // namespace desk
