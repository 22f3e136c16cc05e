#pragma once

#include <functional>
#include <string>

#include "examples/desk/feed/Asker.h"
#include "examples/desk/model/Models.h"
#include "tvk/agent/KestrinNoticeMessageHandler.h"

namespace desk {

/// Brings the symbols and their quotes to the models.
class MarketFeed : public tvk::KestrinNoticeMessageHandler {
public:
    explicit MarketFeed(Models & models) : models_(models) {}
    ~MarketFeed() override;
    MarketFeed(MarketFeed const &) = delete;
    MarketFeed & operator=(MarketFeed const &) = delete;

    /// Asks for the symbols, and subscribes to the quotes of all of them. `onSymbols` is called when the
    /// models have them.
    void start(std::function<void()> onSymbols);
    void stop();

private:
    void takeSymbols(tvk::KestrinMessage const & reply);
    void onNotice(tvk::Kestrin * agent,
                  tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) override;

    Models & models_;
    Asker asker_;
    bool isRunning_ = false;
};

}  // namespace desk
