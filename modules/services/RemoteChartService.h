#pragma once

#include <memory>

#include "modules/services/Export.h"
#include "tvk/agent/ChartService.h"
#include "tvk/agent/Kestrin.h"

namespace tvk {

/// A chart service that asks a back end through an agent. docs/services.md has the messages.
///
///     RefCountedPtr<ChartService> const charts(new RemoteChartService(agent));
///     charts->addChartListener(&listener);
///     charts->start(&error);  // onServiceStarted follows
///
/// Start:      wants an agent that is logged in, and asks for the period types; the service runs when
///             they arrive. Where they do not, onServiceStopped tells why.
/// Agent:      the service outlives a lost connection and a new login. It stops with the agent:
///             with its error, or as if it were asked to where the agent was. Between a stop and the
///             next start the agent knows nothing of the service.
/// Reset:      onRealDataReset comes for each symbol that is subscribed to when the agent starts its
///             real-time service again, when the service itself starts again, and when the back end
///             says so.
/// Mistakes:   an answer that cannot be read ends in onHistoryError, with ERR_InvalidMessageData and
///             the name of the field, or ERR_UnexpectedReplyMessage where it is about another chart.
///             A notice that cannot be read, or is about no chart that is subscribed to, is dropped
///             and counted.
/// Passes:     a listener that is removed and added again meanwhile waits for the next pass. One that
///             stops the service, or closes the last subscription, ends the pass.
/// Ownership:  holds a count on the agent. The last reference may go inside a callback. With it the
///             pending requests are cancelled, and no other listener is told.
/// Threads:    those of the agent: all callbacks come from inside calls of the agent or of the
///             application.
class TVK_SERVICES_API RemoteChartService : public ChartService {
public:
    static constexpr int COMPONENT_CODE = 8;  ///< of the errors that the service itself finds
    static constexpr int DEFAULT_TIMEOUT_MILLI_SEC = 10'000;

    /// Requires: `agent` is not null. The time-out is that of each request.
    explicit RemoteChartService(RefCountedPtr<Kestrin> const & agent,
                                int timeoutMilliSec = DEFAULT_TIMEOUT_MILLI_SEC);
    RemoteChartService(RemoteChartService const &) = delete;
    RemoteChartService & operator=(RemoteChartService const &) = delete;

    bool start(ErrorInfo * error) override;
    void stop() override;
    bool isRunning() const override;

    void addChartListener(ChartListener * listener) override;
    bool hasChartListener(ChartListener const * listener) const override;
    void removeChartListener(ChartListener const * listener) override;
    void removeAllChartListeners() override;
    std::vector<ChartListener *> getChartListeners() const override;

    void addNoticeMessageListener(CString const & symbolCode,
                                  ChartNoticeMessageListener * listener) override;
    int removeNoticeMessageListener(CString const & symbolCode,
                                    ChartNoticeMessageListener const * listener) override;
    void removeAllNoticeMessageListeners() override;

    RefCountedPtr<AsyncChartRequestOperation> requestHistory(
        CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
        unsigned int count, ChartListener * listener, void * userObject) override;
    RefCountedPtr<AsyncChartRequestOperation> requestHistoryBetween(
        CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
        CString const & fromDate, CString const & toDate, ChartListener * listener,
        void * userObject) override;
    void cancelAllRequests() override;
    void cancelRequestsByListener(ChartListener const * listener) override;

    int subscribe(CString const & symbolCode, PriceKindEnum priceKind,
                  CString const & periodType) override;
    int unsubscribe(CString const & symbolCode, PriceKindEnum priceKind,
                    CString const & periodType) override;
    bool hasSubscription(CString const & symbolCode, PriceKindEnum priceKind,
                         CString const & periodType) const override;

    unsigned int getHistoryCount(CString const & symbolCode, PriceKindEnum priceKind,
                                 CString const & periodType) const override;
    RefCountedPtr<ChartHistoricalDataRec> getHistoryRecord(CString const & symbolCode,
                                                           PriceKindEnum priceKind,
                                                           CString const & periodType,
                                                           unsigned int index) const override;
    RefCountedPtr<ChartRealDataRec> getLastRecord(CString const & symbolCode,
                                                  PriceKindEnum priceKind,
                                                  CString const & periodType) const override;
    void clearHistory(CString const & symbolCode, PriceKindEnum priceKind,
                      CString const & periodType) override;
    std::vector<CString> getPeriodTypes() const override;

    /// Notices that were dropped, since the service was made.
    unsigned long long getDroppedNoticeCount() const;

protected:
    ~RemoteChartService() override;
    void destroyObject() const override;

private:
    class Impl;

    std::unique_ptr<Impl> const impl_;
};

}  // namespace tvk
