#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <queue>
#include <unordered_map>
#include <utility>
#include <vector>

#include "modules/asio/detail/Operation.h"

namespace tvk::detail {

/// The requests whose handlers have not heard of an outcome, and the times by which they must.
class OpenRequests {
public:
    using Time = std::chrono::steady_clock::time_point;
    using OperationPtr = RefCountedPtr<Operation>;

    void add(OperationPtr const & operation) { open_.emplace(operation->number(), operation); }
    /// Once for each at most. Requires: `operation` was added.
    void setDeadline(Operation const & operation, Time time) {
        deadlines_.emplace(time, operation.number());
    }

    OperationPtr find(unsigned long long number) const {
        auto const entry = open_.find(number);
        return entry != open_.end() ? entry->second : OperationPtr();
    }
    /// False where it is not open.
    bool remove(Operation const & operation) {
        bool const removed = open_.erase(operation.number()) != 0;
        if (deadlines_.size() > MANY + 2 * open_.size()) {
            forgetDeadlinesOfClosed();
        }
        return removed;
    }

    std::size_t size() const { return open_.size(); }
    bool isEmpty() const { return open_.empty(); }

    /// In the order of their numbers, which is that of sending.
    std::vector<OperationPtr> inOrder() const;

    /// The first deadline of all, unless there is none. It may be that of a request which is closed.
    std::optional<Time> earliestDeadline() const {
        return deadlines_.empty() ? std::nullopt : std::optional(deadlines_.top().first);
    }
    /// One whose deadline has come, and is forgotten with that; null when there is none any more.
    OperationPtr takeOverdue(Time now);

private:
    using Deadline = std::pair<Time, unsigned long long>;
    using Deadlines = std::priority_queue<Deadline, std::vector<Deadline>, std::greater<>>;

    // Deadlines of requests that are closed stay until they come, or until they are most of them.
    static constexpr std::size_t MANY = 64;
    void forgetDeadlinesOfClosed();

    std::unordered_map<unsigned long long, OperationPtr> open_;
    Deadlines deadlines_;
};

}  // namespace tvk::detail
