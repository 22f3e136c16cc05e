#pragma once

#include "tests/support/CallRecorder.h"
#include "tvk/agent/AsyncChartRequestOperation.h"
#include "tvk/agent/ChartListener.h"
#include "tvk/agent/ChartNoticeMessageListener.h"
#include "tvk/agent/ChartService.h"
#include "tvk/chart/ChartHistoricalDataRec.h"
#include "tvk/chart/ChartRealDataRec.h"

/// The least that can stand behind the chart contracts: each operation writes its call into a log,
/// which must outlive the object, and answers with what stands ready.
namespace tvk::test {

class RecordingChartOperation : public AsyncChartRequestOperation, private CallRecorder {
public:
    explicit RecordingChartOperation(Log & log) : CallRecorder(log) {}

    bool canceled = false;
    bool pending = true;

    void cancel() override { record("cancel"); }
    bool isCanceled() const override {
        record("isCanceled");
        return canceled;
    }
    bool isPending() const override {
        record("isPending");
        return pending;
    }
};

class RecordingChartListener : public ChartListener, private CallRecorder {
public:
    explicit RecordingChartListener(Log & log) : CallRecorder(log) {}

    using ChartListener::tag_;

    void onServiceStarted(ChartService * service) override { record("onServiceStarted", service); }
    void onServiceStopped(ChartService * service, ErrorInfo const * error) override {
        record("onServiceStopped", service, error);
    }
    void onHistory(ChartService * service, AsyncChartRequestOperation * operation,
                   std::vector<RefCountedPtr<ChartHistoricalDataRec>> const & records,
                   void * userObject) override {
        record("onHistory", service, operation, &records, userObject);
    }
    void onHistoryTimeout(ChartService * service, AsyncChartRequestOperation * operation,
                          void * userObject) override {
        record("onHistoryTimeout", service, operation, userObject);
    }
    void onHistoryCanceled(ChartService * service, AsyncChartRequestOperation * operation,
                           void * userObject) override {
        record("onHistoryCanceled", service, operation, userObject);
    }
    void onHistoryError(ChartService * service, AsyncChartRequestOperation * operation,
                        ErrorInfo const & error, void * userObject) override {
        record("onHistoryError", service, operation, &error, userObject);
    }
};

class RecordingChartNoticeListener : public ChartNoticeMessageListener, private CallRecorder {
public:
    explicit RecordingChartNoticeListener(Log & log) : CallRecorder(log) {}

    void onRealData(ChartService * service,
                    RefCountedPtr<ChartRealDataRec> const & update) override {
        record("onRealData", service, update);
    }
    void onRealDataReset(ChartService * service, CString const & symbolCode) override {
        record("onRealDataReset", service, symbolCode);
    }
};

class RecordingChartService : public ChartService, private CallRecorder {
public:
    explicit RecordingChartService(Log & log) : CallRecorder(log) {}

    // The answers.
    bool yes = true;
    int number = 0;
    unsigned int historyCount = 0;
    std::vector<ChartListener *> listeners;
    std::vector<CString> periodTypes;
    RefCountedPtr<AsyncChartRequestOperation> operation;
    RefCountedPtr<ChartHistoricalDataRec> historyRecord;
    RefCountedPtr<ChartRealDataRec> lastRecord;

    bool start(ErrorInfo * error) override {
        record("start", error);
        return yes;
    }
    void stop() override { record("stop"); }
    bool isRunning() const override {
        record("isRunning");
        return yes;
    }
    void addChartListener(ChartListener * listener) override {
        record("addChartListener", listener);
    }
    bool hasChartListener(ChartListener const * listener) const override {
        record("hasChartListener", listener);
        return yes;
    }
    void removeChartListener(ChartListener const * listener) override {
        record("removeChartListener", listener);
    }
    void removeAllChartListeners() override { record("removeAllChartListeners"); }
    std::vector<ChartListener *> getChartListeners() const override {
        record("getChartListeners");
        return listeners;
    }
    void addNoticeMessageListener(CString const & symbolCode,
                                  ChartNoticeMessageListener * listener) override {
        record("addNoticeMessageListener", symbolCode, listener);
    }
    int removeNoticeMessageListener(CString const & symbolCode,
                                    ChartNoticeMessageListener const * listener) override {
        record("removeNoticeMessageListener", symbolCode, listener);
        return number;
    }
    void removeAllNoticeMessageListeners() override { record("removeAllNoticeMessageListeners"); }
    RefCountedPtr<AsyncChartRequestOperation> requestHistory(
        CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
        unsigned int count, ChartListener * listener, void * userObject) override {
        record("requestHistory", symbolCode, priceKind, periodType, static_cast<int>(count),
               listener, userObject);
        return operation;
    }
    RefCountedPtr<AsyncChartRequestOperation> requestHistoryBetween(
        CString const & symbolCode, PriceKindEnum priceKind, CString const & periodType,
        CString const & fromDate, CString const & toDate, ChartListener * listener,
        void * userObject) override {
        record("requestHistoryBetween", symbolCode, priceKind, periodType, fromDate, toDate,
               listener, userObject);
        return operation;
    }
    void cancelAllRequests() override { record("cancelAllRequests"); }
    void cancelRequestsByListener(ChartListener const * listener) override {
        record("cancelRequestsByListener", listener);
    }
    int subscribe(CString const & symbolCode, PriceKindEnum priceKind,
                  CString const & periodType) override {
        record("subscribe", symbolCode, priceKind, periodType);
        return number;
    }
    int unsubscribe(CString const & symbolCode, PriceKindEnum priceKind,
                    CString const & periodType) override {
        record("unsubscribe", symbolCode, priceKind, periodType);
        return number;
    }
    bool hasSubscription(CString const & symbolCode, PriceKindEnum priceKind,
                         CString const & periodType) const override {
        record("hasSubscription", symbolCode, priceKind, periodType);
        return yes;
    }
    unsigned int getHistoryCount(CString const & symbolCode, PriceKindEnum priceKind,
                                 CString const & periodType) const override {
        record("getHistoryCount", symbolCode, priceKind, periodType);
        return historyCount;
    }
    RefCountedPtr<ChartHistoricalDataRec> getHistoryRecord(CString const & symbolCode,
                                                           PriceKindEnum priceKind,
                                                           CString const & periodType,
                                                           unsigned int index) const override {
        record("getHistoryRecord", symbolCode, priceKind, periodType, static_cast<int>(index));
        return historyRecord;
    }
    RefCountedPtr<ChartRealDataRec> getLastRecord(CString const & symbolCode,
                                                  PriceKindEnum priceKind,
                                                  CString const & periodType) const override {
        record("getLastRecord", symbolCode, priceKind, periodType);
        return lastRecord;
    }
    void clearHistory(CString const & symbolCode, PriceKindEnum priceKind,
                      CString const & periodType) override {
        record("clearHistory", symbolCode, priceKind, periodType);
    }
    std::vector<CString> getPeriodTypes() const override {
        record("getPeriodTypes");
        return periodTypes;
    }

protected:
    ~RecordingChartService() override = default;
};

}  // namespace tvk::test
