#include "modules/asio/detail/Connection.h"

#include <algorithm>
#include <utility>

#include "modules/asio/detail/Errors.h"
#include "tvk/errors/KestrinConstants.h"
#include "tvk/values/MappedMessage.h"

namespace tvk::detail {

namespace {

constexpr std::size_t READ_SIZE = std::size_t{64} << 10U;
/// A buffer for sending that has grown beyond this is given back when it is empty.
constexpr std::size_t KEPT_SIZE = std::size_t{256} << 10U;

/// So many intervals of silence are too many.
constexpr int SILENT_INTERVALS = 3;

/// At most, while something is overdue.
constexpr int CHECKS_PER_INTERVAL = 8;

}  // namespace

Connection::Connection(EventLoop & loop, TcpOptions const & options, FrameWriter & writer,
                       std::function<void()> notify)
    : options_(options),
      writer_(writer),
      notify_(std::move(notify)),
      empty_(new MappedMessage),
      reader_(options.maximumFrameSize),
      timer_(loop),
      link_(loop, options,
            {[this] { onOpened(); }, [this](std::size_t count) { onRead(count); },
             [this] { onWritten(); }, [this](ErrorInfo const & error) { lose(error); }}) {}

void Connection::open() { link_.open(); }

void Connection::onOpened() {
    isOpen_ = true;
    timer_.startAfter(options_.connectMilliSec, [this] {
        CString text;
        text.Format("no welcome within %d ms", options_.connectMilliSec);
        lose(networkFailure(KestrinConstants::ERR_FailedToCreateConnection, text));
    });
    read();
    notify_();
}

void Connection::onRead(std::size_t count) {
    isReading_ = false;
    reader_.filled(count);
    received_ = Clock::now();
    checksSinceReceived_ = 0;
    if (reader_.pendingBytes() < options_.maximumReadAhead) {
        read();
    }
    notify_();
}

void Connection::onWritten() {
    isWriting_ = false;
    startWriting();
}

Connection::Came Connection::next(Frame * frame, ErrorInfo * loss) {
    if (isOpen_ && !isOpeningTold_) {
        isOpeningTold_ = true;
        return Came::OPENED;
    }
    // Before frames are taken: room for reading ends their texts.
    if (reader_.pendingBytes() <= options_.maximumReadAhead / 2) {
        read();
    }
    ErrorInfo error(ASIO_COMPONENT_CODE);
    while (!isLossTold_) {
        FrameReader::Result const result = reader_.next(frame, &error);
        if (result == FrameReader::Result::FRAME) {
            if (!takeHeartbeat(*frame)) {
                return Came::FRAME;
            }
        } else if (result == FrameReader::Result::NEED_MORE && !loss_) {
            // However much it is: a frame may be larger than what is read ahead.
            read();
            return Came::NOTHING;
        } else {
            isLossTold_ = true;
            end();
            *loss = loss_ ? *loss_ : error;
            return Came::LOSS;
        }
    }
    return Came::NOTHING;
}

bool Connection::takeHeartbeat(Frame const & frame) {
    if (frame.kind == FRAME_HEARTBEAT) {
        sendControl(FRAME_HEARTBEAT_ANSWER, frame.number);
    }
    return frame.kind == FRAME_HEARTBEAT || frame.kind == FRAME_HEARTBEAT_ANSWER;
}

void Connection::read() {
    if (!isOpen_ || isReading_ || loss_) {
        return;
    }
    isReading_ = true;
    // What passed while nobody was reading was no silence.
    received_ = Clock::now();
    checksSinceReceived_ = 0;
    char * const room = reader_.room(READ_SIZE);
    link_.read(room, reader_.roomSize());
}

void Connection::send(std::string_view frame) {
    if (!isOpen_ || loss_) {
        return;
    }
    sent_ = Clock::now();
    waiting_.append(frame);
    startWriting();
}

void Connection::sendControl(FrameKind kind, unsigned long long number) {
    send(writer_.write(kind, 0, number, CString(), *empty_, nullptr, options_.maximumFrameSize));
}

void Connection::startWriting() {
    if (isWriting_) {
        return;
    }
    if (going_.capacity() > KEPT_SIZE) {
        going_ = std::string();
    }
    going_.clear();
    if (waiting_.empty()) {
        return;
    }
    going_.swap(waiting_);
    isWriting_ = true;
    link_.write(going_.data(), going_.size());
}

void Connection::lose(ErrorInfo const & error) {
    if (!loss_) {
        loss_ = error;
        end();
        notify_();
    }
}

void Connection::end() {
    link_.close();
    timer_.cancel();
}

void Connection::established(long long heartbeatMilliSec) {
    long long const own = options_.heartbeatMilliSec;
    interval_ =
        std::chrono::milliseconds(heartbeatMilliSec > 0 ? std::min(own, heartbeatMilliSec) : own);
    established_ = Clock::now();
    received_ = established_;
    asked_ = established_;
    checksSinceReceived_ = 0;
    checkLater(established_);
}

Connection::Clock::duration Connection::age() const { return Clock::now() - established_; }

void Connection::sendHeartbeat() {
    asked_ = Clock::now();
    sendControl(FRAME_HEARTBEAT, ++heartbeats_);
}

/// Heartbeats go when nothing else went, so that the other side hears of us, and when nothing came, so
/// that we hear of it. While something waits to go they would only wait too.
void Connection::check() {
    Clock::time_point const now = Clock::now();
    if (isReading_ && now - received_ >= SILENT_INTERVALS * interval_ &&
        checksSinceReceived_ >= SILENT_INTERVALS - 1) {
        CString text;
        text.Format("nothing came for %d heartbeats", SILENT_INTERVALS);
        lose(networkFailure(KestrinConstants::ERR_HeartbeatFailed, text));
        return;
    }
    ++checksSinceReceived_;
    bool const isQuiet = now - sent_ >= interval_ || now - std::max(received_, asked_) >= interval_;
    if (isQuiet && !isWriting_) {
        sendHeartbeat();
    }
    checkLater(now);
}

void Connection::checkLater(Clock::time_point now) {
    Clock::time_point const due =
        std::min({sent_ + interval_, std::max(received_, asked_) + interval_,
                  received_ + SILENT_INTERVALS * interval_});
    // What is overdue now stays so until something moves.
    auto const wait = std::chrono::ceil<std::chrono::milliseconds>(
        std::max(due - now, interval_ / CHECKS_PER_INTERVAL));
    timer_.startAfter(wait.count(), [this] { check(); });
}

}  // namespace tvk::detail
