#include "tvk/definitions/RecordTypeDef.h"

namespace tvk {

RecordTypeDef::~RecordTypeDef() = default;

}  // namespace tvk
