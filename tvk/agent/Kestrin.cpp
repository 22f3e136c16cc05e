#include "tvk/agent/Kestrin.h"

namespace tvk {

Kestrin::~Kestrin() = default;

}  // namespace tvk
