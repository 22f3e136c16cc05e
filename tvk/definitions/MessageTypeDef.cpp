#include "tvk/definitions/MessageTypeDef.h"

namespace tvk {

MessageTypeDef::~MessageTypeDef() = default;

}  // namespace tvk
