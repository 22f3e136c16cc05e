#pragma once

#include "tvk/platform/Export.h"

namespace tvk {

/// A mutex of the operating system. The thread that holds it may lock it again, and unlocks it as many
/// times. The library takes no lock itself; this one is for the modules that build on it.
///
/// Threads: lock and unlock may be called from any thread. A thread unlocks what it locked before it
///          ends, and nobody destroys a mutex that is held.
/// Failure: nothing is thrown or reported. Where the system gave no mutex the handle is null, and lock
///          and unlock do nothing.
class TVK_API SimpleMutex {
public:
    SimpleMutex() noexcept;
    SimpleMutex(SimpleMutex const &) = delete;
    SimpleMutex & operator=(SimpleMutex const &) = delete;
    ~SimpleMutex();

    void lock() noexcept;
    /// Does nothing on a thread that does not hold the mutex.
    void unlock() noexcept;

    /// The system's own mutex, or null: HANDLE on Windows, pthread_mutex_t * elsewhere.
    void * getImpl() const noexcept { return impl_; }

private:
    void * impl_;
};

}  // namespace tvk
