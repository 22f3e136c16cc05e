#include "tvk/errors/KestrinErrorManager.h"

namespace tvk {

KestrinErrorManager::~KestrinErrorManager() = default;

}  // namespace tvk
