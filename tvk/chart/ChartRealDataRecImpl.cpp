#include "tvk/chart/ChartRealDataRecImpl.h"

namespace tvk {

ChartRealDataRecImpl::~ChartRealDataRecImpl() = default;

}  // namespace tvk
