#include "examples/backend/Hub.h"

#include <algorithm>
#include <asio/post.hpp>
#include <utility>

#include "examples/backend/Names.h"
#include "examples/backend/Texts.h"
#include "examples/backend/Users.h"
#include "examples/support/Fields.h"
#include "examples/support/Printable.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"
#include "tvk/values/MappedRecordData.h"

namespace backend {

using tvk::ErrorInfo;
using tvk::FieldValue;
using tvk::Frame;
using tvk::KestrinConstants;
using tvk::MappedMessage;
using tvk::MappedRecordData;
using tvk::RefCountedPtr;

namespace {

constexpr std::size_t LONGEST_NAME = 256;  // of a type or subject, bytes
constexpr long long BURST_STEP = 1'000;
constexpr std::size_t SHOWN_BYTES = 60;

Topic topicIn(tvk::RecordData const & body) {
    return {utf8In(body, field::TYPE), utf8In(body, field::SUBJECT)};
}

bool isSensible(std::string const & name) { return !name.empty() && name.size() <= LONGEST_NAME; }

}  // namespace

Hub::Hub(asio::io_context & loop, Backend::Options const & options)
    : loop_(loop),
      options_(options),
      codec_(options.maximumFrameSize),
      sessions_({options.ringSize, options.graceMilliSec, options.maximumSessions}),
      market_(options.seed, wallMilliSec(), *this) {}

void Hub::add(std::unique_ptr<Channel> channel) {
    Connection::Limits const limits{options_.helloMilliSec, options_.heartbeatMilliSec,
                                    options_.maximumQueuedBytes};
    auto const connection = std::make_shared<Connection>(std::move(channel), loop_, limits, codec_,
                                                         static_cast<Connection::Owner &>(*this));
    Client & client = clients_[connection.get()];
    client.connection = connection;
    client.number = ++counts_.accepted;
    log(client, "connected");
    connection->start();
    std::vector<Fault> const faults = std::exchange(forNext_, {});
    for (Fault const & fault : faults) {
        apply(fault, *connection);
    }
}

void Hub::cutAll() {
    while (!clients_.empty()) {
        clients_.begin()->first->cut("the back end stops");
    }
}

void Hub::moveQuotes() {
    market_.moveQuotes(wallMilliSec());
    flushAll();
}

void Hub::writeHeadline() {
    market_.writeHeadline(wallMilliSec());
    flushAll();
}

void Hub::closeOverdue() {
    sessions_.closeOverdue(steadyMilliSec());
    continueBursts();
}

Backend::Counts Hub::counts() const {
    Backend::Counts counts = counts_;
    counts.connections = clients_.size();
    counts.sessions = sessions_.count();
    return counts;
}

void Hub::onRequest(Connection & connection, Frame const & frame) {
    ++counts_.requests;
    Client & client = clients_.at(&connection);
    ErrorInfo error;
    Request const request{client, frame.number, std::string(frame.type),
                          codec_.messages.read(frame, &error)};
    if (options_.log) {
        log(client,
            "request " + std::to_string(frame.number) + " " + printable(request.type, SHOWN_BYTES));
    }
    if (request.message.isNull()) {
        refuse(request, error.getErrorCode(), utf8(error.getErrorMessage()));
        return;
    }
    handle(request);
    flushAll();
}

void Hub::onTooFarBehind(Connection & connection) {
    ++counts_.dropped;
    log(clients_.at(&connection), "reads too slowly");
}

void Hub::onClosed(Connection & connection, std::string const & reason) {
    auto const client = clients_.find(&connection);
    log(client->second, "closed: " + reason);
    if (connection.session() != nullptr) {
        sessions_.letGo(*connection.session(), steadyMilliSec());
    }
    clients_.erase(client);
}

void Hub::handle(Request const & request) {
    struct Row {
        std::string_view type;
        void (Hub::*handle)(Request const &);
    };
    static constexpr Row FOR_EVERYBODY[] = {
        {request::LOGIN, &Hub::login}, {request::ECHO, &Hub::echo}, {request::FAULT, &Hub::fault}};
    static constexpr Row WITH_SESSION[] = {{request::LOGOUT, &Hub::logout},
                                           {request::START_REAL_TIME, &Hub::startRealTime},
                                           {request::STOP_REAL_TIME, &Hub::stopRealTime},
                                           {request::SUBSCRIBE, &Hub::subscribe},
                                           {request::UNSUBSCRIBE, &Hub::unsubscribe}};
    auto const isTheirs = [&request](Row const & row) { return row.type == request.type; };

    auto const open = std::find_if(std::begin(FOR_EVERYBODY), std::end(FOR_EVERYBODY), isTheirs);
    if (open != std::end(FOR_EVERYBODY)) {
        (this->*open->handle)(request);
        return;
    }
    auto const row = std::find_if(std::begin(WITH_SESSION), std::end(WITH_SESSION), isTheirs);
    bool const isForMarket = market_.answers(request.type);
    if (row == std::end(WITH_SESSION) && !isForMarket) {
        refuse(request, KestrinConstants::ERR_UnknownMessage, "不明な要求です");
    } else if (request.client.isExpired) {
        refuse(request, KestrinConstants::ERR_AuthenticationExpired, "認証の有効期限が切れました");
    } else if (request.client.connection->session() == nullptr) {
        refuse(request, KestrinConstants::ERR_SessionError, "ログインしていません");
    } else if (isForMarket) {
        askMarket(request);
    } else {
        (this->*row->handle)(request);
    }
}

void Hub::login(Request const & request) {
    Client & client = request.client;
    tvk::KestrinMessage const & body = *request.message;
    MessagePtr const message = messageOfType(request::LOGIN);
    LoginAnswer const answer =
        checkLogin(utf8In(body, field::LOGIN_ID), utf8In(body, field::PASSWORD));
    setText(*message, field::CODE, answer.code);
    setText(*message, field::TEXT, answer.text);
    setNumber(*message, field::TIME, wallMilliSec());
    if (std::string_view(answer.code) != "0") {
        reply(request, message);
        return;
    }
    Session * const before = client.connection->session();
    client.connection->detach();
    bool isResumed = false;
    Session * const session = sessionFor(body, &isResumed);
    if (before != nullptr && before != session) {
        sessions_.close(*before);
    }
    if (session == nullptr) {
        refuse(request, KestrinConstants::ERR_SystemMaintenance, "混み合っています");
        return;
    }
    client.isExpired = false;
    counts_.resumed += isResumed ? 1 : 0;
    log(client, (isResumed ? "session resumed for " : "session begun for ") +
                    printable(session->loginId(), SHOWN_BYTES));

    RefCountedPtr<MappedRecordData> const startup(new MappedRecordData);
    setText(*startup, field::NAME, "架空証券取引所");
    setText(*startup, field::LOGIN_ID, session->loginId());
    setNumber(*startup, field::SYMBOLS, static_cast<long long>(SYMBOL_COUNT));
    setText(*message, field::SESSION, session->token());
    setFlag(*message, field::RESUMED, isResumed);
    message->setFieldValue(field::STARTUP, RefCountedPtr<FieldValue>(startup));
    // Before what the session has for the client.
    reply(request, message);
    client.connection->attach(session);
}

/// The session to go on with, taken from whoever still holds it, or a new one.
Session * Hub::sessionFor(tvk::RecordData const & login, bool * isResumed) {
    std::string const loginId = utf8In(login, field::LOGIN_ID);
    std::string const token = utf8In(login, field::SESSION);
    long long const last = numberIn(login, field::LAST_SEQUENCE);
    Session * const session =
        token.empty() || last < 0
            ? nullptr
            : sessions_.resume(token, loginId, static_cast<unsigned long long>(last));
    if (session == nullptr) {
        return sessions_.open(loginId);
    }
    *isResumed = true;
    for (auto const & [connection, client] : clients_) {
        if (connection->session() == session) {
            connection->detach();
            client.connection->cut("its session goes on elsewhere");
            break;
        }
    }
    return session;
}

void Hub::logout(Request const & request) {
    endSession(request.client);
    reply(request, messageOfType(request::LOGOUT));
}

void Hub::startRealTime(Request const & request) {
    Session & session = *request.client.connection->session();
    reply(request, messageOfType(request::START_REAL_TIME));
    if (!session.isRealTime()) {
        session.setRealTime(true);
        for (Topic const & topic : session.topics()) {
            sendCurrent(session, topic);
        }
    }
}

void Hub::stopRealTime(Request const & request) {
    request.client.connection->session()->setRealTime(false);
    reply(request, messageOfType(request::STOP_REAL_TIME));
}

void Hub::subscribe(Request const & request) {
    Session & session = *request.client.connection->session();
    Topic const topic = topicIn(*request.message);
    bool isNew = false;
    bool const isTaken =
        isSensible(topic.first) && isSensible(topic.second) && session.subscribe(topic, &isNew);
    if (!isTaken) {
        refuse(request, REFUSED_SUBSCRIPTION, "配信登録の指定が正しくありません");
        return;
    }
    reply(request, messageOfType(request::SUBSCRIBE));
    if (isNew && session.isRealTime()) {
        sendCurrent(session, topic);
    }
}

void Hub::unsubscribe(Request const & request) {
    request.client.connection->session()->unsubscribe(topicIn(*request.message));
    reply(request, messageOfType(request::UNSUBSCRIBE));
}

void Hub::askMarket(Request const & request) {
    Session const & session = *request.client.connection->session();
    MarketAnswer const answer = market_.answer(*request.message, session.loginId(), wallMilliSec());
    reply(request, answer.reply, answer.isFailure ? tvk::FRAME_FAILURE : 0);
    market_.publish(answer.events);
}

/// Fields, fields of the header and sub-messages, all as they came.
void Hub::echo(Request const & request) {
    MessagePtr const message(new MappedMessage(*request.message));
    message->header().setMessageTypeId(request::ECHO);
    for (tvk::RecordData::Field const & field : request.message->header().getAllFields()) {
        message->header().setFieldValue(*field.name, field.value);
    }
    reply(request, message);
}

void Hub::fault(Request const & request) {
    auto const fault = faultOf(*request.message);
    if (!fault) {
        refuse(request, REFUSED_FAULT, "障害の指定が正しくありません");
        return;
    }
    // The reply comes through, and the fault behind it.
    Connection * const connection = request.client.connection.get();
    auto const message = messageOfType(request::FAULT);
    if (request.number == 0) {
        apply(*fault, *connection);
    } else {
        ++counts_.replies;
        connection->send(codec_.frame(tvk::FRAME_REPLY, 0, request.number, "", *message),
                         [this, fault, connection] { apply(*fault, *connection); });
    }
}

void Hub::reply(Request const & request, MessagePtr const & message, int flags) {
    if (request.number == 0) {
        return;
    }
    ErrorInfo error;
    std::string frame = codec_.frame(tvk::FRAME_REPLY, flags, request.number, "", *message, &error);
    if (frame.empty()) {
        frame = codec_.frame(
            tvk::FRAME_REPLY, tvk::FRAME_FAILURE, request.number, "",
            *failureOf(request.type, error.getErrorCode(), utf8(error.getErrorMessage())));
    }
    ++counts_.replies;
    auto const fault = request.client.faults.next();
    if (fault) {
        sendWith(*fault, *request.client.connection, std::move(frame));
    } else {
        request.client.connection->send(std::move(frame));
    }
}

void Hub::refuse(Request const & request, int code, std::string_view text) {
    reply(request, failureOf(request.type, code, text), tvk::FRAME_FAILURE);
}

void Hub::sendWith(Fault const & fault, Connection & connection, std::string frame) {
    switch (fault.kind) {
        case Fault::DELAY:
            connection.sendLater(fault.milliSec, std::move(frame));
            break;
        case Fault::DROP:
            break;
        case Fault::HALF_FRAME:
            connection.send(spoiled(fault.kind, std::move(frame)),
                            [&connection] { connection.finish("fault: half a frame"); });
            break;
        default:
            connection.send(spoiled(fault.kind, std::move(frame)));
            break;
    }
}

void Hub::inject(Fault const & fault) {
    bool const isOfMarket = fault.kind == Fault::BURST || fault.kind == Fault::NEW_DAY;
    if (isOfMarket) {
        applyToMarket(fault);
        return;
    }
    if (clients_.empty()) {
        forNext_.push_back(fault);
        return;
    }
    std::vector<std::shared_ptr<Connection>> connections;
    for (auto const & [connection, client] : clients_) {
        connections.push_back(client.connection);
    }
    for (auto const & connection : connections) {
        apply(fault, *connection);
    }
}

void Hub::apply(Fault const & fault, Connection & connection) {
    auto const found = clients_.find(&connection);
    if (found == clients_.end()) {
        return;
    }
    Client & client = found->second;
    if (concernsReplies(fault.kind)) {
        client.faults.add(fault);
        return;
    }
    switch (fault.kind) {
        case Fault::GARBAGE:
            connection.send(garbage());
            break;
        case Fault::DISCONNECT:
            connection.cutAfter(static_cast<std::size_t>(fault.afterBytes));
            break;
        case Fault::SLOW_READING:
            connection.readSlowly(fault.bytesPerSecond);
            break;
        case Fault::SILENCE:
            connection.beSilent(fault.milliSec);
            break;
        case Fault::GOODBYE:
            connection.sayGoodbye(fault.code, fault.text, fault.retry);
            break;
        case Fault::EXPIRE_LOGIN:
            client.isExpired = true;
            endSession(client);
            break;
        case Fault::FORGET_SESSION:
            if (connection.session() != nullptr) {
                sessions_.forget(*connection.session());
            }
            break;
        default:
            applyToMarket(fault);
            break;
    }
}

void Hub::applyToMarket(Fault const & fault) {
    if (fault.kind == Fault::NEW_DAY) {
        market_.beginDay(wallMilliSec());
        flushAll();
        return;
    }
    bursts_.push_back(
        {fault.type, fault.subject, fault.first, fault.first + fault.count, fault.paced});
    continueBursts();
}

/// In steps, between which replies and requests have their turn.
void Hub::continueBursts() {
    if (isBursting_) {
        return;
    }
    std::erase_if(bursts_, [](Burst const & burst) { return burst.next == burst.end; });
    bool hasMore = false;
    for (Burst & burst : bursts_) {
        if (!mustWait(burst)) {
            long long const end = std::min(burst.end, burst.next + BURST_STEP);
            for (; burst.next < end; ++burst.next) {
                MessagePtr const message = messageOfType(burst.type);
                setNumber(*message, field::NUMBER, burst.next);
                publish({burst.type, burst.subject, "", message});
            }
            hasMore = true;
        }
    }
    if (hasMore) {
        flushAll();
        isBursting_ = true;
        asio::post(loop_, [this] {
            isBursting_ = false;
            continueBursts();
        });
    }
}

/// While a session that is to have it is far behind.
bool Hub::mustWait(Burst const & burst) const {
    if (!burst.isPaced) {
        return false;
    }
    constexpr std::size_t SHARE = 4;  // of what a session may be behind
    bool isBehind = false;
    sessions_.forEach(burst.type, burst.subject, [this, &isBehind](Session const & session) {
        isBehind = isBehind || session.unsentCount() > options_.ringSize / SHARE ||
                   session.unsentBytes() > options_.maximumQueuedBytes / SHARE;
    });
    return isBehind;
}

bool Hub::wants(std::string_view type, std::string_view subject) const {
    return sessions_.anyWants(type, subject);
}

void Hub::publish(Notice const & notice) {
    counts_.notices += sessions_.publish(notice.type, notice.subject, notice.owner,
                                         [this, &notice] { return frameOf(notice); });
}

NoticeFrame Hub::frameOf(Notice const & notice) {
    return std::make_shared<std::string const>(
        codec_.frame(tvk::FRAME_NOTICE, 0, 0, notice.subject, *notice.message));
}

void Hub::sendCurrent(Session & session, Topic const & topic) {
    for (Notice const & notice : market_.current(topic, wallMilliSec())) {
        session.add(frameOf(notice));
        ++counts_.notices;
    }
}

/// A connection that is too far behind ends here.
void Hub::flushAll() {
    for (auto const & [connection, client] : clients_) {
        connection->flush();
    }
}

void Hub::endSession(Client & client) {
    Session * const session = client.connection->session();
    if (session != nullptr) {
        client.connection->detach();
        sessions_.close(*session);
    }
}

void Hub::log(Client const & client, std::string const & line) const {
    if (options_.log) {
        options_.log("client " + std::to_string(client.number) + ": " + line);
    }
}

}  // namespace backend
