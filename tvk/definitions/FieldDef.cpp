#include "tvk/definitions/FieldDef.h"

namespace tvk {

FieldDef::~FieldDef() = default;

}  // namespace tvk
