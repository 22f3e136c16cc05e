#include "modules/asio/FrameReader.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "modules/asio/detail/FrameLayout.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk {

namespace {

/// Takes the messages of an ordinary feed for as long as the system reads at once.
constexpr std::size_t ORDINARY_CAPACITY = 128U << 10U;
/// A buffer is too large when it is so many times what was wanted of it, so many times in a row.
constexpr std::size_t TOO_LARGE = 8;
constexpr unsigned int TIMES_TOO_LARGE = 64;

}  // namespace

FrameReader::FrameReader(unsigned int maximumFrameSize) : maximumFrameSize_(maximumFrameSize) {}

FrameReader::~FrameReader() = default;

char * FrameReader::room(std::size_t atLeast) {
    if (begin_ == end_) {
        begin_ = end_ = 0;
    }
    std::size_t const pending = pendingBytes();
    if (atLeast > std::numeric_limits<std::size_t>::max() / 2 - pending) {
        throw std::bad_alloc();
    }
    if (isLongTooLarge(pending + atLeast)) {
        moveTo(std::max(ORDINARY_CAPACITY, 2 * (pending + atLeast)));
    } else if (roomSize() < atLeast) {
        makeRoom(atLeast);
    }
    return buffer_.get() + end_;
}

FrameReader::Result FrameReader::next(Frame * frame, ErrorInfo * error) {
    std::size_t const pending = pendingBytes();
    if (pending < detail::FRAME_LENGTH_SIZE) {
        return Result::NEED_MORE;
    }
    char const * const start = buffer_.get() + begin_;
    std::uint32_t const length = detail::loadUInt32(start);
    if (length < detail::MINIMUM_FRAME_LENGTH || length > maximumFrameSize_) {
        detail::refuseFrame(
            error, KestrinConstants::ERR_InvalidMessageSize,
            "the length of a frame is %lu, neither below %lu nor above %u is allowed",
            static_cast<unsigned long>(length),
            static_cast<unsigned long>(detail::MINIMUM_FRAME_LENGTH), maximumFrameSize_);
        return Result::BROKEN;
    }
    if (pending < detail::FRAME_FIXED_SIZE) {
        return Result::NEED_MORE;
    }
    detail::FixedPart const fixed = detail::FixedPart::load(start);
    if (!fixed.check(detail::FrameLevel::TOP, error)) {
        return Result::BROKEN;
    }
    if (pending - detail::FRAME_LENGTH_SIZE < length) {
        return Result::NEED_MORE;
    }
    std::string_view const bytes(start, detail::FRAME_LENGTH_SIZE + length);
    detail::SubFrame parts;
    if (!detail::splitFrame(fixed, bytes, &parts, error) ||
        (!parts.subMessages.empty() && !detail::checkSubFrames(parts.subMessages, 1, error))) {
        return Result::BROKEN;
    }
    begin_ += bytes.size();
    *frame = parts;
    return Result::FRAME;
}

/// Moves what is pending down where that frees half of the buffer at least, so that a byte is moved
/// once for each byte that is read at most; else the buffer doubles.
void FrameReader::makeRoom(std::size_t atLeast) {
    std::size_t const pending = pendingBytes();
    if (pending <= capacity_ / 2 && atLeast <= capacity_ - pending) {
        std::memmove(buffer_.get(), buffer_.get() + begin_, pending);
        begin_ = 0;
        end_ = pending;
        return;
    }
    moveTo(std::max({ORDINARY_CAPACITY, 2 * pending, pending + atLeast}));
}

void FrameReader::moveTo(std::size_t capacity) {
    std::size_t const pending = pendingBytes();
    auto moved = std::make_unique_for_overwrite<char[]>(capacity);
    if (pending != 0) {
        std::memcpy(moved.get(), buffer_.get() + begin_, pending);
    }
    buffer_ = std::move(moved);
    capacity_ = capacity;
    begin_ = 0;
    end_ = pending;
}

bool FrameReader::isLongTooLarge(std::size_t needed) {
    bool const isTooLarge = capacity_ > ORDINARY_CAPACITY && needed < capacity_ / TOO_LARGE;
    timesTooLarge_ = isTooLarge ? timesTooLarge_ + 1 : 0;
    return timesTooLarge_ >= TIMES_TOO_LARGE;
}

}  // namespace tvk
