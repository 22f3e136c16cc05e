#pragma once

#include <string_view>

namespace tvk {

/// What a frame is. The first three are the message kinds, the others belong to the connection.
enum FrameKind : int {
    FRAME_REQUEST = 1,
    FRAME_REPLY = 2,
    FRAME_NOTICE = 3,
    FRAME_HELLO = 16,
    FRAME_WELCOME = 17,
    FRAME_HEARTBEAT = 18,
    FRAME_HEARTBEAT_ANSWER = 19,
    FRAME_GOODBYE = 20,
};

/// Bits of a frame's flags; all others are 0.
enum FrameFlag : int {
    FRAME_FAILURE = 1,          ///< a reply that tells why there is none
    FRAME_HEADER_FIELDS = 2,    ///< further fields of the header stand behind the subject
    FRAME_SUB_MESSAGES = 4,     ///< sub-messages stand before the body
    FRAME_REQUEST_ID_TEXT = 8,  ///< of a sub-message: the text of its request identifier is there
};

/// One frame, as FrameReader finds it. The texts are bytes of the reader, until it is asked for room.
struct Frame {
    FrameKind kind = FRAME_REQUEST;
    int flags = 0;                  ///< bits of FrameFlag
    unsigned long long number = 0;  ///< request identifier, or sequence number of a notice
    std::string_view type;          ///< UTF-8
    std::string_view subject;       ///< UTF-8
    std::string_view headerFields;  ///< a JSON object, empty where there is none
    std::string_view subMessages;   ///< the count and the frames, empty where there are none
    std::string_view body;          ///< a JSON object, or empty
};

}  // namespace tvk
