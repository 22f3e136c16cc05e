#include "tvk/definitions/ListTypeDef.h"

namespace tvk {

ListTypeDef::~ListTypeDef() = default;

}  // namespace tvk
