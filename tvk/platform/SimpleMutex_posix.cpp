#include <pthread.h>

#include <new>

#include "tvk/platform/SimpleMutex.h"

namespace tvk {

namespace {

bool initialize(pthread_mutex_t * mutex) {
    pthread_mutexattr_t attributes;
    if (pthread_mutexattr_init(&attributes) != 0) {
        return false;
    }
    // A recursive mutex knows its owner: unlocking on another thread is refused.
    bool const done = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE) == 0 &&
                      pthread_mutex_init(mutex, &attributes) == 0;
    pthread_mutexattr_destroy(&attributes);
    return done;
}

pthread_mutex_t * makeMutex() {
    auto * const mutex = new (std::nothrow) pthread_mutex_t;
    if (mutex != nullptr && !initialize(mutex)) {
        delete mutex;
        return nullptr;
    }
    return mutex;
}

pthread_mutex_t * mutexOf(void * impl) { return static_cast<pthread_mutex_t *>(impl); }

}  // namespace

SimpleMutex::SimpleMutex() noexcept : impl_(makeMutex()) {}

SimpleMutex::~SimpleMutex() {
    if (impl_ != nullptr) {
        pthread_mutex_destroy(mutexOf(impl_));
        delete mutexOf(impl_);
    }
}

void SimpleMutex::lock() noexcept {
    if (impl_ != nullptr) {
        pthread_mutex_lock(mutexOf(impl_));
    }
}

void SimpleMutex::unlock() noexcept {
    if (impl_ != nullptr) {
        pthread_mutex_unlock(mutexOf(impl_));
    }
}

}  // namespace tvk
