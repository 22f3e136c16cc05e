#include "tvk/values/detail/FieldMap.h"

#include <vector>

#include "tvk/values/RecordData.h"

namespace tvk::detail {

void FieldMap::addMissing(RecordData const & source) {
    std::vector<CString> const names = source.getFieldNames();
    unsigned int const count = source.getFieldCount();
    for (unsigned int i = 0; i < count; ++i) {
        map_.emplace(names[i], source.getFieldValue(names[i]));
    }
}

void FieldMap::endAll(ContainerEnd & end) {
    if (end.isDeep()) {
        for (auto field = map_.rbegin(); field != map_.rend(); ++field) {
            end.defer(field->second);
        }
    }
    map_.clear();
}

}  // namespace tvk::detail
