#include "tvk/chart/ChartHistoricalDataRecImpl.h"

namespace tvk {

ChartHistoricalDataRecImpl::~ChartHistoricalDataRecImpl() = default;

}  // namespace tvk
