#include "tvk/values/detail/ReadyMade.h"

#include <memory>
#include <utility>

namespace tvk::detail {

/// Moves each value to its place; `places` is plain memory before.
void ReadyMade::arrange(FieldShape const & shape, FieldValue * const * arrival, Value * places) {
    std::size_t const arrivals = shape.arrivals();
    if (arrivals == shape.count()) {
        for (std::size_t i = 0; i < arrivals; ++i) {
            std::construct_at(places + shape.placeOfArrival(i), Value::attached(arrival[i]));
        }
        return;
    }
    std::uninitialized_value_construct_n(places, shape.count());
    for (std::size_t i = 0; i < arrivals; ++i) {
        places[shape.placeOfArrival(i)] = Value::attached(arrival[i]);
    }
}

}  // namespace tvk::detail
