#pragma once

#include <deque>
#include <optional>
#include <string>

#include "tvk/values/RecordData.h"

namespace backend {

/// Something that goes wrong on purpose. Of the fields only those count that the kind names.
struct Fault {
    enum Kind {
        // What becomes of the next `count` replies, in the order in which such faults are asked for.
        DELAY,       ///< each comes `milliSec` late
        DROP,        ///< none comes
        BAD_LENGTH,  ///< the length is below that of the smallest frame
        BAD_KIND,    ///< the kind is an unknown one
        BAD_JSON,    ///< the body is cut JSON
        HALF_FRAME,  ///< the first half of the frame, and the end of the connection
        // What becomes of the connection.
        GARBAGE,       ///< random bytes are sent
        DISCONNECT,    ///< it is cut, `afterBytes` more bytes are sent
        SLOW_READING,  ///< what the client sends is read at `bytesPerSecond`; 0 for full speed
        SILENCE,       ///< nothing is sent for `milliSec`; 0 for ever
        GOODBYE,       ///< it ends with `code`, `text` and `retry`
        // What becomes of the session.
        EXPIRE_LOGIN,    ///< it ends, and requests are refused until the next login
        FORGET_SESSION,  ///< it cannot be resumed
        // What the market does.
        BURST,    ///< `count` notices of `type` and `subject`, see README.md
        NEW_DAY,  ///< high, low and volume begin anew, and charts are reset
    };

    Kind kind = DELAY;
    long long milliSec = 0;
    long long count = 1;
    long long afterBytes = 0;
    long long bytesPerSecond = 0;
    int code = 0;
    std::string text;  ///< UTF-8, like the next two
    std::string type;
    std::string subject;
    long long first = 1;  ///< the number of the first notice of a burst
    bool retry = true;
    bool paced = false;  ///< a burst waits for who is behind
};

/// The fault that the body of a request asks for; none where it makes no sense.
std::optional<Fault> faultOf(tvk::RecordData const & body);

/// What is to become of the replies of one connection.
class ReplyFaults {
public:
    /// Requires: the kind is one of those of replies.
    void add(Fault const & fault) { faults_.push_back(fault); }
    /// Of the next reply; none where nothing is to become of it.
    std::optional<Fault> next();

private:
    std::deque<Fault> faults_;
};

/// Whether the fault waits for a reply.
bool concernsReplies(Fault::Kind kind);

/// A frame with the fault in it: one of BAD_LENGTH, BAD_KIND and BAD_JSON. HALF_FRAME gives its half.
std::string spoiled(Fault::Kind kind, std::string frame);

/// Bytes that are no frame.
std::string garbage();

}  // namespace backend
