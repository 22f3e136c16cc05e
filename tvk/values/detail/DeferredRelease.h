#pragma once

#include <new>
#include <utility>
#include <vector>

#include "tvk/values/RefCounted.h"
#include "tvk/values/RefCountedPtr.h"

namespace tvk::detail {

/// How the containers end that a dying container held, however deep they nest, on a small stack.
///
/// A container's destructor opens a ContainerEnd. Down to MAXIMUM_DEPTH containers within
/// containers it then releases what it holds in the plain way. Below that isDeep() is true and it
/// hands its references over, last one first, to a list that one loop works off from its end: so
/// the order in which things end is the order of plain recursion, and every object still ends
/// through its own destroyObject.
///
///     ContainerEnd end;
///     end.releaseAll(elements);
///
/// Threads: each thread has a depth and a list of its own.
/// Failure: where the list cannot grow, the reference is released at once.
class ContainerEnd {
public:
    ContainerEnd() noexcept;
    ContainerEnd(ContainerEnd const &) = delete;
    ContainerEnd & operator=(ContainerEnd const &) = delete;
    /// The one that made the list works it off.
    ~ContainerEnd();

    bool isDeep() const noexcept { return pending_ != nullptr; }

    /// Releases the references of a vector or list, null afterwards, the first one first.
    template <class References>
    void releaseAll(References & references) noexcept {
        if (isDeep()) {
            for (auto at = references.rbegin(); at != references.rend(); ++at) {
                defer(*at);
            }
        } else {
            for (auto & reference : references) {
                reference = nullptr;
            }
        }
    }

    /// Takes the reference over; `reference` is null afterwards. Requires: isDeep().
    template <class T>
    void defer(RefCountedPtr<T> & reference) noexcept {
        if (reference.isNull()) {
            return;
        }
        try {
            pending_->emplace_back(std::move(reference));
        } catch (std::bad_alloc const &) {
            reference = nullptr;
        }
    }

private:
    using Pending = std::vector<RefCountedPtr<RefCounted>>;

    static constexpr int MAXIMUM_DEPTH = 64;

    struct ThreadState {
        int depth;
        Pending * pending;
    };
    static thread_local ThreadState state;

    ThreadState & thread_;
    Pending own_;  // the list, in the ContainerEnd that works it off
    Pending * pending_ = nullptr;
};

}  // namespace tvk::detail
