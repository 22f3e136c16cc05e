#include "tvk/agent/KestrinNoticeMessageHandler.h"

namespace tvk {

KestrinNoticeMessageHandler::~KestrinNoticeMessageHandler() = default;

}  // namespace tvk
