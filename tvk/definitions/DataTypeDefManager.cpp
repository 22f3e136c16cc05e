#include "tvk/definitions/DataTypeDefManager.h"

namespace tvk {

DataTypeDefManager::~DataTypeDefManager() = default;

}  // namespace tvk
