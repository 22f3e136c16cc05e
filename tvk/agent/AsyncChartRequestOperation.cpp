#include "tvk/agent/AsyncChartRequestOperation.h"

namespace tvk {

AsyncChartRequestOperation::~AsyncChartRequestOperation() = default;

}  // namespace tvk
