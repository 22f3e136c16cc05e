#include "tvk/agent/ChartListener.h"

namespace tvk {

ChartListener::~ChartListener() = default;

}  // namespace tvk
