#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <stdexcept>

namespace tvk::test {

/// Runs the work on a thread with a stack of that size and waits for its end. The work throws nothing.
inline void runOnStack(std::size_t stackSize, std::function<void()> work) {
    pthread_attr_t attributes;
    pthread_t thread;
    pthread_attr_init(&attributes);
    int failure = pthread_attr_setstacksize(&attributes, stackSize);
    if (failure == 0) {
        failure = pthread_create(
            &thread, &attributes,
            [](void * argument) -> void * {
                (*static_cast<std::function<void()> *>(argument))();
                return nullptr;
            },
            &work);
    }
    pthread_attr_destroy(&attributes);
    if (failure != 0) {
        throw std::runtime_error("the thread could not be started");
    }
    pthread_join(thread, nullptr);
}

}  // namespace tvk::test
