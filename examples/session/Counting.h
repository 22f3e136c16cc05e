#pragma once

#include <cstddef>

#include "examples/backend/Names.h"
#include "examples/support/Fields.h"
#include "tvk/values/KestrinMessage.h"

namespace session {

/// Follows notices that carry a number each, from 1 on.
class Counting {
public:
    void take(tvk::KestrinMessage const & notice) {
        ++count_;
        isInOrder_ = isInOrder_ &&
                     numberIn(notice, backend::field::NUMBER) == static_cast<long long>(count_);
    }
    std::size_t count() const { return count_; }
    /// None was left out, doubled or came out of turn so far.
    bool isInOrder() const { return isInOrder_; }

private:
    std::size_t count_ = 0;
    bool isInOrder_ = true;
};

}  // namespace session
