#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class ErrorInfo;
class Kestrin;
class KestrinMessage;
class RecordData;

/// What an application hears of its agent. Registered with Kestrin::addKestrinListener.
///
/// Calls:     by the concrete agent through the `fire` operations of AbstractKestrin, synchronously on its
///            thread, in the order of registration. `agent` is never null.
/// Ownership: the agent does not own a listener; remove it before it ends.
/// From inside a callback every operation of the agent may be called. A listener that is removed
/// meanwhile is not called any more; one that is added meanwhile is not called in this pass. What an
/// exception leaves unsaid to the listeners behind stays unsaid.
///
/// The order of a session: onConnected, onLoginReply, onStartupCompleted, onRealTimeServiceStarted;
/// then onDisconnected and onConnected as often as the connection breaks, onReloginRequired where the
/// back end wants a new login; at the end onRealTimeServiceStopped and onStopped.
class TVK_API KestrinListener {
public:
    virtual ~KestrinListener();

    /// All that the back end sends at the start has arrived; `startupData` is the agent's to define.
    virtual void onStartupCompleted(Kestrin * agent, RecordData const & startupData) = 0;
    /// The answer to a login. `reply` may be null where there was none; `code` and `text` are the back
    /// end's.
    virtual void onLoginReply(Kestrin * agent, RefCountedPtr<KestrinMessage> const & reply,
                              bool succeeded, CString const & code, CString const & text) = 0;
    virtual void onReloginRequired(Kestrin * agent, ErrorInfo const & reason) = 0;
    /// A failure that belongs to no single request.
    virtual void onKestrinError(Kestrin * agent, ErrorInfo const & error) = 0;
    virtual void onConnected(Kestrin * agent) = 0;
    /// `error` is null where the agent itself closed the connection.
    virtual void onDisconnected(Kestrin * agent, ErrorInfo const * error) = 0;
    /// The agent is at its end; `error` is null where it was asked to stop.
    virtual void onStopped(Kestrin * agent, ErrorInfo const * error) = 0;
    /// `restarted` tells a service that came back from one that is new.
    virtual void onRealTimeServiceStarted(Kestrin * agent, bool restarted) = 0;
    /// `error` is null where the agent was asked to stop the service.
    virtual void onRealTimeServiceStopped(Kestrin * agent, ErrorInfo const * error) = 0;
};

}  // namespace tvk
