#pragma once

#include <vector>

#include "tvk/chart/PriceKindEnum.h"
#include "tvk/platform/CString.h"
#include "tvk/platform/Export.h"
#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk {

class AsyncChartRequestOperation;
class ChartHistoricalDataRec;
class ChartListener;
class ChartNoticeMessageListener;
class ChartRealDataRec;
class ErrorInfo;

/// Delivers charts: bars of the past on request, and updates of the present by subscription. A module
/// implements it, the application registers it with KestrinContainer::setChartService, and other modules
/// find it there. The library itself calls none of its operations.
///
/// Chart:     a symbol, a price kind and a period type name one chart. Symbols, period types, dates and
///            times are texts of the back end, as in the records; case counts.
/// Order:     start; onServiceStarted; requests and subscriptions; stop; onServiceStopped; and again, if
///            wanted. Listeners may be added and removed, and subscriptions opened and closed, at any
///            time: they outlive a stop, and a start opens the subscriptions at the back end again.
/// Ownership: the service is counted, listeners are not owned. What it returns is counted.
/// Callbacks: see ChartListener and ChartNoticeMessageListener. Every operation may be called from
///            inside one.
/// Threads:   one at a time. A service with threads of its own keeps its callbacks apart from the calls
///            of the application.
/// Failure:   start reports; a request reports through its listener. A look-up that misses is null, 0 or
///            false.
class TVK_API ChartService : public RefCounted {
public:
    /// Begins to run; onServiceStarted tells when it does. False where that cannot even begin, with
    /// `*error` filled when not null. True, and nothing else, when it runs or begins to already.
    virtual bool start(ErrorInfo * error) = 0;
    /// Cancels the pending requests, then tells onServiceStopped. Nothing when it neither
    /// runs nor begins to. A service that fails stops by itself: its pending requests end with
    /// onHistoryError.
    virtual void stop() = 0;
    /// True from just before onServiceStarted until just before onServiceStopped.
    virtual bool isRunning() const = 0;

    // Listeners of the service, in the order of addition. One that is added twice is called twice.
    virtual void addChartListener(ChartListener * listener) = 0;  ///< not null
    virtual bool hasChartListener(ChartListener const * listener) const = 0;
    /// Removes the first entry of `listener`; nothing where there is none. Its requests go on.
    virtual void removeChartListener(ChartListener const * listener) = 0;
    virtual void removeAllChartListeners() = 0;
    virtual std::vector<ChartListener *> getChartListeners() const = 0;

    // Listeners of real-time updates. KestrinConstants::WILDCARD stands for all symbols. Those of all
    // symbols are called before those of the one, and each in the order of addition; one that is added
    // twice is called twice.
    virtual void addNoticeMessageListener(CString const & symbolCode,
                                          ChartNoticeMessageListener * listener) = 0;  ///< not null
    /// Removes the first entry of `listener` under exactly this text. The number removed: 1 or 0.
    virtual int removeNoticeMessageListener(CString const & symbolCode,
                                            ChartNoticeMessageListener const * listener) = 0;
    virtual void removeAllNoticeMessageListeners() = 0;

    // Requests. The outcome goes to `listener`, which may be null and then hears nothing; `userObject`
    // goes with it and is never looked at. Null, with no outcome, where the service does not run. The
    // bars that arrive also become the history of the chart, see getHistoryCount.

    /// The newest `count` bars; 0 asks for all that the back end has.
    virtual RefCountedPtr<AsyncChartRequestOperation> requestHistory(
        CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
        unsigned int count, ChartListener * listener, void * userObject) = 0;
    /// The bars of `fromDate` to `toDate`, both included, written as in ChartHistoricalDataRec::getDataDate.
    /// An empty text leaves its end open.
    virtual RefCountedPtr<AsyncChartRequestOperation> requestHistoryBetween(
        CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
        CString const & fromDate, CString const & toDate, ChartListener * listener,
        void * userObject) = 0;
    // Cancel what is pending. Each listener hears onHistoryCanceled from inside the call, so it may end
    // behind it.
    virtual void cancelAllRequests() = 0;
    virtual void cancelRequestsByListener(ChartListener const * listener) = 0;

    /// Opens one more subscription to the updates of a chart. The number open now; the first one is
    /// sent to the back end.
    virtual int subscribe(CString const & symbolCode, PriceKindEnum priceKind,
                          CString const & periodType) = 0;
    /// Closes one. The number still open, 0 also where none was; the last one is told to the back end.
    virtual int unsubscribe(CString const & symbolCode, PriceKindEnum priceKind,
                            CString const & periodType) = 0;
    virtual bool hasSubscription(CString const & symbolCode, PriceKindEnum priceKind,
                                 CString const & periodType) const = 0;

    // What the service holds of a chart: the bars that the last request for it brought, and the last
    // update. Both stay through a stop.
    virtual unsigned int getHistoryCount(CString const & symbolCode, PriceKindEnum priceKind,
                                         CString const & periodType) const = 0;
    /// `index` 0 is the oldest bar. Null where it is not below the count.
    virtual RefCountedPtr<ChartHistoricalDataRec> getHistoryRecord(CString const & symbolCode,
                                                                   PriceKindEnum priceKind,
                                                                   CString const & periodType,
                                                                   unsigned int index) const = 0;
    /// Null before the first update.
    virtual RefCountedPtr<ChartRealDataRec> getLastRecord(CString const & symbolCode,
                                                          PriceKindEnum priceKind,
                                                          CString const & periodType) const = 0;
    /// Forgets bars and last update. Requests and subscriptions go on.
    virtual void clearHistory(CString const & symbolCode, PriceKindEnum priceKind,
                              CString const & periodType) = 0;
    /// The period types that the back end knows, in its order; empty until it has told them.
    virtual std::vector<CString> getPeriodTypes() const = 0;

protected:
    ~ChartService() override;
};

}  // namespace tvk
