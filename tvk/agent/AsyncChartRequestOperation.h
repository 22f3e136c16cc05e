#pragma once

#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"

namespace tvk {

/// Handle of one request for chart history, as ChartService::requestHistory and
/// requestHistoryBetween return it.
///
/// A request is pending until one of four things happens to it: the history arrives, the service's
/// time-out passes, it fails, or it is cancelled. It is then no longer pending, the listener hears of
/// exactly that one, and nothing further changes.
///
/// Ownership: counted. The service holds it until its listener has heard the outcome; a caller that
///            drops it lets the request go on.
/// Threads:   as its service.
class TVK_API AsyncChartRequestOperation : public RefCounted {
public:
    ~AsyncChartRequestOperation() override;

    /// Cancels the request: the listener hears onHistoryCanceled from inside this call, and the
    /// history, should it still arrive, goes nowhere. Nothing when the request is not pending.
    virtual void cancel() = 0;
    virtual bool isCanceled() const = 0;  ///< true from cancel on, where that came in time
    /// False already inside the callback that brings the outcome.
    virtual bool isPending() const = 0;
};

}  // namespace tvk
