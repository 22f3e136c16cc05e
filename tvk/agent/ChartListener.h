#pragma once

#include <cstdint>
#include <vector>

#include "tvk/platform/Export.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class AsyncChartRequestOperation;
class ChartHistoricalDataRec;
class ChartService;
class ErrorInfo;

/// What an application hears of a chart service: its start and stop, when it is registered with
/// ChartService::addChartListener, and the outcome of the history requests that it is given to. The
/// two are independent: a listener of a request need not be registered.
///
/// Calls:     by the chart service alone. onServiceStarted and onServiceStopped go to all that are
///            registered, in the order of addition. Of the four onHistory callbacks exactly one comes
///            for each request, to its listener alone, and never from inside the call that makes the
///            request. `service` is never null.
/// Ownership: nobody owns a listener. Before it ends, take it out with removeChartListener and end its
///            requests with cancelRequestsByListener.
/// From inside a callback every operation of the service and of its handles may be called. A listener
/// that is removed meanwhile is not called any more; one that is added meanwhile is not called in this
/// pass. Callbacks throw nothing.
/// Threads:   callbacks come on the thread on which the service delivers, one at a time.
class TVK_API ChartListener {
public:
    virtual ~ChartListener();

    /// The service runs: requests and subscriptions reach the back end.
    virtual void onServiceStarted(ChartService * service) = 0;
    /// The service is at its end, and has no pending request left. `error` is null where it was asked
    /// to stop.
    virtual void onServiceStopped(ChartService * service, ErrorInfo const * error) = 0;

    // Outcomes of a request. `operation` is its handle, never null; who keeps it takes a count.
    // `userObject` is what the request was given, unchanged.

    /// The bars from the oldest to the newest, none of them null; there may be none at all. They are
    /// shared with the service: read them, and copy what is to be changed.
    virtual void onHistory(ChartService * service, AsyncChartRequestOperation * operation,
                           std::vector<RefCountedPtr<ChartHistoricalDataRec>> const & records,
                           void * userObject) = 0;
    /// No answer came within the time-out, which is the service's own.
    virtual void onHistoryTimeout(ChartService * service, AsyncChartRequestOperation * operation,
                                  void * userObject) = 0;
    /// Somebody cancelled the request, or the service was asked to stop.
    virtual void onHistoryCanceled(ChartService * service, AsyncChartRequestOperation * operation,
                                   void * userObject) = 0;
    /// The back end refused the request, or the service lost it.
    virtual void onHistoryError(ChartService * service, AsyncChartRequestOperation * operation,
                                ErrorInfo const & error, void * userObject) = 0;

protected:
    /// The deriving class's own, for whatever it likes: the library never reads it.
    std::int32_t tag_ = 0;
};

}  // namespace tvk
