#include "examples/desk/feed/ChartFeed.h"

#include <utility>

#include "examples/desk/Text.h"
#include "examples/desk/feed/Container.h"
#include "examples/desk/feed/Report.h"
#include "tvk/agent/AsyncChartRequestOperation.h"

namespace desk {

ChartFeed::~ChartFeed() { stop(); }

void ChartFeed::start() {
    if (std::exchange(isStarted_, true)) {
        return;
    }
    chartService().addChartListener(this);
    tvk::ErrorInfo error;
    if (!chartService().start(&error)) {
        report(models_.alerts, error);
    }
}

void ChartFeed::stop() {
    if (!std::exchange(isStarted_, false)) {
        return;
    }
    close();
    chartService().removeChartListener(this);
    chartService().stop();
}

void ChartFeed::show(std::string const & code, std::string const & period) {
    close();
    models_.chart.show(symbolOf(models_.board.symbols(), code), period);
    code_ = ansi(code);
    period_ = ansi(period);
    open();
}

void ChartFeed::open() {
    if (code_.IsEmpty() || !isStarted_) {
        return;
    }
    chartService().addNoticeMessageListener(code_, this);
    chartService().subscribe(code_, PRICEKIND_LAST, period_);
    requestHistory();
}

void ChartFeed::close() {
    if (code_.IsEmpty()) {
        return;
    }
    chartService().cancelRequestsByListener(this);
    chartService().unsubscribe(code_, PRICEKIND_LAST, period_);
    chartService().removeNoticeMessageListener(code_, this);
    code_.Empty();
}

void ChartFeed::requestHistory() {
    chartService().requestHistory(code_, PRICEKIND_LAST, period_, ChartModel::BAR_COUNT, this,
                                  nullptr);
}

void ChartFeed::onServiceStarted(tvk::ChartService * started) {
    std::vector<std::string> periods;
    for (CString const & period : started->getPeriodTypes()) {
        periods.push_back(utf8(period));
    }
    models_.chart.setPeriods(std::move(periods));
    if (!code_.IsEmpty()) {
        requestHistory();
    }
}

void ChartFeed::onServiceStopped(tvk::ChartService * /*service*/, tvk::ErrorInfo const * error) {
    if (error != nullptr) {
        report(models_.alerts, *error);
    }
}

void ChartFeed::onHistory(
    tvk::ChartService * /*service*/, tvk::AsyncChartRequestOperation * /*operation*/,
    std::vector<tvk::RefCountedPtr<tvk::ChartHistoricalDataRec>> const & records,
    void * /*userObject*/) {
    models_.chart.takeHistory(records);
}

void ChartFeed::onHistoryTimeout(tvk::ChartService * /*service*/,
                                 tvk::AsyncChartRequestOperation * /*operation*/,
                                 void * /*userObject*/) {
    report(models_.alerts, timeoutError());
}

void ChartFeed::onHistoryCanceled(tvk::ChartService * /*service*/,
                                  tvk::AsyncChartRequestOperation * /*operation*/,
                                  void * /*userObject*/) {}

void ChartFeed::onHistoryError(tvk::ChartService * /*service*/,
                               tvk::AsyncChartRequestOperation * /*operation*/,
                               tvk::ErrorInfo const & error, void * /*userObject*/) {
    report(models_.alerts, error);
}

void ChartFeed::onRealData(tvk::ChartService * /*service*/,
                           tvk::RefCountedPtr<tvk::ChartRealDataRec> const & record) {
    models_.chart.takeUpdate(*record);
}

void ChartFeed::onRealDataReset(tvk::ChartService * /*service*/, CString const & /*symbolCode*/) {
    requestHistory();
}

}  // namespace desk
