#pragma once

#include <string>

#include "examples/desk/model/Models.h"
#include "tvk/agent/ChartListener.h"
#include "tvk/agent/ChartNoticeMessageListener.h"

namespace desk {

/// Brings the bars of the chart on the screen to its model, from the chart service in the container.
class ChartFeed : public tvk::ChartListener, public tvk::ChartNoticeMessageListener {
public:
    explicit ChartFeed(Models & models) : models_(models) {}
    ~ChartFeed() override;
    ChartFeed(ChartFeed const &) = delete;
    ChartFeed & operator=(ChartFeed const &) = delete;

    void start();
    void stop();
    /// Turns to another chart: its history, then its live bar.
    void show(std::string const & code, std::string const & period);

private:
    void open();
    void close();
    void requestHistory();

    void onServiceStarted(tvk::ChartService * service) override;
    void onServiceStopped(tvk::ChartService * service, tvk::ErrorInfo const * error) override;
    void onHistory(tvk::ChartService * service, tvk::AsyncChartRequestOperation * operation,
                   std::vector<tvk::RefCountedPtr<tvk::ChartHistoricalDataRec>> const & records,
                   void * userObject) override;
    void onHistoryTimeout(tvk::ChartService * service, tvk::AsyncChartRequestOperation * operation,
                          void * userObject) override;
    void onHistoryCanceled(tvk::ChartService * service, tvk::AsyncChartRequestOperation * operation,
                           void * userObject) override;
    void onHistoryError(tvk::ChartService * service, tvk::AsyncChartRequestOperation * operation,
                        tvk::ErrorInfo const & error, void * userObject) override;
    void onRealData(tvk::ChartService * service,
                    tvk::RefCountedPtr<tvk::ChartRealDataRec> const & record) override;
    void onRealDataReset(tvk::ChartService * service, CString const & symbolCode) override;

    Models & models_;
    bool isStarted_ = false;
    CString code_;  // empty while no chart is shown
    CString period_;
};

}  // namespace desk
