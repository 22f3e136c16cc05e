#include "tvk/values/detail/DeferredRelease.h"

namespace tvk::detail {

constinit thread_local ContainerEnd::ThreadState ContainerEnd::state = {0, nullptr};

ContainerEnd::ContainerEnd() noexcept {
    if (++state.depth > MAXIMUM_DEPTH) {
        if (state.pending == nullptr) {
            state.pending = &own_;
        }
        pending_ = state.pending;
    }
}

ContainerEnd::~ContainerEnd() {
    if (pending_ == &own_) {
        while (!own_.empty()) {
            RefCountedPtr<RefCounted> const last = std::move(own_.back());
            own_.pop_back();
        }
        state.pending = nullptr;
    }
    --state.depth;
}

}  // namespace tvk::detail
