#pragma once

#include <string>
#include <vector>

#include "tests/modules/services/support/Ear.h"
#include "tests/modules/services/support/FakeKestrin.h"
#include "tvk/agent/AsyncChartRequestOperation.h"
#include "tvk/agent/ChartListener.h"
#include "tvk/agent/ChartNoticeMessageListener.h"
#include "tvk/agent/ChartService.h"
#include "tvk/chart/ChartHistoricalDataRec.h"
#include "tvk/chart/ChartRealDataRec.h"

namespace tvk::test {

/// A listener of charts and their requests.
class ChartEar : public ChartListener, public RequestEar<ChartService, AsyncChartRequestOperation> {
public:
    using RequestEar::RequestEar;

    std::vector<RefCountedPtr<ChartHistoricalDataRec>> records;  ///< of the last history
    bool wasRunning = false;                                     ///< at the last start or stop

    void onServiceStarted(ChartService * from) override {
        wasRunning = from->isRunning();
        hear(from, "started");
    }
    void onServiceStopped(ChartService * from, ErrorInfo const * error) override {
        wasRunning = from->isRunning();
        hear(from, "stopped " + shown(error));
    }
    void onHistory(ChartService * from, AsyncChartRequestOperation * about,
                   std::vector<RefCountedPtr<ChartHistoricalDataRec>> const & bars,
                   void * user) override {
        records = bars;
        hearOutcome(from, about, "history " + std::to_string(bars.size()), user);
    }
    void onHistoryTimeout(ChartService * from, AsyncChartRequestOperation * about,
                          void * user) override {
        hearOutcome(from, about, "timeout", user);
    }
    void onHistoryCanceled(ChartService * from, AsyncChartRequestOperation * about,
                           void * user) override {
        hearOutcome(from, about, "canceled", user);
    }
    void onHistoryError(ChartService * from, AsyncChartRequestOperation * about,
                        ErrorInfo const & error, void * user) override {
        component = error.getComponentCode();
        hearOutcome(from, about, "error " + shown(&error), user);
    }
};

/// A listener of updates.
class ChartNoticeEar : public ChartNoticeMessageListener, public Ear<ChartService> {
public:
    using Ear::Ear;

    RefCountedPtr<ChartRealDataRec> record;  ///< of the last update

    void onRealData(ChartService * from, RefCountedPtr<ChartRealDataRec> const & update) override {
        record = update;
        hear(from,
             "update " + bytesOf(update->getSymbolCode()) + ' ' + bytesOf(update->getClosePrice()));
    }
    void onRealDataReset(ChartService * from, CString const & symbolCode) override {
        hear(from, "reset " + bytesOf(symbolCode));
    }
};

/// The body of an answer with bars that close at these prices.
inline std::string barsAnswer(std::vector<int> const & closes, std::string const & symbol = "7203",
                              int kind = 1, std::string const & period = "5") {
    std::string json = R"({"symbol":")" + symbol + R"(","priceKind":)" + std::to_string(kind) +
                       R"(,"periodType":")" + period + R"(","bars":[)";
    for (std::size_t index = 0; index < closes.size(); ++index) {
        json += std::string(index == 0 ? "" : ",") +
                R"({"date":"20240105","time":"093000","open":1,"high":2,"low":0.5,"close":)" +
                std::to_string(closes[index]) + R"(,"volume":100})";
    }
    return json + "]}";
}

/// The body of an update that closes at this price.
inline std::string updateNotice(int close, std::string const & symbol = "7203", int kind = 1,
                                std::string const & period = "5") {
    return R"({"symbol":")" + symbol + R"(","priceKind":)" + std::to_string(kind) +
           R"(,"periodType":")" + period +
           R"(","date":"20240105","time":"093500","open":1,"high":2,"low":0.5,"close":)" +
           std::to_string(close) + R"(,"volume":100})";
}

}  // namespace tvk::test
