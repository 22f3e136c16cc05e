#pragma once

#include <cstddef>
#include <memory>

#include "modules/asio/Export.h"
#include "modules/asio/Frame.h"

namespace tvk {

class ErrorInfo;

/// Finds frames in the bytes of a connection. The bytes are read straight into its buffer, and frames
/// are views into it: nothing is copied, but for an incomplete frame at the end of a full buffer.
///
///     reader.filled(read(socket, reader.room(ATLEAST), reader.roomSize()));
///     while ((result = reader.next(&frame, &error)) == FrameReader::Result::FRAME) {
///         take(frame);
///     }
///
/// JSON is not looked at; all else about a frame is: a frame that comes out is sound, with its
/// sub-messages.
///
/// Memory:  the buffer grows with what has arrived, not with the length that a frame announces, and
///          shrinks again when it has been far too large for a while.
/// Threads: one at a time.
/// Failure: std::bad_alloc from room(). A broken frame is reported in its place, again and again: the
///          stream has lost its step, and nothing behind it can be read.
class TVK_ASIO_API FrameReader {
public:
    enum class Result {
        NEED_MORE,  ///< the bytes so far are no whole frame
        FRAME,
        BROKEN,  ///< ERR_InvalidMessageSize for a length, ERR_ProtocolFailure for anything else
    };

    /// The largest length of a frame, which is its size without the 4 bytes of the length itself.
    explicit FrameReader(unsigned int maximumFrameSize);
    FrameReader(FrameReader const &) = delete;
    FrameReader & operator=(FrameReader const &) = delete;
    ~FrameReader();

    /// Where the next bytes are to be put, with room for `atLeast` of them and for roomSize() at most.
    /// The frames so far come to their end here: their texts may be moved or freed. All else leaves
    /// both the room and the texts where they are, so frames can be taken while a read is under way.
    char * room(std::size_t atLeast);
    std::size_t roomSize() const { return capacity_ - end_; }
    /// So many bytes have been put there. Requires: count <= roomSize().
    void filled(std::size_t count) { end_ += count; }

    /// With FRAME the frame is in `*frame`, with BROKEN the reason in `*error`, which may be null;
    /// else both stay as they are.
    Result next(Frame * frame, ErrorInfo * error);

    /// The bytes of which no frame has been given out yet.
    std::size_t pendingBytes() const { return end_ - begin_; }

private:
    void makeRoom(std::size_t atLeast);
    void moveTo(std::size_t capacity);
    bool isLongTooLarge(std::size_t needed);

    unsigned int maximumFrameSize_;
    unsigned int timesTooLarge_ = 0;
    std::unique_ptr<char[]> buffer_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;  // of what is pending
    std::size_t end_ = 0;
};

}  // namespace tvk
