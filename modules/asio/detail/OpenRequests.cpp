#include "modules/asio/detail/OpenRequests.h"

#include <algorithm>

namespace tvk::detail {

std::vector<OpenRequests::OperationPtr> OpenRequests::inOrder() const {
    std::vector<OperationPtr> operations;
    operations.reserve(open_.size());
    for (auto const & entry : open_) {
        operations.push_back(entry.second);
    }
    std::sort(
        operations.begin(), operations.end(),
        [](OperationPtr const & a, OperationPtr const & b) { return a->number() < b->number(); });
    return operations;
}

OpenRequests::OperationPtr OpenRequests::takeOverdue(Time now) {
    while (!deadlines_.empty() && deadlines_.top().first <= now) {
        OperationPtr operation = find(deadlines_.top().second);
        deadlines_.pop();
        if (!operation.isNull()) {
            return operation;
        }
    }
    return nullptr;
}

void OpenRequests::forgetDeadlinesOfClosed() {
    std::vector<Deadline> kept;
    for (; !deadlines_.empty(); deadlines_.pop()) {
        if (open_.count(deadlines_.top().second) != 0) {
            kept.push_back(deadlines_.top());
        }
    }
    deadlines_ = Deadlines(std::greater<>(), std::move(kept));
}

}  // namespace tvk::detail
