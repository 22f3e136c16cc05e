#pragma once

#include <string>
#include <string_view>

#include "tvk/errors/ErrorInfo.h"
#include "tvk/json/JsonMessageParser.h"
#include "tvk/json/JsonMessageSerializer.h"
#include "tvk/json/SimpleObjectCache.h"
#include "tvk/values/KestrinMessage.h"

namespace inprocess {

/// Messages as the bytes that travel, and back. A frame is the head, a line feed and the body, both
/// JSON objects; the head carries what the JSON of a message leaves out:
///
///     {"id":"7","kind":1,"type":"quote"}
///     {"sym":"3622"}
///
/// Further fields of the header stand as a record under "fields". JSON as it is written here has no
/// raw line feed in it, so the first one parts the two. Each end of a connection has its own codec.
class FrameCodec {
public:
    /// Empty, and `*error`, for what a frame cannot carry: sub-messages and raw data. The body of
    /// `message` goes under `header`, which need not be its own.
    std::string write(tvk::KestrinMessageHeader const & header, tvk::KestrinMessage const & message,
                      tvk::ErrorInfo * error);
    /// The head with its line feed, for a body that is JSON already.
    std::string writeHead(tvk::KestrinMessageHeader const & header);

    /// Null, and `*error`, where not even the head can be read. Where only the body cannot, the
    /// message is without fields and `*error` set, so that a request learns that its reply is bad.
    tvk::RefCountedPtr<tvk::KestrinMessage> read(std::string_view frame, tvk::ErrorInfo * error);

private:
    tvk::RefCountedPtr<tvk::KestrinMessage> parse(std::string_view json, tvk::ErrorInfo * error);

    tvk::SimpleObjectCache cache_{tvk::SimpleObjectCache::defaultRawDataConverter()};
    tvk::JsonMessageParser parser_{&cache_};
    tvk::JsonMessageSerializer serializer_;
};

}  // namespace inprocess
