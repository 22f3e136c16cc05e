#include "tvk/definitions/ListElementFieldDef.h"

namespace tvk {

ListElementFieldDef::~ListElementFieldDef() = default;

}  // namespace tvk
