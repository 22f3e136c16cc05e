#pragma once

#include <vector>

#include "tvk/chart/ChartHistoricalDataRec.h"
#include "tvk/chart/ChartRealDataRec.h"
#include "tvk/chart/PriceKindEnum.h"
#include "tvk/errors/ErrorInfo.h"
#include "tvk/platform/CString.h"
#include "tvk/values/KestrinMessage.h"
#include "tvk/values/RefCountedPtr.h"

/// The messages of the chart service.
namespace tvk::services {

constexpr char CHART_NOTICE[] = "chart";

/// What names a chart.
struct ChartKey {
    CString symbolCode;
    PriceKindEnum priceKind;
    CString periodType;

    bool operator<(ChartKey const & other) const;
};

/// The subject of its notices: "7203/1/5".
CString subjectOf(ChartKey const & chart);

RefCountedPtr<KestrinMessage> periodsRequest();
RefCountedPtr<KestrinMessage> historyRequest(ChartKey const & chart, unsigned int count);
RefCountedPtr<KestrinMessage> historyRequest(ChartKey const & chart, CString const & fromDate,
                                             CString const & toDate);

// Reading. False, and the error filled with this component, where the message is not as it should
// be; the results are then undefined.

bool readPeriods(KestrinMessage const & reply, int componentCode, std::vector<CString> * periods,
                 ErrorInfo * error);
bool readHistory(KestrinMessage const & reply, int componentCode, ChartKey const & asked,
                 std::vector<RefCountedPtr<ChartHistoricalDataRec>> * records, ErrorInfo * error);

/// What a notice tells: an update, or that those of a symbol begin anew.
struct ChartUpdate {
    bool isReset = false;
    ChartKey chart;                          ///< of a reset the symbol alone
    RefCountedPtr<ChartRealDataRec> record;  ///< null with a reset
};
bool readUpdate(KestrinMessage const & notice, int componentCode, ChartUpdate * update,
                ErrorInfo * error);

}  // namespace tvk::services
