#include "tvk/agent/XmlNewsService.h"

namespace tvk {

XmlNewsService::~XmlNewsService() = default;

}  // namespace tvk
