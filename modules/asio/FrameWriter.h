#pragma once

#include <memory>
#include <string_view>

#include "modules/asio/Export.h"
#include "modules/asio/Frame.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk {

class ErrorInfo;

/// Writes messages as frames, into one buffer that is kept from frame to frame: once it is large
/// enough, nothing is allocated, but for header fields beside a "subject".
///
/// Message: the type identifier, the fields as the body, the sub-messages with their kinds and
///          identifiers, and the header's fields. The header's field "subject" travels as the subject
///          of the frame; null fields arrive as none. Kind and request identifier of the message itself
///          do not travel, what they say is in the kind and the number of the frame.
/// Threads: one at a time.
/// Failure: an empty result, and where `error` is not null ErrorDomain_Kestrin with
///              ERR_InvalidMessageData  raw data, a NUL in a type, subject or request identifier, a
///                                      subject that is no text, a null among the sub-messages, or
///                                      sub-messages nested more than 64 deep
///              ERR_InvalidMessageSize  a frame above the limit, a type, subject or request identifier
///                                      above 65535 bytes
///              ERR_ProtocolFailure     an unknown kind, or a failure that is no reply
///          std::bad_alloc.
class TVK_ASIO_API FrameWriter {
public:
    FrameWriter();
    FrameWriter(FrameWriter const &) = delete;
    FrameWriter & operator=(FrameWriter const &) = delete;
    ~FrameWriter();

    /// The whole frame, until the next call. Of `flags` FRAME_FAILURE alone counts, the others follow
    /// from the message. A subject that is not empty wins over the one in the header.
    /// `maximumFrameSize` is the largest length, which does not count its own 4 bytes.
    std::string_view write(FrameKind kind, int flags, unsigned long long number,
                           CString const & subject, KestrinMessage const & message,
                           ErrorInfo * error, unsigned int maximumFrameSize);

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

}  // namespace tvk
