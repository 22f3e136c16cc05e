#include "examples/inprocess_agent/Timeline.h"

#include <algorithm>
#include <utility>

namespace inprocess {

void Timeline::after(int milliSeconds, Event event) {
    planned_.emplace(now_ + std::max(milliSeconds, 0), std::move(event));
}

void Timeline::advance(int milliSeconds) {
    long long const end = now_ + std::max(milliSeconds, 0);
    while (!planned_.empty() && planned_.begin()->first <= end) {
        happenNext();
    }
    now_ = std::max(now_, end);
}

void Timeline::advanceUntil(std::function<bool()> const & done) {
    while (!done() && !planned_.empty()) {
        happenNext();
    }
}

void Timeline::happenNext() {
    // Out of the plan first: the event may change the plan, and the clock may be past its time when
    // another event has advanced it.
    auto const next = planned_.extract(planned_.begin());
    now_ = std::max(now_, next.key());
    next.mapped()();
}

}  // namespace inprocess
