#include "tvk/agent/KestrinListener.h"

namespace tvk {

KestrinListener::~KestrinListener() = default;

}  // namespace tvk
