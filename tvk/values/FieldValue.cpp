#include "tvk/values/FieldValue.h"

namespace tvk {

FieldValue::~FieldValue() = default;

}  // namespace tvk
