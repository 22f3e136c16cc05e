#pragma once

#include <memory>

#include "modules/asio/Export.h"
#include "modules/asio/Frame.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/KestrinMessage.h"

namespace tvk {

class ErrorInfo;

/// Turns frames into messages.
///
/// Message:   the fields are those of the body. The header has the message kind of a request, reply or
///            notice, the type, for requests and replies the number in decimal as request identifier,
///            the subject, when there is one, as the field "subject", and the header fields. A header
///            field "subject" of the frame does not count. Texts come in the application's code page.
/// Memory:    types that were seen before cost nothing, and no more than a bounded number of bounded
///            size is remembered; subjects come from the cache, like the strings of the body.
/// Ownership: the cache is borrowed and must outlive this object. Nothing of the frame is kept.
/// Threads:   one at a time, together with the cache.
/// Failure:   a null result, and where `error` is not null ErrorDomain_Kestrin with
///            ERR_InvalidMessageData for bad JSON in the frame or a sub-message, and, for a frame that
///            does not come from FrameReader, ERR_ProtocolFailure for broken sub-messages.
class TVK_ASIO_API FrameMessages {
public:
    explicit FrameMessages(SimpleObjectCache * cache);
    FrameMessages(FrameMessages const &) = delete;
    FrameMessages & operator=(FrameMessages const &) = delete;
    ~FrameMessages();

    RefCountedPtr<KestrinMessage> read(Frame const & frame, ErrorInfo * error);

private:
    struct Impl;

    std::unique_ptr<Impl> impl_;
};

}  // namespace tvk
