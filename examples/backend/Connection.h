#pragma once

#include <array>
#include <asio/io_context.hpp>
#include <asio/steady_timer.hpp>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "examples/backend/Channel.h"
#include "examples/backend/Sessions.h"
#include "modules/asio/FrameMessages.h"
#include "modules/asio/FrameReader.h"
#include "modules/asio/FrameWriter.h"
#include "tvk/values/KestrinMessage.h"

namespace backend {

/// Messages to frames and back; shared by all connections of a back end.
struct Codec {
    explicit Codec(unsigned int maximum) : maximumFrameSize(maximum) {}

    /// Empty, and `*error`, where the message cannot be one.
    std::string frame(tvk::FrameKind kind, int flags, unsigned long long number,
                      std::string_view subject, tvk::KestrinMessage const & message,
                      tvk::ErrorInfo * error = nullptr);

    unsigned int const maximumFrameSize;
    tvk::SimpleObjectCache cache{tvk::SimpleObjectCache::defaultRawDataConverter()};
    tvk::FrameMessages messages{&cache};
    tvk::FrameWriter writer;
};

/// One client: the greeting, heartbeats, requests in, replies and notices out.
///
/// Order:  replies stand among the notices of the session where they were sent; so a client that has the
///         reply to an "unsubscribe" has all that came before it.
/// Bounds: a client that does not take what is meant for it is dropped with a GOODBYE; one that does not
///         greet, or is silent for three heartbeats, without. Bytes that are no frames end it too.
/// Life:   whoever has a shared pointer, and the connection itself from start() until it is closed.
class Connection : public std::enable_shared_from_this<Connection> {
public:
    struct Limits {
        int helloMilliSec = 10'000;
        int heartbeatMilliSec = 15'000;
        std::size_t maximumQueuedBytes = 64U << 20U;
    };

    class Owner {
    public:
        virtual ~Owner() = default;
        virtual void onRequest(Connection & connection, tvk::Frame const & frame) = 0;
        /// It did not take what was meant for it; a goodbye follows.
        virtual void onTooFarBehind(Connection & connection) = 0;
        /// The last call, once. The session is still that of the connection.
        virtual void onClosed(Connection & connection, std::string const & reason) = 0;
    };

    /// All three are borrowed, and outlive the loop.
    Connection(std::unique_ptr<Channel> channel, asio::io_context & loop, Limits const & limits,
               Codec & codec, Owner & owner);
    void start();

    using Then = std::function<void()>;
    /// Sends bytes behind what the session has by now, and calls `then` when they have been written.
    void send(std::string bytes, Then then = {});
    void sendLater(long long milliSec, std::string bytes);

    Session * session() const { return session_; }
    /// Sends what the session has not sent, and from now on what it gets.
    void attach(Session * session) { session_ = session; }
    /// What waited for the notices of the session waits no more.
    void detach();
    /// The session has something new.
    void flush();

    /// GOODBYE, and the end.
    void sayGoodbye(int code, std::string_view text, bool retry);
    /// The end behind what has been written.
    void finish(std::string const & reason);
    /// The end at once.
    void cut(std::string const & reason);

    void cutAfter(std::size_t bytes);
    void readSlowly(long long bytesPerSecond) { bytesPerSecond_ = bytesPerSecond; }
    /// 0 for ever.
    void beSilent(long long milliSec);

private:
    enum class Stage { HANDSHAKE, GREETING, OPEN, ENDING, CLOSED };

    /// Bytes that wait until the session has sent the notices up to a number.
    struct Outgoing {
        std::string bytes;
        unsigned long long behind = 0;
        Then then;
    };

    void read();
    void readSome(char * room, std::size_t size);
    void takeFrames();
    void take(tvk::Frame const & frame);
    void greet(tvk::Frame const & frame);
    void sendControl(tvk::FrameKind kind, unsigned long long number);
    void breakOff(tvk::ErrorInfo const & error);

    bool isTooFarBehind() const;
    void write();
    Then fillChunk();
    void written(std::error_code const & error, Then const & then);

    void watch();
    void check();

    std::unique_ptr<Channel> channel_;
    asio::io_context & loop_;
    Limits const limits_;
    Codec & codec_;
    Owner & owner_;
    asio::steady_timer pulse_;
    asio::steady_timer pause_;  // of reading slowly
    asio::steady_timer silence_;
    asio::steady_timer ending_;

    Stage stage_ = Stage::HANDSHAKE;
    Session * session_ = nullptr;
    tvk::FrameReader reader_;
    std::array<char, 4096> unread_{};  // for what comes behind the end
    std::deque<Outgoing> outgoing_;
    std::size_t outgoingBytes_ = 0;
    std::string chunk_;
    bool isReady_ = false;  // to carry bytes
    bool isWriting_ = false;
    bool isSilent_ = false;
    bool hasCut_ = false;  // bytesToCut_ counts
    std::size_t bytesToCut_ = 0;
    long long bytesPerSecond_ = 0;  // 0 for full speed

    int beatMilliSec_;      // between what is sent
    int patienceMilliSec_;  // with the client's silence
    unsigned long long beats_ = 0;
    long long startedAt_ = 0;
    long long sentAt_ = 0;
    long long receivedAt_ = 0;
};

/// Milliseconds of a clock that does not go back, and since 1970.
long long steadyMilliSec();
long long wallMilliSec();

}  // namespace backend
