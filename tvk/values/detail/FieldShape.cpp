#include "tvk/values/detail/FieldShape.h"

#include <algorithm>

namespace tvk::detail {

FieldShape::FieldShape(std::vector<CString const *> const & arrival) {
    names_.reserve(arrival.size());
    for (CString const * const name : arrival) {
        names_.push_back(*name);
    }
    std::sort(names_.begin(), names_.end());
    names_.erase(std::unique(names_.begin(), names_.end()), names_.end());
    places_.reserve(arrival.size());
    for (CString const * const name : arrival) {
        places_.push_back(static_cast<unsigned int>(find(*name)));
    }
}

std::size_t FieldShape::find(CString const & name) const {
    auto const place = std::lower_bound(names_.begin(), names_.end(), name);
    return place != names_.end() && *place == name
               ? static_cast<std::size_t>(place - names_.begin())
               : names_.size();
}

FieldShape::Companion const & FieldShape::keep(std::unique_ptr<Companion const> companion) const {
    Companion const * kept = nullptr;
    return companion_.compare_exchange_strong(kept, companion.get(), std::memory_order_acq_rel)
               ? *companion.release()
               : *kept;
}

}  // namespace tvk::detail
