#pragma once

#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class ChartRealDataRec;
class ChartService;

/// Receives the real-time updates of one symbol, or of all. Registered with
/// ChartService::addNoticeMessageListener.
///
/// Calls:     by the chart service alone, for each subscription that is open. `service` is never null.
/// Ownership: nobody owns a listener; remove it before it ends.
/// From inside a callback every operation of the service may be called. A listener that is removed
/// meanwhile is not called any more; one that is added meanwhile is not called in this pass. Callbacks
/// throw nothing.
/// Threads:   callbacks come on the thread on which the service delivers, one at a time.
class TVK_API ChartNoticeMessageListener {
public:
    virtual ~ChartNoticeMessageListener();

    /// `record` is never null. Symbol, price kind and period type tell which chart it belongs to. It is
    /// shared with the service and the listeners behind: read it, and copy what is to be changed.
    virtual void onRealData(ChartService * service,
                            RefCountedPtr<ChartRealDataRec> const & record) = 0;
    /// Updates of the symbol were missed or begin anew, as after a lost connection or at a new trading
    /// day. Those told so far no longer join on to those to come: ask for the history again.
    virtual void onRealDataReset(ChartService * service, CString const & symbolCode) = 0;
};

}  // namespace tvk
