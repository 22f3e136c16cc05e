#pragma once

#include <asio/io_context.hpp>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "examples/backend/Backend.h"
#include "examples/backend/Connection.h"
#include "examples/backend/Faults.h"
#include "examples/backend/Market.h"
#include "examples/backend/Sessions.h"

namespace backend {

/// Where connections, sessions and the market meet: answers what the session is about by itself, hands
/// on the rest, and lets things go wrong that were asked for. All on the thread of the loop.
class Hub : private NoticeSink, private Connection::Owner {
public:
    Hub(asio::io_context & loop, Backend::Options const & options);

    void add(std::unique_ptr<Channel> channel);
    std::size_t connectionCount() const { return clients_.size(); }
    void cutAll();

    void moveQuotes();
    void writeHeadline();
    void closeOverdue();

    void inject(Fault const & fault);
    Backend::Counts counts() const;

private:
    struct Client {
        std::shared_ptr<Connection> connection;
        unsigned long long number = 0;  // for the log
        bool isExpired = false;
        ReplyFaults faults;
    };

    struct Burst {
        std::string type;
        std::string subject;
        long long next = 0;
        long long end = 0;
        bool isPaced = false;
    };

    struct Request {
        Client & client;
        unsigned long long number;
        std::string type;
        MessagePtr message;
    };

    // Of the connections.
    void onRequest(Connection & connection, tvk::Frame const & frame) override;
    void onTooFarBehind(Connection & connection) override;
    void onClosed(Connection & connection, std::string const & reason) override;

    // What requests are about.
    void handle(Request const & request);
    void login(Request const & request);
    void logout(Request const & request);
    void startRealTime(Request const & request);
    void stopRealTime(Request const & request);
    void subscribe(Request const & request);
    void unsubscribe(Request const & request);
    void askMarket(Request const & request);
    void echo(Request const & request);
    void fault(Request const & request);
    Session * sessionFor(tvk::RecordData const & login, bool * isResumed);

    void reply(Request const & request, MessagePtr const & message, int flags = 0);
    void refuse(Request const & request, int code, std::string_view text);
    void sendWith(Fault const & fault, Connection & connection, std::string frame);

    // Faults and bursts.
    void apply(Fault const & fault, Connection & connection);
    void applyToMarket(Fault const & fault);
    void continueBursts();
    bool mustWait(Burst const & burst) const;

    // Notices.
    bool wants(std::string_view type, std::string_view subject) const override;
    void publish(Notice const & notice) override;
    NoticeFrame frameOf(Notice const & notice);
    void sendCurrent(Session & session, Topic const & topic);
    void flushAll();

    void endSession(Client & client);
    void log(Client const & client, std::string const & line) const;

    asio::io_context & loop_;
    Backend::Options const & options_;
    Codec codec_;
    Sessions sessions_;
    Market market_;
    std::map<Connection *, Client> clients_;
    std::vector<Fault> forNext_;  // client that comes
    std::vector<Burst> bursts_;
    bool isBursting_ = false;  // a step is on its way
    Backend::Counts counts_;
};

}  // namespace backend
