// Chart history, a bar that moves, and the picture of both.

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "examples/session/CandleChart.h"
#include "examples/session/Stage.h"
#include "examples/session/Texts.h"
#include "examples/support/Candle.h"
#include "tvk/agent/AsyncChartRequestOperation.h"
#include "tvk/agent/ChartListener.h"
#include "tvk/agent/ChartNoticeMessageListener.h"
#include "tvk/agent/ChartService.h"
#include "tvk/agent/KestrinContainer.h"
#include "tvk/agent/ThreadPool.h"

namespace session {

namespace {

using tvk::AsyncChartRequestOperation;
using tvk::ChartService;
using tvk::ErrorInfo;
using tvk::RefCountedPtr;

constexpr unsigned int BARS = 80;
constexpr char PERIOD[] = "1";
constexpr char PERIOD_NAME[] = "1分足";

/// The chart as it comes in.
class Incoming : public tvk::ChartListener, public tvk::ChartNoticeMessageListener {
public:
    explicit Incoming(Account & account) : account_(account) {}

    bool isRunning = false;
    bool hasStopped = false;
    bool hasHistory = false;
    std::size_t bars = 0;  ///< of the history, those that cannot be drawn included
    std::size_t liveUpdates = 0;
    std::vector<Candle> candles;

    void onServiceStarted(ChartService * /*service*/) override { isRunning = true; }
    void onServiceStopped(ChartService * /*service*/, ErrorInfo const * /*error*/) override {
        hasStopped = true;
    }
    void onHistory(ChartService * /*service*/, AsyncChartRequestOperation * /*operation*/,
                   std::vector<RefCountedPtr<tvk::ChartHistoricalDataRec>> const & records,
                   void * /*userObject*/) override {
        hasHistory = true;
        bars = records.size();
        for (auto const & record : records) {
            if (auto const candle = candleOf(*record)) {
                candles.push_back(*candle);
            }
        }
    }
    void onHistoryTimeout(ChartService * /*service*/, AsyncChartRequestOperation * /*operation*/,
                          void * /*userObject*/) override {
        account_.say("chart", "the history timed out");
    }
    void onHistoryCanceled(ChartService * /*service*/, AsyncChartRequestOperation * /*operation*/,
                           void * /*userObject*/) override {
        account_.say("chart", "the history was cancelled");
    }
    void onHistoryError(ChartService * /*service*/, AsyncChartRequestOperation * /*operation*/,
                        ErrorInfo const & error, void * /*userObject*/) override {
        account_.say("chart", "no history: " + shown(error));
    }
    void onRealData(ChartService * /*service*/,
                    RefCountedPtr<tvk::ChartRealDataRec> const & record) override {
        if (auto const candle = candleOf(*record)) {
            ++liveUpdates;
            takeLiveCandle(candles, *candle);
        }
    }
    void onRealDataReset(ChartService * /*service*/, CString const & symbolCode) override {
        account_.say("chart", "begins anew: " + shown(symbolCode));
    }

private:
    Account & account_;
};

/// Registered while it lives.
class Registration {
public:
    Registration(ChartService & service, CString const & symbol, Incoming & incoming)
        : service_(service), symbol_(symbol), incoming_(incoming) {
        service_.addChartListener(&incoming_);
        service_.addNoticeMessageListener(symbol_, &incoming_);
    }
    Registration(Registration const &) = delete;
    Registration & operator=(Registration const &) = delete;
    ~Registration() {
        service_.cancelRequestsByListener(&incoming_);
        service_.removeNoticeMessageListener(symbol_, &incoming_);
        service_.removeChartListener(&incoming_);
    }

private:
    ChartService & service_;
    CString const symbol_;
    Incoming & incoming_;
};

bool isFromOldToNew(std::vector<Candle> const & candles) {
    for (std::size_t i = 1; i < candles.size(); ++i) {
        if (candles[i - 1].date + candles[i - 1].time >= candles[i].date + candles[i].time) {
            return false;
        }
    }
    return true;
}

bool start(Stage & stage, ChartService & service, Incoming & incoming) {
    ErrorInfo error;
    if (!service.start(&error)) {
        stage.account.say("chart", "does not start: " + shown(error));
        return false;
    }
    bool const started =
        stage.until([&] { return incoming.isRunning && !service.getPeriodTypes().empty(); });
    std::string periods;
    for (CString const & period : service.getPeriodTypes()) {
        periods += (periods.empty() ? "" : ", ") + shown(period);
    }
    stage.account.say("periods", periods);
    return started;
}

/// Draws and writes the picture on a thread of the pool, so that the window need not wait for the disk.
/// It shares nothing with the application's thread but the flag.
class PictureTask : public tvk::ThreadPool::Task {
public:
    PictureTask(CandleChart chart, std::string name, std::shared_ptr<tvk::EventLoop> loop)
        : chart_(std::move(chart)), name_(std::move(name)), loop_(std::move(loop)) {}

    void run() override {
        std::ofstream file(name_, std::ios::binary);
        problem_ = (file << chart_.toSvg()).flush() ? 0 : errno;
        // Its own: the task may end as soon as the flag is set.
        std::shared_ptr<tvk::EventLoop> const loop = loop_;
        isDone_ = true;
        loop->post([] {});  // wakes the application
    }

    bool isDone() const { return isDone_; }
    int problem() const { return problem_; }  ///< of the system, 0 where there was none

private:
    CandleChart const chart_;
    std::string const name_;
    std::shared_ptr<tvk::EventLoop> const loop_;
    int problem_ = 0;
    std::atomic<bool> isDone_ = false;
};

CandleChart chartOf(Stage const & stage, Incoming const & incoming) {
    CandleChart chart;
    chart.title = shown(stage.symbol) + "  " + shown(stage.symbolName);
    chart.note = PERIOD_NAME;
    if (!incoming.candles.empty()) {
        chart.note += "  " + shownDate(incoming.candles.back().date);
    }
    chart.candles = incoming.candles;
    chart.hasLive = incoming.liveUpdates > 0;
    return chart;
}

void writePicture(Stage & stage, Incoming const & incoming) {
    std::string const & name = stage.options.svg;
    PictureTask task(chartOf(stage, incoming), name, stage.desktop.loop());
    tvk::ThreadPool & pool = *tvk::KestrinContainer::instance()->getThreadPool();
    bool const isEntered = pool.execute(&task);
    while (isEntered && !stage.until([&task] { return task.isDone(); })) {
        // The pool still has the task: it must not end before.
    }
    bool const isWritten = isEntered && task.problem() == 0;
    stage.account.say("picture", isWritten ? name : name + ": " + std::strerror(task.problem()));
    stage.account.expect(isWritten, "the chart is written as a picture, by a thread of the pool");
}

}  // namespace

void drawChart(Stage & stage) {
    stage.account.section("A chart: its past, and the bar that moves");
    ChartService & service = *tvk::KestrinContainer::instance()->getChartService();
    Incoming incoming(stage.account);
    Registration const registration(service, stage.symbol, incoming);

    bool const started = start(stage, service, incoming);
    stage.account.expect(started, "the chart service starts and tells its periods");
    auto const request =
        service.requestHistory(stage.symbol, PRICEKIND_LAST, PERIOD, BARS, &incoming, nullptr);
    bool const came = request && stage.until([&] { return incoming.hasHistory; });
    bool const isComplete =
        came && incoming.candles.size() == BARS && isFromOldToNew(incoming.candles);
    stage.account.expect(isComplete,
                         "the last " + std::to_string(BARS) + " bars come, from old to new");

    service.subscribe(stage.symbol, PRICEKIND_LAST, PERIOD);
    bool const moves = stage.until([&] { return incoming.liveUpdates > 1; });
    stage.account.say("chart", std::to_string(incoming.bars) + " bars, " +
                                   std::to_string(incoming.liveUpdates) + " updates");
    stage.account.expect(moves && isFromOldToNew(incoming.candles), "its newest bar moves");
    service.unsubscribe(stage.symbol, PRICEKIND_LAST, PERIOD);
    service.stop();
    stage.account.expect(incoming.hasStopped, "the chart service stops");
    writePicture(stage, incoming);
}

}  // namespace session
