#include "tvk/agent/ChartNoticeMessageListener.h"

namespace tvk {

ChartNoticeMessageListener::~ChartNoticeMessageListener() = default;

}  // namespace tvk
