#include "tvk/chart/ChartHistoricalDataRec.h"

namespace tvk {

ChartHistoricalDataRec::~ChartHistoricalDataRec() = default;

}  // namespace tvk
