#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class Kestrin;
class KestrinMessage;

/// Receives notices of one type and subject, or of all under a wildcard. Registered with
/// Kestrin::addMessageHandler.
///
/// Calls:     by the concrete agent alone, on its thread, for each handler that
///            AbstractKestrin::getAllPossibleMessageHandlers lists.
/// Ownership: the agent does not own a handler; remove it before it ends.
class TVK_API KestrinNoticeMessageHandler {
public:
    virtual ~KestrinNoticeMessageHandler();

    /// `agent` and `notice` are never null. Handlers may be added and removed from inside.
    virtual void onNotice(Kestrin * agent, RefCountedPtr<KestrinMessage> const & notice) = 0;
};

}  // namespace tvk
