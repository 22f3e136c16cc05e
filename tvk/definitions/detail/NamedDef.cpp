#include "tvk/definitions/detail/NamedDef.h"

namespace tvk::detail {

template class NamedDef<FieldDef>;
template class NamedDef<ListTypeDef>;
template class NamedDef<RecordTypeDef>;
template class NamedDef<SimpleTypeDef>;

}  // namespace tvk::detail
