#include "tvk/agent/XmlNewsListener.h"

namespace tvk {

XmlNewsListener::~XmlNewsListener() = default;

}  // namespace tvk
