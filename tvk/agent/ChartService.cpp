#include "tvk/agent/ChartService.h"

namespace tvk {

ChartService::~ChartService() = default;

}  // namespace tvk
