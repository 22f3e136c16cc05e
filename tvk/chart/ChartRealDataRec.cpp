#include "tvk/chart/ChartRealDataRec.h"

namespace tvk {

ChartRealDataRec::~ChartRealDataRec() = default;

}  // namespace tvk
