#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "modules/services/RemoteChartService.h"
#include "tests/modules/services/support/ChartEars.h"
#include "tests/support/PrintCString.h"

namespace tvk::test {

inline constexpr char PERIODS[] = R"({"periods":["1","5","60","D"]})";
inline constexpr char ASK_PERIODS[] = "ask chartPeriods {}";
inline constexpr char ASK_HISTORY[] =
    R"(ask chartHistory {"count":2,"periodType":"5","priceKind":1,"symbol":"7203"})";

/// A chart service over an agent whose back end is the test, and listeners that write into one log.
class RemoteChart : public testing::Test {
protected:
    Log log_;
    ChartEar one_{log_, "one"};
    ChartEar two_{log_, "two"};
    ChartNoticeEar all_{log_, "all"};
    ChartNoticeEar some_{log_, "some"};
    ChartNoticeEar more_{log_, "more"};
    RefCountedPtr<FakeKestrin> agent_{new FakeKestrin(log_)};
    RefCountedPtr<RemoteChartService> service_{new RemoteChartService(agent_)};
    ErrorInfo error_;

    /// Starts, and forgets how.
    void run() {
        ASSERT_TRUE(service_->start(&error_));
        agent_->reply(agent_->newest(), PERIODS);
        ASSERT_TRUE(service_->isRunning());
        log_.clear();
    }
    RefCountedPtr<AsyncChartRequestOperation> ask(ChartListener * listener,
                                                  void * userObject = nullptr) {
        return service_->requestHistory("7203", PRICEKIND_LAST, "5", 2, listener, userObject);
    }
    int subscribe(char const * symbol = "7203") {
        return service_->subscribe(symbol, PRICEKIND_LAST, "5");
    }
    int unsubscribe(char const * symbol = "7203") {
        return service_->unsubscribe(symbol, PRICEKIND_LAST, "5");
    }
    void update(int close) { agent_->notify("chart", "7203/1/5", updateNotice(close)); }
    Log taken() { return std::exchange(log_, {}); }
};

}  // namespace tvk::test
