#include "tvk/values/detail/DeferredRelease.h"

namespace tvk::detail {

constinit thread_local ContainerEnd::ThreadState ContainerEnd::state = {0, nullptr};

ContainerEnd::ContainerEnd() noexcept : thread_(state) {
    if (++thread_.depth > MAXIMUM_DEPTH) {
        if (thread_.pending == nullptr) {
            thread_.pending = &own_;
        }
        pending_ = thread_.pending;
    }
}

ContainerEnd::~ContainerEnd() {
    if (pending_ == &own_) {
        while (!own_.empty()) {
            RefCountedPtr<RefCounted> const last = std::move(own_.back());
            own_.pop_back();
        }
        thread_.pending = nullptr;
    }
    --thread_.depth;
}

}  // namespace tvk::detail
