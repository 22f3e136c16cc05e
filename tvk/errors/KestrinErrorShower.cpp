#include "tvk/errors/KestrinErrorShower.h"

namespace tvk {

KestrinErrorShower::~KestrinErrorShower() = default;

}  // namespace tvk
