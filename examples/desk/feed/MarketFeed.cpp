#include "examples/desk/feed/MarketFeed.h"

#include <utility>

#include "examples/desk/feed/Clock.h"
#include "examples/desk/feed/Container.h"
#include "examples/desk/feed/Report.h"
#include "examples/support/Messages.h"
#include "tvk/errors/KestrinConstants.h"

namespace desk {

namespace {

constexpr char QUOTE[] = "quote";

}  // namespace

MarketFeed::~MarketFeed() { stop(); }

void MarketFeed::start(std::function<void()> onSymbols) {
    asker_.ask(requestOfType("symbols"),
               [this, onSymbols = std::move(onSymbols)](tvk::KestrinMessage const * reply,
                                                        tvk::ErrorInfo const & error) {
                   if (reply == nullptr) {
                       return report(models_.alerts, error);
                   }
                   takeSymbols(*reply);
                   onSymbols();
               });
}

void MarketFeed::stop() {
    asker_.cancelAll();
    if (std::exchange(isRunning_, false)) {
        agent().unsubscribe(QUOTE, tvk::KestrinConstants::WILDCARD);
        agent().removeMessageHandler(QUOTE, tvk::KestrinConstants::WILDCARD, this);
    }
}

void MarketFeed::takeSymbols(tvk::KestrinMessage const & reply) {
    auto const symbols = symbolsIn(reply);
    models_.board.setSymbols(symbols);
    models_.ticket.setSymbols(symbols);
    models_.orders.setSymbols(symbols);
    if (!std::exchange(isRunning_, true)) {
        agent().addMessageHandler(QUOTE, tvk::KestrinConstants::WILDCARD, this);
        agent().subscribe(QUOTE, tvk::KestrinConstants::WILDCARD);
    }
}

void MarketFeed::onNotice(tvk::Kestrin * /*agent*/,
                          tvk::RefCountedPtr<tvk::KestrinMessage> const & notice) {
    models_.board.takeQuote(*notice, nowMilliSec());
}

}  // namespace desk
