#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "modules/asio/FrameReader.h"
#include "modules/asio/FrameWriter.h"
#include "modules/asio/TcpOptions.h"
#include "modules/asio/detail/Link.h"
#include "modules/asio/detail/Timer.h"
#include "tvk/errors/ErrorInfo.h"

namespace tvk::detail {

/// One connection to the back end: a Link, the frames that come over it, those that wait to go, and the
/// heartbeats. What comes is fetched with next, in its order, the loss of the connection last.
///
/// Reading: goes on until `maximumReadAhead` bytes wait to be fetched, and again when half of them have
///          been. A silence that comes of not reading is none.
/// Writing: what is sent while a write is under way goes out together behind it.
/// Silence: for as long as the heartbeats of both sides allow, and only while the loop has been at work:
///          an application that did nothing for a minute does not lose its connection by that.
/// Threads: that of the loop. `notify` comes from there, never from inside a call.
class Connection {
public:
    enum class Came { NOTHING, OPENED, FRAME, LOSS };

    /// `notify` is called when next may have something. The writer is shared with the agent.
    Connection(EventLoop & loop, TcpOptions const & options, FrameWriter & writer,
               std::function<void()> notify);

    void open();
    /// FRAME with `*frame`, whose texts stand until the next call; LOSS with `*loss`, and NOTHING from
    /// then on. Heartbeats are answered here.
    Came next(Frame * frame, ErrorInfo * loss);

    /// The other side has accepted the client: heartbeats begin. `heartbeatMilliSec` is its own.
    void established(long long heartbeatMilliSec);
    void sendHeartbeat();
    /// Nothing, once the connection is lost.
    void send(std::string_view frame);
    std::size_t queuedBytes() const { return going_.size() + waiting_.size(); }
    std::chrono::steady_clock::duration age() const;  ///< since it was established

private:
    using Clock = std::chrono::steady_clock;

    void onOpened();
    void onRead(std::size_t count);
    void onWritten();
    void read();
    bool takeHeartbeat(Frame const & frame);
    void sendControl(FrameKind kind, unsigned long long number);
    void startWriting();
    void check();
    void checkLater(Clock::time_point now);
    void lose(ErrorInfo const & error);
    void end();

    TcpOptions const & options_;
    FrameWriter & writer_;
    std::function<void()> const notify_;
    RefCountedPtr<KestrinMessage> const empty_;
    FrameReader reader_;

    bool isOpen_ = false;
    bool isOpeningTold_ = false;
    bool isReading_ = false;
    bool isWriting_ = false;
    bool isLossTold_ = false;
    std::optional<ErrorInfo> loss_;
    std::string going_;
    std::string waiting_;

    Clock::time_point established_;
    Clock::duration interval_{};  // of our heartbeats
    Clock::time_point sent_;
    Clock::time_point received_;
    Clock::time_point asked_;  // the last heartbeat of ours
    int checksSinceReceived_ = 0;
    unsigned long long heartbeats_ = 0;

    // The last members, so that they end first: their functions use the others.
    Timer timer_;
    Link link_;
};

}  // namespace tvk::detail
