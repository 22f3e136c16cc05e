#include <windows.h>

#include "tvk/platform/SimpleMutex.h"

namespace tvk {

SimpleMutex::SimpleMutex() noexcept : impl_(CreateMutexA(nullptr, FALSE, nullptr)) {}

SimpleMutex::~SimpleMutex() {
    if (impl_ != nullptr) {
        CloseHandle(impl_);
    }
}

void SimpleMutex::lock() noexcept { WaitForSingleObject(impl_, INFINITE); }

void SimpleMutex::unlock() noexcept { ReleaseMutex(impl_); }

}  // namespace tvk
