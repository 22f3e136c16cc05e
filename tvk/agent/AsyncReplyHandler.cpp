#include "tvk/agent/AsyncReplyHandler.h"

namespace tvk {

AsyncReplyHandler::~AsyncReplyHandler() = default;

}  // namespace tvk
