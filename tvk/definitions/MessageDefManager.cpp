#include "tvk/definitions/MessageDefManager.h"

namespace tvk {

MessageDefManager::~MessageDefManager() = default;

}  // namespace tvk
