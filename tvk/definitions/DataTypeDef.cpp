#include "tvk/definitions/DataTypeDef.h"

namespace tvk {

DataTypeDef::~DataTypeDef() = default;

}  // namespace tvk
