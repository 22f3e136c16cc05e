#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/modules/services/support/FakeKestrin.h"
#include "tvk/agent/AsyncChartRequestOperation.h"
#include "tvk/agent/ChartListener.h"
#include "tvk/agent/ChartNoticeMessageListener.h"
#include "tvk/agent/ChartService.h"
#include "tvk/chart/ChartHistoricalDataRec.h"
#include "tvk/chart/ChartRealDataRec.h"

namespace tvk::test {

/// A listener of charts that writes what it hears into a log, with its name in front, and then does
/// what the test wants.
class ChartEar : public ChartListener {
public:
    ChartEar(Log & log, std::string name) : log_(log), name_(std::move(name)) {}

    std::function<void()> during;  ///< runs inside each callback

    // Of the last callback.
    ChartService * service = nullptr;
    RefCountedPtr<AsyncChartRequestOperation> operation;
    std::vector<RefCountedPtr<ChartHistoricalDataRec>> records;
    void * userObject = nullptr;
    bool wasRunning = false;
    bool wasPending = false;

    void onServiceStarted(ChartService * from) override { hear(from, "started"); }
    void onServiceStopped(ChartService * from, ErrorInfo const * error) override {
        hear(from, "stopped " + shown(error));
    }
    void onHistory(ChartService * from, AsyncChartRequestOperation * about,
                   std::vector<RefCountedPtr<ChartHistoricalDataRec>> const & bars,
                   void * user) override {
        records = bars;
        hear(from, about, "history " + std::to_string(bars.size()), user);
    }
    void onHistoryTimeout(ChartService * from, AsyncChartRequestOperation * about,
                          void * user) override {
        hear(from, about, "timeout", user);
    }
    void onHistoryCanceled(ChartService * from, AsyncChartRequestOperation * about,
                           void * user) override {
        hear(from, about, "canceled", user);
    }
    void onHistoryError(ChartService * from, AsyncChartRequestOperation * about,
                        ErrorInfo const & error, void * user) override {
        component = error.getComponentCode();
        hear(from, about, "error " + shown(&error), user);
    }

    int component = -1;  ///< of the last error

private:
    void hear(ChartService * from, AsyncChartRequestOperation * about, std::string const & what,
              void * user) {
        operation = about;
        userObject = user;
        wasPending = about->isPending();
        hear(from, what);
    }
    void hear(ChartService * from, std::string const & what) {
        service = from;
        wasRunning = from->isRunning();
        log_.push_back(name_ + ' ' + what);
        if (during) {
            auto const now = during;  // may be changed from inside
            now();
        }
    }

    Log & log_;
    std::string const name_;
};

/// The same for updates.
class ChartNoticeEar : public ChartNoticeMessageListener {
public:
    ChartNoticeEar(Log & log, std::string name) : log_(log), name_(std::move(name)) {}

    std::function<void()> during;
    ChartService * service = nullptr;
    RefCountedPtr<ChartRealDataRec> record;

    void onRealData(ChartService * from, RefCountedPtr<ChartRealDataRec> const & update) override {
        record = update;
        hear(from,
             "update " + bytesOf(update->getSymbolCode()) + ' ' + bytesOf(update->getClosePrice()));
    }
    void onRealDataReset(ChartService * from, CString const & symbolCode) override {
        hear(from, "reset " + bytesOf(symbolCode));
    }

private:
    void hear(ChartService * from, std::string const & what) {
        service = from;
        log_.push_back(name_ + ' ' + what);
        if (during) {
            auto const now = during;
            now();
        }
    }

    Log & log_;
    std::string const name_;
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
