#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "examples/backend/ChartHistory.h"
#include "examples/backend/News.h"
#include "examples/backend/OrderDesk.h"
#include "examples/backend/Quotes.h"
#include "examples/backend/Sessions.h"
#include "tvk/values/KestrinMessage.h"

namespace backend {

using MessagePtr = tvk::RefCountedPtr<tvk::KestrinMessage>;

/// A new message without fields.
MessagePtr messageOfType(std::string_view type);
/// The body of a failure.
MessagePtr failureOf(std::string_view type, int code, std::string_view text);

struct Notice {
    std::string type;
    std::string subject;
    std::string owner;  ///< the only user who is to hear of it; empty for everybody
    MessagePtr message;
};

/// Where notices go.
class NoticeSink {
public:
    virtual ~NoticeSink() = default;
    /// Whether the notice is worth making.
    virtual bool wants(std::string_view type, std::string_view subject) const = 0;
    virtual void publish(Notice const & notice) = 0;
};

/// What a request comes to: a reply or a failure, and what is to be published behind it.
struct MarketAnswer {
    MessagePtr reply;
    bool isFailure = false;
    std::vector<OrderEvent> events;
};

/// The application behind the connections: answers its requests, and lets prices and news come. It knows
/// nothing of sessions. Times are milliseconds since 1970.
class Market {
public:
    /// The sink is borrowed.
    Market(unsigned int seed, long long now, NoticeSink & sink);

    bool answers(std::string_view type) const;
    /// Requires: answers(type of the request).
    MarketAnswer answer(tvk::KestrinMessage const & request, std::string const & loginId,
                        long long now);
    void publish(std::vector<OrderEvent> const & events);

    /// What a new subscription begins with: the quotes that it covers.
    std::vector<Notice> current(Topic const & topic, long long now) const;

    void moveQuotes(long long now);
    void writeHeadline(long long now);
    void beginDay(long long now);

private:
    MarketAnswer symbols();
    MarketAnswer orderNew(tvk::KestrinMessage const & request, std::string const & loginId);
    MarketAnswer orderCancel(tvk::KestrinMessage const & request, std::string const & loginId);
    static MarketAnswer chartPeriods();
    MarketAnswer chartHistory(tvk::KestrinMessage const & request, long long now) const;
    MarketAnswer newsDocument(tvk::KestrinMessage const & request) const;

    Notice quoteNotice(std::size_t symbol, long long now) const;
    void publishBars(std::size_t symbol, Minute now);
    void publishCharts(std::size_t symbol,
                       std::function<MessagePtr(PriceKindEnum, std::string_view)> const & make);

    NoticeSink & sink_;
    ChartHistory charts_;
    Quotes quotes_;
    OrderDesk orders_;
    News news_;
    Minute today_;
};

}  // namespace backend
