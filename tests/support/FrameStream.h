#pragma once

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "modules/asio/FrameReader.h"
#include "tests/support/FrameModel.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/errors/KestrinConstants.h"

namespace tvk::test {

/// Hands bytes to a reader as if they had just come.
inline void feed(FrameReader & reader, std::string_view bytes) {
    char * const room = reader.room(bytes.size());
    if (!bytes.empty()) {
        std::memcpy(room, bytes.data(), bytes.size());
    }
    reader.filled(bytes.size());
}

/// A copy of what a reader gives, the sub-messages as the bytes that they are.
struct FrameCopy {
    int kind;
    int flags;
    unsigned long long number;
    std::string type;
    std::string subject;
    std::string headerFields;
    std::string subMessages;
    std::string body;

    bool operator==(FrameCopy const & other) const = default;
};

inline FrameCopy copyOf(Frame const & frame) {
    return {frame.kind,
            frame.flags,
            frame.number,
            std::string(frame.type),
            std::string(frame.subject),
            std::string(frame.headerFields),
            std::string(frame.subMessages),
            std::string(frame.body)};
}

inline FrameCopy copyOf(PlainFrame const & frame) {
    std::string subMessages;
    if (frame.subMessages) {
        subMessages = bigEndian(frame.subMessages->size(), 4);
        for (PlainFrame const & subMessage : *frame.subMessages) {
            subMessages += bytesOf(subMessage);
        }
    }
    return {frame.kind,  flagsOf(frame), frame.number,
            frame.type,  frame.subject,  frame.headerFields.value_or(""),
            subMessages, frame.body};
}

/// What comes of a stream: the frames, and the code of the error where it ends in one, else 0.
struct StreamContent {
    std::vector<FrameCopy> frames;
    int errorCode = 0;
    std::size_t pending = 0;  // bytes behind the last frame

    bool operator==(StreamContent const & other) const = default;
};

/// Takes what is there, until more is needed or the stream is broken.
inline void takeFrames(FrameReader & reader, StreamContent & content) {
    Frame frame;
    ErrorInfo error;
    FrameReader::Result result = reader.next(&frame, &error);
    while (result == FrameReader::Result::FRAME) {
        content.frames.push_back(copyOf(frame));
        result = reader.next(&frame, &error);
    }
    content.errorCode = error.getErrorCode();
    content.pending = reader.pendingBytes();
}

inline StreamContent contentByModel(std::string_view stream, unsigned int maximumFrameSize) {
    FrameModel const model(maximumFrameSize);
    StreamContent content;
    PlainFrame frame;
    std::size_t size = 0;
    FrameModel::Result result = model.next(stream, &frame, &size);
    while (result == FrameModel::Result::FRAME) {
        content.frames.push_back(copyOf(frame));
        stream.remove_prefix(size);
        result = model.next(stream, &frame, &size);
    }
    content.errorCode =
        result == FrameModel::Result::BAD_SIZE    ? KestrinConstants::ERR_InvalidMessageSize
        : result == FrameModel::Result::BAD_FRAME ? KestrinConstants::ERR_ProtocolFailure
                                                  : 0;
    content.pending = stream.size();
    return content;
}

}  // namespace tvk::test
