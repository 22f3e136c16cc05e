#include "examples/backend/Connection.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "examples/backend/Market.h"
#include "examples/backend/Names.h"
#include "examples/backend/Texts.h"
#include "examples/support/Fields.h"
#include "examples/support/Printable.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace backend {

using tvk::ErrorInfo;
using tvk::Frame;
using tvk::FrameKind;
using tvk::FrameReader;
using tvk::KestrinConstants;
using tvk::KestrinMessage;

namespace {

constexpr int PROTOCOL_VERSION = 1;
constexpr int MISSED_BEATS = 3;
constexpr int SHORTEST_BEAT = 10;
constexpr int LONGEST_BEAT = 3'600'000;
constexpr int SHORTEST_PULSE = 5;
constexpr int LONGEST_PULSE = 500;
constexpr int ENDING_MILLISEC = 1'000;
constexpr long long SLOW_STEPS_PER_SECOND = 20;
constexpr std::size_t READ_ROOM = 16'384;
constexpr std::size_t CHUNK_BYTES = 65'536;
constexpr std::size_t NUMBER_OFFSET = 8 + 8;
constexpr std::size_t NUMBER_BYTES = 8;

/// Appends the frame of a notice with its number in it.
void appendNumbered(std::string & chunk, std::string const & frame, unsigned long long number) {
    std::size_t const place = chunk.size() + NUMBER_OFFSET;
    chunk += frame;
    for (std::size_t byte = 0; byte < NUMBER_BYTES; ++byte) {
        std::size_t const shift = 8 * (NUMBER_BYTES - 1 - byte);
        chunk[place + byte] = static_cast<char>(static_cast<unsigned char>(number >> shift));
    }
}

std::string textOf(ErrorInfo const & error) { return utf8(error.getErrorMessage()); }

}  // namespace

long long steadyMilliSec() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

long long wallMilliSec() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::system_clock::now().time_since_epoch())
        .count();
}

std::string Codec::frame(FrameKind kind, int flags, unsigned long long number,
                         std::string_view subject, KestrinMessage const & message,
                         ErrorInfo * error) {
    return std::string(
        writer.write(kind, flags, number, ansi(subject), message, error, maximumFrameSize));
}

Connection::Connection(std::unique_ptr<Channel> channel, asio::io_context & loop,
                       Limits const & limits, Codec & codec, Owner & owner)
    : channel_(std::move(channel)),
      loop_(loop),
      limits_(limits),
      codec_(codec),
      owner_(owner),
      pulse_(loop),
      pause_(loop),
      silence_(loop),
      ending_(loop),
      reader_(codec.maximumFrameSize),
      beatMilliSec_(limits.heartbeatMilliSec),
      patienceMilliSec_(limits.helloMilliSec) {}

void Connection::start() {
    startedAt_ = sentAt_ = receivedAt_ = steadyMilliSec();
    watch();
    channel_->handshake([self = shared_from_this()](std::error_code const & error, std::size_t) {
        if (self->stage_ == Stage::CLOSED) {
            return;
        }
        if (error) {
            self->cut("handshake: " + error.message());
            return;
        }
        self->isReady_ = true;
        if (self->stage_ == Stage::HANDSHAKE) {
            self->stage_ = Stage::GREETING;
        }
        self->read();
        self->write();
    });
}

void Connection::send(std::string bytes, Then then) {
    if (stage_ >= Stage::ENDING) {
        return;
    }
    outgoingBytes_ += bytes.size();
    outgoing_.push_back(
        {std::move(bytes), session_ == nullptr ? 0 : session_->lastSequence(), std::move(then)});
    flush();
}

void Connection::sendLater(long long milliSec, std::string bytes) {
    auto const timer = std::make_shared<asio::steady_timer>(loop_);
    timer->expires_after(std::chrono::milliseconds(milliSec));
    timer->async_wait([timer, weak = weak_from_this(),
                       bytes = std::move(bytes)](std::error_code const & error) mutable {
        auto const self = weak.lock();
        if (!error && self != nullptr) {
            self->send(std::move(bytes));
        }
    });
}

void Connection::detach() {
    session_ = nullptr;
    for (Outgoing & outgoing : outgoing_) {
        outgoing.behind = 0;
    }
}

void Connection::flush() {
    if (stage_ >= Stage::ENDING) {
        return;
    }
    if (isTooFarBehind()) {
        owner_.onTooFarBehind(*this);
        sayGoodbye(KestrinConstants::ERR_NetworkIOError, "受信が遅すぎるため切断します", true);
        return;
    }
    write();
}

void Connection::sayGoodbye(int code, std::string_view text, bool retry) {
    if (stage_ >= Stage::ENDING) {
        return;
    }
    MessagePtr const goodbye = messageOfType("");
    setNumber(*goodbye, field::CODE, code);
    setText(*goodbye, field::TEXT, text);
    setFlag(*goodbye, field::RETRY, retry);
    std::string const reason = "goodbye " + std::to_string(code) + " " + std::string(text);
    outgoing_.clear();
    outgoing_.push_back({codec_.frame(tvk::FRAME_GOODBYE, 0, 0, "", *goodbye), 0,
                         [this, reason] { finish(reason); }});
    stage_ = Stage::ENDING;
    isSilent_ = false;
    ending_.expires_after(std::chrono::milliseconds(ENDING_MILLISEC));
    ending_.async_wait([self = shared_from_this(), reason](std::error_code const & error) {
        if (!error) {
            self->cut(reason);
        }
    });
    write();
}

void Connection::finish(std::string const & reason) {
    if (stage_ == Stage::CLOSED) {
        return;
    }
    stage_ = Stage::ENDING;
    outgoing_.clear();
    channel_->endWriting();
    ending_.expires_after(std::chrono::milliseconds(ENDING_MILLISEC));
    ending_.async_wait([self = shared_from_this(), reason](std::error_code const & error) {
        if (!error) {
            self->cut(reason);
        }
    });
}

void Connection::cut(std::string const & reason) {
    if (stage_ == Stage::CLOSED) {
        return;
    }
    stage_ = Stage::CLOSED;
    auto const self = shared_from_this();  // the owner lets go of it
    channel_->close();
    for (asio::steady_timer * const timer : {&pulse_, &pause_, &silence_, &ending_}) {
        timer->cancel();
    }
    outgoing_.clear();
    owner_.onClosed(*this, reason);
    session_ = nullptr;
}

void Connection::cutAfter(std::size_t bytes) {
    if (bytes == 0) {
        cut("fault: disconnect");
        return;
    }
    hasCut_ = true;
    bytesToCut_ = bytes;
}

void Connection::beSilent(long long milliSec) {
    isSilent_ = true;
    silence_.cancel();
    if (milliSec == 0) {
        return;
    }
    silence_.expires_after(std::chrono::milliseconds(milliSec));
    silence_.async_wait([self = shared_from_this()](std::error_code const & error) {
        if (!error) {
            self->isSilent_ = false;
            self->flush();
        }
    });
}

void Connection::read() {
    if (stage_ == Stage::CLOSED) {
        return;
    }
    if (stage_ == Stage::ENDING) {
        readSome(unread_.data(), unread_.size());
        return;
    }
    char * const room = reader_.room(READ_ROOM);
    if (bytesPerSecond_ == 0) {
        readSome(room, reader_.roomSize());
        return;
    }
    auto const step =
        static_cast<std::size_t>(std::max<long long>(bytesPerSecond_ / SLOW_STEPS_PER_SECOND, 1));
    pause_.expires_after(std::chrono::milliseconds(1000 / SLOW_STEPS_PER_SECOND));
    pause_.async_wait([self = shared_from_this(), room, step](std::error_code const & error) {
        if (!error && self->stage_ < Stage::ENDING) {
            self->readSome(room, std::min(step, self->reader_.roomSize()));
        }
    });
}

void Connection::readSome(char * room, std::size_t size) {
    channel_->read(room, size,
                   [self = shared_from_this()](std::error_code const & error, std::size_t count) {
                       if (self->stage_ == Stage::CLOSED) {
                           return;
                       }
                       if (error) {
                           self->cut(error.message());
                           return;
                       }
                       self->receivedAt_ = steadyMilliSec();
                       if (self->stage_ < Stage::ENDING) {
                           self->reader_.filled(count);
                           self->takeFrames();
                       }
                       self->read();
                   });
}

void Connection::takeFrames() {
    while (stage_ < Stage::ENDING) {
        Frame frame;
        ErrorInfo error;
        switch (reader_.next(&frame, &error)) {
            case FrameReader::Result::FRAME:
                take(frame);
                break;
            case FrameReader::Result::BROKEN:
                breakOff(error);
                return;
            case FrameReader::Result::NEED_MORE:
                return;
        }
    }
}

void Connection::take(Frame const & frame) {
    bool const isOpen = stage_ == Stage::OPEN;
    if (frame.kind == tvk::FRAME_HELLO && !isOpen) {
        greet(frame);
    } else if (frame.kind == tvk::FRAME_REQUEST && isOpen) {
        owner_.onRequest(*this, frame);
    } else if (frame.kind == tvk::FRAME_HEARTBEAT && isOpen) {
        sendControl(tvk::FRAME_HEARTBEAT_ANSWER, frame.number);
    } else if (frame.kind == tvk::FRAME_HEARTBEAT_ANSWER && isOpen) {
        // That it came is all that counts.
    } else if (frame.kind == tvk::FRAME_GOODBYE) {
        finish("goodbye of the client");
    } else {
        sayGoodbye(KestrinConstants::ERR_ProtocolFailure, "この順序では受け付けられません", true);
    }
}

void Connection::greet(Frame const & frame) {
    ErrorInfo error;
    MessagePtr const hello = codec_.messages.read(frame, &error);
    if (hello.isNull()) {
        breakOff(error);
        return;
    }
    if (numberIn(*hello, field::PROTOCOL) != PROTOCOL_VERSION) {
        sayGoodbye(KestrinConstants::ERR_VersionUpRequired, "新しい版のアプリケーションが必要です",
                   false);
        return;
    }
    int const own = limits_.heartbeatMilliSec;
    long long const wished = numberIn(*hello, field::HEARTBEAT);
    int const theirs =
        wished <= 0 ? own
                    : static_cast<int>(std::clamp<long long>(wished, SHORTEST_BEAT, LONGEST_BEAT));
    beatMilliSec_ = std::min(own, theirs);
    patienceMilliSec_ = MISSED_BEATS * std::max(own, theirs);
    stage_ = Stage::OPEN;
    watch();

    MessagePtr const welcome = messageOfType("");
    setNumber(*welcome, field::PROTOCOL, PROTOCOL_VERSION);
    setNumber(*welcome, field::TIME, wallMilliSec());
    setNumber(*welcome, field::HEARTBEAT, beatMilliSec_);
    send(codec_.frame(tvk::FRAME_WELCOME, 0, 0, "", *welcome));
}

void Connection::sendControl(FrameKind kind, unsigned long long number) {
    send(codec_.frame(kind, 0, number, "", *messageOfType("")));
}

void Connection::breakOff(ErrorInfo const & error) {
    sayGoodbye(error.getErrorCode(), textOf(error), true);
}

bool Connection::isTooFarBehind() const {
    if (session_ == nullptr) {
        return outgoingBytes_ > limits_.maximumQueuedBytes;
    }
    return session_->hasLost() ||
           outgoingBytes_ + session_->unsentBytes() > limits_.maximumQueuedBytes;
}

void Connection::write() {
    bool const mayWrite = isReady_ && stage_ != Stage::CLOSED && !isWriting_ && !isSilent_;
    if (!mayWrite) {
        return;
    }
    chunk_.clear();
    Then then = fillChunk();
    if (hasCut_) {
        if (chunk_.size() >= bytesToCut_) {
            chunk_.resize(bytesToCut_);
            then = [this] { cut("fault: disconnect"); };
        }
        bytesToCut_ -= chunk_.size();
    }
    if (chunk_.empty() && !then) {
        return;
    }
    isWriting_ = true;
    sentAt_ = steadyMilliSec();
    channel_->write(
        chunk_.data(), chunk_.size(),
        [self = shared_from_this(), then = std::move(then)](
            std::error_code const & error, std::size_t) { self->written(error, then); });
}

/// What goes out next, in order, and what is to happen behind it.
Connection::Then Connection::fillChunk() {
    while (chunk_.size() < CHUNK_BYTES) {
        bool const isEnding = stage_ == Stage::ENDING;
        bool const isNext =
            !outgoing_.empty() && (isEnding || session_ == nullptr ||
                                   session_->sentSequence() >= outgoing_.front().behind);
        if (isNext) {
            Outgoing next = std::move(outgoing_.front());
            outgoing_.pop_front();
            outgoingBytes_ -= std::min(outgoingBytes_, next.bytes.size());
            chunk_ += next.bytes;
            if (next.then) {
                return std::move(next.then);
            }
        } else if (!isEnding && session_ != nullptr && session_->hasUnsent() &&
                   !session_->hasLost()) {
            auto const [number, frame] = session_->takeUnsent();
            appendNumbered(chunk_, *frame, number);
        } else {
            return {};
        }
    }
    return {};
}

void Connection::written(std::error_code const & error, Then const & then) {
    isWriting_ = false;
    if (stage_ == Stage::CLOSED) {
        return;
    }
    if (error) {
        cut(error.message());
        return;
    }
    sentAt_ = steadyMilliSec();
    if (then) {
        then();
    }
    write();
}

/// Looks at the clock from time to time.
void Connection::watch() {
    int const pulse =
        std::clamp(std::min(beatMilliSec_, patienceMilliSec_) / 4, SHORTEST_PULSE, LONGEST_PULSE);
    pulse_.expires_after(std::chrono::milliseconds(pulse));
    pulse_.async_wait([weak = weak_from_this()](std::error_code const & error) {
        auto const self = weak.lock();
        if (!error && self != nullptr && self->stage_ < Stage::ENDING) {
            self->check();
        }
    });
}

void Connection::check() {
    long long const now = steadyMilliSec();
    if (stage_ != Stage::OPEN) {
        if (now - startedAt_ >= limits_.helloMilliSec) {
            cut("no greeting");
            return;
        }
    } else if (now - receivedAt_ >= patienceMilliSec_ && !isSilent_) {
        cut("no heartbeat");
        return;
    } else if (now - sentAt_ >= beatMilliSec_ && !isWriting_ && !isSilent_) {
        sendControl(tvk::FRAME_HEARTBEAT, ++beats_);
    }
    watch();
}

}  // namespace backend
